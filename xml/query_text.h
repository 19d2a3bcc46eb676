// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/BStr.h"
#include "platform/CString.h"
#include "platform/unicode.h"
#include "xml/dom/node.h"

#include <string>

/// The border between the interface's wide text and the tree's UTF-8.
namespace nqp2::xml {

inline std::string PathOf(const _bstr_t& xpath) {
    return platform::Utf8FromText(xpath.Text().View());
}

inline CString TextOf(const dom::Node& node) {
    std::string scratch;
    return platform::TextFromUtf8(dom::Text(node, scratch));
}

} // namespace nqp2::xml
