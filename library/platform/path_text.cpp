// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/PathText.h"

#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/TextBytes.h"
#include "platform/guard.h"
#include "platform/unicode.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <shared_mutex>

namespace nqp2 {
namespace {

constexpr std::size_t kDrives = 26;
constexpr std::size_t kNoDrive = kDrives;

struct DriveTable {
    std::shared_mutex lock;
    std::array<std::string, kDrives> folders;
};

DriveTable& Table() {
    static DriveTable table;
    return table;
}

std::size_t DriveSlot(wchar_t ch) {
    if (ch >= L'a' && ch <= L'z') {
        return static_cast<std::size_t>(ch - L'a');
    }
    return ch >= L'A' && ch <= L'Z' ? static_cast<std::size_t>(ch - L'A') : kNoDrive;
}

bool IsDriveLetter(wchar_t ch) {
    return DriveSlot(ch) != kNoDrive;
}

/// Empty when the letter is not mapped.
std::string DriveFolder(wchar_t drive) {
    if (!IsDriveLetter(drive)) {
        return {};
    }
    const std::shared_lock guard(Table().lock);
    return Table().folders[DriveSlot(drive)];
}

bool IsDriveText(const wchar_t* text) {
    if (text == nullptr || !IsDriveLetter(text[0])) {
        return false;
    }
    return text[1] == L'\0' || (text[1] == L':' && text[2] == L'\0');
}

constexpr std::size_t kNone = std::wstring_view::npos;

/// Index of the ":" that ends the drive part, or kNone.
std::size_t FindDriveColon(std::wstring_view text) {
    for (std::size_t at = text.find(L':'); at != kNone; at = text.find(L':', at + 1)) {
        if (at + 1 == text.size() || text[at + 1] == L'\\') {
            return at;
        }
    }
    return kNone;
}

/// A backslash inside a folder that is the drive part belongs to its name and is kept.
std::string FolderBehindDrivePart(std::wstring_view drivePart) {
    if (drivePart.size() == 1 && IsDriveLetter(drivePart[0])) {
        return DriveFolder(drivePart[0]);
    }
    return platform::NameBytesFromText(drivePart);
}

std::string BytesWithSlashes(std::wstring_view text) {
    std::wstring slashed(text);
    std::replace(slashed.begin(), slashed.end(), L'\\', L'/');
    return platform::NameBytesFromText(slashed);
}

std::string JoinWithoutDoubling(std::string folder, const std::string& rest) {
    if (!rest.empty()) {
        folder.erase(folder.find_last_not_of('/') + 1);
    }
    return folder + rest;
}

std::string_view WithoutTrailingSlashes(std::string_view folder) {
    const std::size_t last = folder.find_last_not_of('/');
    return folder.substr(0, last == std::string_view::npos ? 1 : last + 1);
}

bool LooksLikeDrive(const CString& text) {
    return text.GetLength() == 1 && IsDriveLetter(text[0]);
}

} // namespace

bool MapDrive(const wchar_t* drive, const char* folder) {
    return platform::Guarded(false, [&] {
        if (!IsDriveText(drive)) {
            return false;
        }
        std::string text = folder != nullptr ? folder : "";
        const std::unique_lock guard(Table().lock);
        Table().folders[DriveSlot(drive[0])] = std::move(text);
        return true;
    });
}

bool MapDriveFromArgument(std::string_view argument) {
    return platform::Guarded(false, [&] {
        const std::size_t equals = std::min(argument.find('='), argument.size());
        const CString drive = TextFromBytes(argument.substr(0, equals));
        const std::string folder(argument.substr(std::min(equals + 1, argument.size())));
        // Behind a zero byte the rest would be left out without a word.
        const bool isWhole = argument.find('\0') == std::string_view::npos;
        return isWhole && !folder.empty() && MapDrive(drive, folder.c_str());
    });
}

bool IsDriveMapped(wchar_t drive) {
    return platform::Guarded(false, [&] { return !DriveFolder(drive).empty(); });
}

std::string PosixPath(const CString& path) {
    const std::wstring_view text = path.View();
    if (text.find(L'\0') != kNone) {
        return {}; // cut off at the zero it would name another file
    }
    const std::size_t colon = FindDriveColon(text);
    if (colon == kNone) {
        return BytesWithSlashes(text);
    }
    std::string folder = FolderBehindDrivePart(text.substr(0, colon));
    if (folder.empty()) {
        return {};
    }
    return JoinWithoutDoubling(std::move(folder), BytesWithSlashes(text.substr(colon + 1)));
}

CString InterfaceRoot(std::string_view folder) {
    const CString text = platform::TextFromNameBytes(WithoutTrailingSlashes(folder));
    const bool sayable = text.View().find(L":\\") == kNone && text.View().find(L'\0') == kNone;
    if (text.IsEmpty() || !sayable) {
        return {};
    }
    return LooksLikeDrive(text) ? L"./" + text + L':' : text + L':';
}

} // namespace nqp2
