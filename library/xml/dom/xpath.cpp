// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/xpath.h"

#include "NQP2ParserU/ComError.h"
#include "platform/number_text.h"
#include "xml/dom/libxml.h"
#include "xml/dom/tree.h"

#include <libxml/dict.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <new>
#include <set>
#include <utility>

namespace nqp2::dom {
namespace {

// Enough for any sensible question to a 32 MiB document; ends the ones that would run for hours.
constexpr unsigned long kMaxOperations = 50'000'000;

// Under the qualified-name rule a prefix means itself: this namespace says just that.
constexpr std::string_view kPrefixNamespace = "prefix:";

struct FreeContext {
    void operator()(xmlXPathContextPtr context) const { xmlXPathFreeContext(context); }
};
struct FreeObject {
    void operator()(xmlXPathObjectPtr object) const { xmlXPathFreeObject(object); }
};
using Context = std::unique_ptr<xmlXPathContext, FreeContext>;
using Object = std::unique_ptr<xmlXPathObject, FreeObject>;

bool IsNameCharacter(char ch) {
    const auto byte = static_cast<unsigned char>(ch);
    return platform::IsDigit(byte) || (byte >= 'A' && byte <= 'Z') ||
           (byte >= 'a' && byte <= 'z') || byte == '_' || byte == '-' || byte == '.' ||
           byte >= 0x80;
}

/// Every prefix that the expression uses outside its quoted texts.
std::set<std::string> PrefixesIn(std::string_view expression) {
    std::set<std::string> prefixes;
    std::size_t nameStart = 0;
    for (std::size_t i = 0; i < expression.size(); ++i) {
        const char ch = expression[i];
        if (ch == '\'' || ch == '"') {
            const std::size_t end = expression.find(ch, i + 1);
            if (end == std::string_view::npos) {
                break;
            }
            i = end;
        } else if (IsNameCharacter(ch)) {
            continue;
        } else if (ch == ':' && i > nameStart && expression.substr(i, 2) != "::") {
            prefixes.emplace(expression.substr(nameStart, i - nameStart));
        } else if (expression.substr(i, 2) == "::") {
            ++i;
        }
        nameStart = i + 1;
    }
    return prefixes;
}

} // namespace

/// The libxml2 document and what ties it to the tree.
struct XPathView::Copy {
    xmlDocPtr document = nullptr;
    std::map<std::pair<std::string, std::string>, xmlNsPtr> namespaces;
    std::vector<std::pair<const Node*, xmlNodePtr>> counterparts; ///< sorted, once all are there
    SelectionRule::Names names = SelectionRule::Names::Qualified;

    Copy() : document(xmlNewDoc(BAD_CAST "1.0")) {
        if (document == nullptr) {
            throw std::bad_alloc();
        }
        document->dict = xmlDictCreate(); // names are kept once
    }
    ~Copy() {
        xmlFreeDoc(document);
        for (const auto& [key, space] : namespaces) {
            xmlFreeNs(space);
        }
    }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;

    xmlNsPtr NamespaceOf(const Node& node) {
        std::string prefix(Prefix(node));
        if (prefix == "xml") {
            // Bound to its one namespace in every expression, by either rule.
            return xmlSearchNs(document, reinterpret_cast<xmlNodePtr>(document), Xml(prefix));
        }
        std::string uri(node.Uri());
        if (names == SelectionRule::Names::Qualified) {
            uri = prefix.empty() ? std::string() : std::string(kPrefixNamespace) + prefix;
        }
        if (uri.empty()) {
            return nullptr;
        }
        xmlNsPtr& space = namespaces[{prefix, uri}];
        if (space == nullptr) {
            space = xmlNewNs(nullptr, Xml(uri), prefix.empty() ? nullptr : Xml(prefix));
        }
        return space;
    }

    xmlChar* Kept(std::string_view name) const {
        return const_cast<xmlChar*>(xmlDictLookup(document->dict,
                                                  reinterpret_cast<const xmlChar*>(name.data()),
                                                  static_cast<int>(name.size())));
    }

    // Each kind by its own constructor: libxml2 frees a node by what its kind owns.
    xmlNodePtr NewNode(const Node& node) {
        const std::string content(node.Content());
        switch (node.type) {
        case NodeType::Text:
            return xmlNewDocText(document, Xml(content));
        case NodeType::CData:
            return xmlNewCDataBlock(document, Xml(content), static_cast<int>(content.size()));
        case NodeType::Comment:
            return xmlNewDocComment(document, Xml(content));
        case NodeType::ProcessingInstruction:
            return xmlNewDocPI(document, Xml(std::string(node.Name())), Xml(content));
        default:
            return xmlNewDocNodeEatName(document, NamespaceOf(node), Kept(BaseName(node)), nullptr);
        }
    }

    xmlNodePtr MakeNode(Node& node) {
        const xmlNodePtr made = NewNode(node);
        if (made == nullptr) {
            throw std::bad_alloc();
        }
        made->_private = &node;
        counterparts.emplace_back(&node, made);
        return made;
    }

