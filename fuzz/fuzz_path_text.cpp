// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Any bytes as paths, drives and patterns, in both forms.

#include "fuzz/fuzz_target.h"
#include "fuzz/memory_files.h"
#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/TextBytes.h"
#include "platform/case_blind.h"
#include "platform/name_pattern.h"
#include "platform/place.h"
#include "platform/unicode.h"

namespace nqp2::fuzz {
namespace {

constexpr std::size_t kLongPattern = 2048; ///< takes its length times that of the name

std::string WithoutSeparators(std::string_view path) {
    return std::string(path.substr(0, path.find_last_not_of('/') + 1));
}

/// A folder's interface form, with what is appended to it, leads back to the folder.
void CheckRoot(std::string_view folder) {
    const CString root = InterfaceRoot(folder);
    if (root.IsEmpty()) {
        return;
    }
    const std::string path = PosixPath(root + L"\\CONTENTS");
    const std::string plain = WithoutSeparators(folder) + "/CONTENTS";
    Require(path == plain || path == "./" + plain, "a root leads to its folder");
}

void CheckPath(const CString& text) {
    const std::string path = PosixPath(text);
    Require(path.find('\0') == std::string::npos, "no path holds a zero byte");
    const CString whole = platform::FullPath(text);
    Require(whole.Right(text.GetLength()) == text, "a whole path ends as the path does");
    platform::FindExisting(path);
}

/// What a place finds is one entry of its own folder.
void CheckPlace(const CString& text) {
    const platform::PathParts parts = platform::SplitPath(text);
    platform::FoundFile found;
    if (parts.folder.Find(parts.name, found)) {
        const std::string& folder = parts.folder.OnDisk();
        const std::string name = platform::NamePart(found.posixPath);
        Require(platform::IsEntryName(name), "a name leads nowhere else");
        Require(found.posixPath == platform::PathIn(folder, name), "it is in the folder");
    }
    platform::IoStatus status;
    static_cast<void>(platform::Place(text).Below(text).List(text, status));
}

void CheckDrive(std::string_view argument) {
    if (!MapDriveFromArgument(argument)) {
        return;
    }
    const wchar_t drive[] = {static_cast<wchar_t>(argument.front()), 0};
    Require(IsDriveMapped(drive[0]), "what was mapped is mapped");
    PosixPath(CString(drive) + L":\\x");
    MapDrive(drive, "");
    Require(!IsDriveMapped(drive[0]), "an empty folder unmaps it");
}

} // namespace

void TestInput(Input input) {
    const std::string_view bytes = AsText(input);
    const CString text = platform::TextFromNameBytes(bytes);
    Require(platform::NameBytesFromText(text.View()) == bytes, "a file's name keeps every byte");
    MemoryFiles files;
    files.files["/media/card/CONTENTS/CLIP/0001AB.XML"] = "";
    const platform::ScopedFileSystem inPlace(files);
    CheckRoot(bytes);
    CheckPath(text);
    CheckPlace(CString(text.View().substr(0, kLongPattern)));
    CheckDrive(bytes);
    const std::wstring_view half = text.View().substr(0, kLongPattern);
    platform::MatchesPattern(half.substr(0, half.size() / 2), half.substr(half.size() / 2));
    Require(platform::MatchesPattern(half, L"*"), "a star fits everything");
}

} // namespace nqp2::fuzz
