// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/event_reader.h"

#include "xml/dom/libxml.h"

#include <libxml/dict.h>
#include <libxml/parser.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <utility>
#include <vector>

namespace nqp2::dom {
namespace {

// Entities are replaced, so that a value's own "&" comes as one; others than XML's own cannot be
// declared without a document type.
constexpr int kEventOptions =
    XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

// libxml2 keeps what it was given until it has a whole tag, so pieces are small.
constexpr std::size_t kPiece = std::size_t{16} * 1024;

/// Namespaces are looked up in a list, for each prefix anew.
constexpr int kMostNamespaceSlots = 2 * 100;

} // namespace

struct EventReader::State {
    State(EventHandler& toTell, const EventLimits& bounds) : handler(toTell), limits(bounds) {
        const QuietLibxml quiet;
        xmlSAXHandler sax;
        std::memset(&sax, 0, sizeof sax);
        sax.initialized = XML_SAX2_MAGIC;
        sax.startElementNs = OnStart;
        sax.endElementNs = OnEnd;
        sax.characters = OnText;
        sax.ignorableWhitespace = OnText;
        sax.cdataBlock = OnText;
        sax.comment = [](void* context, const xmlChar* /*text*/) { From(context).isMoving = true; };
        sax.processingInstruction = [](void* context, const xmlChar* /*target*/,
                                       const xmlChar* /*data*/) { From(context).isMoving = true; };
        sax.internalSubset = OnDocumentType;
        sax.serror = OnError;
        parser = xmlCreatePushParserCtxt(&sax, this, nullptr, 0, nullptr);
        if (parser == nullptr) {
            throw std::bad_alloc();
        }
        xmlCtxtUseOptions(parser, kEventOptions);
        parser->linenumbers = 1;
    }
    ~State() { xmlFreeParserCtxt(parser); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    static State& From(void* context) { return *static_cast<State*>(context); }

    /// Runs one event; no exception may cross libxml2's frames.
    void Guard(const auto& event) {
        isMoving = true;
        if (error.fault != Fault::None) {
            return;
        }
        try {
            event();
        } catch (...) {
            thrown = std::current_exception();
            error.fault = Fault::OutOfMemory;
            xmlStopParser(parser);
        }
    }

    void Stop(std::uint32_t code, const char* reason, Fault fault) {
        if (error.fault == Fault::None) {
            error = {code, reason, Line(), xmlSAX2GetColumnNumber(parser), fault};
        }
        xmlStopParser(parser);
    }

    [[nodiscard]] int Line() const { return xmlSAX2GetLineNumber(parser); }

    static void OnStart(void* context, const xmlChar* localName, const xmlChar* /*prefix*/,
                        const xmlChar* uri, int /*namespaceCount*/, const xmlChar** /*namespaces*/,
                        int attributeCount, int /*defaultedCount*/, const xmlChar** attributes) {
        State& self = From(context);
        self.Guard([&] { self.Start(View(localName), View(uri), attributeCount, attributes); });
    }

    void Start(std::string_view name, std::string_view uri, int count, const xmlChar** attributes) {
        if (++depth > limits.depth) {
            Stop(kErrorTooLarge, "elements are nested too deeply", Fault::TooLarge);
            return;
        }
        if (count > limits.attributes || parser->nsNr > kMostNamespaceSlots) {
            Stop(kErrorTooLarge, "an element has too many attributes", Fault::TooLarge);
            return;
        }
        // Per attribute: local name, prefix, namespace, start and end of the value.
        constexpr int kFields = 5;
        values.clear();
        for (int i = 0; i < count; ++i, attributes += kFields) {
            values.push_back(
                {View(attributes[0]), View(attributes[2]), View(attributes[3], attributes[4])});
        }
        handler.OnStart({name, uri, values, Line()});
    }

    static void OnEnd(void* context, const xmlChar* /*localName*/, const xmlChar* /*prefix*/,
                      const xmlChar* /*uri*/) {
        State& self = From(context);
        self.Guard([&] {
            --self.depth;
            self.handler.OnEnd(self.Line());
        });
    }

    static void OnText(void* context, const xmlChar* text, int length) {
        State& self = From(context);
        self.Guard([&] { self.handler.OnText(View(text, text + length), self.Line()); });
    }

    static void OnDocumentType(void* context, const xmlChar* /*name*/, const xmlChar* /*publicId*/,
                               const xmlChar* /*systemId*/) {
        State& self = From(context);
        self.Guard([&] {
            self.Stop(kErrorDocumentType, "the file carries a document type declaration",
                      Fault::DocumentType);
        });
    }

    static void OnError(void* context, xmlErrorPtr error) {
        State& self = From(context);
        const bool counts = error->level == XML_ERR_FATAL ||
                            (error->level == XML_ERR_ERROR && error->domain == XML_FROM_NAMESPACE &&
                             error->code != XML_WAR_NS_URI);
        if (counts) {
            self.Guard([&] {
                if (error->code == XML_ERR_NO_MEMORY) {
                    throw std::bad_alloc();
                }
                self.error = NotWellFormed(*error, {});
            });
        }
    }

    void AddPiece(std::string_view piece, bool isEnd) {
        isMoving = false;
        xmlParseChunk(parser, piece.data(), static_cast<int>(piece.size()), isEnd ? 1 : 0);
        waiting = isMoving ? 0 : waiting + piece.size();
        if (waiting > limits.markup) {
            Stop(kErrorTooLarge, "a tag, comment or instruction is too long", Fault::TooLarge);
        }
        if (xmlDictGetUsage(parser->dict) > limits.names) {
            Stop(kErrorTooLarge, "there are too many different names", Fault::TooLarge);
        }
    }

    /// Feeds the parser, and throws what a handler has thrown.
    void Parse(std::string_view bytes, bool isEnd) {
        const QuietLibxml quiet;
        do {
            const std::string_view piece = bytes.substr(0, kPiece);
            bytes.remove_prefix(piece.size());
            AddPiece(piece, isEnd && bytes.empty());
        } while (!bytes.empty() && error.fault == Fault::None);
        if (thrown) {
            std::rethrow_exception(std::exchange(thrown, nullptr));
        }
        if (quiet.IsOutOfMemory()) {
            throw std::bad_alloc();
        }
    }

    EventHandler& handler;
    EventLimits limits;
    xmlParserCtxtPtr parser = nullptr;
    std::vector<EventAttribute> values;
    ParseError error;
    std::exception_ptr thrown;
    std::size_t waiting = 0; ///< bytes since the last event
    int depth = 0;
    bool isMoving = false;
};

EventReader::EventReader(EventHandler& handler, const EventLimits& limits)
    : m_state(std::make_unique<State>(handler, limits)) {}

EventReader::~EventReader() = default;

bool EventReader::Add(std::string_view bytes) {
    if (m_state->error.fault == Fault::None && !bytes.empty()) {
        m_state->Parse(bytes, false);
    }
    return m_state->error.fault == Fault::None;
}

const ParseError& EventReader::Finish() {
    if (m_state->error.fault == Fault::None) {
        m_state->Parse({}, true);
    }
    return m_state->error;
}

} // namespace nqp2::dom
