// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/tree_builder.h"

#include "xml/dom/libxml.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <exception>
#include <new>
#include <utility>

namespace nqp2::dom {
namespace {

// One run of characters, as long as libxml2 lets comments and values be; the run is in memory twice
// for a moment.
constexpr std::size_t kMaxRun = 10'000'000;

// The buffer for runs is kept between documents unless one made it unusually large.
constexpr std::size_t kKeptRun = std::size_t{64} * 1024;

/// A value or namespace as the document means it: while entities stay as they are, libxml2 hands
/// every "&" on as a reference, for a tree that would resolve it later.
std::string_view Resolved(std::string_view value, std::string& scratch) {
    constexpr std::string_view kReference = "&#38;";
    if (value.find('&') == std::string_view::npos) {
        return value;
    }
    scratch.clear();
    std::size_t start = 0;
    for (std::size_t found = 0; (found = value.find(kReference, start)) != std::string_view::npos;
         start = found + kReference.size()) {
        scratch.append(value.substr(start, found - start)).append(1, '&');
    }
    return scratch.append(value.substr(start));
}

/// What the parser has read and not yet taken.
std::string_view Ahead(const xmlParserCtxt& context) {
    return context.input != nullptr ? View(context.input->cur, context.input->end)
                                    : std::string_view();
}

/// A namespace name may be any text: libxml2 reports one that is no URI as an error, and takes it.
bool EndsTheLoad(const xmlError& error) {
    return error.level == XML_ERR_FATAL ||
           (error.level == XML_ERR_ERROR && error.domain == XML_FROM_NAMESPACE &&
            error.code != XML_WAR_NS_URI);
}

/// The data of the XML declaration as it is written again: documents are saved as UTF-8.
std::string DeclarationData(const xmlParserCtxt& context) {
    std::string data = "version=\"";
    data += context.version != nullptr ? View(context.version) : std::string_view("1.0");
    data += '"';
    const bool declared =
        context.encoding != nullptr && View(context.encoding) != TreeBuilder::kKnownUtf8;
    if (declared || context.input->encoding != nullptr) {
        data += " encoding=\"UTF-8\"";
    }
    if (context.standalone == 0 || context.standalone == 1) {
        data += context.standalone == 1 ? " standalone=\"yes\"" : " standalone=\"no\"";
    }
    return data;
}

} // namespace

void TreeBuilder::Start(Tree& tree, xmlParserCtxtPtr context, std::size_t maxBytes) {
    tree.Clear();
    m_tree = &tree;
    m_context = context;
    m_maxBytes = maxBytes;
    m_current = &tree.DocumentNode();
    m_known.fill({});
    m_run = nullptr;
    m_text.clear();
    if (m_text.capacity() > kKeptRun) {
        m_text.shrink_to_fit();
    }
    m_error = {};

    xmlSAXHandler& sax = *context->sax;
    std::memset(&sax, 0, sizeof sax);
    sax.initialized = XML_SAX2_MAGIC;
    sax.startDocument = OnStartDocument;
    sax.startElementNs = OnStartElement;
    sax.endElementNs = OnEndElement;
    sax.characters = OnCharacters;
    sax.ignorableWhitespace = OnCharacters;
    sax.cdataBlock = OnCData;
    sax.comment = OnComment;
    sax.processingInstruction = OnInstruction;
    sax.internalSubset = OnDocumentType;
    sax.serror = OnError;
    context->userData = context;
    context->_private = this;
}

ParseError TreeBuilder::Finish() {
    // Faults of namespaces are in m_error alone: libxml2's own flag for them counts too much.
    const bool sound =
        m_error.fault == Fault::None && m_context->wellFormed != 0 && m_tree->Root() != nullptr;
    if (!sound && m_error.fault == Fault::None) {
        m_error = {kErrorMissingRoot, "the document has no content", 1, 1, Fault::NotWellFormed};
    }
    if (!sound) {
        m_tree->Clear();
    }
    m_context->_private = nullptr;
    return std::move(m_error);
}

TreeBuilder& TreeBuilder::From(void* context) {
    return *static_cast<TreeBuilder*>(static_cast<xmlParserCtxtPtr>(context)->_private);
}

template <class Event>
void TreeBuilder::Guard(Event&& event) {
    if (m_error.fault != Fault::None) {
        return;
    }
    try {
        event();
        if (m_tree->BytesUsed() + m_text.size() > m_maxBytes) {
            Stop(kErrorTooLarge, "the document needs more memory than metadata may",
                 Fault::TooLarge);
        }
    } catch (const std::bad_alloc&) {
        m_error = OutOfMemory();
        xmlStopParser(m_context);
    } catch (const std::exception& error) {
        Stop(kErrorTooLarge, error.what(), Fault::TooLarge);
    }
}

// No exception may leave it either: short reasons need no memory.
void TreeBuilder::Stop(std::uint32_t code, const char* reason, Fault fault) noexcept {
    try {
        m_error = {code, reason, 0, 0, fault};
    } catch (const std::bad_alloc&) {
        m_error = OutOfMemory();
    }
    m_error.line = xmlSAX2GetLineNumber(m_context);
    m_error.linepos = xmlSAX2GetColumnNumber(m_context);
    xmlStopParser(m_context);
}

void TreeBuilder::OnStartDocument(void* context) {
    TreeBuilder& builder = From(context);
    builder.Guard([&] {
        constexpr int kNoDeclaration = -1;
        if (builder.m_context->standalone != kNoDeclaration) {
            builder.Append(
                builder.m_tree->CreateInstruction("xml", DeclarationData(*builder.m_context)));
        }
    });
}

void TreeBuilder::OnStartElement(void* context, const xmlChar* localName, const xmlChar* prefix,
                                 const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                                 int attributeCount, int /*defaultedCount*/,
                                 const xmlChar** attributes) {
    TreeBuilder& builder = From(context);
    builder.Guard([&] {
        builder.FlushText();
        Node& element = builder.NewElement(localName, prefix, uri);
        builder.Append(element);
        if (namespaceCount + attributeCount > 0) {
            builder.AddAttributes(element, namespaceCount, namespaces, attributeCount, attributes);
        }
        builder.m_current = &element;
    });
}

void TreeBuilder::OnEndElement(void* context, const xmlChar* /*localName*/,
                               const xmlChar* /*prefix*/, const xmlChar* /*uri*/) {
    TreeBuilder& builder = From(context);
    builder.Guard([&] {
        builder.FlushText();
        builder.m_current = builder.m_current->parent;
    });
}

void TreeBuilder::OnCharacters(void* context, const xmlChar* text, int length) {
    TreeBuilder& builder = From(context);
    builder.Guard([&] {
        const std::string_view piece = View(text, text + length);
        if (std::max(piece.size(), builder.m_text.size()) > kMaxRun) {
            builder.Stop(kErrorTooLarge, "a text is longer than metadata may be", Fault::TooLarge);
        } else {
            builder.AddText(piece);
        }
    });
}

void TreeBuilder::OnCData(void* context, const xmlChar* text, int length) {
    TreeBuilder& builder = From(context);
    builder.Guard([&] {
        builder.FlushText();
        builder.Append(
            builder.m_tree->CreateCharacters(NodeType::CData, View(text, text + length)));
    });
}

void TreeBuilder::OnComment(void* context, const xmlChar* text) {
    TreeBuilder& builder = From(context);
    builder.Guard([&] {
        builder.FlushText();
        builder.Append(builder.m_tree->CreateCharacters(NodeType::Comment, View(text)));
    });
}

void TreeBuilder::OnInstruction(void* context, const xmlChar* target, const xmlChar* data) {
    TreeBuilder& builder = From(context);
    builder.Guard([&] {
        builder.FlushText();
        builder.Append(builder.m_tree->CreateInstruction(View(target), View(data)));
    });
}

void TreeBuilder::OnDocumentType(void* context, const xmlChar* /*name*/,
                                 const xmlChar* /*publicId*/, const xmlChar* /*systemId*/) {
    TreeBuilder& builder = From(context);
    builder.Guard([&] {
        builder.Stop(kErrorDocumentType, "the file carries a document type declaration",
                     Fault::DocumentType);
    });
}

void TreeBuilder::OnError(void* context, xmlErrorPtr error) {
    TreeBuilder& builder = From(context);
    if (!EndsTheLoad(*error)) {
        return;
    }
    builder.Guard([&] {
        if (error->code == XML_ERR_NO_MEMORY) {
            throw std::bad_alloc();
        }
        builder.m_error = NotWellFormed(*error, Ahead(*builder.m_context));
    });
}

void TreeBuilder::Append(Node& node) {
    if (m_current->type == NodeType::Element) {
        m_tree->Append(*m_current, node);
    } else {
        m_tree->Insert(*m_current, node, nullptr);
    }
}

void TreeBuilder::AddText(std::string_view piece) {
    if (m_run == nullptr) {
        m_run = &m_tree->CreateCharacters(NodeType::Text, piece);
        Append(*m_run);
        return;
    }
    if (m_text.empty()) {
        m_text = m_run->Content();
    }
    m_text += piece;
}

void TreeBuilder::FlushText() {
    if (!m_text.empty()) {
        m_tree->SetText(*m_run, m_text);
        m_text.clear();
    }
    m_run = nullptr;
}

void TreeBuilder::AddAttributes(Node& element, int declarationCount, const xmlChar** declarations,
                                int attributeCount, const xmlChar** attributes) {
    static const xmlChar* const kDeclaration = BAD_CAST "xmlns";
    for (int i = 0; i < declarationCount; ++i) {
        const xmlChar* const prefix = declarations[2 * i];
        const std::string_view name = prefix == nullptr ? QualifiedName(nullptr, kDeclaration)
                                                        : QualifiedName(kDeclaration, prefix);
        m_tree->AppendAttribute(element, name, Resolved(View(declarations[2 * i + 1]), m_value),
                                {});
    }
    // Per attribute: local name, prefix, namespace, start and end of the value.
    constexpr int kFields = 5;
    for (int i = 0; i < attributeCount; ++i, attributes += kFields) {
        m_tree->AppendAttribute(element, QualifiedName(attributes[1], attributes[0]),
                                Resolved(View(attributes[3], attributes[4]), m_value),
                                Resolved(View(attributes[2]), m_uri));
    }
}

Node& TreeBuilder::NewElement(const xmlChar* localName, const xmlChar* prefix, const xmlChar* uri) {
    const auto place = reinterpret_cast<std::uintptr_t>(localName) / sizeof(void*);
    KnownName& known = m_known[place % kKnownNames];
    if (known.localName == localName && known.prefix == prefix && known.uri == uri) {
        return m_tree->CreateNamedLike(*known.element);
    }
    Node& element =
        m_tree->CreateNewlyNamed(QualifiedName(prefix, localName), Resolved(View(uri), m_uri));
    known = {localName, prefix, uri, &element};
    return element;
}

std::string_view TreeBuilder::QualifiedName(const xmlChar* prefix, const xmlChar* localName) {
    if (prefix == nullptr) {
        return View(localName);
    }
    m_name.assign(View(prefix)).append(1, ':').append(View(localName));
    return m_name;
}

} // namespace nqp2::dom
