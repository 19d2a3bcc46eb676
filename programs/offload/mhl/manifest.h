// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/finding.h"
#include "offload/mhl/tree.h"
#include "platform/io_status.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::mhl {

enum class Process : std::uint8_t {
    Unknown,
    Transfer, ///< copied, and source and copy proven to be equal
    InPlace,  ///< hashed where it lies
    Flatten,
};

struct Author {
    std::string name;
    std::string email;
    std::string phone;
    std::string role;
};

/// A fact of our own about the whole list: an element of kMetadataNamespace in its metadata.
struct MetadataEntry {
    std::string name;
    std::string value;
};
inline constexpr std::string_view kMetadataNamespace = "urn:nqp2:offload:1";

/// All that a manifest says beside its records. Texts are UTF-8; what XML cannot hold is left out
/// when they are written.
struct ManifestHead {
    std::int64_t created = 0; ///< seconds since 1970 UTC; 0 in one read without a valid date
    std::string hostName;
    std::string tool;
    std::string toolVersion;
    std::vector<Author> authors;
    std::string location;
    std::string comment;
    Process process = Process::Unknown;
    std::optional<FolderHashes> root; ///< when read; written from the tree
    std::vector<std::string> ignored; ///< the patterns
    std::vector<MetadataEntry> metadata;
};

/// The newest manifest of a history below this one.
struct Reference {
    std::string path; ///< below this scope
    Hashes c4;
    int line = 0;
};

struct FileRecord {
    std::string path;
    std::optional<std::uint64_t> size;
    std::optional<std::int64_t> modified;
    Hashes hashes;
    std::array<Action, kHashFormats.size()> actions = {}; ///< by format
    std::string previousPath;
    int line = 0;
};

struct FolderRecord {
    std::string path;
    FolderHashes hashes; ///< may be empty
    std::string previousPath;
    int line = 0;
};

/// Takes the bytes of a file in their order.
using Sink = std::function<platform::IoStatus(std::string_view)>;

/// What of a tree goes into a manifest.
struct ManifestContent {
    const Tree* tree = nullptr;          ///< sorted, its folders hashed
    NodeId scope = kScope;               ///< the folder that the manifest is for
    std::span<const NodeId> nested = {}; ///< folders below it with histories of their own
    std::span<const Reference> references = {};
};

/// Writes a manifest piece by piece; the first failure of the sink ends it.
platform::IoStatus WriteManifest(const ManifestHead& head, const ManifestContent& content,
                                 const Sink& sink);

/// Is told what a manifest holds, in its order. Paths are sound: they lead nowhere but below the
/// scope and have no slash at the end. The same path may come twice.
class ManifestHandler {
public:
    virtual ~ManifestHandler() = default;
    virtual void OnFile(const FileRecord& record) = 0;
    virtual void OnFolder(const FolderRecord& record) = 0;
    virtual void OnReference(const Reference& reference) = 0;
    /// What is wrong in a line. What it concerns is left out.
    virtual void OnFinding(bool isFault, int line, std::string sentence) = 0;
};

/// Reads a manifest that comes piece by piece, in memory that one record bounds.
class ManifestReader {
public:
    explicit ManifestReader(ManifestHandler& handler);
    ~ManifestReader();
    ManifestReader(const ManifestReader&) = delete;
    ManifestReader& operator=(const ManifestReader&) = delete;

    /// False as soon as nothing that follows can count any more; the handler was told why.
    bool Add(std::string_view bytes);
    /// Ends it. False when it was no whole manifest, of which the handler was told.
    bool Finish();
    /// What was read of it, whole after Finish.
    [[nodiscard]] const ManifestHead& Head() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace nqp2::mhl
