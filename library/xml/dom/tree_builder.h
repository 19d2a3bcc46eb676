// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/parse_error.h"
#include "xml/dom/tree.h"

#include <libxml/parser.h>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace nqp2::dom {

/// Receives libxml2's parse events and grows a tree from them.
class TreeBuilder {
public:
    /// What the parser is told of text that is known to be UTF-8: a spelling that no document can
    /// leave in the same place, so that an encoding that was not declared is not written either.
    static constexpr const char* kKnownUtf8 = "UTF8";

    /// Empties the tree and hooks this builder up to the context for one document.
    void Start(Tree& tree, xmlParserCtxtPtr context, std::size_t maxBytes);
    /// The outcome of the document that was parsed since Start; on a fault the tree is empty.
    ParseError Finish();
    /// Whether a fault was met: what follows it can change nothing any more.
    [[nodiscard]] bool Failed() const { return m_error.fault != Fault::None; }

private:
    static TreeBuilder& From(void* context);
    static void OnStartElement(void* context, const xmlChar* localName, const xmlChar* prefix,
                               const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                               int attributeCount, int defaultedCount, const xmlChar** attributes);
    static void OnEndElement(void* context, const xmlChar* localName, const xmlChar* prefix,
                             const xmlChar* uri);
    static void OnStartDocument(void* context);
    static void OnCharacters(void* context, const xmlChar* text, int length);
    static void OnCData(void* context, const xmlChar* text, int length);
    static void OnComment(void* context, const xmlChar* text);
    static void OnInstruction(void* context, const xmlChar* target, const xmlChar* data);
    static void OnDocumentType(void* context, const xmlChar* name, const xmlChar* publicId,
                               const xmlChar* systemId);
    static void OnError(void* context, xmlErrorPtr error);

    /// Runs one event; stops the parser when out of memory or budget, because no
    /// exception may cross libxml2's frames.
    template <class Event>
    void Guard(Event&& event);
    void Append(Node& node);
    /// Begins a text or goes on with it: most come in one piece, which is then copied once.
    void AddText(std::string_view piece);
    void FlushText();
    void AddAttributes(Node& element, int declarationCount, const xmlChar** declarations,
                       int attributeCount, const xmlChar** attributes);
    /// An element with that name; a card's files repeat few names many times.
    Node& NewElement(const xmlChar* localName, const xmlChar* prefix, const xmlChar* uri);
    std::string_view QualifiedName(const xmlChar* prefix, const xmlChar* localName);
    void Stop(std::uint32_t code, const char* reason, Fault fault) noexcept;

    /// An element met before, under the addresses of its name: libxml2 keeps each name once.
    struct KnownName {
        const xmlChar* localName = nullptr;
        const xmlChar* prefix = nullptr;
        const xmlChar* uri = nullptr;
        const Node* element = nullptr;
    };
    static constexpr std::size_t kKnownNames = 128;

    Tree* m_tree = nullptr;
    xmlParserCtxtPtr m_context = nullptr;
    std::size_t m_maxBytes = 0;
    Node* m_current = nullptr;
    std::array<KnownName, kKnownNames> m_known; ///< by the address of the local name
    Node* m_run = nullptr;                      ///< the text that may still go on
    std::string m_text;                         ///< all of it, once it has come in several pieces
    std::string m_name;
    std::string m_value;
    std::string m_uri;
    ParseError m_error;
};

} // namespace nqp2::dom