    void AddAttributes(Node& node, xmlNodePtr made) {
        for (Node* each = node.FirstAttribute(); each != nullptr; each = each->Next()) {
            if (IsDeclaration(*each)) {
                continue;
            }
            const xmlAttrPtr attribute =
                xmlNewNsProp(made, NamespaceOf(*each), Xml(std::string(BaseName(*each))),
                             Xml(std::string(each->Content())));
            if (attribute == nullptr) {
                throw std::bad_alloc();
            }
            attribute->_private = each;
            counterparts.emplace_back(each, reinterpret_cast<xmlNodePtr>(attribute));
        }
    }

    // Linked by hand: libxml2's own functions merge neighbouring texts.
    static void LinkLast(xmlNodePtr parent, xmlNodePtr child) {
        child->parent = parent;
        child->prev = parent->last;
        (parent->last != nullptr ? parent->last->next : parent->children) = child;
        parent->last = child;
    }

    void Build(Node& top) {
        auto* const root = reinterpret_cast<xmlNodePtr>(document);
        document->_private = top.type == NodeType::Document ? &top : nullptr;
        counterparts.reserve(CountBelow(top));
        xmlNodePtr last = root;
        const Node* lastNode = top.type == NodeType::Document ? &top : nullptr;
        counterparts.emplace_back(&top, root);
        for (Node* each = &top; each != nullptr; each = NextInOrder(*each, top)) {
            if (each->type == NodeType::Document) {
                continue;
            }
            // Up to the copy of this node's parent.
            for (; lastNode != nullptr && lastNode != each->parent; lastNode = lastNode->parent) {
                last = last->parent;
            }
            const xmlNodePtr made = MakeNode(*each);
            LinkLast(last, made);
            AddAttributes(*each, made);
            last = made;
            lastNode = each;
        }
        // The top of what was taken out of a document has its own entry, behind the root.
        std::stable_sort(counterparts.begin(), counterparts.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
    }

    static std::size_t CountBelow(Node& top) {
        std::size_t count = 1;
        for (const Node* each = &top; each != nullptr; each = NextInOrder(*each, top)) {
            ++count;
            for (const Node* attribute = each->FirstAttribute(); attribute != nullptr;
                 attribute = attribute->Next()) {
                ++count;
            }
        }
        return count;
    }

    [[nodiscard]] xmlNodePtr CounterpartOf(const Node& node) const {
        const auto found = std::upper_bound(
            counterparts.begin(), counterparts.end(), &node,
            [](const Node* wanted, const auto& pair) { return wanted < pair.first; });
        const bool isThere = found != counterparts.begin() && std::prev(found)->first == &node;
        return isThere ? std::prev(found)->second : nullptr;
    }

    void Register(xmlXPathContext& context, const std::string& expression,
                  const SelectionRule& rule) const {
        if (rule.names == SelectionRule::Names::Qualified) {
            for (const std::string& prefix : PrefixesIn(expression)) {
                const std::string uri = std::string(kPrefixNamespace) + prefix;
                xmlXPathRegisterNs(&context, Xml(prefix), Xml(uri));
            }
            return;
        }
        for (const auto& [prefix, uri] : rule.bindings) {
            xmlXPathRegisterNs(&context, Xml(prefix), Xml(uri));
        }
    }
};

XPathView::XPathView(Node& top, const SelectionRule& rule)
    : m_top(&top), m_version(top.tree->Version()) {
    const QuietLibxml quiet;
    // cppcheck-suppress useInitializationList // quietly, as what follows
    m_copy = std::make_unique<Copy>();
    m_copy->names = rule.names;
    m_copy->Build(top);
    if (quiet.IsOutOfMemory()) {
        throw std::bad_alloc();
    }
}

XPathView::~XPathView() = default;

bool XPathView::IsCurrent(const Node& top) const {
    return m_top == &top && m_version == top.tree->Version();
}

std::vector<Node*> XPathView::Evaluate(Node& context, const std::string& expression,
                                       const SelectionRule& rule) {
    const xmlNodePtr counterpart = m_copy->CounterpartOf(context);
    if (counterpart == nullptr) {
        throw _com_error(E_FAIL, CString(L"a path cannot start at a namespace declaration"));
    }
    QuietLibxml quiet;
    QuietLibxml::RequireStock();
    const Context evaluation(xmlXPathNewContext(m_copy->document));
    if (evaluation == nullptr) {
        throw std::bad_alloc();
    }
    evaluation->userData = &quiet;
    evaluation->error = QuietLibxml::NoteError;
    evaluation->opLimit = kMaxOperations;
    evaluation->node = counterpart;
    m_copy->Register(*evaluation, expression, rule);
    const Object result(xmlXPathEvalExpression(Xml(expression), evaluation.get()));
    if (quiet.IsOutOfMemory()) {
        throw std::bad_alloc();
    }
    if (result == nullptr || result->type != XPATH_NODESET) {
        throw _com_error(E_FAIL, CString(L"the path cannot be evaluated"));
    }
    std::vector<Node*> nodes;
    if (result->nodesetval == nullptr) {
        return nodes;
    }
    xmlXPathNodeSetSort(result->nodesetval);
    for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
        const xmlNodePtr each = result->nodesetval->nodeTab[i];
        if (each->type != XML_NAMESPACE_DECL && each->_private != nullptr) {
            nodes.push_back(static_cast<Node*>(each->_private));
        }
    }
    return nodes;
}

} // namespace nqp2::dom
