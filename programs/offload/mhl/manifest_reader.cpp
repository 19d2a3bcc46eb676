// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/date_text.h"
#include "offload/mhl/element_reader.h"
#include "offload/mhl/ignore.h"
#include "offload/mhl/manifest.h"
#include "offload/mhl/manifest_names.h"
#include "offload/mhl/name_rules.h"

#include <charconv>
#include <iterator>
#include <utility>

namespace nqp2::mhl {
namespace {

enum Element : ElementId {
    kDocument,
    kHashList,
    kCreatorInfo,
    kCreationDate,
    kHostName,
    kTool,
    kAuthor,
    kLocation,
    kComment,
    kProcessInfo,
    kProcess,
    kRootHash,
    kIgnore,
    kPattern,
    kHashes,
    kFile,
    kFolder,
    kPath,
    kPreviousPath,
    kContent,
    kStructure,
    kDigest,
    kListMetadata,
    kEntry,
    kMetadata,
    kReferences,
    kReference,
};

constexpr auto kChildren = ElementRow::Kind::Children;
constexpr auto kText = ElementRow::Kind::Text;

constexpr ElementRow kRows[] = {
    {kDocument, "hashlist", kHashList, kChildren},
    {kHashList, "creatorinfo", kCreatorInfo, kChildren},
    {kCreatorInfo, "creationdate", kCreationDate, kText},
    {kCreatorInfo, "hostname", kHostName, kText},
    {kCreatorInfo, "tool", kTool, kText},
    {kCreatorInfo, "author", kAuthor, kText},
    {kCreatorInfo, "location", kLocation, kText},
    {kCreatorInfo, "comment", kComment, kText},
    {kHashList, "processinfo", kProcessInfo, kChildren},
    {kProcessInfo, "process", kProcess, kText},
    {kProcessInfo, "roothash", kRootHash, kChildren},
    {kRootHash, "content", kContent, kChildren},
    {kRootHash, "structure", kStructure, kChildren},
    {kProcessInfo, "ignore", kIgnore, kChildren},
    {kIgnore, "pattern", kPattern, kText},
    {kHashList, "hashes", kHashes, kChildren},
    {kHashes, "hash", kFile, kChildren},
    {kFile, "path", kPath, kText},
    {kFile, "previousPath", kPreviousPath, kText},
    {kFile, "metadata", kMetadata, ElementRow::Kind::Anything},
    {kFile, "", kDigest, kText},
    {kHashes, "directoryhash", kFolder, kChildren},
    {kFolder, "path", kPath, kText},
    {kFolder, "content", kContent, kChildren},
    {kFolder, "structure", kStructure, kChildren},
    {kFolder, "previousPath", kPreviousPath, kText},
    {kFolder, "metadata", kMetadata, ElementRow::Kind::Anything},
    {kContent, "", kDigest, kText},
    {kStructure, "", kDigest, kText},
    {kHashList, "metadata", kListMetadata, kChildren},
    {kListMetadata, kMetadataEntry, kEntry, kText, kMetadataNamespace},
    {kHashList, "references", kReferences, kChildren},
    {kReferences, "hashlistreference", kReference, kChildren},
    {kReference, "path", kPath, kText},
    {kReference, "", kDigest, kText},
};

constexpr std::pair<Element, std::string ManifestHead::*> kHeadTexts[] = {
    {kHostName, &ManifestHead::hostName},
    {kTool, &ManifestHead::tool},
    {kLocation, &ManifestHead::location},
    {kComment, &ManifestHead::comment},
};

// What a head may hold many times.
constexpr std::size_t kMaxAuthors = 100;
constexpr std::size_t kMaxEntries = 1000;

} // namespace

struct ManifestReader::State final : private ElementHandler {
    explicit State(ManifestHandler& toTell)
        : handler(toTell), reader(kRows, kManifestNamespace, *this) {}

    void Fault(int line, std::string sentence) {
        handler.OnFinding(true, line, std::move(sentence));
    }
    void Remark(int line, std::string sentence) {
        handler.OnFinding(false, line, std::move(sentence));
    }

    void OnOpen(ElementId element, ElementId parent, const dom::EventElement& event) override;
    void OnClose(ElementId element, ElementId parent, const std::string& text, int line) override;
    void OnUnknown(ElementId parent, const dom::EventElement& event) override;
    void OnFault(int line, std::string sentence) override { Fault(line, std::move(sentence)); }

