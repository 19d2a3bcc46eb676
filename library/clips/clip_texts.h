// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "clips/text_pool.h"
#include "media/element_paths.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Guid.h"
#include "xml/dom/document.h"
#include "xml/query_text.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::clips {

using media::ClipPath;

/// The values of one clip file, gathered in a single pass over its tree. Each is the first node, in
/// document order, that the path selects: just what asking path by path would give. More text than
/// a file of this size may give throws std::length_error.
class ClipTexts {
public:
    /// `document` must stay unchanged and both must outlive this object.
    ClipTexts(dom::Document& document, TextPool& pool);

    /// Whether there is any clip content.
    [[nodiscard]] bool HasContent() const { return !m_contents.empty(); }
    /// The node behind a value, or null.
    [[nodiscard]] dom::Node* Find(ClipPath path) const {
        return m_nodes[static_cast<std::size_t>(path)];
    }
    /// The value's text, "" for a missing element.
    [[nodiscard]] CString Text(ClipPath path) const;
    /// The leading number of the text, 0 for a missing element.
    [[nodiscard]] std::int32_t Int32(ClipPath path) const;
    [[nodiscard]] std::int64_t Int64(ClipPath path) const;
    /// The GUID of the identifier in the text, all zero for a missing element.
    [[nodiscard]] GUID Guid(ClipPath path) const;
    /// The attribute of that local name of the value's element, "" when either is missing.
    [[nodiscard]] CString Attribute(ClipPath path, std::string_view name) const;
    /// Every node that the path below the clip content selects, in document order.
    [[nodiscard]] std::vector<dom::Node*> All(std::string_view below) const;
    /// The texts of the first child elements of these names, "" for a missing one.
    template <std::size_t Count>
    [[nodiscard]] std::array<CString, Count>
    Children(const dom::Node& node, const std::array<std::string_view, Count>& names) const {
        std::array<CString, Count> texts;
        for (std::size_t i = 0; i < Count; ++i) {
            texts[i] = ChildText(node, names[i]);
        }
        return texts;
    }

private:
    [[nodiscard]] CString ChildText(const dom::Node& node, std::string_view name) const;
    [[nodiscard]] CString TextOf(const dom::Node& node) const;

    dom::Document& m_document;
    TextPool& m_pool;
    std::vector<dom::Node*> m_contents;
    std::array<dom::Node*, media::kClipPathCount> m_nodes{};
    mutable xml::TextBudget m_budget;
};

} // namespace nqp2::clips
