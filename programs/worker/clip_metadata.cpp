// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/clip_metadata.h"

#include "media/element_paths.h"
#include "platform/case_fold.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/serialize.h"

#include <memory>

namespace nqp2::worker {
namespace {

using dom::Document;
using dom::Node;
using media::ClipPath;

bool Load(std::string_view xml, Document& document) {
    return document.LoadBytes(xml) && document.SelectSingle(media::kClipContentPath) != nullptr;
}

std::string TextOf(const std::shared_ptr<Node>& node) {
    std::string scratch;
    return node != nullptr ? std::string(dom::Text(*node, scratch)) : std::string();
}

std::wstring KeyOf(const std::string& name) {
    return platform::FoldCase(platform::TextFromUtf8(name).View());
}

/// Renames clips in one document.
class Renaming {
public:
    Renaming(Document& document, const RenamedClips& renamed)
        : m_document(document), m_renamed(renamed) {}

    /// The clip's own name, whatever the element says: the files are named after the new one.
    void RenameSelf(const CString& oldName) {
        const auto entry = m_renamed.find(platform::FoldCase(oldName.View()));
        if (entry != m_renamed.end()) {
            Set(m_document.SelectSingle(media::FullPath(ClipPath::ClipName)),
                entry->second.newName);
        }
    }

    void RenameRelated(const media::RelatedPaths& relation) {
        const std::shared_ptr<Node> name = m_document.SelectSingle(media::FullPath(relation.name));
        const auto entry = m_renamed.find(KeyOf(TextOf(name)));
        if (entry == m_renamed.end()) {
            return;
        }
        const std::string identifier =
            TextOf(m_document.SelectSingle(media::FullPath(relation.globalClipID)));
        // Another card's clip of that name is not meant.
        if (MayBeSame(identifier, entry->second.identifier)) {
            Set(name, entry->second.newName);
        }
    }

    [[nodiscard]] bool Changed() const { return m_changed; }

private:
    void Set(const std::shared_ptr<Node>& node, const CString& name) {
        const std::string text = platform::Utf8FromText(name.View());
        if (node != nullptr && TextOf(node) != text) {
            m_changed = node->tree->SetText(*node, text) || m_changed;
        }
    }

    Document& m_document;
    const RenamedClips& m_renamed;
    bool m_changed = false;
};

} // namespace

std::optional<ClipFacts> ReadFacts(std::string_view xml) {
    Document document(dom::SelectionRule::Names::Qualified);
    if (!Load(xml, document)) {
        return std::nullopt;
    }
    ClipFacts facts;
    const auto text = [&](ClipPath path) {
        return TextOf(document.SelectSingle(media::FullPath(path)));
    };
    facts.identifier = text(ClipPath::GlobalClipID);
    for (const media::RelatedPaths& relation : media::kRelatedPaths) {
        facts.related.push_back(
            {platform::TextFromUtf8(text(relation.name)), text(relation.globalClipID)});
    }
    facts.essence = clips::EssenceOf(document);
    return facts;
}

bool MayBeSame(const std::string& left, const std::string& right) {
    return left.empty() || right.empty() || KeyOf(left) == KeyOf(right);
}

std::string RenameInMetadata(std::string_view xml, const std::string& path, const CString& oldName,
                             const RenamedClips& renamed) {
    Document document(dom::SelectionRule::Names::Qualified);
    if (!Load(xml, document)) {
        throw NotMetadata(path);
    }
    Renaming renaming(document, renamed);
    renaming.RenameSelf(oldName);
    for (const media::RelatedPaths& relation : media::kRelatedPaths) {
        renaming.RenameRelated(relation);
    }
    return renaming.Changed() ? dom::Serialize(*document.DocumentNode()) : std::string(xml);
}

copy::Failure NotMetadata(const std::string& path) {
    return copy::Failure(path + " is not the metadata of a clip.");
}

} // namespace nqp2::worker
