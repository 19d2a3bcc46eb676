// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/PathText.h"

#include "platform/drive_table.h"
#include "platform/unicode.h"

#include <algorithm>

namespace nqp2 {
namespace {

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

/// A backslash inside a folder that stands as drive part belongs to its name and is kept.
std::string FolderBehindDrivePart(std::wstring_view drivePart) {
    if (drivePart.size() == 1 && platform::IsDriveLetter(drivePart[0])) {
        return platform::DriveFolder(drivePart[0]);
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
    return text.GetLength() == 1 && platform::IsDriveLetter(text[0]);
}

} // namespace

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
