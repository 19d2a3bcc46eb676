// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/DriveMap.h"

#include "NQP2ParserU/TextBytes.h"
#include "platform/drive_table.h"
#include "platform/guard.h"

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

bool IsDriveText(const wchar_t* text) {
    if (text == nullptr || !platform::IsDriveLetter(text[0])) {
        return false;
    }
    return text[1] == L'\0' || (text[1] == L':' && text[2] == L'\0');
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
    return platform::Guarded(false, [&] { return !platform::DriveFolder(drive).empty(); });
}

namespace platform {

std::string DriveFolder(wchar_t drive) {
    if (!IsDriveLetter(drive)) {
        return {};
    }
    const std::shared_lock guard(Table().lock);
    return Table().folders[DriveSlot(drive)];
}

bool IsDriveLetter(wchar_t ch) {
    return DriveSlot(ch) != kNoDrive;
}

} // namespace platform
} // namespace nqp2
