// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/clip_files.h"

#include "platform/case_fold.h"
#include "platform/unicode.h"
#include "worker/base/card_folder.h"

#include <algorithm>
#include <string_view>
#include <tuple>
#include <unordered_map>

namespace nqp2::worker {
namespace {

using media::ClipFileKind;
using platform::FolderEntry;
using platform::IoError;
using platform::IoStatus;
using platform::PathIn;

/// Calls `take` with the folder's spelling, each entry of that kind, the clip's name in
/// upper case and the file's name as text.
template <class Take>
void ForEachFile(const ListFolder& list, const ClipFileKind& kind, Take&& take) {
    const auto [placed, entries] = list(kind.folder.Bytes());
    for (const FolderEntry& entry : entries) {
        const CString text = platform::TextFromNameBytes(entry.name);
        const std::wstring folded = platform::FoldCase(text.View());
        const std::wstring_view clip = media::ClipNameIn(folded, kind);
        if (!clip.empty()) {
            take(placed, entry, clip, text.View());
        }
    }
}

/// What a listing that ended so is; `path` for its failure, `name` is the folder's spelling.
Listing Listed(const IoStatus& status, const std::string& path, std::string name,
               std::vector<FolderEntry> entries) {
    if (status.error == IoError::NotFound) {
        return {};
    }
    copy::Require(status, "read the folder", path);
    return {std::move(name), std::move(entries)};
}

/// Two names that differ only in case are one on a card: the exact one counts, else the first.
/// The files come in the order of what follows the clip's name.
void KeepOneOfEach(const std::string& exactName, std::vector<ClipFile>& files) {
    using Key = std::tuple<std::string, bool, std::string>; // of those alike, the first is kept
    std::vector<std::pair<Key, std::size_t>> order;
    for (std::size_t i = 0; i < files.size(); ++i) {
        const ClipFile& file = files[i];
        const bool exact = file.name == exactName + file.suffix;
        order.push_back({{platform::FoldNameCase(file.suffix), !exact, file.name}, i});
    }
    std::sort(order.begin(), order.end());
    const auto isAlike = [](const auto& left, const auto& right) {
        return std::get<0>(left.first) == std::get<0>(right.first);
    };
    order.erase(std::unique(order.begin(), order.end(), isAlike), order.end());
    std::vector<ClipFile> kept;
    for (const auto& [key, number] : order) {
        kept.push_back(std::move(files[number]));
    }
    files = std::move(kept);
}

} // namespace

ListFolder ListByPath(const platform::Place& contents) {
    return [contents](const std::string& folder) {
        platform::FoundFile found;
        std::vector<FolderEntry> entries;
        IoStatus status = contents.Find(platform::TextFromUtf8(folder), found);
        if (status) {
            status = platform::Files().List(found.posixPath, entries);
        }
        return Listed(status, PathIn(contents.OnDisk(), folder),
                      platform::NamePart(found.posixPath), std::move(entries));
    };
}

ListFolder ListInFolder(platform::Folder* contents) {
    return [contents](const std::string& folder) {
        if (contents == nullptr) {
            return Listing();
        }
        std::string found;
        std::unique_ptr<platform::Folder> opened;
        std::vector<FolderEntry> entries;
        IoStatus status = FindIn(*contents, folder, found);
        if (status) {
            status = contents->OpenFolder(found, opened);
        }
        if (status) {
            status = opened->List(entries);
        }
        return Listed(status, PathIn(contents->Path(), folder), found, std::move(entries));
    };
}

std::vector<std::vector<ClipFile>> FindClipFiles(const ListFolder& list,
                                                 std::span<const CString> clips) {
    std::vector<std::vector<ClipFile>> files(clips.size());
    std::unordered_map<std::wstring, std::size_t> wanted;
    for (std::size_t i = 0; i < clips.size(); ++i) {
        wanted.emplace(platform::FoldCase(clips[i].View()), i);
    }
    for (const ClipFileKind& kind : media::kClipFileKinds) {
        std::vector<std::vector<ClipFile>> found(clips.size());
        ForEachFile(list, kind,
                    [&](const std::string& placed, const FolderEntry& entry, std::wstring_view clip,
                        std::wstring_view name) {
                        const auto number = wanted.find(std::wstring(clip));
                        if (number != wanted.end() && entry.kind != platform::EntryKind::Folder) {
                            found[number->second].push_back(
                                {kind.part, kind.folder.Bytes(),
                                 platform::NameBytesFromText(name.substr(clip.size())), placed,
                                 entry.name, entry.kind});
                        }
                    });
        for (std::size_t i = 0; i < clips.size(); ++i) {
            KeepOneOfEach(platform::NameBytesFromText(clips[i].View()), found[i]);
            std::move(found[i].begin(), found[i].end(), std::back_inserter(files[i]));
        }
    }
    return files;
}

std::vector<std::wstring> TakenNames(const ListFolder& list) {
    std::vector<std::wstring> names;
    for (const ClipFileKind& kind : media::kClipFileKinds) {
        ForEachFile(list, kind,
                    [&](const std::string&, const FolderEntry&, std::wstring_view clip,
                        std::wstring_view) { names.emplace_back(clip); });
    }
    return names;
}

bool HaveSameRole(const ClipFile& left, const ClipFile& right) {
    return left.folder == right.folder &&
           platform::FoldNameCase(left.suffix) == platform::FoldNameCase(right.suffix);
}

std::string MetadataName(const CString& clip) {
    return platform::NameBytesFromText(media::FileNameOf(media::kMetadataFiles, clip).View());
}

copy::Failure MissingClip(const std::string& contents, const CString& clipName) {
    return copy::Failure("There is no clip " + Shown(clipName) + " in " + contents + ".");
}

} // namespace nqp2::worker
