// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "fuzz/memory_files.h"

#include <algorithm>
#include <set>
#include <utility>

namespace nqp2::fuzz {
namespace {

using platform::EntryKind;
using platform::IoError;
using platform::IoStatus;

constexpr const char* kCardPaths[] = {"CONTENTS/CLIP/0001AA.XML",
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
                                      "AVCHD/BDMV/CLIPINF/00001.CPI",
                                      "AVCHD/BDMV/CLIPINF/00002.cpi",
                                      "AVCHD/BDMV/STREAM/00000.MTS",
                                      "AVCHD/BDMV/STREAM/00001.MTS",
                                      "AVCHD/BDMV/PLAYLIST/00000.MPL",
                                      "AVCHD/BDMV/PLAYLIST/00001.MPL",
                                      "AVCHD/BDMV/PLAYLIST/00002.mpls",
                                      "AVCHD/BDMV/CLIPINF/00000.clpi",
                                      "AVCHD/BDMV/STREAM/00000.m2ts",
                                      "BDMV/CLIPINF/00000.clpi",
                                      "BDMV/STREAM/00000.m2ts",
                                      "BDMV/PLAYLIST/00000.mpls",
                                      "BDMV/PLAYLIST/00000.MPL",
                                      "BDMV/CLIPINF/00000.CPI",
                                      "SONY/DVF/100DVF/DV1.AVI",
                                      "PANA_GRP/001RBQAM/P1.MOV"};

IoStatus Missing() {
    return {IoError::NotFound, "missing"};
}

std::string WithSeparator(const std::string& path) {
    return path.ends_with('/') ? path : path + '/';
}

std::string WithoutSeparator(const std::string& path) {
    return path.substr(0, path.find_last_not_of('/') + 1);
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

private:
    std::string m_content;
    std::size_t m_position = 0;
};

} // namespace

void MemoryFiles::AddFrom(ByteSource& input, const std::string& root) {
    while (!input.IsEmpty()) {
        std::string path = root + '/' + input.Text(kCardPaths);
        path.erase(std::remove(path.begin(), path.end(), '\0'), path.end());
        const std::size_t length = input.Number(2);
        files[path] = input.Take(length);
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
    if (found == files.end()) {
        return Missing();
    }
    info.kind = EntryKind::File;
    info.size = found->second.size();
    return {};
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
    const auto found = files.find(path);
    if (found == files.end() || path.ends_with('/')) {
        return Missing();
    }
    reader = std::make_unique<OpenFile>(found->second);
    return {};
}

IoStatus MemoryFiles::Read(const std::string& path, std::uint64_t limit, std::string& content) {
    content.clear();
    const auto found = files.find(path);
    if (found == files.end() || path.ends_with('/')) {
        return Missing();
    }
    if (found->second.size() > limit) {
        return {IoError::TooLarge, "too large"};
    }
    content = found->second;
    return {};
}

IoStatus MemoryFiles::WriteWhole(const std::string& path, std::string_view content) {
    files[path] = content;
    return {};
}

IoStatus MemoryFiles::FreeSpace(const std::string&, std::uint64_t&) {
    return Missing();
}

IoStatus MemoryFiles::RemoveFile(const std::string& path) {
    return files.erase(path) == 1 ? IoStatus() : Missing();
}

IoStatus MemoryFiles::MoveToFree(const std::string& from, const std::string& to) {
    const auto found = files.find(from);
    if (found == files.end()) {
        return Missing();
    }
    if (!files.emplace(to, found->second).second) {
        return {IoError::Exists, "taken"};
    }
    files.erase(found);
    return {};
}

IoStatus MemoryFiles::MakeFolder(const std::string& path) {
    files.emplace(WithoutSeparator(path) + '/', "");
    return {};
}

IoStatus MemoryFiles::Create(const std::string&, std::unique_ptr<platform::FileWriter>&) {
    return Missing();
}

IoStatus MemoryFiles::RemoveAbandoned(const std::string&) {
    return {};
}

} // namespace nqp2::fuzz
