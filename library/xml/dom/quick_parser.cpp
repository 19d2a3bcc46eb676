// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/quick_parser.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nqp2::dom {
namespace quick {
namespace {

// Below the limits of libxml2, which would refuse what is beyond its own.
constexpr std::size_t kLargestDocument = std::size_t{256} * 1024;
constexpr std::size_t kLongestName = 1000;
constexpr std::size_t kMaxAttributes = 24;
constexpr std::size_t kMaxBindings = 24;
constexpr int kMaxDepth = 200;

// What a byte may be part of. The byte 0, which ends the text, is part of nothing.
constexpr std::uint8_t kNameStart = 1;
constexpr std::uint8_t kNameRest = 2;
constexpr std::uint8_t kPlainText = 4;  ///< goes into a text, comment or CDATA section as it is
constexpr std::uint8_t kPlainValue = 8; ///< goes into an attribute's value as it is
constexpr std::uint8_t kBlank = 16;

constexpr std::array<std::uint8_t, 256> kClasses = [] {
    std::array<std::uint8_t, 256> classes{};
    const auto add = [&](std::string_view bytes, std::uint8_t what) {
        for (const char ch : bytes) {
            classes[static_cast<unsigned char>(ch)] |= what;
        }
    };
    for (std::size_t ch = ' '; ch < 0x80; ++ch) {
        classes[ch] = kPlainText | kPlainValue;
    }
    for (const char special : {'<', '&'}) {
        classes[static_cast<unsigned char>(special)] = 0;
    }
    classes['"'] = kPlainText;
    classes['\''] = kPlainText;
    classes[']'] = kPlainValue;
    add("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_", kNameStart | kNameRest);
    add("0123456789-.", kNameRest);
    add("\t\n", kPlainText);
    add(" \t\n\r", kBlank);
    return classes;
}();

bool Is(char ch, std::uint8_t what) {
    return (kClasses[static_cast<unsigned char>(ch)] & what) != 0;
}

/// The bytes of the character beyond ASCII at `at`, 0 where there is none that XML allows. Reads
/// no byte behind one that does not go on a character.
std::size_t LengthOfCharacter(const char* at) {
    const auto byte = [at](int i) { return static_cast<unsigned char>(at[i]); };
    const auto goesOn = [&](int i) { return (byte(i) & 0xC0U) == 0x80U; };
    const unsigned char first = byte(0);
    if (first < 0xC2 || first > 0xF4 || !goesOn(1)) {
        return 0;
    }
    if (first < 0xE0) {
        return 2;
    }
    if (!goesOn(2)) {
        return 0;
    }
    if (first < 0xF0) {
        const bool isOverlong = first == 0xE0 && byte(1) < 0xA0;
        const bool isSurrogate = first == 0xED && byte(1) > 0x9F;
        const bool isNoCharacter = first == 0xEF && byte(1) == 0xBF && byte(2) > 0xBD;
        return isOverlong || isSurrogate || isNoCharacter ? 0 : 3;
    }
    const bool isOutOfRange =
        (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F);
    return isOutOfRange || !goesOn(3) ? 0 : 4;
}

/// What is read is written back without what abbreviates something (references, line ends),
/// in the same place, which is never shorter than the result.
class Rewriter {
public:
    explicit Rewriter(char* begin) : m_begin(begin), m_end(begin), m_run(begin) {}

    /// Ends the run of bytes that stay as they are at `at`; `ch` replaces what is up to `next`.
    void Replace(const char* at, char ch, const char* next) {
        KeepRunUpTo(at);
        *m_end++ = ch;
        m_run = next;
    }
    std::string_view Finish(const char* at) {
        KeepRunUpTo(at);
        return {m_begin, static_cast<std::size_t>(m_end - m_begin)};
    }

private:
    void KeepRunUpTo(const char* at) {
        const auto length = static_cast<std::size_t>(at - m_run);
        if (m_end != m_run) {
            std::memmove(m_end, m_run, length);
        }
        m_end += length;
    }

