// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/text_places.h"

#include "platform/unicode.h"

#include <functional>
#include <vector>

namespace nqp2::clips {
namespace {

/// What is kept from one document to the next; a card's clips have some hundred places.
constexpr std::size_t kMostKeptBytes = std::size_t{1} << 20U;

/// Of a kind beside its name: itself, and its entry among those that were found.
constexpr std::size_t kKindBytes = sizeof(TextPlace::Kind) + 64;

/// Of a text whose memory is used again: what was long may have left much of it.
constexpr int kLongestReused = 64;

void Overwrite(CString& to, std::string_view utf8) {
    if (to.GetLength() > kLongestReused) {
        to.Empty();
    }
    platform::SetTextFromUtf8(to, utf8);
}

} // namespace

void Assign(const CString& text, CString& to) {
    if (text.GetString() != to.GetString()) {
        to = text;
    }
}

void TextPlace::Put(std::string_view utf8, CString& to) {
    if (utf8.size() > kLongestShared || utf8.empty()) {
        to = platform::TextFromUtf8(utf8);
        return;
    }
    const bool isRepeated = AreSame(LastBytes(), utf8);
    if (isRepeated && m_isShared) {
        Assign(m_text, to);
        return;
    }
    m_text.Empty(); // it may be what is overwritten
    Overwrite(to, utf8);
    if (isRepeated) {
        m_text = to;
    } else {
        m_lastSize = utf8.copy(m_last.data(), m_last.size());
    }
    m_isShared = isRepeated;
}

std::size_t TextPlaces::Hash::operator()(const Key& key) const {
    const std::size_t place = std::hash<const void*>{}(key.parent);
    return std::hash<std::string_view>{}(key.name) ^ (place * 31 + (key.isAttribute ? 1U : 0U));
}

void TextPlaces::Begin() {
    if (m_bytes > kMostKeptBytes) {
        m_found.clear();
        m_kinds.clear();
        m_places.clear();
        m_bytes = 0;
    }
    ++m_document;
    m_last = nullptr;
}

TextPlace& TextPlaces::Find(TextPlace* parent, std::string_view name, bool isAttribute) {
    TextPlace::Kind& kind = KindOf({parent, name, isAttribute});
    TextPlace* const before = kind.document == m_document ? kind.last : nullptr;
    TextPlace* place = before != nullptr ? before->nextOfKind : kind.first;
    if (place == nullptr) {
        place = &Append(kind, parent, before);
    }
    if (m_last != nullptr) {
        m_last->follower = place;
    }
    Enter(*place);
    return *place;
}

TextPlace::Kind& TextPlaces::KindOf(const Key& key) {
    const auto found = m_found.find(key);
    if (found != m_found.end()) {
        return *found->second;
    }
    TextPlace::Kind& kind = m_kinds.emplace_back();
    kind.name = key.name;
    kind.isAttribute = key.isAttribute;
    m_found.emplace(Key{key.parent, kind.name, key.isAttribute}, &kind);
    return kind;
}

TextPlace& TextPlaces::Append(TextPlace::Kind& kind, TextPlace* parent, TextPlace* before) {
    const std::uint32_t number = before != nullptr ? before->number + 1 : 1;
    const std::size_t bytes =
        sizeof(TextPlace) + (before == nullptr ? kKindBytes + kind.name.size() : 0);
    TextPlace& place = m_places.emplace_back(kind, parent, number, FieldOf(kind, parent, number),
                                             static_cast<std::uint32_t>(bytes));
    (before != nullptr ? before->nextOfKind : kind.first) = &place;
    m_bytes += place.bytes;
    return place;
}

/// Of elements that should be there once the first counts.
const dom::FieldSet::Name* TextPlaces::FieldOf(const TextPlace::Kind& kind, const TextPlace* parent,
                                               std::uint32_t number) const {
    if (kind.isAttribute) {
        return nullptr;
    }
    if (parent == nullptr) {
        return &m_fields.Top().below.front();
    }
    const dom::FieldSet::Name* const field =
        parent->field != nullptr ? parent->field->Below(kind.name) : nullptr;
    const bool counts =
        field != nullptr && (number == 1 || field->role == dom::FieldSet::Role::List);
    return counts ? field : nullptr;
}

void TextPlaces::MakePath(TextPlace& place) {
    std::vector<const TextPlace*> way;
    for (const TextPlace* each = &place; each != nullptr; each = each->parent) {
        way.push_back(each);
    }
    m_scratch.clear();
    for (auto step = way.rbegin(); step != way.rend(); ++step) {
        m_scratch += m_scratch.empty() ? "" : "/";
        m_scratch += (*step)->kind->isAttribute ? "@" : "";
        m_scratch += (*step)->kind->name;
        if ((*step)->number > 1) {
            m_scratch += '[' + std::to_string((*step)->number) + ']';
        }
    }
    place.path = platform::TextFromUtf8(m_scratch);
    place.pathBytes = static_cast<std::uint32_t>(kTextBytes + m_scratch.size() * sizeof(wchar_t));
    m_bytes += place.pathBytes;
}

} // namespace nqp2::clips
