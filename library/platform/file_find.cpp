// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/file_find.h"

#include "NQP2ParserU/PathText.h"
#include "platform/case_blind.h"
#include "platform/case_fold.h"
#include "platform/unicode.h"

namespace nqp2::platform {
namespace {

/// A pattern taken apart: "E:\CLIP\" and "*.XML".
struct Pattern {
    std::wstring_view folder;
    std::wstring_view name;
};

Pattern SplitPattern(std::wstring_view text) {
    const std::size_t nameStart = text.find_last_of(L"\\/") + 1;
    return {text.substr(0, nameStart), text.substr(nameStart)};
}

std::string PosixFolder(const Pattern& pattern) {
    return pattern.folder.empty() ? "./" : PosixPath(CString(pattern.folder));
}

/// Records show the folder as it was asked for; the file is opened by the folder's real spelling.
FoundFile MakeFound(std::wstring_view askedFolder, const std::string& realFolder,
                    const std::string& name, const CString& text) {
    FoundFile found;
    found.path = CString(askedFolder) + text;
    const int dot = text.ReverseFind(L'.');
    found.title = dot < 0 ? text : text.Left(dot);
    found.posixPath = realFolder + name;
    found.pathIsSafe = text.Find(L'\\') < 0;
    return found;
}

} // namespace

std::vector<FoundFile> FindFiles(const CString& pattern, IoStatus& status) {
    const Pattern parts = SplitPattern(pattern.View());
    std::string folder = PosixFolder(parts);
    std::vector<FolderEntry> entries;
    status = ListExisting(folder, entries);
    std::vector<FoundFile> found;
    for (const FolderEntry& entry : entries) {
        const CString name = TextFromNameBytes(entry.name);
        if (MatchesPattern(name.View(), parts.name)) {
            found.push_back(MakeFound(parts.folder, folder, entry.name, name));
            found.back().isFolder = entry.kind == EntryKind::Folder;
            found.back().isSpecial = entry.kind == EntryKind::Other;
        }
    }
    return found;
}

bool MatchesPattern(std::wstring_view name, std::wstring_view pattern) {
    if (pattern == L"*.*") {
        return true; // kept: hosts rely on it, names without a dot included
    }
    constexpr std::size_t kNone = std::wstring_view::npos;
    std::size_t n = 0;
    std::size_t p = 0;
    std::size_t star = kNone; // the last "*" seen
    std::size_t resumeAt = 0; // where the name goes on when that "*" takes one more element
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == L'*') {
            star = p++;
            resumeAt = n;
        } else if (p < pattern.size() &&
                   (pattern[p] == L'?' || ToUpper(pattern[p]) == ToUpper(name[n]))) {
            ++n;
            ++p;
        } else if (star != kNone) {
            p = star + 1;
            n = ++resumeAt;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(L'*', p) == kNone;
}

} // namespace nqp2::platform
