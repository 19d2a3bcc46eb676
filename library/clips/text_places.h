// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "xml/dom/field_set.h"

#include <array>
#include <cstddef>
#include <cstdint>
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
              const dom::FieldSet::Name* meaning)
        : kind(&placeKind), parent(inside), number(count), field(meaning) {}

    Kind* kind;           ///< which is its name, and where that stands
    TextPlace* parent;    ///< null for the root
    std::uint32_t number; ///< among those of its name in its parent, from 1
    /// What it is in the set of fields; null when it is nothing there.
    const dom::FieldSet::Name* field;
    CString path; ///< made when first asked for
    bool hasPath = false;
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
    /// The place of an element that begins in another, or of an attribute. `parent` is null for the
    /// root.
    TextPlace& Next(TextPlace* parent, std::string_view name, bool isAttribute);
    /// "Root/Element[2]/@attribute".
    const CString& PathOf(TextPlace& place);
    /// About what all places take in memory.
    [[nodiscard]] std::size_t Bytes() const { return m_bytes; }

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
    std::size_t m_bytes = 0;
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

} // namespace nqp2::clips
