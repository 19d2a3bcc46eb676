// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "parser/clip_texts.h"

#include "media/identifier.h"
#include "platform/number_text.h"
#include "xml/dom/select.h"

#include <stdexcept>

namespace nqp2::parser {
namespace {

/// The paths as a tree of names, so that one pass over the elements meets all of them.
struct NameTree {
    std::string_view name;
    int value = -1; ///< index of the ClipPath that ends here
    std::vector<NameTree> below;

    void Add(std::string_view path, int index) {
        const std::size_t slash = path.find('/');
        const std::string_view head = path.substr(0, slash);
        NameTree& child = Below(head);
        if (slash == std::string_view::npos) {
            child.value = index;
        } else {
            child.Add(path.substr(slash + 1), index);
        }
    }

    NameTree& Below(std::string_view head) {
        for (NameTree& each : below) {
            if (each.name == head) {
                return each;
            }
        }
        below.push_back({head, -1, {}});
        return below.back();
    }
};

const NameTree& Names() {
    static const NameTree tree = [] {
        NameTree root;
        for (std::size_t i = 0; i < kClipPathCount; ++i) {
            root.Add(kClipPaths[i].below, static_cast<int>(i));
        }
        return root;
    }();
    return tree;
}

using Slots = std::array<dom::Node*, kClipPathCount>;

// As deep as the longest path, whatever the document's depth.
void Gather(const dom::Node& element, const NameTree& names, Slots& slots) {
    for (dom::Node* child = element.firstChild; child != nullptr; child = child->next) {
        if (child->type != dom::NodeType::Element) {
            continue;
        }
        for (const NameTree& each : names.below) {
            if (each.name != child->name) {
                continue;
            }
            if (each.value >= 0 && slots[static_cast<std::size_t>(each.value)] == nullptr) {
                slots[static_cast<std::size_t>(each.value)] = child;
            }
            Gather(*child, each, slots);
            break;
        }
    }
}

std::string FullPath(std::string_view below) {
    return std::string(kClipContentPath).append("/").append(below);
}

} // namespace

ClipTexts::ClipTexts(dom::Document& document, TextPool& pool) : m_document(document), m_pool(pool) {
    dom::Node& top = document.Content()->DocumentNode();
    m_contents = dom::SelectAll(top, kClipContentPath);
    if (m_contents.size() == 1) {
        Gather(*m_contents.front(), Names(), m_nodes);
        return;
    }
    // Several contents may stand in each other; then only the general selection keeps the order.
    for (std::size_t i = 0; !m_contents.empty() && i < kClipPathCount; ++i) {
        m_nodes[i] = dom::SelectFirst(top, FullPath(kClipPaths[i].below));
    }
}

CString ClipTexts::Text(ClipPath path) const {
    const dom::Node* const node = Find(path);
    return node != nullptr ? TextOf(*node) : CString();
}

CString ClipTexts::TextOf(const dom::Node& node) const {
    std::string scratch;
    const std::string_view text = dom::Text(node, scratch);
    if (text.size() > m_textLeft) {
        throw std::length_error("the clip's values take more text than metadata may");
    }
    m_textLeft -= text.size();
    return m_pool.TextOf(text);
}

std::int32_t ClipTexts::Int32(ClipPath path) const {
    std::string scratch;
    const dom::Node* const node = Find(path);
    return node != nullptr ? platform::ToInt32(dom::Text(*node, scratch)) : 0;
}

std::int64_t ClipTexts::Int64(ClipPath path) const {
    std::string scratch;
    const dom::Node* const node = Find(path);
    return node != nullptr ? platform::ToInt64(dom::Text(*node, scratch)) : 0;
}

GUID ClipTexts::Guid(ClipPath path) const {
    return media::GuidFromIdentifier(Text(path));
}

CString ClipTexts::Attribute(ClipPath path, std::string_view name) const {
    const dom::Node* const node = Find(path);
    if (node == nullptr) {
        return {};
    }
    for (const dom::Node* each = node->firstAttribute; each != nullptr; each = each->next) {
        if (dom::BaseName(*each) == name) {
            return m_pool.TextOf(each->content);
        }
    }
    return {};
}

std::vector<dom::Node*> ClipTexts::All(std::string_view below) const {
    return m_contents.size() == 1
               ? dom::SelectAll(*m_contents.front(), below)
               : dom::SelectAll(m_document.Content()->DocumentNode(), FullPath(below));
}

CString ClipTexts::ChildText(const dom::Node& node, std::string_view name) const {
    for (const dom::Node* each = node.firstChild; each != nullptr; each = each->next) {
        if (each->type == dom::NodeType::Element && each->name == name) {
            return TextOf(*each);
        }
    }
    return {};
}

} // namespace nqp2::parser
