// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/quick_cursor.h"

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace nqp2::dom::quick {

struct Attribute {
    Name name;
    std::string_view value;
    std::string_view uri;
};

/// What the prefixes mean in the elements that are open.
class Namespaces {
public:
    /// Binds the prefixes that the attributes of an element declare. False where a rule of its own
    /// holds for one, or when there are too many.
    bool Declare(std::span<const Attribute> attributes, int depth) {
        for (const Attribute& each : attributes) {
            if (!each.name.IsDeclaration()) {
                continue;
            }
            const std::string_view prefix =
                each.name.prefixLength == 0 ? std::string_view() : each.name.Base();
            if (m_count == kMaxBindings || prefix.starts_with("xml") || !IsUsualUri(each.value)) {
                return false;
            }
            m_bindings[m_count++] = {prefix, each.value, depth};
        }
        return true;
    }

    /// Ends what an element of that depth declared.
    void Leave(int depth) {
        while (m_count > 0 && m_bindings[m_count - 1].depth == depth) {
            --m_count;
        }
    }

    /// False for a prefix that nothing declares; no prefix needs no declaration.
    bool UriOf(std::string_view prefix, std::string_view& uri) const {
        for (std::size_t i = m_count; i > 0; --i) {
            if (m_bindings[i - 1].prefix == prefix) {
                uri = m_bindings[i - 1].uri;
                return true;
            }
        }
        return prefix.empty();
    }

    /// Looks for the namespaces of the attributes; no two may have one name.
    bool Resolve(std::span<Attribute> attributes) const {
        for (std::size_t i = 0; i < attributes.size(); ++i) {
            Attribute& each = attributes[i];
            each.uri = {};
            if (each.name.prefixLength > 0 && !each.name.IsDeclaration() &&
                !UriOf(each.name.Prefix(), each.uri)) {
                return false;
            }
            for (const Attribute& other : attributes.first(i)) {
                if (IsSameName(each, other)) {
                    return false;
                }
            }
        }
        return true;
    }

private:
    static constexpr std::size_t kMaxBindings = 24;

    /// Of the element at that depth; "" for the default namespace.
    struct Binding {
        std::string_view prefix;
        std::string_view uri;
        int depth = 0;
    };

    /// Whether a namespace of that name follows no rule of its own.
    static bool IsUsualUri(std::string_view uri) {
        return !uri.empty() && uri.size() <= kLongestName &&
               uri != "http://www.w3.org/XML/1998/namespace" &&
               uri != "http://www.w3.org/2000/xmlns/";
    }

    static bool IsSameName(const Attribute& left, const Attribute& right) {
        return left.name.text == right.name.text || (!left.uri.empty() && left.uri == right.uri &&
                                                     left.name.Base() == right.name.Base());
    }

    std::size_t m_count = 0;
    std::array<Binding, kMaxBindings> m_bindings;
};

} // namespace nqp2::dom::quick
