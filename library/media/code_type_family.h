// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CodeType.h"

namespace nqp2::media {

/// Code types that cost the same on a card and share their metadata's namespace.
enum class CodeTypeFamily {
    StandardRate,
    DoubleRate,
    HighDefinition,
    IntraHighRate,
    IntraLowRate,
    Other, ///< no fixed frame size
};

CodeTypeFamily FamilyOf(eCodeType type);

} // namespace nqp2::media
