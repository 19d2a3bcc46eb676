// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_texts.h"

#include "media/identifier.h"
#include "platform/number_text.h"
#include "platform/unicode.h"

#include <algorithm>
#include <functional>
#include <span>

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

std::size_t IndexOf(ClipList list) {
    return static_cast<std::size_t>(list);
}

/// By AudioCell: values of a clip, of the first channel, where the cells are not asked for.
constexpr std::array kAudioCells = {ClipPath::AudioStartByteOffset, ClipPath::AudioDataSize};

dom::FieldSet MakeFields(bool withFiles) {
    std::array<dom::FieldSet::ValuePath, media::kClipPathCount + 1> values;
    for (std::size_t i = 0; i < media::kClipPathCount; ++i) {
        const media::ClipPathEntry& entry = media::kClipPaths[i];
        values[i] = {entry.below, media::AttributeOf(entry.path)};
    }
    values[kIconFormat] = {media::kIconFormatPath};
    std::array<dom::FieldSet::ListPath, media::kClipListCount> lists;
    for (std::size_t i = 0; i < media::kClipListCount; ++i) {
        lists[i].below = media::kClipLists[i];
    }
    lists[IndexOf(ClipList::Memo)].cells = media::kMemoNames;
    std::array<std::string_view, kAudioCells.size()> cells;
    std::transform(kAudioCells.begin(), kAudioCells.end(), cells.begin(), media::InAudio);
    if (withFiles) {
        lists[IndexOf(ClipList::Audio)].cells = cells;
    }
    const std::span all(values);
    return {media::kClipContentPath, withFiles ? all : all.first(media::kClipPathCount), lists};
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

const dom::FieldSet& ClipFields() {
    static const dom::FieldSet fields = MakeFields(false);
    return fields;
}

const dom::FieldSet& ClipAndFileFields() {
    static const dom::FieldSet fields = MakeFields(true);
    return fields;
}

ClipTexts::InTree::InTree(const dom::Document& document)
    : budget(document), values(document, media::kClipContentPath, Paths(), budget) {}

const std::vector<dom::Node*>& ClipTexts::InTree::All(ClipList list) const {
    std::optional<std::vector<dom::Node*>>& nodes = lists[IndexOf(list)];
    if (!nodes) {
        nodes = values.All(media::kClipLists[IndexOf(list)]);
    }
    return *nodes;
}

ClipTexts::ClipTexts(const dom::Document& document, TextPool& pool) : m_pool(pool) {
    m_tree.emplace(document);
}

ClipTexts::ClipTexts(const dom::FieldValues& fields, TextPool& pool)
    : m_pool(pool), m_fields(&fields) {}

bool ClipTexts::HasContent() const {
    return m_tree ? m_tree->values.HasBase() : m_fields->hasBase;
}

bool ClipTexts::Has(ClipPath path) const {
    return m_tree ? m_tree->Find(path) != nullptr : Field(path).isThere;
}

const dom::FieldValues::Value&
ClipTexts::FirstOfChannels(ClipPath path, const dom::FieldValues::Value& otherwise) const {
    const auto cell = std::find(kAudioCells.begin(), kAudioCells.end(), path);
    if (cell == kAudioCells.end()) {
        return otherwise;
    }
    const std::vector<dom::FieldValues::Value>& cells =
        m_fields->lists[IndexOf(ClipList::Audio)].cells;
    for (auto i = static_cast<std::size_t>(cell - kAudioCells.begin()); i < cells.size();
         i += kAudioCells.size()) {
        if (cells[i].isThere) {
            return cells[i];
        }
    }
    return otherwise;
}

std::string_view ClipTexts::Utf8(ClipPath path, std::string& scratch) const {
    if (!m_tree) {
        return Field(path).text;
    }
    const dom::Node* const node = m_tree->Find(path);
    return node != nullptr ? dom::Text(*node, scratch) : std::string_view();
}

std::string_view ClipTexts::Spent(ClipPath path, std::string& scratch) const {
    // What was read without a tree is too little to go beyond what may be taken.
    return m_tree ? m_tree->Spent(m_tree->Find(path), scratch) : Field(path).text;
}

bool ClipTexts::HasText(ClipPath path) const {
    std::string scratch;
    return !Utf8(path, scratch).empty();
}

CString ClipTexts::Text(ClipPath path) const {
    std::string scratch;
    return m_pool.TextOf(Spent(path, scratch));
}

std::int32_t ClipTexts::Int32(ClipPath path) const {
    std::string scratch;
    return platform::ToInt32(Utf8(path, scratch));
}

std::int64_t ClipTexts::Int64(ClipPath path) const {
    std::string scratch;
    return platform::ToInt64(Utf8(path, scratch));
}

GUID ClipTexts::Guid(ClipPath path) const {
    std::string scratch;
    return media::GuidFromIdentifier(Spent(path, scratch));
}

CString ClipTexts::Attribute(ClipPath path) const {
    if (!m_tree) {
        return m_pool.TextOf(Field(path).attribute);
    }
    const dom::Node* const node = m_tree->Find(path);
    return node != nullptr ? m_pool.TextOf(xml::AttributeOf(*node, media::AttributeOf(path)))
                           : CString();
}

std::size_t ClipTexts::Count(ClipList list) const {
    return m_tree ? m_tree->All(list).size() : m_fields->lists[IndexOf(list)].count;
}

CString ClipTexts::MemoText(std::size_t index, MemoName name) const {
    const auto cell = static_cast<std::size_t>(name);
    if (!m_tree) {
        const dom::FieldValues::List& memos = m_fields->lists[IndexOf(ClipList::Memo)];
        return m_pool.TextOf(memos.cells[index * media::kMemoNames.size() + cell].text);
    }
    std::string scratch;
    const dom::Node& memo = *m_tree->All(ClipList::Memo)[index];
    return m_pool.TextOf(m_tree->Spent(xml::ChildOf(memo, media::kMemoNames[cell]), scratch));
}

} // namespace nqp2::clips
