// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/TextBytes.h"

#include "platform/unicode.h"

namespace nqp2 {

std::string BytesFromText(const CString& text) {
    return platform::NameBytesFromText(text.View());
}

CString TextFromBytes(std::string_view bytes) {
    return platform::TextFromNameBytes(bytes);
}

} // namespace nqp2
