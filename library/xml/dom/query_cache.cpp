// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/query_cache.h"

#include "xml/dom/tree.h"
#include "xml/dom/xpath.h"

namespace nqp2::dom {
namespace {

/// Nodes in document order: whether one is inside another, which then is inside the one before.
bool AreNested(const std::vector<Node*>& nodes) {
    for (std::size_t i = 1; i < nodes.size(); ++i) {
        for (const Node* up = nodes[i]->parent; up != nullptr; up = up->parent) {
            if (up == nodes[i - 1]) {
                return true;
            }
        }
    }
    return false;
}

void ScanForAnchors(QueryCache::Anchors& found, Node& top, const NameTest& test) {
    found.nodes.clear();
    constexpr std::size_t kFew = 16;
    found.nodes.reserve(kFew);
    std::size_t count = 0;
    for (Node* each = &top; each != nullptr; each = NextInOrder(*each, top)) {
        if (test.Fits(*each) && ++count <= kFew) {
            found.nodes.push_back(each);
        }
    }
    if (count > kFew) { // counted first, so that many take no more than they need
        found.nodes.clear();
        found.nodes.reserve(count);
        for (Node* each = &top; each != nullptr; each = NextInOrder(*each, top)) {
            if (test.Fits(*each)) {
                found.nodes.push_back(each);
            }
        }
    }
    found.nested = AreNested(found.nodes);
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
