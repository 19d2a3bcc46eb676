// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/FixedTypes.h"

namespace nqp2::media {

/// Results of the operations that read a card.
inline constexpr __int64 kRead = 0;
inline constexpr __int64 kCannotRead = 1;

constexpr __int64 StatusOf(bool done) {
    return done ? kRead : kCannotRead;
}

} // namespace nqp2::media