    char* m_begin;
    char* m_end;       ///< of what was written
    const char* m_run; ///< where what is not yet written begins
};

struct Name {
    std::string_view text;
    std::size_t prefixLength = 0;

    [[nodiscard]] std::string_view Prefix() const { return text.substr(0, prefixLength); }
    [[nodiscard]] std::string_view Base() const {
        return prefixLength == 0 ? text : text.substr(prefixLength + 1);
    }
    [[nodiscard]] bool IsDeclaration() const { return text == kXmlns || Prefix() == kXmlns; }
};

struct Attribute {
    Name name;
    std::string_view value;
    std::string_view uri;
};

/// Whether a namespace of that name follows no rule of its own.
bool IsUsualUri(std::string_view uri) {
    return !uri.empty() && uri.size() <= kLongestName &&
           uri != "http://www.w3.org/XML/1998/namespace" && uri != "http://www.w3.org/2000/xmlns/";
}

/// A prefix as an element that is open binds it; "" for the default namespace.
struct Binding {
    std::string_view prefix;
    std::string_view uri;
    int depth = 0;
};

/// Reads one document in the copy of it that the tree keeps. Each step returns false at what is
/// left to libxml2.
class Reading {
public:
    Reading(Tree& tree, char* text, std::size_t size)
        : m_tree(tree), m_at(text), m_end(text + size), m_current(&tree.DocumentNode()) {}

    bool Document() {
        constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
        Take(kByteOrderMark);
        if (*m_at != '<' || !Declaration()) {
            return false;
        }
        while (m_depth > 0 || m_at != m_end) {
            if (!Step()) {
                return false;
            }
            if (m_depth == 0) {
                SkipBlanks();
            }
        }
        return m_hasRoot;
    }

private:
    [[nodiscard]] std::string_view Rest() const {
        return {m_at, static_cast<std::size_t>(m_end - m_at)};
    }
    bool Take(std::string_view text) {
        const bool isThere = Rest().starts_with(text);
        m_at += isThere ? text.size() : 0;
        return isThere;
    }
    void SkipBlanks() {
        while (Is(*m_at, kBlank)) {
            ++m_at;
        }
    }

    bool Step() {
        if (*m_at != '<') {
            return m_depth > 0 && Text();
        }
        switch (m_at[1]) {
        case '/':
            return m_depth > 0 && EndTag();
        case '!':
            return Take("<!--") ? Comment() : m_depth > 0 && Take("<![CDATA[") && CDataSection();
        default:
            return StartTag();
        }
    }

    bool Declaration() {
        if (!Take("<?xml ")) {
            SkipBlanks();
            return true;
        }
        std::array<char, 64> data{};
        std::size_t length = 0;
        const auto keep = [&](std::string_view part) {
            length += part.copy(data.data() + length, data.size() - length);
        };
        if (!Take("version=\"1.0\"")) {
            return false;
        }
        keep("version=\"1.0\"");
        if (Take(" encoding=\"UTF-8\"") || Take(" encoding=\"utf-8\"")) {
            keep(" encoding=\"UTF-8\"");
        }
        for (const std::string_view standalone : {" standalone=\"no\"", " standalone=\"yes\""}) {
            if (Take(standalone)) {
                keep(standalone);
                break;
            }
        }
        SkipBlanks();
        if (!Take("?>")) {
            return false;
        }
        m_tree.Append(*m_current, m_tree.CreateInstruction("xml", {data.data(), length}));
        SkipBlanks();
        return true;
    }

    bool NamePart() {
        if (!Is(*m_at, kNameStart)) {
            return false;
        }
        do {
            ++m_at;
        } while (Is(*m_at, kNameRest));
        return true;
    }

