// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "platform/unicode.h"

#include <ostream>

/// Lets GoogleTest show a text instead of the bytes of its pointer, also in messages of a test.
inline std::ostream& operator<<(std::ostream& out, const CString& text) {
    return out << '"' << nqp2::platform::Utf8FromText(text.View()) << '"';
}
