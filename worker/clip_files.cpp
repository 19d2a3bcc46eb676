// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/clip_files.h"

#include "platform/case_blind.h"
#include "platform/case_fold.h"
#include "platform/file_system.h"
#include "platform/unicode.h"
#include "worker/card_folder.h"

#include <algorithm>
#include <string_view>

namespace nqp2::worker {
namespace {

/// A file is named after its clip, a number of so many digits and the extension ("": any).
struct FolderRule {
    const char* folder;
    ClipPart part;
    std::size_t digits;
    std::wstring_view extension; ///< in upper case
};

// The metadata folder is the last: without its file a clip does not show.
constexpr FolderRule kFolders[] = {
    {"VIDEO", ClipPart::Video, 0, L".MXF"},   {"AVCLIP", ClipPart::Video, 0, L".MXF"},
    {"AUDIO", ClipPart::Audio, 2, L".MXF"},   {"ICON", ClipPart::Other, 0, L".BMP"},
    {"PROXY", ClipPart::Other, 0, L""},       {"VOICE", ClipPart::Other, 2, L""},
    {"CLIP", ClipPart::Metadata, 0, L".XML"},
};

bool IsDigit(wchar_t ch) {
    return ch >= L'0' && ch <= L'9';
}

/// What of a folded file name stands before the number and extension; empty when the name does not
/// follow the rule.
std::wstring_view ClipNameIn(std::wstring_view file, const FolderRule& rule) {
    const std::size_t dot = file.find_last_of(L'.');
    if (file.starts_with(L'.') || dot == std::wstring_view::npos || dot <= rule.digits ||
        (!rule.extension.empty() && file.substr(dot) != rule.extension)) {
        return {};
    }
    const std::wstring_view number = file.substr(dot - rule.digits, rule.digits);
    return std::all_of(number.begin(), number.end(), IsDigit) ? file.substr(0, dot - rule.digits)
                                                              : std::wstring_view();
}

/// A folder that is not there holds nothing; any other failure would make a clip look smaller.
Outcome List(const std::string& folder, std::vector<platform::FolderEntry>& entries) {
    const platform::IoStatus status = platform::Files().List(folder, entries);
    return status || status.error == platform::IoError::NotFound
               ? Outcome()
               : Failure("read the folder", folder, status);
}

/// Calls `take` with each entry that follows the rule, its folded name and the clip's part of it.
template <class Take>
Outcome ForEachFile(const std::string& contents, const FolderRule& rule, Take&& take) {
    const std::string folder = FolderBelow(contents, rule.folder);
    std::vector<platform::FolderEntry> entries;
    Outcome outcome = List(folder, entries);
    for (std::size_t i = 0; outcome && i < entries.size(); ++i) {
        const CString text = platform::TextFromNameBytes(entries[i].name);
        const std::wstring folded = platform::FoldCase(text.View());
        const std::wstring_view clip = ClipNameIn(folded, rule);
        if (!clip.empty()) {
            outcome = take(folder + "/" + entries[i].name, clip, text.View());
        }
    }
    return outcome;
}

Outcome AddFile(const FolderRule& rule, const std::string& path, std::wstring_view suffix,
                std::vector<ClipFile>& files) {
    platform::FileInfo info;
    if (const platform::IoStatus status = platform::Files().Stat(path, info); !status) {
        return Failure("read", path, status);
    }
    if (info.kind == platform::EntryKind::Other) {
        return Failure(path + " is no file.");
    }
    if (info.kind == platform::EntryKind::File) {
        files.push_back(
            {rule.part, rule.folder, platform::NameBytesFromText(suffix), path, info.size});
    }
    return {};
}

/// Two names that differ only in case are one on a card: the exact one counts, else the first.
void KeepOneOfEach(const std::string& exactName, std::vector<ClipFile>& files) {
    const auto rank = [&](const ClipFile& file) {
        const bool exact = file.path.ends_with("/" + exactName + file.suffix);
        return std::make_pair(exact ? 0 : 1, file.path);
    };
    std::sort(files.begin(), files.end(),
              [&](const ClipFile& a, const ClipFile& b) { return rank(a) < rank(b); });
    std::vector<ClipFile> kept;
    for (ClipFile& file : files) {
        const auto same = [&](const ClipFile& other) {
            return platform::FoldNameCase(other.suffix) == platform::FoldNameCase(file.suffix);
        };
        if (std::none_of(kept.begin(), kept.end(), same)) {
            kept.push_back(std::move(file));
        }
    }
    std::sort(kept.begin(), kept.end(),
              [](const ClipFile& a, const ClipFile& b) { return a.suffix < b.suffix; });
    files = std::move(kept);
}

} // namespace

Outcome FindClipFiles(const std::string& contents, const CString& clipName,
                      std::vector<ClipFile>& files) {
    files.clear();
    const std::wstring wanted = platform::FoldCase(clipName.View());
    const std::string exactName = platform::NameBytesFromText(clipName.View());
    for (const FolderRule& rule : kFolders) {
        std::vector<ClipFile> found;
        Outcome outcome = ForEachFile(
            contents, rule,
            [&](const std::string& path, std::wstring_view clip, std::wstring_view name) {
                return clip == wanted ? AddFile(rule, path, name.substr(clip.size()), found)
                                      : Outcome();
            });
        if (!outcome) {
            return outcome;
        }
        KeepOneOfEach(exactName, found);
        files.insert(files.end(), found.begin(), found.end());
    }
    return {};
}

Outcome MissingClip(const std::string& contents, const CString& clipName) {
    return Failure("There is no clip " + Shown(clipName) + " in " + contents + ".");
}

Outcome CollectClip(const std::string& contents, const CString& clipName,
                    std::vector<ClipFile>& files) {
    Outcome outcome = CheckClipName(clipName);
    if (outcome) {
        outcome = FindClipFiles(contents, clipName, files);
    }
    const bool whole = !files.empty() && files.back().part == ClipPart::Metadata;
    return outcome && !whole ? MissingClip(contents, clipName) : outcome;
}

std::vector<std::string> ClipFolders() {
    std::vector<std::string> folders;
    for (const FolderRule& rule : kFolders) {
        folders.emplace_back(rule.folder);
    }
    return folders;
}

Outcome CheckFoldersAreNoLinks(const std::string& contents) {
    std::vector<std::string> folders = {contents};
    for (const FolderRule& rule : kFolders) {
        folders.push_back(FolderBelow(contents, rule.folder));
    }
    const auto link = std::find_if(folders.begin(), folders.end(), platform::IsLink);
    return link == folders.end() ? Outcome()
                                 : Failure(*link + " is a link, through which nothing is written.");
}

Outcome TakenNames(const std::string& contents, std::vector<std::wstring>& names) {
    for (const FolderRule& rule : kFolders) {
        Outcome outcome = ForEachFile(
            contents, rule, [&](const std::string&, std::wstring_view clip, std::wstring_view) {
                names.emplace_back(clip);
                return Outcome();
            });
        if (!outcome) {
            return outcome;
        }
    }
    return {};
}

} // namespace nqp2::worker
