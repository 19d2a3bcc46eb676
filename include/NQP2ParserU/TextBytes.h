// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"

#include <string>
#include <string_view>

namespace nqp2 {

/// The UTF-8 form of a text. What came in as bytes that are no UTF-8 goes out as the same bytes,
/// so the result is valid UTF-8 only as far as its source was.
NQP2_API std::string BytesFromText(const CString& text);

/// The text behind UTF-8 bytes. Keeps bytes that are no UTF-8: BytesFromText gives them back.
NQP2_API CString TextFromBytes(std::string_view bytes);

} // namespace nqp2
