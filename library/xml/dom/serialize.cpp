// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/serialize.h"

#include "xml/dom/parser.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace nqp2::dom {
namespace {

constexpr std::string_view kLineBreak = "\r\n";

std::string_view TextEscape(char ch) {
    switch (ch) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '\r':
        return "&#13;";
    default:
        return {};
    }
}

std::string_view AttributeEscape(char ch) {
    switch (ch) {
    case '"':
        return "&quot;";
    case '\t':
        return "&#9;";
    case '\n':
        return "&#10;";
    default:
        return TextEscape(ch);
    }
}

template <class Escape>
void AppendEscaped(std::string& out, std::string_view text, Escape escape) {
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string_view replacement = escape(text[i]);
        if (!replacement.empty()) {
            out.append(text.substr(start, i - start)).append(replacement);
            start = i + 1;
        }
    }
    out.append(text.substr(start));
}

// Far below what the parser takes and far above what metadata holds.
constexpr std::size_t kPlainText = std::size_t{8} * 1024 * 1024;
constexpr std::size_t kPlainName = 1000;
constexpr std::size_t kPlainDepth = 100;
constexpr int kPlainAttributes = 100;

/// The namespace declarations in force while the output goes down and up the tree.
class Scope {
public:
    [[nodiscard]] std::size_t Mark() const { return m_entries.size(); }
    void Return(std::size_t mark) { m_entries.resize(mark); }
    void Declare(std::string_view prefix, std::string_view uri) {
        m_entries.push_back({prefix, uri});
    }
    [[nodiscard]] bool Holds(std::string_view prefix, std::string_view uri) const {
        for (auto each = m_entries.rbegin(); each != m_entries.rend(); ++each) {
            if (each->prefix == prefix) {
                return each->uri == uri;
            }
        }
        return uri.empty();
    }

private:
    struct Entry {
        std::string_view prefix;
        std::string_view uri;
    };
    std::vector<Entry> m_entries;
};

/// How large the tree may become at most when the output is read again.
class Reread {
public:
    /// `mayChangeUri`: it has a prefix or declares one.
    void Count(NodeType type, bool mayChangeUri) {
        const bool isNamed = type == NodeType::Element || type == NodeType::Attribute ||
                             type == NodeType::ProcessingInstruction;
        m_bytes += sizeof(Node) + (isNamed ? sizeof(NodeName) : 0);
        m_uriChanges += mayChangeUri ? 2U : 0U; // to it and back
    }
    void CountUri(std::string_view uri) { m_longestUri = std::max(m_longestUri, uri.size()); }
    [[nodiscard]] std::size_t MostBytes(std::size_t documentBytes) const {
        // A text that comes in pieces is there up to three times for a moment.
        return m_bytes + m_uriChanges * m_longestUri + 3 * documentBytes;
    }

private:
    std::size_t m_bytes = 0;
    std::size_t m_uriChanges = 0;
    std::size_t m_longestUri = 0;
};

class Serializer {
public:
    Serialized Run(const Node& top) {
        m_top = &top;
        // Down and up without recursion: built trees may be deeper than any stack.
        const Node* node = &top;
        while (node != nullptr) {
            Open(*node);
            if (node->FirstChild() != nullptr) {
                node = node->FirstChild();
                continue;
            }
            while (node != nullptr && node != &top && node->Next() == nullptr) {
                Close(*node);
                node = node->parent;
            }
            if (node != nullptr) {
                Close(*node);
            }
            node = node == &top || node == nullptr ? nullptr : node->Next();
        }
        m_doubtful = m_doubtful || m_out.size() > kPlainText ||
                     m_reread.MostBytes(m_out.size()) > MaxTreeBytes(m_out.size());
        return {std::move(m_out), m_doubtful};
    }

private:
    void Open(const Node& node) {
        switch (node.type) {
        case NodeType::Element:
            OpenElement(node);
            break;
        case NodeType::Attribute:
        case NodeType::Text:
            AppendEscaped(m_out, node.Content(), TextEscape);
            break;
        case NodeType::CData:
            AppendCData(node.Content());
            break;
        case NodeType::Comment:
            m_out.append("<!--").append(node.Content()).append("-->");
            break;
        case NodeType::ProcessingInstruction:
            AppendInstruction(node);
            break;
        case NodeType::None:
        case NodeType::Document:
        case NodeType::Fragment:
            break;
        }
        m_reread.Count(node.type, node.PrefixLength() != 0);
    }