    void OpenList(const dom::EventElement& event);
    void OpenAuthor(const dom::EventElement& event);
    void OpenPath(ElementId parent, const dom::EventElement& event);
    void OpenDigest(const dom::EventElement& event);
    void CloseHeadText(ElementId element, const std::string& text, int line);
    void ClosePath(ElementId parent, const std::string& text, int line);
    void CloseDigest(ElementId parent, const std::string& text, int line);
    void CloseFile();
    void CloseFolder();
    void CloseReference();
    void CloseRoot(int line);
    void CheckFolderHashes(int line);
    [[nodiscard]] std::string Sound(std::string_view path, bool isFolder, int line);
    [[nodiscard]] std::string Name() const;
    Hashes& Target(ElementId parent);

    ManifestHandler& handler;
    ManifestHead head;
    FileRecord file;
    FolderRecord folder;
    FolderHashes hashes; ///< of a folder or the root
    Reference reference;
    std::string path; ///< of the record that is open; "" while there is no sound one
    bool hasPath = false;
    bool hasDigest = false;
    int recordLine = 0;
    std::optional<HashFormat> format; ///< of the digest that is open
    std::string formatName;
    std::string actionName;
    ElementReader reader;
};

void ManifestReader::State::OnOpen(ElementId element, ElementId parent,
                                   const dom::EventElement& event) {
    switch (element) {
    case kHashList:
        OpenList(event);
        break;
    case kTool:
        head.toolVersion = AttributeOf(event, "version");
        break;
    case kAuthor:
        OpenAuthor(event);
        break;
    case kFile:
    case kFolder:
    case kReference:
    case kRootHash:
        file = {};
        folder = {};
        reference = {};
        hashes = {};
        path.clear();
        hasPath = false;
        hasDigest = false;
        recordLine = event.line;
        break;
    case kPath:
        OpenPath(parent, event);
        break;
    case kDigest:
        OpenDigest(event);
        break;
    case kEntry:
        if (head.metadata.size() < kMaxEntries) {
            head.metadata.push_back({std::string(AttributeOf(event, "name")), {}});
        }
        break;
    default:
        break;
    }
}

void ManifestReader::State::OpenList(const dom::EventElement& event) {
    const std::string_view version = AttributeOf(event, "version");
    if (version != kManifestVersion) {
        Fault(event.line, "the version is \"" + std::string(version) + "\" instead of " +
                              std::string(kManifestVersion));
    }
}

void ManifestReader::State::OpenAuthor(const dom::EventElement& event) {
    if (head.authors.size() < kMaxAuthors) {
        head.authors.push_back({{},
                                std::string(AttributeOf(event, "email")),
                                std::string(AttributeOf(event, "phone")),
                                std::string(AttributeOf(event, "role"))});
    }
}

void ManifestReader::State::OpenPath(ElementId parent, const dom::EventElement& event) {
    if (parent != kFile) {
        return;
    }
    const std::string_view size = AttributeOf(event, "size");
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(size.data(), size.data() + size.size(), value);
    if (!size.empty() && error == std::errc() && end == size.data() + size.size()) {
        file.size = value;
    } else if (!size.empty()) {
        Fault(event.line, "the size \"" + std::string(size) + "\" is no number of bytes");
    }
    const std::string_view date = AttributeOf(event, "lastmodificationdate");
    file.modified = ParseDate(date);
    if (!file.modified && !date.empty()) {
        Remark(event.line, "the date \"" + std::string(date) + "\" is none");
    }
}

void ManifestReader::State::OpenDigest(const dom::EventElement& event) {
    format = HashFormatNamed(event.name);
    formatName = event.name;
    actionName = AttributeOf(event, "action");
}

void ManifestReader::State::OnClose(ElementId element, ElementId parent, const std::string& text,
                                    int line) {
    switch (element) {
    case kFile:
        CloseFile();
        break;
    case kFolder:
        CloseFolder();
        break;
    case kReference:
        CloseReference();
        break;
    case kRootHash:
        CloseRoot(line);
        break;
    case kPath:
        ClosePath(parent, text, line);
        break;
    case kPreviousPath:
        (parent == kFile ? file.previousPath : folder.previousPath) =
            Sound(text, parent == kFolder, line);
        break;
    case kDigest:
        CloseDigest(parent, text, line);
        break;
    default:
        CloseHeadText(element, text, line);
        break;
    }
}

void ManifestReader::State::CloseHeadText(ElementId element, const std::string& text, int line) {
    for (const auto& [each, member] : kHeadTexts) {
        if (each == element) {
            head.*member = text;
        }
    }
    const std::string_view trimmed = Trimmed(text);
    if (element == kCreationDate) {
        const std::optional<std::int64_t> date = ParseDate(trimmed);
        head.created = date.value_or(0);
        if (!date) {
            Remark(line, "the date of creation is none");
        }
    } else if (element == kAuthor) {
        head.authors.back().name = text;
    } else if (element == kProcess) {
        head.process = ValueIn(kProcessNames, trimmed);
        if (head.process == Process::Unknown) {
            Remark(line, "the process is not known");
        }
    } else if (element == kEntry && !head.metadata.empty()) {
        head.metadata.back().value = text;
    } else if (element == kPattern && head.ignored.size() < kMaxPatterns) {
        head.ignored.push_back(text);
    } else if (element == kPattern) {
        Fault(line, "there are more than " + std::to_string(kMaxPatterns) + " patterns");
    }
}

/// A path that can be used; "" after a fault.
std::string ManifestReader::State::Sound(std::string_view text, bool isFolder, int line) {
    if (isFolder && text.size() > 1 && text.ends_with('/')) {
        text.remove_suffix(1);
    }
    const std::string fault = PathFault(text);
    if (fault.empty()) {
        return std::string(text);
    }
    constexpr std::size_t kShown = 200;
    Fault(line, "the path \"" + std::string(text.substr(0, kShown)) + "\" " + fault);
    return {};
}

void ManifestReader::State::ClosePath(ElementId parent, const std::string& text, int line) {
    if (hasPath) {
        Fault(line, "a record has two paths");
        return;
    }
    hasPath = true;
    path = Sound(text, parent == kFolder, line);
}

/// Where the digests in an element belong.
Hashes& ManifestReader::State::Target(ElementId parent) {
    switch (parent) {
    case kFile:
        return file.hashes;
    case kContent:
        return hashes.content;
    case kStructure:
        return hashes.structure;
    default:
        return reference.c4;
    }
}

std::string ManifestReader::State::Name() const {
    return path.empty() ? std::string() : " of " + path;
}

void ManifestReader::State::CloseDigest(ElementId parent, const std::string& text, int line) {
    hasDigest = true;
    if (!format || (parent == kReference && *format != HashFormat::C4)) {
        Fault(line, formatName + Name() + " is no format that may stand there");
        return;
    }
    Hashes& target = Target(parent);
    if (target.Has(*format)) {
        Fault(line, "there are two hashes " + formatName + Name());
        return;
    }
    if (const std::string fault = ParseHashText(*format, Trimmed(text), target); !fault.empty()) {
        Fault(line, "the " + formatName + Name() + " " + fault);
        return;
    }
    if (parent != kFile) {
        return;
    }
    const Action action = ValueIn(kActionNames, actionName);
    file.actions[static_cast<std::size_t>(*format)] = action;
    if (action == Action::None) {
        handler.OnFinding(
            !actionName.empty(), line,
            "the " + formatName + Name() +
                (actionName.empty() ? " has no action" : " has the unknown action " + actionName));
    }
}

void ManifestReader::State::CloseFile() {
    if (!hasPath) {
        Fault(recordLine, "a record has no path");
    }
    if (path.empty()) {
        return;
    }
    if (!hasDigest) {
        Fault(recordLine, "there is no hash" + Name());
    }
    file.path = std::move(path);
    file.line = recordLine;
    handler.OnFile(file);
}

void ManifestReader::State::CheckFolderHashes(int line) {
    if (hashes.content.Formats() != hashes.structure.Formats()) {
        Remark(line, "content and structure" + Name() + " have different formats");
    }
}

void ManifestReader::State::CloseFolder() {
    if (!hasPath) {
        Fault(recordLine, "a record has no path");
    }
    if (path.empty()) {
        return;
    }
    CheckFolderHashes(recordLine);
    folder.path = std::move(path);
    folder.hashes = hashes;
    folder.line = recordLine;
    handler.OnFolder(folder);
}

void ManifestReader::State::CloseRoot(int line) {
    CheckFolderHashes(line);
    head.root = hashes;
}

void ManifestReader::State::CloseReference() {
    if (!hasPath || !hasDigest) {
        Fault(recordLine, std::string("a reference has no ") + (hasPath ? "hash" : "path"));
    }
    if (!path.empty()) {
        reference.path = std::move(path);
        reference.line = recordLine;
        handler.OnReference(reference);
    }
}

void ManifestReader::State::OnUnknown(ElementId parent, const dom::EventElement& event) {
    if (parent != kListMetadata) {
        Remark(event.line, "the element " + std::string(event.name) + " is not known");
    }
}

ManifestReader::ManifestReader(ManifestHandler& handler)
    : m_state(std::make_unique<State>(handler)) {}

ManifestReader::~ManifestReader() = default;

bool ManifestReader::Add(std::string_view bytes) {
    return m_state->reader.Add(bytes);
}

bool ManifestReader::Finish() {
    return m_state->reader.Finish();
}

const ManifestHead& ManifestReader::Head() const {
    return m_state->head;
}

} // namespace nqp2::mhl
