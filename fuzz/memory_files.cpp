// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "fuzz/memory_files.h"

#include "platform/folder.h"

#include <set>
#include <utility>

namespace nqp2::fuzz {
namespace {

using platform::EntryKind;
using platform::IoError;
using platform::IoStatus;

constexpr const char* kPaths[] = {"CONTENTS/CLIP/0001AA.XML",
                                  "CONTENTS/CLIP/0002BB.XML",
                                  "contents/clip/0003cc.xml",
                                  "CONTENTS/VIDEO/0001AA.MXF",
                                  "CONTENTS/AUDIO/0001AA00.MXF",
                                  "CONTENTS/AUDIO/0001AA01.MXF",
                                  "CONTENTS/ICON/0001AA.BMP",
                                  "CONTENTS/PROXY/0001AA.MP4",
                                  "CONTENTS/AVCLIP/0001AA.MXF",
                                  "EDITLIST/P001ED.XML",
                                  "CONTENTS/EDITLIST/P002ED.XML",
                                  "USERDATA/Ingest.xml",
                                  "CONTENTS/CLIP/",
                                  "CONTENTS/CLIP/0004DD.XML/",
                                  "LASTCLIP.TXT",
                                  "AVCHD/BDMV/CLIPINF/00000.CPI",
                                  "AVCHD/BDMV/STREAM/00000.MTS",
                                  "AVCHD/BDMV/STREAM/00001.MTS",
                                  "AVCHD/BDMV/PLAYLIST/00000.MPL",
                                  "AVCHD/BDMV/PLAYLIST/00002.mpls",
                                  "AVCHD/BDMV/CLIPINF/00000.clpi",
                                  "AVCHD/BDMV/STREAM/00000.m2ts",
                                  "BDMV/CLIPINF/00000.clpi",
                                  "BDMV/STREAM/00000.m2ts",
                                  "BDMV/PLAYLIST/00000.mpls",
                                  "SONY/DVF/100DVF/DV1.AVI",
                                  "PANA_GRP/001RBQAM/P1.MOV"};

IoStatus Known(bool done, IoError error) {
    return done ? IoStatus() : IoStatus{error, "in memory"};
}
IoStatus Missing() {
    return Known(false, IoError::NotFound);
}

std::string WithSeparator(const std::string& path) {
    return path.ends_with('/') ? path : path + '/';
}

/// A file that is read from a copy of what it held when it was opened.
class OpenFile final : public platform::FileReader {
public:
    explicit OpenFile(std::string content) : m_content(std::move(content)) {}
    [[nodiscard]] std::uint64_t Size() const override { return m_content.size(); }
    IoStatus Read(char* buffer, std::size_t capacity, std::size_t& count) override {
        count = m_content.copy(buffer, capacity, m_position);
        m_position += count;
        return {};
    }
    IoStatus Stat(platform::FileInfo& info) override {
        info = {};
        info.size = m_content.size();
        return {};
    }
    void ReadAround() override {}

private:
    std::string m_content;
    std::size_t m_position = 0;
};

/// A folder of those files, by its path: nothing in memory moves.
class MemoryFolder final : public platform::Folder {
public:
    MemoryFolder(MemoryFiles& files, std::string path)
        : m_files(files), m_path(path.substr(0, path.find_last_not_of('/') + 1)) {}