    void Close(const Node& node) {
        if (node.type == NodeType::Element) {
            if (node.FirstChild() != nullptr) {
                m_out.append("</").append(node.Name()).append(">");
            }
            m_scope.Return(m_marks.back());
            m_marks.pop_back();
        }
        if (&node != m_top && node.parent != nullptr && node.parent->type == NodeType::Document) {
            m_out.append(kLineBreak);
        }
    }

    void OpenElement(const Node& element) {
        m_marks.push_back(m_scope.Mark());
        m_out.append("<").append(element.Name());
        int attributes = 0;
        for (const Node* each = element.FirstAttribute(); each != nullptr; each = each->Next()) {
            ++attributes;
            if (IsDeclaration(*each)) {
                m_scope.Declare(BaseName(*each), each->Content());
                m_doubtful = m_doubtful || IsOddDeclaration(BaseName(*each), each->Content());
            }
        }
        m_doubtful = m_doubtful || attributes > kPlainAttributes || m_marks.size() > kPlainDepth;
        DeclareIfNeeded(element, element);
        for (const Node* each = element.FirstAttribute(); each != nullptr; each = each->Next()) {
            if (!IsDeclaration(*each) && each->PrefixLength() != 0) {
                DeclareIfNeeded(*each, element);
            }
            AppendAttribute(each->Name(), each->Content());
        }
        m_out.append(element.FirstChild() != nullptr ? ">" : "/>");
    }

    /// The prefixes and namespaces that XML keeps for itself, and the taking back of any prefix.
    static bool IsOddDeclaration(std::string_view prefix, std::string_view uri) {
        return uri.starts_with("http://www.w3.org/XML/1998/") ||
               uri.starts_with("http://www.w3.org/2000/xmlns/") ||
               (!prefix.empty() && (prefix.starts_with("xml") || uri.empty()));
    }

    // A root that carries its namespace as a plain attribute prints that one alone.
    void DeclareIfNeeded(const Node& named, const Node& element) {
        const std::string_view prefix = Prefix(named);
        const bool isOwn = prefix.empty() || prefix == "xml";
        m_doubtful =
            m_doubtful || (!isOwn && named.Uri().empty()) || named.Name().size() > kPlainName;
        std::string name = "xmlns";
        if (!prefix.empty()) {
            name.append(":").append(prefix);
        }
        const bool reserved = prefix == "xml" || (!prefix.empty() && named.Uri().empty());
        if (reserved || m_scope.Holds(prefix, named.Uri())) {
            return;
        }
        if (FindAttribute(element, name) != nullptr) {
            // The declaration was changed: two attributes may have become one.
            m_doubtful = m_doubtful || &named != &element;
            return;
        }
        m_doubtful = m_doubtful || IsOddDeclaration(prefix, named.Uri());
        m_scope.Declare(prefix, named.Uri());
        AppendAttribute(name, named.Uri());
    }

    void AppendAttribute(std::string_view name, std::string_view value) {
        m_doubtful = m_doubtful || name.size() > kPlainName;
        const bool declares = name == kXmlns || name.starts_with("xmlns:");
        m_reread.Count(NodeType::Attribute, declares || name.find(':') != std::string_view::npos);
        if (declares) {
            m_reread.CountUri(value);
        }
        m_out.append(" ").append(name).append("=\"");
        AppendEscaped(m_out, value, AttributeEscape);
        m_out.append("\"");
    }

    void AppendCData(std::string_view content) {
        constexpr std::string_view kEnd = "]]>";
        m_out.append("<![CDATA[");
        for (std::size_t end = content.find(kEnd); end != std::string_view::npos;
             end = content.find(kEnd)) {
            m_out.append(content.substr(0, end + 2)).append("]]><![CDATA[");
            content.remove_prefix(end + 2);
        }
        m_out.append(content).append(kEnd);
    }

    void AppendInstruction(const Node& node) {
        m_out.append("<?").append(node.Name());
        if (!node.Content().empty()) {
            m_out.append(" ").append(node.Content());
        }
        m_out.append("?>");
    }

    const Node* m_top = nullptr;
    bool m_doubtful = false;
    Reread m_reread;
    std::string m_out;
    Scope m_scope;
    std::vector<std::size_t> m_marks;
};

} // namespace

std::string Serialize(const Node& node) {
    return SerializeToReload(node).text;
}

Serialized SerializeToReload(const Node& node) {
    return Serializer().Run(node);
}

} // namespace nqp2::dom
