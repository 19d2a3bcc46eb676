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

/// Larger documents leave nothing behind: what one of this size can is within bounds.
constexpr std::size_t kLargestLearned = std::size_t{48} * 1024;

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

/// Passes on what a tokenizer meets, and notes it where it is learned.
class QuickTeller::Sink {
public:
    Sink(KnownWay& way, DocumentEvents& events) : m_way(way), m_events(events) {}

    static void Declaration(std::string_view /*text*/) {}

    bool Open(const quick::Name& name, std::string_view /*uri*/,
              std::span<const quick::Attribute> attributes) {
        if (!m_way.Enter(name, attributes, Declares(attributes))) {
            return false;
        }
        const std::string_view base = name.Base();
        m_events.Open(base);
        if (m_way.IsLearning()) {
            const std::string_view kept = m_way.At().name;
            NoteTag({Mark::Kind::Open, nullptr, kept.substr(kept.size() - base.size()), {}});
        }
        for (const quick::Attribute& each : attributes) {
            if (!each.name.IsDeclaration()) {
                m_events.Attribute(each.name.Base(), each.value);
                if (m_way.IsLearning()) {
                    Note(Mark::Kind::Attribute, each.name.Base(), each.value);
                }
            }
        }
        return true;
    }
    void Close() {
        m_way.Leave();
        m_events.Close();
        if (m_way.IsLearning()) {
            NoteTag({Mark::Kind::Close, nullptr, {}, {}});
        }
    }
    [[nodiscard]] std::string_view OpenName() const { return m_way.At().name; }

    bool Characters(NodeType type, std::string_view text) {
        if (type == NodeType::Text && !quick::IsBlank(text)) { // it begins where a step does
            m_way.MeetText(text);
        }
        m_events.Characters(text);
        if (m_way.IsLearning()) {
            Note(Mark::Kind::Text, {}, text);
        }
        return true;
    }
    static bool Comment(std::string_view /*text*/) { return true; }

    std::size_t Leap(const char* at, int& depth) {
        const Stretch* const known = m_way.Find(at);
        if (known == nullptr) {
            return 0;
        }
        m_events.Known(known->marks);
        return m_way.Follow(*known, depth);
    }

private:
    void Note(Mark::Kind kind, std::string_view name, std::string_view text) {
        m_way.Note({kind, nullptr, m_way.Keep(name), m_way.Keep(text)});
    }

    /// Blanks between two tags that are not those of one element need not be told.
    void NoteTag(const Mark& tag) {
        std::vector<Mark>& marks = m_way.Marks();
        if (marks.size() > 1 && marks.back().kind == Mark::Kind::Text &&
            quick::IsBlank(marks.back().text)) {
            const Mark::Kind before = marks[marks.size() - 2].kind;
            const bool isBehindElement = before == Mark::Kind::Close;
            if (isBehindElement || (before != Mark::Kind::Text && tag.kind == Mark::Kind::Open)) {
                marks.pop_back();
            }
        }
        marks.push_back(tag);
    }

    KnownWay& m_way;
    DocumentEvents& m_events;
};

bool QuickTeller::Tell(std::string_view bytes, DocumentEvents& events) {
    events.Begin(bytes.size());
    m_text = bytes;
    m_way.Begin(bytes, m_text.data(), bytes.size() <= kLargestLearned);
    Sink sink(m_way, events);
    const bool isTold = quick::Tokenizer(sink, m_text.data(), bytes.size()).Document();
    m_way.End(isTold);
    if (m_text.capacity() > kKeptBuffer) {
        std::exchange(m_text, {});
    }
    return isTold;
}

void TellTree(const Document& document, std::uint64_t bytes, DocumentEvents& events) {
    events.Begin(bytes);
    TellAll(*document.DocumentNode(), events);
}

ParseError DocumentWalker::Walk(const std::string& path, DocumentEvents& events) {
    const std::uint64_t limit =
        std::min<std::uint64_t>(nqp2::MaxXmlFileSize(), kLargestQuickDocument);
    const bool isTold =
        platform::Files().Read(path, limit, m_bytes) && m_teller.Tell(m_bytes, events);
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