    [[nodiscard]] const std::string& Path() const override { return m_path; }
    IoStatus OpenFolder(const std::string& name,
                        std::unique_ptr<platform::Folder>& folder) override {
        return m_files.OpenFolder(PathOf(name), folder);
    }
    IoStatus MakeFolder(const std::string& name) override {
        const bool isNew = m_files.files.emplace(PathOf(name) + '/', "").second;
        return Known(isNew, IoError::Exists);
    }
    IoStatus MakeUnflushed(const std::string& name) override { return MakeFolder(name); }
    IoStatus RemoveFolder(const std::string& name) override {
        return Known(m_files.files.erase(PathOf(name) + '/') == 1, IoError::NotFound);
    }
    IoStatus Stat(const std::string& name, platform::FileInfo& info) override {
        return m_files.Stat(PathOf(name), info);
    }
    IoStatus List(std::vector<platform::FolderEntry>& entries) override {
        return m_files.List(m_path, entries);
    }
    IoStatus Open(const std::string& name, std::unique_ptr<platform::FileReader>& reader) override {
        return m_files.Open(PathOf(name), reader);
    }
    IoStatus Read(const std::string& name, std::uint64_t limit, std::string& content) override {
        return m_files.Read(PathOf(name), limit, content);
    }
    IoStatus WriteWhole(const std::string& name, std::string_view content) override {
        m_files.files[PathOf(name)] = content;
        return {};
    }
    IoStatus Create(const std::string&, std::unique_ptr<platform::FileWriter>&) override {
        return Missing();
    }
    IoStatus RemoveFiles(std::span<const std::string> names, std::string& failed) override {
        for (const std::string& name : names) {
            if (m_files.files.erase(PathOf(name)) != 1) {
                failed = name;
                return Missing();
            }
        }
        return {};
    }
    IoStatus MoveToFree(const std::string& from, const std::string& to) override {
        if (m_files.files.contains(PathOf(to))) {
            return Known(false, IoError::Exists);
        }
        auto node = m_files.files.extract(PathOf(from));
        if (node.empty()) {
            return Missing();
        }
        node.key() = PathOf(to);
        m_files.files.insert(std::move(node));
        return {};
    }
    IoStatus RemoveAbandoned() override { return {}; }
    IoStatus Flush() override { return {}; }
    IoStatus FlushAll() override { return {}; }
    IoStatus KeepTime(const std::string&, const platform::FileInfo&) override { return {}; }
    IoStatus UsableSpace(std::uint64_t&) override { return Missing(); }
    IoStatus Medium(platform::MediumFacts&) override { return Missing(); }
    IoStatus IsCaseBlind(bool&) override { return Missing(); }
    IoStatus Lock(std::chrono::milliseconds) override { return {}; }
    IoStatus LockName(const std::string&, std::unique_ptr<platform::NameLock>&) override {
        return {};
    }

private:
    [[nodiscard]] std::string PathOf(const std::string& name) const { return m_path + '/' + name; }

    MemoryFiles& m_files;
    std::string m_path;
};

} // namespace

void MemoryFiles::AddFrom(ByteSource& input, const std::string& root) {
    while (!input.IsEmpty()) {
        std::string path = root + '/' + input.Text(kPaths);
        std::erase(path, '\0');
        files[path] = input.Take(input.Number(2));
    }
}

IoStatus MemoryFiles::Stat(const std::string& path, platform::FileInfo& info) {
    const std::string folder = WithSeparator(path);
    const auto inside = files.lower_bound(folder);
    if (inside != files.end() && inside->first.starts_with(folder)) {
        info.kind = EntryKind::Folder;
        return {};
    }
    const auto found = files.find(path);
    if (found != files.end()) {
        info.kind = EntryKind::File;
        info.size = found->second.size();
    }
    return Known(found != files.end(), IoError::NotFound);
}

IoStatus MemoryFiles::List(const std::string& path, std::vector<platform::FolderEntry>& entries) {
    entries.clear();
    const std::string folder = WithSeparator(path);
    std::set<std::string> known;
    auto entry = files.lower_bound(folder);
    if (entry == files.end() || !entry->first.starts_with(folder)) {
        return Missing();
    }
    for (; entry != files.end() && entry->first.starts_with(folder); ++entry) {
        const std::string rest = entry->first.substr(folder.size());
        const std::string name = rest.substr(0, rest.find('/'));
        if (!name.empty() && name != "." && name != ".." && known.insert(name).second) {
            entries.push_back({name, rest == name ? EntryKind::File : EntryKind::Folder});
        }
    }
    return {};
}

IoStatus MemoryFiles::Open(const std::string& path, std::unique_ptr<platform::FileReader>& reader) {
    std::string content;
    const IoStatus status = Read(path, UINT64_MAX, content);
    if (status) {
        reader = std::make_unique<OpenFile>(std::move(content));
    }
    return status;
}

IoStatus MemoryFiles::Read(const std::string& path, std::uint64_t limit, std::string& content) {
    content.clear();
    const auto found = files.find(path);
    if (found == files.end() || path.ends_with('/')) {
        return Missing();
    }
    if (found->second.size() <= limit) {
        content = found->second;
    }
    return Known(found->second.size() <= limit, IoError::TooLarge);
}

IoStatus MemoryFiles::FreeSpace(const std::string&, std::uint64_t&) {
    return Missing();
}

IoStatus MemoryFiles::OpenFolder(const std::string& path,
                                 std::unique_ptr<platform::Folder>& folder) {
    std::vector<platform::FolderEntry> entries;
    const IoStatus status = List(path, entries);
    if (status) {
        folder = std::make_unique<MemoryFolder>(*this, path);
    }
    return status;
}

} // namespace nqp2::fuzz
