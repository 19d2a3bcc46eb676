// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/parser.h"

#include "NQP2ParserU/XmlLimits.h"
#include "platform/file_system.h"
#include "xml/dom/libxml.h"
#include "xml/dom/quick_parser.h"
#include "xml/dom/tree_builder.h"

#include <libxml/dict.h>
#include <libxml/parser.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <new>

namespace nqp2 {
namespace {

std::atomic<std::uint64_t> maxXmlFileSize{std::uint64_t{32} * 1024 * 1024};

} // namespace

void SetMaxXmlFileSize(std::uint64_t bytes) noexcept {
    maxXmlFileSize = bytes;
}

std::uint64_t MaxXmlFileSize() noexcept {
    return maxXmlFileSize;
}

} // namespace nqp2

namespace nqp2::dom {
namespace {

// No network, no entities, no external anything; errors come through the structured handler.
constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

// The context's name table outlives a document; a card of files with ever new names must not let
// it grow without end.
constexpr std::size_t kMaxNameTableBytes = std::size_t{1} * 1024 * 1024;

// libxml2 compares each attribute of a tag with each other and looks every prefix up in a list:
// a tag of a million attributes would keep it busy for hours. Its tables hold five and two slots
// an entry; no metadata comes near these figures.
constexpr int kMaxAttributeSlots = 5 * 1500;
constexpr int kMaxNamespaceSlots = 2 * 500;

// When the library is loaded, and not at the first document: what libxml2 cannot make then for want
// of memory is missing for the rest of the process.
const bool kLibxmlIsReady = [] {
    xmlInitParser();
    return true;
}();

} // namespace

// Metadata take three to six times their size as a tree, a flood of small elements far more. What
// is looked for in a tree takes memory beside it, up to half as much again.
std::size_t MaxTreeBytes(std::uint64_t documentBytes) noexcept {
    constexpr std::uint64_t kMebibyte = std::uint64_t{1024} * 1024;
    constexpr std::uint64_t kAnyDocument = 8 * kMebibyte;
    constexpr std::uint64_t kTimes = 7;
    constexpr std::uint64_t kTimesTheLimit = 4; // so much for documents of the largest size
    constexpr std::uint64_t kNoLimit = std::numeric_limits<std::size_t>::max() / kTimes - kMebibyte;
    const std::uint64_t limit = std::min(MaxXmlFileSize(), kNoLimit / kTimesTheLimit);
    return static_cast<std::size_t>(
        std::min(kTimesTheLimit * limit + 2 * kMebibyte,
                 kTimes * std::min(documentBytes, kNoLimit / kTimes) + kAnyDocument));
}

/// Where the bytes of one document come from.
class Parser::Source {
public:
    virtual ~Source() = default;
    /// Bytes of the document, as far as they are known beforehand.
    [[nodiscard]] virtual std::uint64_t Size() const = 0;
    /// Up to `capacity` bytes, 0 at the end. A fault ends the parse.
    virtual std::size_t Read(char* buffer, std::size_t capacity, ParseError& fault) = 0;
};

namespace {

class MemorySource final : public Parser::Source {
public:
    explicit MemorySource(std::string_view bytes) : m_left(bytes) {}
    [[nodiscard]] std::uint64_t Size() const override { return m_left.size(); }
    std::size_t Read(char* buffer, std::size_t capacity, ParseError& /*fault*/) override {
        const std::size_t count = m_left.copy(buffer, capacity);
        m_left.remove_prefix(count);
        return count;
    }

private:
    std::string_view m_left;
};

class FileSource final : public Parser::Source {
public:
    FileSource(platform::FileReader& reader, std::uint64_t limit)
        : m_reader(reader), m_left(limit) {}
    [[nodiscard]] std::uint64_t Size() const override { return m_reader.Size(); }
    std::size_t Read(char* buffer, std::size_t capacity, ParseError& fault) override {
        std::size_t count = 0;
        const platform::IoStatus status = m_reader.Read(buffer, capacity, count);
        if (!status) {
            fault = {kErrorUnreadable, status.reason, 0, 0, Fault::Unreadable};
            return 0;
        }
        if (count > m_left) {
            fault = {kErrorTooLarge, kFileTooLarge, 0, 0, Fault::TooLarge};
            return 0;
        }
        m_left -= count;
        return count;
    }

private:
    platform::FileReader& m_reader;
    std::uint64_t m_left;
};

} // namespace

struct Parser::Context {
    xmlParserCtxtPtr libxml = nullptr;
    TreeBuilder builder;
    Source* source = nullptr;
    ParseError sourceFault;