    bool TakeName(Name& name) {
        const char* const start = m_at;
        if (!NamePart()) {
            return false;
        }
        name.prefixLength = 0;
        if (*m_at == ':') {
            name.prefixLength = static_cast<std::size_t>(m_at - start);
            ++m_at;
            if (!NamePart()) {
                return false;
            }
        }
        name.text = {start, static_cast<std::size_t>(m_at - start)};
        // Anything else that goes on a name is not ASCII, or a second prefix.
        return *m_at != ':' && static_cast<unsigned char>(*m_at) < 0x80 &&
               name.text.size() <= kLongestName;
    }

    bool Reference(Rewriter& out) {
        static constexpr struct {
            std::string_view text;
            char ch;
        } kReferences[] = {
            {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
        const char* const start = m_at;
        for (const auto& each : kReferences) {
            if (Take(each.text)) {
                out.Replace(start, each.ch, m_at);
                return true;
            }
        }
        return false;
    }

    bool Character() {
        const std::size_t length = LengthOfCharacter(m_at);
        m_at += length;
        return length > 0;
    }

    bool Value(std::string_view& value) {
        const char quote = *m_at;
        if (quote != '"' && quote != '\'') {
            return false;
        }
        Rewriter out(++m_at);
        while (*m_at != quote) {
            if (Is(*m_at, kPlainValue) || *m_at == '"' || *m_at == '\'') {
                ++m_at;
            } else if (!(*m_at == '&' ? Reference(out) : Character())) {
                return false;
            }
        }
        value = out.Finish(m_at);
        ++m_at;
        return true;
    }

    bool Text() {
        Rewriter out(m_at);
        while (*m_at != '<') {
            if (Is(*m_at, kPlainText)) {
                ++m_at;
            } else if (!TextBeyondPlain(out)) {
                return false;
            }
        }
        Add(NodeType::Text, out.Finish(m_at));
        return true;
    }

    bool TextBeyondPlain(Rewriter& out) {
        switch (*m_at) {
        case '&':
            return Reference(out);
        case ']':
            ++m_at;
            return !(m_at[0] == ']' && m_at[1] == '>');
        case '\r': {
            const char* const start = m_at;
            m_at += m_at[1] == '\n' ? 2 : 1;
            out.Replace(start, '\n', m_at);
            return true;
        }
        default:
            return Character();
        }
    }

    /// Up to `end`, which is taken; there is no carriage return before it.
    bool RawUpTo(std::string_view end, std::string_view& content) {
        const char* const start = m_at;
        while (*m_at != end[0] || !Rest().starts_with(end)) {
            if (Is(*m_at, kPlainText) || *m_at == '<' || *m_at == '&' || *m_at == ']') {
                ++m_at;
            } else if (!Character()) {
                return false;
            }
        }
        content = {start, static_cast<std::size_t>(m_at - start)};
        m_at += end.size();
        return true;
    }

    bool Comment() {
        std::string_view content;
        if (!RawUpTo("--", content) || !Take(">")) {
            return false;
        }
        Add(NodeType::Comment, content);
        return true;
    }

    bool CDataSection() {
        std::string_view content;
        // libxml2 leaves empty ones out.
        if (!RawUpTo("]]>", content) || content.empty()) {
            return false;
        }
        Add(NodeType::CData, content);
        return true;
    }

    bool StartTag() {
        Name name;
        ++m_at;
        if ((m_depth == 0 && m_hasRoot) || m_depth == kMaxDepth || !TakeName(name)) {
            return false;
        }
        m_hasRoot = true;
        ++m_depth;
        std::size_t count = 0;
        std::string_view uri;
        if (!TakeAttributes(count) || !Declare(count) || !UriOf(name.Prefix(), uri) ||
            !Resolve(count)) {
            return false;
        }
        Node& element = m_tree.CreateElement(name.text, uri);
        m_tree.Append(*m_current, element);
        AddAttributes(element, count);
        m_current = &element;
        if (Take("/>")) {
            Leave();
            return true;
        }
        return Take(">");
    }

    bool TakeAttributes(std::size_t& count) {
        for (;;) {
            const bool isApart = Is(*m_at, kBlank);
            SkipBlanks();
            if (*m_at == '>' || *m_at == '/') {
                return true;
            }
            if (!isApart || count == kMaxAttributes) {
                return false;
            }
            Attribute& attribute = m_attributes[count++];
            if (!TakeName(attribute.name)) {
                return false;
            }
            SkipBlanks();
            if (!Take("=")) {
                return false;
            }
            SkipBlanks();
            if (!Value(attribute.value)) {
                return false;
            }
        }
    }

    /// Binds the prefixes that the attributes declare.
    bool Declare(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const Attribute& each = m_attributes[i];
            if (!each.name.IsDeclaration()) {
                continue;
            }
            const std::string_view prefix =
                each.name.prefixLength == 0 ? std::string_view() : each.name.Base();
            if (m_bound == kMaxBindings || prefix.starts_with("xml") || !IsUsualUri(each.value)) {
                return false;
            }
            m_bindings[m_bound++] = {prefix, each.value, m_depth};
        }
        return true;
    }

    bool UriOf(std::string_view prefix, std::string_view& uri) const {
        for (std::size_t i = m_bound; i > 0; --i) {
            if (m_bindings[i - 1].prefix == prefix) {
                uri = m_bindings[i - 1].uri;
                return true;
            }
        }
        return prefix.empty();
    }

    /// Looks for the namespaces of the attributes; no two may have one name.
    bool Resolve(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            Attribute& each = m_attributes[i];
            each.uri = {};
            if (each.name.prefixLength > 0 && !each.name.IsDeclaration() &&
                !UriOf(each.name.Prefix(), each.uri)) {
                return false;
            }
            for (std::size_t k = 0; k < i; ++k) {
                const Attribute& other = m_attributes[k];
                if (other.name.text == each.name.text ||
                    (!each.uri.empty() && other.uri == each.uri &&
                     other.name.Base() == each.name.Base())) {
                    return false;
                }
            }
        }
        return true;
    }

