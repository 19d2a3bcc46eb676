// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/date_text.h"
#include "offload/mhl/manifest.h"
#include "offload/mhl/manifest_names.h"
#include "offload/mhl/xml_writer.h"

#include <string>

namespace nqp2::mhl {
namespace {

/// Readers that check refuse other addresses.
bool IsEmail(std::string_view text) {
    const std::size_t at = text.find('@');
    const std::size_t dot = at != std::string_view::npos ? text.find('.', at) : at;
    return at != 0 && dot != std::string_view::npos && dot > at + 1 && dot + 1 < text.size() &&
           text.find('@', at + 1) == std::string_view::npos;
}

class Writer {
public:
    Writer(const ManifestHead& head, const ManifestContent& content, const Sink& sink)
        : m_head(head), m_content(content), m_tree(*content.tree),
          m_scopePath(m_tree.PathOf(content.scope)), m_xml(sink) {}

    platform::IoStatus Write() {
        m_xml.Open("hashlist", {{"version", kManifestVersion}, {"xmlns", kManifestNamespace}});
        WriteCreator();
        WriteProcess();
        WriteRecords();
        WriteMetadata();
        WriteReferences();
        m_xml.Close();
        return m_xml.Finish();
    }

private:
    void WriteCreator() {
        m_xml.Open("creatorinfo");
        m_xml.Leaf("creationdate", DateText(m_head.created));
        m_xml.Leaf("hostname", m_head.hostName);
        m_xml.Leaf("tool", m_head.tool, {{"version", m_head.toolVersion}});
        for (const Author& each : m_head.authors) {
            m_xml.Leaf("author", each.name,
                       {{"email", IsEmail(each.email) ? each.email : std::string_view()},
                        {"phone", each.phone},
                        {"role", each.role}});
        }
        WriteUnlessEmpty("location", m_head.location);
        WriteUnlessEmpty("comment", m_head.comment);
        m_xml.Close();
    }

    void WriteUnlessEmpty(std::string_view name, std::string_view text) {
        if (!text.empty()) {
            m_xml.Leaf(name, text);
        }
    }

    void WriteProcess() {
        m_xml.Open("processinfo");
        m_xml.Leaf("process", NameIn(kProcessNames, m_head.process));
        const FolderHashes root = m_tree.FolderHashesOf(m_content.scope);
        if (!root.content.Formats().IsEmpty()) {
            m_xml.Open("roothash");
            WriteFolderHashes(root);
            m_xml.Close();
        }
        if (!m_head.ignored.empty()) {
            m_xml.Open("ignore");
            for (const std::string& each : m_head.ignored) {
                m_xml.Leaf("pattern", each);
            }
            m_xml.Close();
        }
        m_xml.Close();
    }

    void WriteFolderHashes(const FolderHashes& hashes) {
        m_xml.Open("content");
        WriteHashes(hashes.content, kScope);
        m_xml.Close();
        m_xml.Open("structure");
        WriteHashes(hashes.structure, kScope);
        m_xml.Close();
    }

    /// Those of a file with its actions.
    void WriteHashes(const Hashes& hashes, NodeId file) {
        for (const HashFormatFacts& each : kHashFormats) {
            if (hashes.Has(each.format)) {
                m_text.clear();
                AppendHashText(each.format, hashes.Digest(each.format), m_text);
                m_xml.Leaf(each.name, m_text,
                           {{"action", NameIn(kActionNames, m_tree.ActionOf(file, each.format))}});
            }
        }
    }

    void WriteRecords() {
        const Tree::Closed closed = m_content.nested;
        NodeId node = m_tree.FirstInPostOrder(m_content.scope, closed);
        bool isOpen = false;
        for (; node != m_content.scope;
             node = m_tree.NextInPostOrder(node, m_content.scope, closed)) {
            // A file that could not be hashed has no record.
            if (!m_tree.IsFolder(node) && m_tree.FormatsOf(node).IsEmpty()) {
                continue;
            }
            if (!isOpen) {
                m_xml.Open("hashes");
                isOpen = true;
            }
            WriteRecord(node);
        }
        if (isOpen) {
            m_xml.Close();
        }
    }

    void WriteRecord(NodeId node) {
        const bool isFolder = m_tree.IsFolder(node);
        const std::optional<std::uint64_t> size = m_tree.SizeOf(node);
        const std::optional<std::int64_t> modified = m_tree.ModifiedOf(node);
        m_xml.Open(isFolder ? "directoryhash" : "hash");
        m_xml.Leaf("path", m_tree.PathOf(node, m_content.scope),
                   {{"size", size ? std::to_string(*size) : std::string()},
                    {"lastmodificationdate", modified ? DateText(*modified) : std::string()}});
        if (isFolder) {
            WriteFolderHashes(m_tree.FolderHashesOf(node));
        } else {
            WriteHashes(m_tree.HashesOf(node), node);
        }
        WriteUnlessEmpty("previousPath", BelowScope(m_tree.PreviousPathOf(node)));
        m_xml.Close();
    }

    /// A path of the tree as one of the manifest's scope; "" when it is not below that.
    [[nodiscard]] std::string_view BelowScope(std::string_view path) const {
        if (m_scopePath.empty()) {
            return path;
        }
        const bool isBelow = path.size() > m_scopePath.size() && path.starts_with(m_scopePath) &&
                             path[m_scopePath.size()] == '/';
        return isBelow ? path.substr(m_scopePath.size() + 1) : std::string_view();
    }

    void WriteMetadata() {
        if (m_head.metadata.empty()) {
            return;
        }
        m_xml.Open("metadata");
        for (const MetadataEntry& each : m_head.metadata) {
            m_xml.Leaf(kMetadataEntry, each.value,
                       {{"xmlns", kMetadataNamespace}, {"name", each.name}});
        }
        m_xml.Close();
    }

    void WriteReferences() {
        if (m_content.references.empty()) {
            return;
        }
        m_xml.Open("references");
        for (const Reference& each : m_content.references) {
            m_xml.Open("hashlistreference");
            m_xml.Leaf("path", each.path);
            m_xml.Leaf("c4", each.c4.Text(HashFormat::C4));
            m_xml.Close();
        }
        m_xml.Close();
    }

    const ManifestHead& m_head;
    const ManifestContent& m_content;
    const Tree& m_tree;
    std::string m_scopePath;
    XmlWriter m_xml;
    std::string m_text;
};

} // namespace

platform::IoStatus WriteManifest(const ManifestHead& head, const ManifestContent& content,
                                 const Sink& sink) {
    return Writer(head, content, sink).Write();
}

} // namespace nqp2::mhl
