// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_texts.h"

#include "media/identifier.h"
#include "platform/number_text.h"
#include "platform/unicode.h"

#include <functional>

namespace nqp2::clips {
namespace {

const dom::PathSet& Paths() {
    static const dom::PathSet paths = [] {
        std::array<std::string_view, media::kClipPathCount> below;
        for (std::size_t i = 0; i < media::kClipPathCount; ++i) {
            below[i] = media::kClipPaths[i].below;
        }
        return dom::PathSet(below);
    }();
    return paths;
}

} // namespace

CString TextPool::TextOf(std::string_view utf8) {
    if (utf8.empty() || utf8.size() > kLongestShared) {
        return platform::TextFromUtf8(utf8);
    }
    Slot& slot = m_slots[std::hash<std::string_view>{}(utf8) % kSlots];
    if (slot.bytes != utf8) {
        slot.text = platform::TextFromUtf8(utf8);
        slot.bytes = utf8;
    }
    return slot.text;
}

ClipTexts::ClipTexts(const dom::Document& document, TextPool& pool)
    : m_pool(pool), m_budget(document),
      m_values(document, media::kClipContentPath, Paths(), m_budget) {}

CString ClipTexts::Text(ClipPath path) const {
    return TextOf(Find(path));
}

CString ClipTexts::TextOf(const dom::Node* node) const {
    std::string scratch;
    return m_pool.TextOf(m_values.Text(node, scratch));
}

std::int32_t ClipTexts::Int32(ClipPath path) const {
    std::string scratch;
    const dom::Node* const node = Find(path);
    return node != nullptr ? platform::ToInt32(dom::Text(*node, scratch)) : 0;
}

std::int64_t ClipTexts::Int64(ClipPath path) const {
    std::string scratch;
    const dom::Node* const node = Find(path);
    return node != nullptr ? platform::ToInt64(dom::Text(*node, scratch)) : 0;
}

GUID ClipTexts::Guid(ClipPath path) const {
    return media::GuidFromIdentifier(Text(path));
}

CString ClipTexts::Attribute(ClipPath path, std::string_view name) const {
    const dom::Node* const node = Find(path);
    return node != nullptr ? m_pool.TextOf(xml::AttributeOf(*node, name)) : CString();
}

} // namespace nqp2::clips
