// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "xml/dom/field_set.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

namespace nqp2::clips {

/// About what a text takes beside its characters.
inline constexpr std::size_t kTextBytes = 32;

/// A text that is there already, of the document before, costs nothing.
void Assign(const CString& text, CString& to);

/// An element or attribute, told from its like in other places.
struct TextPlace {
    struct Kind;
    TextPlace(Kind& placeKind, TextPlace* inside, std::uint32_t count,
              const dom::FieldSet::Name* meaning, std::uint32_t size)
        : kind(&placeKind), parent(inside), number(count), bytes(size), field(meaning) {}

    Kind* kind;           ///< which is its name, and where that stands
    TextPlace* parent;    ///< null for the root
    std::uint32_t number; ///< among those of its name in its parent, from 1
    std::uint32_t bytes;  ///< about what it takes beside its path; the first of a kind with that
    /// What it is in the set of fields; null when it is nothing there.
    const dom::FieldSet::Name* field;
    CString path;                ///< where it was made
    std::uint32_t pathBytes = 0; ///< about what it takes; 0 where it was not made
    TextPlace* nextOfKind = nullptr;
    TextPlace* follower = nullptr; ///< the place that came next in the document before

    /// The text of the UTF-8 bytes. What a place has from document to document is in memory once,
    /// what changes goes where the text before was.
    void Put(std::string_view utf8, CString& to);

private:
    static constexpr std::size_t kLongestShared = 32;
    [[nodiscard]] std::string_view LastBytes() const { return {m_last.data(), m_lastSize}; }

    std::array<char, kLongestShared> m_last{}; ///< of the text that it had last,
    std::size_t m_lastSize = 0;
    bool m_isShared = false; ///< it has come twice,
    CString m_text;          ///< and is this one
};

/// The places of the texts in documents of one kind, with their paths. They are remembered from
/// one document to the next: most have the same places in the same order.
class TextPlaces {
public:
    /// `fields` must outlive this object. The root counts whatever its name is.
    explicit TextPlaces(const dom::FieldSet& fields) : m_fields(fields) {}

    /// Begins a document. Places of those before are no longer to be used.
    void Begin();
    /// The place that came next in the document before, where it is this one: of an element that
    /// begins in another, or of an attribute. `parent` is null for the root. Null when it is not.
    TextPlace* Follow(const TextPlace* parent, std::string_view name, bool isAttribute) {
        TextPlace* const place = m_last != nullptr ? m_last->follower : nullptr;
        if (place == nullptr || !Is(*place, parent, name, isAttribute)) {
            return nullptr;
        }
        Enter(*place);
        return place;
    }
    /// Any other one.
    TextPlace& Find(TextPlace* parent, std::string_view name, bool isAttribute);
    /// "Root/Element[2]/@attribute".
    void MakePath(TextPlace& place);

private:
    struct Key {
        const TextPlace* parent;
        std::string_view name;
        bool isAttribute;
        bool operator==(const Key&) const = default;
    };
    struct Hash {
        std::size_t operator()(const Key& key) const;
    };

    /// Whether it is that place, and those before it were met in this document.
    [[nodiscard]] bool Is(const TextPlace& place, const TextPlace* parent, std::string_view name,
                          bool isAttribute) const;
    void Enter(TextPlace& place);
    TextPlace::Kind& KindOf(const Key& key);
    TextPlace& Append(TextPlace::Kind& kind, TextPlace* parent, TextPlace* before);
    [[nodiscard]] const dom::FieldSet::Name*
    FieldOf(const TextPlace::Kind& kind, const TextPlace* parent, std::uint32_t number) const;

    const dom::FieldSet& m_fields;
    std::deque<TextPlace> m_places;
    std::deque<TextPlace::Kind> m_kinds;
    std::unordered_map<Key, TextPlace::Kind*, Hash> m_found;
    std::uint64_t m_document = 0;
    TextPlace* m_last = nullptr;
    std::size_t m_bytes = 0; ///< about what all places take
    std::string m_scratch;
};

/// A name in one place.
struct TextPlace::Kind {
    std::string name;
    bool isAttribute;
    TextPlace* first = nullptr;
    TextPlace* last = nullptr;  ///< that the document has so far,
    std::uint64_t document = 0; ///< when it is this one
};

/// Most names have 8 to 16 bytes, which are compared without a call.
inline bool AreSame(std::string_view left, std::string_view right) {
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    const std::size_t size = left.size();
    if (size != right.size()) {
        return false;
    }
    if (size < kWord || size > 2 * kWord) {
        return std::memcmp(left.data(), right.data(), size) == 0;
    }
    const auto differ = [left, right](std::size_t at) {
        std::uint64_t ofLeft = 0;
        std::uint64_t ofRight = 0;
        std::memcpy(&ofLeft, left.data() + at, kWord);
        std::memcpy(&ofRight, right.data() + at, kWord);
        return ofLeft ^ ofRight;
    };
    return (differ(0) | differ(size - kWord)) == 0;
}

inline bool TextPlaces::Is(const TextPlace& place, const TextPlace* parent, std::string_view name,
                           bool isAttribute) const {
    const TextPlace::Kind& kind = *place.kind;
    const std::uint32_t before = kind.document == m_document ? kind.last->number : 0;
    return place.parent == parent && place.number == before + 1 &&
           kind.isAttribute == isAttribute && AreSame(kind.name, name);
}

inline void TextPlaces::Enter(TextPlace& place) {
    place.kind->last = &place;
    place.kind->document = m_document;
    m_last = &place;
}

} // namespace nqp2::clips
