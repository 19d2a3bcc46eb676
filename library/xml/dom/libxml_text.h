// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <libxml/globals.h>
#include <libxml/tree.h>
#include <libxml/xmlstring.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace nqp2::dom {

/// The text as libxml2 takes it; valid as long as `text` is unchanged.
inline const xmlChar* Xml(const std::string& text) {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

/// Text of libxml2's; null counts as empty.
inline std::string_view View(const xmlChar* text) {
    return text != nullptr ? std::string_view(reinterpret_cast<const char*>(text))
                           : std::string_view();
}

inline std::string_view View(const xmlChar* begin, const xmlChar* end) {
    return {reinterpret_cast<const char*>(begin), static_cast<std::size_t>(end - begin)};
}

/// The value of an attribute without prefix; "" when it is missing.
inline std::string Attribute(const xmlNode& node, const char* name) {
    xmlChar* const value = xmlGetNoNsProp(&node, BAD_CAST name);
    std::string text(View(value));
    xmlFree(value);
    return text;
}

/// Visits an element and all below it in document order, with its depth, until `visit` returns false;
/// returns whether it never did. No recursion, so that no document is too deep for any stack.
template <class Visit>
bool EveryElement(const xmlNode& top, Visit visit) {
    int depth = 0;
    for (const xmlNode* node = &top;; node = node->next) {
        while (node->type == XML_ELEMENT_NODE) {
            if (!visit(*node, depth)) {
                return false;
            }
            if (node->children == nullptr) {
                break;
            }
            node = node->children;
            ++depth;
        }
        while (node != &top && node->next == nullptr) {
            node = node->parent;
            --depth;
        }
        if (node == &top) {
            return true;
        }
    }
}

} // namespace nqp2::dom