    /// Declarations first, as libxml2 tells them.
    void AddAttributes(Node& element, std::size_t count) {
        for (const bool areDeclarations : {true, false}) {
            for (std::size_t i = 0; i < count; ++i) {
                const Attribute& each = m_attributes[i];
                if (each.name.IsDeclaration() == areDeclarations) {
                    m_tree.AppendKeptAttribute(element, each.name.text, each.value, each.uri);
                }
            }
        }
    }

    bool EndTag() {
        m_at += 2;
        if (!Take(m_current->Name())) {
            return false;
        }
        SkipBlanks();
        Leave();
        return Take(">");
    }

    void Leave() {
        while (m_bound > 0 && m_bindings[m_bound - 1].depth == m_depth) {
            --m_bound;
        }
        --m_depth;
        m_current = m_current->parent;
    }

    void Add(NodeType type, std::string_view kept) {
        m_tree.Append(*m_current, m_tree.CreateKeptCharacters(type, kept));
    }

    Tree& m_tree;
    char* m_at;
    const char* m_end; ///< holds a 0
    Node* m_current;
    int m_depth = 0;
    bool m_hasRoot = false;
    std::size_t m_bound = 0;
    std::array<Binding, kMaxBindings> m_bindings;
    std::array<Attribute, kMaxAttributes> m_attributes;
};

} // namespace
} // namespace quick

bool ParseQuickly(std::string_view bytes, Tree& tree) {
    tree.Clear();
    if (bytes.size() > quick::kLargestDocument) {
        return false;
    }
    if (quick::Reading(tree, tree.KeepDocument(bytes), bytes.size()).Document()) {
        return true;
    }
    tree.Clear();
    return false;
}

} // namespace nqp2::dom
