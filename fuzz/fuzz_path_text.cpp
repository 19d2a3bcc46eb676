// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Any bytes as paths, drives and patterns, in both forms.

#include "fuzz/measured_input.h"
#include "fuzz/memory_files.h"
#include "fuzz/require.h"
#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/TextBytes.h"
#include "platform/case_blind.h"
#include "platform/place.h"
#include "platform/unicode.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

using nqp2::fuzz::Require;

constexpr std::size_t kLongPattern = 2048; ///< takes its length times that of the name

std::string WithoutSeparators(std::string_view path) {
    return std::string(path.substr(0, path.find_last_not_of('/') + 1));
}

/// A folder's interface form, with what is appended to it, leads back to the folder.
void CheckRoot(std::string_view folder) {
    const CString root = nqp2::InterfaceRoot(folder);
    if (root.IsEmpty()) {
        Require(folder.empty() || folder.find(":\\") != std::string_view::npos ||
                    folder.find('\0') != std::string_view::npos,
                "nearly every folder has an interface form");
        return;
    }
    const std::string path = nqp2::PosixPath(root + L"\\CONTENTS");
    const std::string plain = WithoutSeparators(folder) + "/CONTENTS";
    Require(path == plain || path == "./" + plain, "a root leads to its folder");
}

void CheckPath(const CString& text) {
    const std::string path = nqp2::PosixPath(text);
    Require(path.find('\0') == std::string::npos, "no path holds a zero byte");
    const CString whole = nqp2::platform::FullPath(text);
    Require(whole.Right(text.GetLength()) == text, "a whole path ends as the path does");
    nqp2::platform::FindExisting(path);
}

/// What a place finds is one entry of its own folder.
void CheckPlace(const CString& text) {
    const nqp2::platform::PathParts parts = nqp2::platform::SplitPath(text);
    nqp2::platform::FoundFile found;
    if (parts.folder.Find(parts.name, found)) {
        const std::string& folder = parts.folder.OnDisk();
        const std::string name = nqp2::platform::NamePart(found.posixPath);
        Require(nqp2::platform::IsEntryName(name), "a name leads nowhere else");
        Require(found.posixPath == nqp2::platform::PathIn(folder, name), "it is in the folder");
    }
    nqp2::platform::IoStatus status;
    static_cast<void>(nqp2::platform::Place(text).Below(text).List(text, status));
}

void CheckDrive(std::string_view argument) {
    if (!nqp2::MapDriveFromArgument(argument)) {
        return;
    }
    const wchar_t drive[] = {static_cast<wchar_t>(argument.front()), 0};
    Require(nqp2::IsDriveMapped(drive[0]), "what was mapped is mapped");
    const std::string path = nqp2::PosixPath(CString(drive) + L":\\x");
    Require(path.ends_with("/x") || path == "x", "a path on the drive leads somewhere");
    nqp2::MapDrive(drive, "");
    Require(!nqp2::IsDriveMapped(drive[0]), "an empty folder unmaps it");
}

} // namespace

int nqp2::fuzz::TestInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
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
    return 0;
}
