// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/path_set.h"

#include "xml/dom/select.h"

#include <algorithm>
#include <string>

namespace nqp2::dom {

PathSet::PathSet(std::span<const std::string_view> paths) : m_paths(paths.begin(), paths.end()) {
    for (std::size_t i = 0; i < paths.size(); ++i) {
        m_root.Add(paths[i], static_cast<int>(i));
    }
}

void PathSet::Name::Add(std::string_view path, int index) {
    const std::size_t slash = path.find('/');
    const std::string_view head = path.substr(0, slash);
    auto child = std::find_if(below.begin(), below.end(),
                              [&](const Name& each) { return each.name == head; });
    if (child == below.end()) {
        child = below.insert(below.end(), Name{head, -1, {}});
    }
    if (slash == std::string_view::npos) {
        child->ends = index;
    } else {
        child->Add(path.substr(slash + 1), index);
    }
}

void PathSet::Find(const Node& below, std::span<Node*> found) const {
    std::fill(found.begin(), found.end(), nullptr);
    Gather(below, m_root, found);
}

std::vector<Node*> PathSet::FindBehind(std::string_view base, Node& top,
                                       std::span<Node*> found) const {
    std::vector<Node*> bases = SelectAll(top, base);
    std::fill(found.begin(), found.end(), nullptr);
    if (bases.size() == 1) {
        Find(*bases.front(), found);
        return bases;
    }
    // Several may stand in each other; then only the general selection keeps the order.
    for (std::size_t i = 0; !bases.empty() && i < m_paths.size(); ++i) {
        found[i] = SelectFirst(top, std::string(base).append("/").append(m_paths[i]));
    }
    return bases;
}

// As deep as the longest path, whatever the document's depth.
void PathSet::Gather(const Node& element, const Name& names, std::span<Node*> found) {
    for (Node* child = element.FirstChild(); child != nullptr; child = child->Next()) {
        if (child->type != NodeType::Element) {
            continue;
        }
        const auto fits =
            std::find_if(names.below.begin(), names.below.end(),
                         [&](const Name& each) { return each.name == child->Name(); });
        if (fits == names.below.end()) {
            continue;
        }
        if (fits->ends >= 0 && found[static_cast<std::size_t>(fits->ends)] == nullptr) {
            found[static_cast<std::size_t>(fits->ends)] = child;
        }
        if (!fits->below.empty()) {
            Gather(*child, *fits, found);
        }
    }
}

} // namespace nqp2::dom
