// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/card_state.h"

#include "console/console.h"
#include "media/card_layout.h"
#include "offload/mhl/hash_format.h"
#include "platform/file_system.h"
#include "platform/folder.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

namespace nqp2::catalogue {

using platform::EntryKind;
using platform::FileInfo;
using platform::Folder;
using platform::FolderEntry;
using platform::IoStatus;

namespace {

constexpr int kDeepest = 64;
constexpr std::size_t kMostFiles = 4'000'000;

void AddNumber(std::string& bytes, std::uint64_t number) {
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

/// A file's facts as bytes, no two alike.
void AddFacts(std::string& bytes, const FileState& file) {
    AddNumber(bytes, file.name.size());
    bytes.append(file.name);
    AddNumber(bytes, file.size);
    AddNumber(bytes, static_cast<std::uint64_t>(file.modified));
    AddNumber(bytes, file.modifiedNanoseconds);
}

class Walk {
public:
    explicit Walk(std::string root) : m_root(std::move(root)) {}

    CardState Run() {
        std::unique_ptr<Folder> folder;
        FileInfo info;
        Require(platform::Files().OpenFolder(m_root, folder), "");
        Require(platform::Files().Stat(m_root, info), "");
        m_device = info.device;
        Enter(*folder, "", 0);
        m_state.digest = m_hasher.Value().Text(mhl::HashFormat::Xxh128);
        return std::move(m_state);
    }

private:
    void Require(const IoStatus& status, const std::string& path) const {
        if (!status) {
            throw tool::Failure(path.empty() ? m_root : m_root + '/' + path, "cannot be read",
                                status.reason);
        }
    }

    void Enter(Folder& folder, const std::string& path, int depth) {
        std::vector<FolderEntry> entries;
        Require(folder.List(entries), path);
        std::sort(entries.begin(), entries.end(),
                  [](const auto& a, const auto& b) { return a.name < b.name; });
        m_bytes.clear();
        AddNumber(m_bytes, path.size());
        m_bytes += path;
        m_state.folders.push_back(path);
        m_state.files.reserve(m_state.files.size() + entries.size());
        std::vector<std::string> below;
        for (FolderEntry& entry : entries) {
            Take(folder, path, std::move(entry.name), below);
        }
        m_hasher.Add(m_bytes);
        for (const std::string& name : below) {
            std::unique_ptr<Folder> next;
            std::string whole = path.empty() ? "" : path + '/';
            whole += name;
            Require(folder.OpenFolder(name, next), whole);
            if (depth < kDeepest) {
                Enter(*next, whole, depth + 1);
            }
        }
    }

    void Take(Folder& folder, const std::string& path, std::string name,
              std::vector<std::string>& below) {
        FileInfo info;
        const IoStatus status = folder.Stat(name, info);
        if (status.error == platform::IoError::NotFound) {
            return; // gone since it was listed
        }
        if (!status) {
            Require(status, path.empty() ? name : path + '/' + name);
        }
        if (info.device != m_device) {
            return;
        }
        if (info.kind == EntryKind::Folder) {
            below.push_back(std::move(name));
        } else if (info.kind == EntryKind::File && m_state.files.size() < kMostFiles) {
            const auto folders = static_cast<std::uint32_t>(m_state.folders.size());
            m_state.files.push_back(
                {folders - 1, std::move(name), info.size, info.modified, info.modifiedNanoseconds});
            AddFacts(m_bytes, m_state.files.back());
            m_state.bytes += info.size;
        }
    }

    std::string m_root;
    std::uint64_t m_device = 0;
    CardState m_state;
    mhl::Hasher m_hasher{mhl::HashFormat::Xxh128};
    std::string m_bytes; ///< of the folder that is being read
};

/// A file of a clip of a P2 card.
struct ClipPart {
    std::string clip; ///< in capitals; "" for a file that is no clip's
    bool isMetadata = false;
};

ClipPart PartOf(const std::string& path) {
    const std::string capitals = Capitals(path);
    for (const media::ClipFileKind& kind : media::kClipFileKinds) {
        const std::string folder =
            std::string(media::kContents.Bytes()) + '/' + kind.folder.Bytes() + '/';
        if (capitals.starts_with(folder)) {
            const std::string_view file = std::string_view(capitals).substr(folder.size());
            return {std::string(media::ClipNameIn(file, kind)),
                    kind.part == media::ClipPart::Metadata};
        }
    }
    return {};
}

} // namespace

CardState StateOf(const std::string& root) {
    return Walk(root).Run();
}

std::string Capitals(std::string_view text) {
    std::string capitals(text);
    for (char& each : capitals) {
        each = each >= 'a' && each <= 'z' ? static_cast<char>(each - 'a' + 'A') : each;
    }
    return capitals;
}

std::map<std::string, ClipStamp> ClipStamps(const CardState& state) {
    std::map<std::string, ClipStamp> stamps;
    for (const FileState& file : state.files) {
        const ClipPart part = PartOf(state.PathOf(file));
        if (part.clip.empty()) {
            continue;
        }
        ClipStamp& stamp = stamps[part.clip];
        stamp.digest += state.folders[file.folder] + '/';
        AddFacts(stamp.digest, file);
        if (part.isMetadata) {
            stamp.name = file.name.substr(0, part.clip.size());
        }
    }
    std::erase_if(stamps, [](const auto& each) { return each.second.name.empty(); });
    mhl::Hasher hasher(mhl::HashFormat::Xxh64);
    for (auto& [clip, stamp] : stamps) {
        hasher.Add(stamp.digest);
        stamp.digest = hasher.Value().Text(mhl::HashFormat::Xxh64);
    }
    return stamps;
}

} // namespace nqp2::catalogue
