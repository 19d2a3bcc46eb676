// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/document.h"
#include "xml/dom/known_way.h"
#include "xml/dom/parse_error.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace nqp2::dom {

/// Told of what a document holds, in its order. Names come without prefixes, texts live until the
/// document's end. Comments, instructions and declarations are not told.
class DocumentEvents {
public:
    virtual ~DocumentEvents() = default;
    /// A document of that size begins, perhaps anew: what was told before does not count.
    virtual void Begin(std::uint64_t bytes) = 0;
    virtual void Open(std::string_view name) = 0;
    /// Of the element that was opened last, before anything in it.
    virtual void Attribute(std::string_view name, std::string_view value) = 0;
    /// A piece of the text, which may come in several. Blanks between the tags of two elements may
    /// be left out.
    virtual void Characters(std::string_view text) = 0;
    virtual void Close() = 0;
    /// All that, as it was told of another document with the same bytes.
    virtual void Known(std::span<const Mark> marks) = 0;
};

/// Tells events of what is known, one by one.
template <class Events>
void TellMarks(std::span<const Mark> marks, Events& events) {
    for (const Mark& mark : marks) {
        switch (mark.kind) {
        case Mark::Kind::Open:
            events.Open(mark.name);
            break;
        case Mark::Kind::Attribute:
            events.Attribute(mark.name, mark.text);
            break;
        case Mark::Kind::Text:
            events.Characters(mark.text);
            break;
        case Mark::Kind::Close:
            events.Close();
            break;
        }
    }
}

/// Tells of plain documents (see quick_tokenizer.h) without a tree, and of what it knows from those
/// before without taking it apart.
class QuickTeller {
public:
    /// False for a document that is not plain, of which a part may have been told.
    bool Tell(std::string_view bytes, DocumentEvents& events);

private:
    class Sink;

    KnownWay m_way{nullptr};
    std::string m_text; ///< the document, decoded in place
};

/// The same of a tree, made of a document of that size.
void TellTree(const Document& document, std::uint64_t bytes, DocumentEvents& events);

/// Goes through files from beginning to end. Plain ones cost no tree.
class DocumentWalker {
public:
    /// A file by its POSIX path. Memory is used again for the next one. What `events` throws ends
    /// the walk.
    ParseError Walk(const std::string& path, DocumentEvents& events);

private:
    ParseError WalkTree(const std::string& path, DocumentEvents& events);

    std::string m_bytes;
    QuickTeller m_teller;
    Document m_document{SelectionRule::Names::Qualified}; ///< for what is not plain
};

} // namespace nqp2::dom
