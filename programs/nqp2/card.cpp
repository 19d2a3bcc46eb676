// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card.h"

#include "nqp2/console.h"
#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/RealPaths.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

namespace nqp2::tool {
namespace {

namespace fs = std::filesystem;

bool IsNamed(const fs::path& path, const wchar_t* name) {
    return TextFromBytes(path.filename().native()).CompareNoCase(name) == 0;
}

template <class Test>
bool HoldsFolder(const fs::path& folder, Test isIt) {
    std::error_code error;
    const auto entries = fs::directory_iterator(folder, error);
    return !error &&
           std::any_of(begin(entries), end(entries), [&](const fs::directory_entry& entry) {
               std::error_code ignored;
               return isIt(entry.path()) && entry.is_directory(ignored);
           });
}

/// What tells a kind of card.
struct CardKind {
    const char* name;
    bool (*isTop)(const fs::path& folder);  ///< makes the folder above it a card
    bool (*isPart)(const fs::path& folder); ///< is such a folder by its name alone
};

bool IsContents(const fs::path& path) {
    return IsNamed(path, L"CONTENTS");
}

bool IsMediaFolder(const fs::path& path) {
    return IsNamed(path, L"BDMV") || IsNamed(path, L"PANA_GRP");
}

bool IsMediaTop(const fs::path& path) {
    return IsMediaFolder(path) || IsNamed(path, L"SONY") ||
           (IsNamed(path, L"AVCHD") && HoldsFolder(path, IsMediaFolder));
}

constexpr CardKind kP2 = {"card", IsContents, IsContents};
constexpr CardKind kMedia = {"AVCHD card", IsMediaTop, IsMediaFolder};

/// The card that `folder` is a part of; empty when there is none.
fs::path CardAbove(const CardKind& kind, const fs::path& folder) {
    for (fs::path part = folder; part.has_relative_path(); part = part.parent_path()) {
        if (kind.isPart(part)) {
            return part.parent_path();
        }
    }
    return {};
}

/// Cards directly below.
std::vector<fs::path> CardsBelow(const CardKind& kind, const fs::path& folder) {
    std::vector<fs::path> cards;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        std::error_code ignored;
        if (entry.is_directory(ignored) && HoldsFolder(entry.path(), kind.isTop)) {
            cards.push_back(entry.path());
        }
    }
    std::sort(cards.begin(), cards.end());
    return cards;
}

/// Where the card is that was probably meant; empty when none is near.
std::string Hint(const CardKind& kind, const fs::path& folder) {
    std::error_code error;
    const fs::path whole = fs::absolute(folder / "", error).lexically_normal().parent_path();
    if (const fs::path above = CardAbove(kind, whole); !above.empty()) {
        return fmt::format("the {} is the folder above: {}", kind.name, above.native());
    }
    const std::vector<fs::path> below = CardsBelow(kind, folder);
    if (below.size() == 1) {
        return fmt::format("the {} is one folder below: {}", kind.name, below.front().native());
    }
    return below.empty() ? ""
                         : fmt::format("{} {}s lie one folder below, the first is {}", below.size(),
                                       kind.name, below.front().native());
}

/// What to say of a folder that is no P2 card.
std::string P2Hint(const fs::path& folder) {
    std::string hint = Hint(kP2, folder);
    if (hint.empty() && HoldsFolder(folder, IsMediaTop)) {
        return "an AVCHD card or camera folder: nqp2 clips and nqp2 playlists read it";
    }
    if (hint.empty()) {
        hint = Hint(kMedia, folder);
    }
    return hint.empty() ? "not a P2 card" : hint;
}

[[noreturn]] void ThrowNoFolder(const std::string& folder, const fs::file_status& status) {
    if (fs::exists(status)) {
        throw Failure(folder, "is not a folder", "give the card's top folder");
    }
    throw Failure(folder, "no such folder", "");
}

} // namespace

std::string RealPath(const CString& path) {
    // For one run of one command: what it learns of a folder stays true for that long.
    static RealPaths paths;
    return paths.Find(path);
}

std::string OutputPath(const CString& path) {
    return OutputPath(RealPath(path));
}

std::string OutputPath(std::string path) {
    if (path.empty() || path.front() == '/') {
        return path;
    }
    // Nothing but names is put before it: "..", behind a link, leads where the system says.
    std::error_code error;
    static const std::string here = fs::current_path(error).native();
    const std::string_view below = path.starts_with("./") ? std::string_view(path).substr(2) : path;
    if (here.empty() || below.empty() || below == ".") {
        return here.empty() ? path : here;
    }
    return fmt::format("{}{}{}", here, here.ends_with('/') ? "" : "/", below);
}

bool IsMappedDrive(const CString& text) {
    const bool hasForm =
        text.GetLength() == 1 || text == CString(text.Left(1) + L":") || text.Mid(1, 2) == L":\\";
    return hasForm && IsDriveMapped(text[0]);
}

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
    if (!HoldsFolder(Folder(), IsContents)) {
        ThrowUnreadable();
    }
}

void Card::RequireOpen() const {
    RequireFolder();
    std::error_code error;
    const fs::directory_iterator entries(Folder(), error);
    if (error) {
        throw Failure(Folder(), "cannot be read", error.message());
    }
}

void Card::ThrowUnreadable() const {
    RequireOpen();
    const std::string folder = Folder();
    if (HoldsFolder(folder, IsContents)) {
        throw Failure(folder, "cannot be read", "its CONTENTS folder does not open");
    }
    throw Failure(folder, "no CONTENTS folder", P2Hint(folder));
}

void Card::ThrowNoPlaylists() const {
    RequireOpen();
    const std::string hint = Hint(kMedia, Folder());
    throw Failure(Folder(), "no folder of playlists", hint.empty() ? "not an AVCHD card" : hint);
}

} // namespace nqp2::tool
