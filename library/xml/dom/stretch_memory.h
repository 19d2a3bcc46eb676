// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/arena.h"
#include "xml/dom/field_set.h"

#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>

/// What the documents before have taught about the next one. The files of a card are alike: between
/// two values stand the same tags and blanks again and again, while values, and how many memos or
/// channels there are, differ.
///
/// A position is where the tokenizer is, as far as its next steps depend on it: the elements that
/// are open, and the namespaces that these declare. A stretch is the bytes that the tokenizer once
/// went through from one position to another, from the end of a step to the end of a step. The same
/// bytes at the same position lead to the same position again, and are as well-formed as they were
/// then. So they are compared with one memcmp, and what the reader noted of them, its marks, is
/// told once more. Below the root no stretch opens or closes an element that declares something:
/// the tokenizer keeps count of these, and must see them. Bytes that are not known are taken apart
/// as ever, and are known from then on: a document that differs here and there costs no more than
/// the differences. Where documents teach nothing about the next ones, their readers stop learning;
/// elements that nobody asks for are strangers then, which leave nothing behind.
namespace nqp2::dom {

struct Stretch;

struct Position {
    std::string_view name; ///< of the innermost open element
    std::string_view key;  ///< what tells it from its neighbours
    Position* parent = nullptr;
    const FieldSet::Name* wanted = nullptr; ///< null when neither it nor what is below it counts
    bool holdsValue = false; ///< of `wanted`: its text is, so that it has no child elements
    int depth = 0;
    bool declares = false; ///< a namespace, so that the tokenizer must see it opened and closed
    /// Stands for any element there that does not count: its name is that of the one which is open,
    /// and nothing is learned of what is in it.
    bool isStranger = false;
    Position* stranger = nullptr; ///< its child of that kind
    Position* firstChild = nullptr;
    Position* next = nullptr; ///< among the parent's children
    Stretch* firstStretch = nullptr;
};

/// What a reader noted in a stretch: of all that it met there, what counts for it.
struct Mark {
    enum class Kind : char { Open, Attribute, Text, Close };
    Kind kind;
    const Position* position = nullptr; ///< of an element that is opened
    std::string_view name;              ///< of element or attribute, without prefix
    std::string_view text;              ///< which the memory keeps
};

struct Stretch {
    std::string_view bytes;
    Position* end = nullptr;
    std::span<const Mark> marks;
    Stretch* next = nullptr; ///< of the same position
};

/// Positions and stretches. Takes at most some hundred KiB, then starts anew.
class StretchMemory {
public:
    /// `wanted` must outlive this object; null where the reader wants no values.
    explicit StretchMemory(const FieldSet* wanted) : m_wanted(wanted) {}

    /// Before each document: the position outside of the root. Whether it is learned from: where it
    /// is not, nothing is kept but the positions of what counts.
    Position& Begin(bool isLearning);
    /// After a document for which what is kept was of little use: starts anew with the next, where
    /// there was no more room for the names of this one.
    void ForgetWhenFull() {
        if (m_isFull) {
            m_outside = nullptr;
        }
    }
    /// The position in a child element. `key` starts with its name; where it declares something,
    /// all that tells its declarations follows. `name` must live as long as the element is open.
    /// Null for one that counts when the parent has too many children to tell apart quickly.
    Position* Below(Position& parent, std::string_view name, std::string_view key, bool declares);
    /// The stretch from that position on which `rest` starts with, or null.
    static const Stretch* Find(const Position& from, std::string_view rest) {
        const Stretch* each = from.firstStretch;
        while (each != nullptr && !Starts(rest, each->bytes)) {
            each = each->next;
        }
        return each;
    }
    /// Keeps a stretch, unless enough of them start there.
    void Learn(Position& from, std::string_view bytes, Position& to, std::span<const Mark> marks);
    /// A copy that lives as long as the stretches.
    std::string_view Keep(std::string_view text) { return m_arena.Copy(text); }

private:
    /// starts_with, without a call for what is too short.
    static bool Starts(std::string_view rest, std::string_view bytes) {
        return rest.size() >= bytes.size() &&
               std::memcmp(rest.data(), bytes.data(), bytes.size()) == 0;
    }
    template <class Type>
    Type& Make(const Type& value);
    static const FieldSet::Name* WantedBelow(const Position& parent, std::string_view name) {
        return parent.wanted != nullptr ? parent.wanted->Below(name) : nullptr;
    }
    Position* StrangerBelow(Position& parent, std::string_view name);

    const FieldSet* m_wanted;
    Arena m_arena;
    Position* m_outside = nullptr;
    bool m_isLearning = true;
    bool m_isFull = false; ///< of names that are not met again
};

} // namespace nqp2::dom
