// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

namespace nqp2::tool {

/// Whether a file in XML can hold the text: nothing of it is a control character but tab and line
/// ends, half a surrogate pair (which bytes that are no UTF-8 become) or no character at all.
bool FitsXml(const CString& text);

/// What keeps a text from being the name of a file on a card, whose file systems are FAT's; "" when
/// nothing does. `extension` is added by whoever makes the file, unless the name holds it.
const char* FileNameFault(const CString& name, const wchar_t* extension);

} // namespace nqp2::tool
