// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/document_walk.h"

#include "NQP2ParserU/XmlLimits.h"
#include "platform/file_system.h"
#include "xml/dom/quick_parser.h"
#include "xml/dom/quick_tokenizer.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace nqp2::dom {
namespace {

/// A buffer beyond this is given back after its document.
constexpr std::size_t kKeptBuffer = std::size_t{256} * 1024;

/// Passes on what a tokenizer meets.
class EventSink {
public:
    explicit EventSink(DocumentEvents& events) : m_events(events) {}

    static void Declaration(std::string_view /*text*/) {}
    bool Open(const quick::Name& name, std::string_view /*uri*/,
              std::span<const quick::Attribute> attributes) {
        m_open.push_back(name.text);
        m_events.Open(name.Base());
        for (const quick::Attribute& each : attributes) {
            if (!each.name.IsDeclaration()) {
                m_events.Attribute(each.name.Base(), each.value);
            }
        }
        return true;
    }
    void Close() {
        m_open.pop_back();
        m_events.Close();
    }
    [[nodiscard]] std::string_view OpenName() const { return m_open.back(); }
    bool Characters(NodeType /*type*/, std::string_view text) {
        m_events.Characters(text);
        return true;
    }
    static bool Comment(std::string_view /*text*/) { return true; }
    static std::size_t Leap(const char* /*at*/, int& /*depth*/) { return 0; }

private:
    DocumentEvents& m_events;
    std::vector<std::string_view> m_open; ///< names of the elements that are open
};

void TellAttributes(const Node& element, DocumentEvents& events) {
    for (const Node* each = element.FirstAttribute(); each != nullptr; each = each->Next()) {
        if (!IsDeclaration(*each)) {
            events.Attribute(BaseName(*each), each->Content());
        }
    }
}

void Tell(const Node& node, DocumentEvents& events) {
    if (node.type == NodeType::Element) {
        events.Open(BaseName(node));
        TellAttributes(node, events);
    } else if (node.type == NodeType::Text || node.type == NodeType::CData) {
        events.Characters(node.Content());
    }
}

/// Without recursion: no tree is too deep for it.
void TellAll(const Node& document, DocumentEvents& events) {
    const Node* at = document.FirstChild();
    while (at != nullptr) {
        Tell(*at, events);
        if (at->FirstChild() != nullptr) {
            at = at->FirstChild();
            continue;
        }
        while (at != &document) {
            if (at->type == NodeType::Element) {
                events.Close();
            }
            if (at->Next() != nullptr) {
                break;
            }
            at = at->parent;
        }
        at = at == &document ? nullptr : at->Next();
    }
}

} // namespace

bool TellQuickly(std::string& bytes, DocumentEvents& events) {
    events.Begin(bytes.size());
    EventSink sink(events);
    return quick::Tokenizer(sink, bytes.data(), bytes.size()).Document();
}

void TellTree(const Document& document, std::uint64_t bytes, DocumentEvents& events) {
    events.Begin(bytes);
    TellAll(*document.DocumentNode(), events);
}

ParseError DocumentWalker::Walk(const std::string& path, DocumentEvents& events) {
    const std::uint64_t limit =
        std::min<std::uint64_t>(nqp2::MaxXmlFileSize(), kLargestQuickDocument);
    const bool isTold =
        platform::Files().Read(path, limit, m_bytes) && TellQuickly(m_bytes, events);
    if (m_bytes.capacity() > kKeptBuffer) {
        std::exchange(m_bytes, {});
    }
    return isTold ? ParseError() : WalkTree(path, events);
}

/// Tells as well what is wrong with a file that cannot be read.
ParseError DocumentWalker::WalkTree(const std::string& path, DocumentEvents& events) {
    platform::FileInfo info;
    if (!m_document.LoadFile(path) || !platform::Files().Stat(path, info)) {
        return m_document.LastError();
    }
    TellTree(m_document, info.size, events);
    m_document.Clear();
    return {};
}

} // namespace nqp2::dom
