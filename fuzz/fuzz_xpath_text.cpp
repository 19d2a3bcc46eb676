// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// A path in the first line, a document in the rest.

#include "fuzz/measured_input.h"
#include "fuzz/require.h"
#include "NQP2ParserU/ComError.h"
#include "xml/dom/document.h"
#include "xml/dom/path_walk.h"
#include "xml/dom/select.h"
#include "xml/dom/serialize.h"
#include "xml/dom/xpath.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using nqp2::dom::Document;
using nqp2::dom::Node;
using nqp2::dom::SelectionRule;
using nqp2::fuzz::Require;

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
    const auto selected = Asked([&] { return nqp2::dom::SelectAll(top, path); });
    if (selected) {
        for (const Node* const node : *selected) {
            Require(node->tree == &*document.Content(), "what is found is of the document");
        }
        Node* const first = nqp2::dom::SelectFirst(top, path);
        Require(first == (selected->empty() ? nullptr : selected->front()), "first is the first");
    }
    if (nqp2::dom::ParseSimplePath(path)) {
        nqp2::dom::XPathView view(top, rule);
        Require(selected == Asked([&] { return view.Evaluate(top, path, rule); }),
                "the walk finds what XPath finds");
    }
}

std::string TextOf(const Document& document) {
    std::string scratch;
    return std::string(nqp2::dom::Text(document.Content()->DocumentNode(), scratch));
}

void RoundTrip(const Document& document) {
    const std::string saved = nqp2::dom::Serialize(document.Content()->DocumentNode());
    static Document again(SelectionRule::Names::Qualified);
    Require(again.LoadBytes(saved), "what is written can be read");
    Require(TextOf(again) == TextOf(document), "text survives saving");
    Require(nqp2::dom::Serialize(again.Content()->DocumentNode()) == saved,
            "saving twice gives the same bytes");
}

void Run(Document& document, const std::string& path, std::string_view bytes) {
    if (document.LoadBytes(bytes)) {
        ComparePath(document, path);
        RoundTrip(document);
    }
}

} // namespace

int nqp2::fuzz::TestInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t lineEnd = std::min(input.find('\n'), input.size());
    const std::string path(input.substr(0, lineEnd));
    const std::string_view bytes = input.substr(std::min(lineEnd + 1, input.size()));
    if (bytes.size() > kMaxDocument) {
        return 0;
    }
    static Document qualified(SelectionRule::Names::Qualified);
    static Document byNamespace(SelectionRule::Names::Namespace);
    byNamespace.SetSelectionNamespaces("xmlns:p='u' xmlns:q='v'");
    Run(qualified, path, bytes);
    Run(byNamespace, path, bytes);
    return 0;
}
