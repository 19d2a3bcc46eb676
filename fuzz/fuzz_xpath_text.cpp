// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// A path in the first line, a document in the rest.

#include "fuzz/fuzz_target.h"
#include "NQP2ParserU/ComError.h"
#include "xml/dom/document.h"
#include "xml/dom/path_walk.h"
#include "xml/dom/select.h"
#include "xml/dom/serialize.h"
#include "xml/dom/xpath.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace nqp2::fuzz {
namespace {

using dom::Document;
using dom::Node;
using dom::SelectionRule;

// Larger documents only make each try slow.
constexpr std::size_t kMaxDocument = std::size_t{16} * 1024;

/// The nodes, or nothing when the expression is refused.
template <class Query>
std::optional<std::vector<Node*>> Asked(Query&& query) {
    try {
        return query();
    } catch (const _com_error&) {
        return std::nullopt;
    }
}

void ComparePath(const Document& document, const std::string& path) {
    Node& top = document.Content()->DocumentNode();
    const SelectionRule& rule = document.Content()->Rule();
    const auto selected = Asked([&] { return dom::SelectAll(top, path); });
    if (selected) {
        for (const Node* const node : *selected) {
            Require(node->tree == &*document.Content(), "what is found is of the document");
        }
        Node* const first = dom::SelectFirst(top, path);
        Require(first == (selected->empty() ? nullptr : selected->front()), "first is the first");
    }
    if (dom::ParseSimplePath(path)) {
        dom::XPathView view(top, rule);
        Require(selected == Asked([&] { return view.Evaluate(top, path, rule); }),
                "the walk finds what XPath finds");
    }
}

void RoundTrip(const Document& document) {
    const std::string saved = dom::Serialize(document.Content()->DocumentNode());
    static Document again(SelectionRule::Names::Qualified);
    Require(again.LoadBytes(saved), "what is written can be read");
    Require(dom::Serialize(again.Content()->DocumentNode()) == saved,
            "saving twice gives the same bytes");
}

void Run(Document& document, const std::string& path, std::string_view bytes) {
    if (document.LoadBytes(bytes)) {
        ComparePath(document, path);
        RoundTrip(document);
    }
}

} // namespace

void TestInput(Input data) {
    const std::string_view input = AsText(data);
    const std::size_t lineEnd = std::min(input.find('\n'), input.size());
    const std::string path(input.substr(0, lineEnd));
    const std::string_view bytes = input.substr(std::min(lineEnd + 1, input.size()));
    if (bytes.size() > kMaxDocument) {
        return;
    }
    static Document qualified(SelectionRule::Names::Qualified);
    static Document byNamespace(SelectionRule::Names::Namespace);
    byNamespace.SetSelectionNamespaces("xmlns:p='u' xmlns:q='v'");
    Run(qualified, path, bytes);
    Run(byNamespace, path, bytes);
}

} // namespace nqp2::fuzz
