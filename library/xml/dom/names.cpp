// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/names.h"

#include "xml/dom/libxml_text.h"

#include <libxml/chvalid.h>
#include <libxml/tree.h>

#include <algorithm>

namespace nqp2::dom {
namespace {

bool HoldsZero(std::string_view text) {
    return text.find('\0') != std::string_view::npos;
}

} // namespace

bool IsQualifiedName(const std::string& text) {
    return !HoldsZero(text) && xmlValidateQName(Xml(text), 0) == 0;
}

bool IsXmlText(std::string_view text) {
    while (!text.empty()) {
        constexpr std::size_t kLongest = 4;
        int length = static_cast<int>(std::min(text.size(), kLongest));
        const int code =
            xmlGetUTF8Char(reinterpret_cast<const unsigned char*>(text.data()), &length);
        if (code < 0 || xmlIsCharQ(static_cast<unsigned>(code)) == 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(length));
    }
    return true;
}

bool IsComment(std::string_view text) {
    return IsXmlText(text) && text.find("--") == std::string_view::npos && !text.ends_with('-');
}

bool IsInstruction(std::string_view target, std::string_view data) {
    const std::string name(target);
    // "xml" in any letter case is the declaration's or reserved.
    return !HoldsZero(target) && xmlValidateNCName(Xml(name), 0) == 0 &&
           xmlStrcasecmp(Xml(name), BAD_CAST "xml") != 0 && IsXmlText(data) &&
           data.find("?>") == std::string_view::npos;
}

bool MayHold(const Node& node, const std::string& text) {
    switch (node.type) {
    case NodeType::Comment:
        return IsComment(text);
    case NodeType::ProcessingInstruction:
        return IsInstruction(node.Name(), text);
    default:
        return IsXmlText(text);
    }
}

} // namespace nqp2::dom
