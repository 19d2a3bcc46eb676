// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tools/nqp2/card.h"

#include "platform/DriveMap.h"
#include "platform/PathText.h"
#include "platform/TextBytes.h"
#include "tools/nqp2/console.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

namespace nqp2::tool {
namespace {

namespace fs = std::filesystem;

bool IsMappedDrive(const CString& text) {
    const bool hasForm =
        text.GetLength() == 1 || text == CString(text.Left(1) + L":") || text.Mid(1, 2) == L":\\";
    return hasForm && IsDriveMapped(text[0]);
}

bool IsContents(const fs::path& path) {
    return TextFromBytes(path.filename().native()).CompareNoCase(L"CONTENTS") == 0;
}

bool HoldsContents(const fs::path& folder) {
    std::error_code error;
    const auto entries = fs::directory_iterator(folder, error);
    return !error &&
           std::any_of(begin(entries), end(entries), [](const fs::directory_entry& entry) {
               std::error_code ignored;
               return IsContents(entry.path()) && entry.is_directory(ignored);
           });
}

/// The folder above a CONTENTS folder that `folder` is or lies in; empty when there is none.
fs::path CardAbove(const fs::path& folder) {
    for (fs::path part = folder; part.has_relative_path(); part = part.parent_path()) {
        if (IsContents(part)) {
            return part.parent_path();
        }
    }
    return {};
}

/// Folders directly below that hold a CONTENTS folder.
std::vector<fs::path> CardsBelow(const fs::path& folder) {
    std::vector<fs::path> cards;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        std::error_code ignored;
        if (entry.is_directory(ignored) && HoldsContents(entry.path())) {
            cards.push_back(entry.path());
        }
    }
    std::sort(cards.begin(), cards.end());
    return cards;
}

std::string Hint(const fs::path& folder) {
    std::error_code error;
    const fs::path whole = fs::absolute(folder / "", error).lexically_normal().parent_path();
    if (const fs::path above = CardAbove(whole); !above.empty()) {
        return fmt::format("the card is the folder above: {}", above.native());
    }
    const std::vector<fs::path> below = CardsBelow(folder);
    if (below.size() == 1) {
        return fmt::format("the card is one folder below: {}", below.front().native());
    }
    return below.empty() ? "not a P2 card"
                         : fmt::format("{} cards lie one folder below, the first is {}",
                                       below.size(), below.front().native());
}

[[noreturn]] void ThrowNoFolder(const std::string& folder, const fs::file_status& status) {
    if (fs::exists(status)) {
        throw Failure(folder, "is not a folder", "give the card's top folder");
    }
    throw Failure(folder, "no such folder", "");
}

} // namespace

Card::Card(const std::string& argument) {
    if (argument.empty()) {
        throw Failure("CARD", "is empty", "give a folder or a mapped drive", kUsage);
    }
    const CString text = TextFromBytes(argument);
    m_root = IsMappedDrive(text) ? text : InterfaceRoot(argument);
    if (m_root.IsEmpty()) {
        throw Failure(argument, "cannot be read", "a folder's name must not contain \":\\\"");
    }
}

CString Card::DriveRoot() const {
    return m_root.Find(L':') < 0 ? m_root + L':' : m_root;
}

CString Card::ContentsRoot() const {
    return DriveRoot() + L"\\CONTENTS";
}

std::string Card::Folder() const {
    return PosixPath(DriveRoot());
}

void Card::RequireFolder() const {
    const std::string folder = Folder();
    std::error_code error;
    const fs::file_status status = fs::status(folder, error);
    if (status.type() == fs::file_type::none) {
        throw Failure(folder, "cannot be read", error.message());
    }
    if (!fs::is_directory(status)) {
        ThrowNoFolder(folder, status);
    }
}

void Card::RequireContents() const {
    if (!HoldsContents(Folder())) {
        ThrowUnreadable();
    }
}

void Card::ThrowUnreadable() const {
    RequireFolder();
    const std::string folder = Folder();
    std::error_code error;
    const fs::directory_iterator entries(folder, error);
    if (error) {
        throw Failure(folder, "cannot be read", error.message());
    }
    if (HoldsContents(folder)) {
        throw Failure(folder, "cannot be read", "its CONTENTS folder does not open");
    }
    throw Failure(folder, "no CONTENTS folder", Hint(folder));
}

} // namespace nqp2::tool
