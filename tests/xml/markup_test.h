// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/MarkupMSXML.h"

namespace nqp2::test {

/// The document without the line break behind its root.
inline CString Doc(CMarkupMSXML& markup) {
    return markup.GetDoc().TrimRight(L"\r\n");
}

/// Tag names of main and child position.
inline CString Where(CMarkupMSXML& markup) {
    return markup.GetTagName() + L"/" + markup.GetChildTagName();
}

} // namespace nqp2::test
