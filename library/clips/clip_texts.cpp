// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_texts.h"

#include "media/identifier.h"
#include "platform/number_text.h"
#include "xml/dom/path_set.h"
#include "xml/dom/select.h"

namespace nqp2::clips {
namespace {

const dom::PathSet& Paths() {
    static const dom::PathSet paths = [] {
        std::array<std::string_view, media::kClipPathCount> below;
        for (std::size_t i = 0; i < media::kClipPathCount; ++i) {
            below[i] = media::kClipPaths[i].below;
        }
        return dom::PathSet(below);
    }();
    return paths;
}

std::string FullPath(std::string_view below) {
    return std::string(media::kClipContentPath).append("/").append(below);
}

} // namespace

ClipTexts::ClipTexts(dom::Document& document, TextPool& pool)
    : m_document(document), m_pool(pool), m_budget(document) {
    m_contents =
        Paths().FindBehind(media::kClipContentPath, document.Content()->DocumentNode(), m_nodes);
}

CString ClipTexts::Text(ClipPath path) const {
    const dom::Node* const node = Find(path);
    return node != nullptr ? TextOf(*node) : CString();
}

CString ClipTexts::TextOf(const dom::Node& node) const {
    std::string scratch;
    const std::string_view text = dom::Text(node, scratch);
    m_budget.Spend(text.size());
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
    for (const dom::Node* each = node->FirstAttribute(); each != nullptr; each = each->Next()) {
        if (dom::BaseName(*each) == name) {
            return m_pool.TextOf(each->Content());
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
    for (const dom::Node* each = node.FirstChild(); each != nullptr; each = each->Next()) {
        if (each->type == dom::NodeType::Element && each->Name() == name) {
            return TextOf(*each);
        }
    }
    return {};
}

} // namespace nqp2::clips
