// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/element_paths.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Guid.h"
#include "xml/document_queries.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::clips {

using media::ClipPath;

/// Remembers the short texts that were read last, so that what a card repeats from clip to clip
/// (codec, rate, aspect, names of people) is in memory once. Of fixed size.
class TextPool {
public:
    /// The text of the UTF-8 bytes; shared with earlier ones of the same content when it can be.
    CString TextOf(std::string_view utf8);

private:
    static constexpr std::size_t kSlots = 256;
    static constexpr std::size_t kLongestShared = 32;
    struct Slot {
        std::string bytes;
        CString text;
    };
    std::array<Slot, kSlots> m_slots;
};

/// The values of one clip file, see xml::DocumentValues. More text than a file of this size may
/// give throws std::length_error.
class ClipTexts {
public:
    /// `document` must stay unchanged and both must outlive this object.
    ClipTexts(const dom::Document& document, TextPool& pool);
    ClipTexts(const ClipTexts&) = delete;
    ClipTexts& operator=(const ClipTexts&) = delete;

    /// Whether there is any clip content.
    [[nodiscard]] bool HasContent() const { return m_values.HasBase(); }
    /// The node behind a value, or null.
    [[nodiscard]] dom::Node* Find(ClipPath path) const {
        return m_values.Find(static_cast<std::size_t>(path));
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
    [[nodiscard]] std::vector<dom::Node*> All(std::string_view below) const {
        return m_values.All(below);
    }
    /// The texts of the first child elements of these names, "" for a missing one.
    template <std::size_t Count>
    [[nodiscard]] std::array<CString, Count>
    Children(const dom::Node& node, const std::array<std::string_view, Count>& names) const {
        std::array<CString, Count> texts;
        for (std::size_t i = 0; i < Count; ++i) {
            texts[i] = TextOf(xml::ChildOf(node, names[i]));
        }
        return texts;
    }

private:
    [[nodiscard]] CString TextOf(const dom::Node* node) const;

    TextPool& m_pool;
    xml::TextBudget m_budget;
    xml::DocumentValues m_values;
};

} // namespace nqp2::clips
