// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/query_cache.h"

#include "xml/dom/tree.h"
#include "xml/dom/xpath.h"

namespace nqp2::dom {
namespace {

void ScanForAnchors(QueryCache::Anchors& found, Node& top, const NameTest& test) {
    found.nodes.clear();
    found.nested = false;
    std::size_t count = 0; // first, so that a document of many takes no more than it needs
    Node* last = nullptr;
    for (Node* each = &top; each != nullptr; each = NextInOrder(*each, top)) {
        if (test.Fits(*each)) {
            ++count;
            last = each;
        }
    }
    found.nodes.reserve(count);
    if (count == 1) {
        found.nodes.push_back(last);
        return;
    }
    const Node* lastAnchor = nullptr;
    for (Node* each = &top; each != nullptr; each = NextInOrder(*each, top)) {
        if (!test.Fits(*each)) {
            continue;
        }
        for (const Node* up = each->parent; up != nullptr && !found.nested; up = up->parent) {
            found.nested = up == lastAnchor;
        }
        lastAnchor = each;
        found.nodes.push_back(each);
    }
}

} // namespace

QueryCache::QueryCache() = default;
QueryCache::~QueryCache() = default;

const QueryCache::Anchors& QueryCache::AnchorsOf(Node& top, const NameTest& test) {
    if (m_top != &top || m_name != test.name || m_uri != test.uri ||
        m_byNamespace != test.byNamespace) {
        m_top = nullptr; // in case that memory does not suffice for the list
        ScanForAnchors(m_anchors, top, test);
        m_name = test.name;
        m_uri = test.uri;
        m_byNamespace = test.byNamespace;
        m_top = &top;
    }
    return m_anchors;
}

bool QueryCache::MayHoldAnchors(const Node& top) const noexcept {
    constexpr int kFew = 16; // nodes that are looked at: parts are moved about as well
    const NameTest test{m_name, m_uri, m_byNamespace};
    int count = 0;
    for (const Node* each = &top; each != nullptr; each = NextInOrder(*each, top)) {
        if (++count > kFew || test.Fits(*each)) {
            return true;
        }
    }
    return false;
}

XPathView& QueryCache::ViewOf(Node& top) {
    if (m_view == nullptr || !m_view->IsCurrent(top)) {
        m_view = std::make_unique<XPathView>(top, top.tree->Rule());
    }
    return *m_view;
}

void QueryCache::LetGo() noexcept {
    constexpr std::size_t kKept = 1024;
    m_view.reset();
    m_top = nullptr;
    if (m_anchors.nodes.capacity() > kKept) {
        m_anchors = {};
    }
}

} // namespace nqp2::dom
