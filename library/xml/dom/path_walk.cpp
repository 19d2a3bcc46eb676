// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/path_walk.h"

#include "NQP2ParserU/ComError.h"
#include "xml/dom/tree.h"

#include <span>

namespace nqp2::dom {
namespace {

// Names in other letters are left to the general evaluation, which knows what may stand in a name.
bool StartsName(unsigned char ch) {
    return (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || ch == '_';
}

bool ContinuesName(unsigned char ch) {
    return StartsName(ch) || (ch >= '0' && ch <= '9') || ch == '-' || ch == '.';
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

/// One step made ready for comparing.
struct Step {
    std::string_view name; ///< qualified or local name, as the rule compares
    std::string_view uri;
    bool byNamespace = false;

    [[nodiscard]] bool Fits(const Node& node) const {
        if (node.type != NodeType::Element) {
            return false;
        }
        return byNamespace ? BaseName(node) == name && node.Uri() == uri : node.Name() == name;
    }
};

Step MakeStep(std::string_view name, const SelectionRule& rule) {
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

using Steps = std::span<const Step>;

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

void ScanForAnchors(AnchorCache& cache, Node& top, const Step& first) {
    cache.anchors.clear();
    cache.nested = false;
    std::size_t count = 0; // first, so that a document of many takes no more than it needs
    for (const Node* each = &top; each != nullptr; each = NextInOrder(*each, top)) {
        count += first.Fits(*each) ? 1U : 0U;
    }
    cache.anchors.reserve(count);
    const Node* lastAnchor = nullptr;
    for (Node* each = &top; each != nullptr; each = NextInOrder(*each, top)) {
        if (!first.Fits(*each)) {
            continue;
        }
        for (const Node* up = each->parent; up != nullptr && !cache.nested; up = up->parent) {
            cache.nested = up == lastAnchor;
        }
        lastAnchor = each;
        cache.anchors.push_back(each);
    }
}

const AnchorCache& Anchors(Node& top, const Step& first) {
    AnchorCache& cache = top.tree->Anchors();
    const std::uint64_t version = top.tree->Version();
    if (cache.version != version || cache.top != &top || cache.name != first.name ||
        cache.uri != first.uri || cache.byNamespace != first.byNamespace) {
        ScanForAnchors(cache, top, first);
        cache.version = version;
        cache.top = &top;
        cache.name = first.name;
        cache.uri = first.uri;
        cache.byNamespace = first.byNamespace;
    }
    return cache;
}

void WalkAnywhere(Node& top, Steps steps, bool onlyFirst, std::vector<Node*>& found) {
    const AnchorCache& cache = Anchors(top, steps.front());
    if (!cache.nested || steps.size() == 1) {
        found.reserve(onlyFirst ? 1 : steps.size() == 1 ? cache.anchors.size() : 0);
        for (Node* const anchor : cache.anchors) {
            if (Descend(*anchor, steps.subspan(1), onlyFirst, found)) {
                return;
            }
        }
        return;
    }
    // Descending from anchors that stand in each other would leave the document's order.
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
    std::array<Step, SimplePath::kMaxSteps> made;
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
        // What was taken out of a document stands as its own document element.
        Descend(top, steps.subspan(1), onlyFirst, found);
    }
    return found;
}

} // namespace nqp2::dom
