// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "page/html.h"

namespace nqp2::page {

/// A file that is part of the page as it is, and the SHA-256 of it in hexadecimal: the page allows
/// what has this sum and nothing else.
struct Asset {
    Own content;
    std::string_view sum;
};
extern const Asset kStyle;
extern const Asset kScript;

} // namespace nqp2::page
