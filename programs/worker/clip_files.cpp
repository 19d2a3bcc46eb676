// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/clip_files.h"

#include "platform/case_fold.h"
#include "platform/unicode.h"
#include "worker/card_folder.h"

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

/// Calls `take` with the folder's spelling, each entry of that kind, the clip's name in
/// upper case and the file's name as text.
template <class Take>
Outcome ForEachFile(const ListFolder& list, const ClipFileKind& kind, Take&& take) {
    std::string placed;
    std::vector<FolderEntry> entries;
    const IoStatus status = list(kind.folder.Bytes(), placed, entries);
    if (!status) {
        return status.error == IoError::NotFound ? Outcome()
                                                 : Failure("read the folder", placed, status);
    }
    for (const FolderEntry& entry : entries) {
        const CString text = platform::TextFromNameBytes(entry.name);
        const std::wstring folded = platform::FoldCase(text.View());
        const std::wstring_view clip = media::ClipNameIn(folded, kind);
        if (!clip.empty()) {
            take(placed, entry, clip, text.View());
        }
    }
    return {};
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

ListFolder ListByPath(const std::string& contents) {
    return [contents](const std::string& folder, std::string& placed,
                      std::vector<FolderEntry>& entries) {
        placed = FolderBelow(contents, folder);
        const IoStatus status = platform::Files().List(placed, entries);
        if (status) {
            placed = placed.substr(placed.find_last_of('/') + 1);
        }
        return status;
    };
}

ListFolder ListInFolder(platform::Folder* contents) {
    return [contents](const std::string& folder, std::string& placed,
                      std::vector<FolderEntry>& entries) {
        if (contents == nullptr) {
            return IoStatus{IoError::NotFound, "there is no such folder"};
        }
        placed = contents->Path() + "/" + folder;
        std::string found;
        IoStatus status = FindIn(*contents, folder, found);
        std::unique_ptr<platform::Folder> opened;
        if (status) {
            status = contents->OpenFolder(found, opened);
        }
        if (status) {
            status = opened->List(entries);
        }
        if (status) {
            placed = found;
        }
        return status;
    };
}

Outcome FindClipFiles(const ListFolder& list, std::span<const CString> clips,
                      std::vector<std::vector<ClipFile>>& files) {
    files.assign(clips.size(), {});
    std::unordered_map<std::wstring, std::size_t> wanted;
    for (std::size_t i = 0; i < clips.size(); ++i) {
        wanted.emplace(platform::FoldCase(clips[i].View()), i);
    }
    for (const ClipFileKind& kind : media::kClipFileKinds) {
        std::vector<std::vector<ClipFile>> found(clips.size());
        Outcome outcome = ForEachFile(
            list, kind,
            [&](const std::string& placed, const FolderEntry& entry, std::wstring_view clip,
                std::wstring_view name) {
                const auto number = wanted.find(std::wstring(clip));
                if (number != wanted.end() && entry.kind != platform::EntryKind::Folder) {
                    found[number->second].push_back(
                        {kind.part, kind.folder.Bytes(),
                         platform::NameBytesFromText(name.substr(clip.size())), placed, entry.name,
                         entry.kind});
                }
            });
        if (!outcome) {
            return outcome;
        }
        for (std::size_t i = 0; i < clips.size(); ++i) {
            KeepOneOfEach(platform::NameBytesFromText(clips[i].View()), found[i]);
            std::move(found[i].begin(), found[i].end(), std::back_inserter(files[i]));
        }
    }
    return {};
}

Outcome TakenNames(const ListFolder& list, std::vector<std::wstring>& names) {
    for (const ClipFileKind& kind : media::kClipFileKinds) {
        Outcome outcome =
            ForEachFile(list, kind,
                        [&](const std::string&, const FolderEntry&, std::wstring_view clip,
                            std::wstring_view) { names.emplace_back(clip); });
        if (!outcome) {
            return outcome;
        }
    }
    return {};
}

bool HaveSameRole(const ClipFile& left, const ClipFile& right) {
    return left.folder == right.folder &&
           platform::FoldNameCase(left.suffix) == platform::FoldNameCase(right.suffix);
}

Outcome MissingClip(const std::string& contents, const CString& clipName) {
    return Failure("There is no clip " + Shown(clipName) + " in " + contents + ".");
}

Outcome CheckFoldersAreNoLinks(const std::string& contents) {
    std::vector<std::string> folders = {contents};
    for (const ClipFileKind& kind : media::kClipFileKinds) {
        folders.push_back(FolderBelow(contents, kind.folder.Bytes()));
    }
    const auto link = std::find_if(folders.begin(), folders.end(), platform::IsLink);
    return link == folders.end() ? Outcome()
                                 : Failure(*link + " is a link, through which nothing is written.");
}

} // namespace nqp2::worker