    Context() { Renew(); }
    ~Context() { xmlFreeParserCtxt(libxml); }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    void Renew() {
        const QuietLibxml quiet;
        const xmlParserCtxtPtr made = xmlNewParserCtxt();
        if (made == nullptr) {
            throw std::bad_alloc();
        }
        if (libxml != nullptr) {
            xmlFreeParserCtxt(libxml);
        }
        libxml = made;
    }

    [[nodiscard]] bool Overgrown() const {
        return libxml->maxatts > kMaxAttributeSlots || libxml->nsNr > kMaxNamespaceSlots;
    }

    int Read(char* buffer, int capacity) {
        if (Overgrown()) {
            sourceFault = {kErrorTooLarge, "an element has too many attributes", 0, 0,
                           Fault::TooLarge};
        }
        if (sourceFault.fault != Fault::None) {
            return -1;
        }
        // libxml2 reads on after a fault and would report millions more of them.
        if (builder.Failed()) {
            return 0;
        }
        const std::size_t count =
            source->Read(buffer, static_cast<std::size_t>(capacity), sourceFault);
        return sourceFault.fault != Fault::None ? -1 : static_cast<int>(count);
    }

    static int OnRead(void* context, char* buffer, int capacity) {
        return static_cast<Context*>(context)->Read(buffer, capacity);
    }

    static int OnClose(void* /*context*/) { return 0; }
};

// The context costs as much as a small document, which mostly can do without it.
Parser::Parser() = default;

Parser::~Parser() = default;

ParseError Parser::Parse(Source& source, const char* encoding, Tree& tree) {
    static_cast<void>(kLibxmlIsReady);
    if (m_context == nullptr) {
        m_context = std::make_unique<Context>();
    }
    Context& context = *m_context;
    if (context.Overgrown() || xmlDictGetUsage(context.libxml->dict) > kMaxNameTableBytes) {
        context.Renew();
    }
    context.source = &source;
    context.sourceFault = {};
    context.builder.Start(tree, context.libxml, MaxTreeBytes(source.Size()));
    const QuietLibxml quiet;
    xmlCtxtReadIO(context.libxml, Context::OnRead, Context::OnClose, &context, nullptr, encoding,
                  kOptions);
    ParseError error = context.builder.Finish();
    if (quiet.IsOutOfMemory()) {
        tree.Clear();
        return OutOfMemory();
    }
    if (context.sourceFault.fault != Fault::None) {
        tree.Clear();
        return context.sourceFault;
    }
    return error;
}

ParseError Parser::ParseBytes(std::string_view bytes, Tree& tree) {
    try {
        if (ParseQuickly(bytes, tree, MaxTreeBytes(bytes.size()))) {
            return {};
        }
    } catch (const std::bad_alloc&) {
        tree.Clear();
        return OutOfMemory();
    }
    return ParseWithLibxml(bytes, tree);
}

ParseError Parser::ParseWithLibxml(std::string_view bytes, Tree& tree) {
    MemorySource source(bytes);
    return Parse(source, nullptr, tree);
}

ParseError Parser::ParseText(std::string_view utf8, Tree& tree) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::string_view blanks =
        utf8.substr(0, std::min(utf8.find_first_not_of(kBlanks), utf8.size()));
    MemorySource source(utf8.substr(blanks.size()));
    ParseError error = Parse(source, TreeBuilder::kKnownUtf8, tree);
    if (error.line > 0) {
        error.line += static_cast<int>(std::count(blanks.begin(), blanks.end(), '\n'));
    }
    return error;
}

ParseError Parser::ParseStream(platform::FileReader& reader, std::uint64_t limit, Tree& tree) {
    FileSource source(reader, limit);
    return Parse(source, nullptr, tree);
}

} // namespace nqp2::dom
