// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/path_walk.h"

#include "NQP2ParserU/ComError.h"
#include "platform/number_text.h"
#include "xml/dom/tree.h"

#include <algorithm>
#include <string>

namespace nqp2::dom {
namespace {

// Names in other letters are left to the general evaluation, which knows what a name may hold.
bool StartsName(unsigned char ch) {
    return (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || ch == '_';
}

bool ContinuesName(unsigned char ch) {
    return StartsName(ch) || platform::IsDigit(ch) || ch == '-' || ch == '.';
}

/// Length of the name (with one prefix at most) at the front of the text; 0 when there is none.
std::size_t NameLength(std::string_view text) {
    std::size_t length = 0;
    bool atStart = true;
    bool prefixed = false;
    while (length < text.size()) {
        const auto ch = static_cast<unsigned char>(text[length]);
        if (ch == ':' && !atStart && !prefixed) {
            prefixed = true;
            atStart = true;
        } else if (atStart ? StartsName(ch) : ContinuesName(ch)) {
            atStart = false;
        } else {
            break;
        }
        ++length;
    }
    return atStart ? 0 : length;
}

NameTest MakeStep(std::string_view name, const SelectionRule& rule) {
    if (rule.names == SelectionRule::Names::Qualified) {
        return {name, {}, false};
    }
    const std::size_t colon = name.find(':');
    if (colon == std::string_view::npos) {
        return {name, {}, true};
    }
    const std::string* const uri = rule.UriOf(name.substr(0, colon));
    if (uri == nullptr) {
        throw _com_error(E_FAIL, CString(L"a path uses a prefix that is not bound"));
    }
    return {name.substr(colon + 1), *uri, true};
}

using Steps = std::span<const NameTest>;

/// Collects what the steps reach below `from`. Returns true when the search is over.
bool Descend(Node& from, Steps steps, bool onlyFirst, std::vector<Node*>& found) {
    if (steps.empty()) {
        found.push_back(&from);
        return onlyFirst;
    }
    for (Node* child = from.FirstChild(); child != nullptr; child = child->Next()) {
        if (steps.front().Fits(*child) && Descend(*child, steps.subspan(1), onlyFirst, found)) {
            return true;
        }
    }
    return false;
}

/// Whether the node and its ancestors fit the steps from the last to the first.
bool FitsUpward(const Node& node, Steps steps) {
    const Node* each = &node;
    for (std::size_t i = steps.size(); i > 0; --i, each = each->parent) {
        if (each == nullptr || !steps[i - 1].Fits(*each)) {
            return false;
        }
    }
    return true;
}

void WalkAnywhere(Node& top, Steps steps, bool onlyFirst, std::vector<Node*>& found) {
    const QueryCache::Anchors& anchors = top.tree->Queries().AnchorsOf(top, steps.front());
    if (!anchors.nested || steps.size() == 1) {
        found.reserve(onlyFirst ? 1 : steps.size() == 1 ? anchors.nodes.size() : 0);
        for (Node* const anchor : anchors.nodes) {
            if (Descend(*anchor, steps.subspan(1), onlyFirst, found)) {
                return;
            }
        }
        return;
    }
    // Descending from anchors inside each other would leave the document's order.
    for (Node* each = &top; each != nullptr; each = NextInOrder(*each, top)) {
        if (FitsUpward(*each, steps)) {
            found.push_back(each);
            if (onlyFirst) {
                return;
            }
        }
    }
}

} // namespace

std::optional<SimplePath> ParseSimplePath(std::string_view path) {
    SimplePath result;
    if (path.starts_with("//")) {
        result.start = SimplePath::Start::Anywhere;
        path.remove_prefix(2);
    } else if (path.starts_with('/')) {
        result.start = SimplePath::Start::Document;
        path.remove_prefix(1);
    }
    while (true) {
        const std::size_t length = NameLength(path);
        if (length == 0 || result.count == SimplePath::kMaxSteps) {
            return std::nullopt;
        }
        result.steps[result.count++] = path.substr(0, length);
        path.remove_prefix(length);
        if (path.empty()) {
            return result;
        }
        if (path.front() != '/') {
            return std::nullopt;
        }
        path.remove_prefix(1);
    }
}

std::vector<Node*> WalkPath(const SimplePath& path, Node& context, const SelectionRule& rule,
                            bool onlyFirst) {
    std::array<NameTest, SimplePath::kMaxSteps> made;
    for (std::size_t i = 0; i < path.count; ++i) {
        made[i] = MakeStep(path.steps[i], rule);
    }
    const Steps steps(made.data(), path.count);
    std::vector<Node*> found;
    if (path.start == SimplePath::Start::Context) {
        Descend(context, steps, onlyFirst, found);
        return found;
    }
    Node& top = Top(context);
    if (path.start == SimplePath::Start::Anywhere) {
        WalkAnywhere(top, steps, onlyFirst, found);
    } else if (top.type == NodeType::Document) {
        Descend(top, steps, onlyFirst, found);
    } else if (steps.front().Fits(top)) {
        // What was taken out of a document is its own document element.
        Descend(top, steps.subspan(1), onlyFirst, found);
    }
    return found;
}

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
    // One may be inside another; then only the general selection keeps the order.
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
