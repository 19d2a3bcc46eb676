// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card.h"

#include "console/console.h"
#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/RealPaths.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string_view>
#include <system_error>
#include <utility>

namespace nqp2::tool {
namespace {

namespace fs = std::filesystem;

bool IsNamed(const fs::path& path, const wchar_t* name) {
    return TextFromBytes(path.filename().native()).CompareNoCase(name) == 0;
}

constexpr const wchar_t* kContents = L"CONTENTS";

/// Where cards lie that are too deep to be entered; "" for none within a moment's search.
std::string DeeperHint(const CString& root) {
    constexpr CardSearchLimits kMoment = {4, 2'000};
    CardSearch below;
    FindCards(root, below, kMoment);
    if (below.cards.IsEmpty()) {
        return {};
    }
    const std::string first = Card(below.cards[0]).Folder();
    return below.cards.GetSize() == 1 ? fmt::format("; a card lies deeper, at {}", first)
                                      : fmt::format("; {} cards lie deeper, the first at {}",
                                                    below.cards.GetSize(), first);
}

/// What to say of a folder that is no P2 card.
std::string P2Hint(const CString& root) {
    constexpr const char* kReaders = "nqp2 clips and nqp2 playlists read it";
    CardSearch search;
    FindCard(root, search, kEveryCard & ~kP2Cards);
    if (search.cards.GetSize() != 1) {
        return WasCutShort(search) ? "not a P2 card, and too many folders to look for one in"
                                   : "neither a P2 nor an AVCHD card" + DeeperHint(root);
    }
    const FoundCard& card = search.cards[0];
    return card.entered ? fmt::format("an AVCHD card or camera folder is at {}: {}",
                                      Card(card).Folder(), kReaders)
                        : fmt::format("an AVCHD card or camera folder: {}", kReaders);
}

/// With a separator at its end; "" when it cannot be told.
std::string WorkingFolder() {
    std::error_code error;
    const fs::path here = fs::current_path(error);
    return error ? std::string() : (here / "").native();
}

/// Where the last ".." of a path ends; 0 when it has none.
std::size_t EndOfStepsUp(const std::string& path) {
    constexpr std::string_view kStep = "/..";
    if (path.find(kStep.substr(1)) == std::string::npos) { // dots are rarer than separators
        return 0;
    }
    for (std::size_t at = path.rfind(kStep); at != std::string::npos;
         at = at == 0 ? std::string::npos : path.rfind(kStep, at - 1)) {
        const std::size_t end = at + kStep.size();
        if (end == path.size() || path[end] == '/') {
            return end;
        }
    }
    return 0;
}

/// Without "..", which behind a link leads where the system says. Paths of one run begin alike.
std::string WithoutStepsUp(std::string path) {
    const std::size_t end = EndOfStepsUp(path);
    if (end == 0) {
        return path;
    }
    static std::map<std::string, std::string> known;
    const auto [place, isNew] = known.try_emplace(path.substr(0, end));
    if (isNew) {
        std::error_code error;
        const fs::path whole = fs::canonical(place->first, error);
        place->second = error ? place->first : whole.native();
    }
    const std::string rest = path.substr(end);
    return place->second == "/" && !rest.empty() ? rest : place->second + rest;
}

/// For one run of one command: what it learns of a folder stays true for that long.
RealPaths& PathsOfRun() {
    static const RealPaths first;
    thread_local RealPaths paths(first);
    return paths;
}

[[noreturn]] void ThrowNoFolder(const std::string& folder, const fs::file_status& status) {
    if (fs::exists(status)) {
        throw Failure(folder, "is not a folder", "give the card's top folder");
    }
    throw Failure(folder, "no such folder", "");
}

} // namespace

bool WasCutShort(const CardSearch& search) {
    return std::any_of(search.skipped.begin(), search.skipped.end(), [](const SkippedFile& folder) {
        return folder.reason == SkipReason::TooLarge;
    });
}

std::string RealPath(const CString& path) {
    return PathsOfRun().Find(path);
}

void TakeAsWritten(const CString& folder) {
    PathsOfRun().TakeAsWritten(folder);
}

void ReadFolderOf(const CString& path) {
    PathsOfRun().ReadFolderOf(path);
}

std::string OutputPath(const CString& path) {
    return OutputPath(RealPath(path));
}

std::string OutputPath(std::string path) {
    if (path.empty() || path.front() == '/') {
        return WithoutStepsUp(std::move(path));
    }
    static const std::string here = WorkingFolder();
    if (here.empty()) {
        return path;
    }
    const std::size_t prefix = path.starts_with("./") ? 2 : 0;
    path.replace(0, prefix, here);
    const std::string_view below = std::string_view(path).substr(here.size());
    return below.empty() || below == "." ? fs::path(here).parent_path().native()
                                         : WithoutStepsUp(std::move(path));
}

bool IsMappedDrive(const CString& text) {
    const bool hasForm =
        text.GetLength() == 1 || text == CString(text.Left(1) + L":") || text.Mid(1, 2) == L":\\";
    return hasForm && IsDriveMapped(text[0]);
}

Card::Card(const std::string& argument) : m_argument(argument) {
    if (argument.empty()) {
        throw Failure("CARD", "is empty", "give a folder or a mapped drive", kUsage);
    }
    const CString text = TextFromBytes(argument);
    m_root = IsMappedDrive(text) ? text : InterfaceRoot(argument);
    if (m_root.IsEmpty()) {
        throw Failure(argument, "cannot be read", "a folder's name must not contain \":\\\"");
    }
}

Card::Card(const FoundCard& found) {
    Take(found);
    m_argument = Folder();
}

void Card::Take(const FoundCard& found) {
    m_found = found;
    m_root = found.root;
    if (found.entered) {
        m_argument = Folder();
    }
}

void Card::TakeTop() {
    const fs::path folder = Folder();
    if (IsNamed(folder, L"PRIVATE") && folder.has_parent_path()) {
        m_top = InterfaceRoot(folder.parent_path().native());
    }
}

CString Card::DriveRoot() const {
    return m_root.Find(L':') < 0 ? m_root + L':' : m_root;
}

CString Card::ContentsRoot() const {
    return DriveRoot() + L"\\" + kContents;
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

bool Card::HoldsFolder(const wchar_t* name) const {
    std::error_code error;
    const auto entries = fs::directory_iterator(Folder(), error);
    return !error &&
           std::any_of(begin(entries), end(entries), [&](const fs::directory_entry& entry) {
               std::error_code ignored;
               return IsNamed(entry.path(), name) && entry.is_directory(ignored);
           });
}

void Card::RequireContents() const {
    if (!HoldsFolder(kContents)) {
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
    if (HoldsFolder(kContents)) {
        throw Failure(Folder(), "cannot be read", "its CONTENTS folder does not open");
    }
    RequireSomething();
    throw Failure(Folder(), "no CONTENTS folder", P2Hint(m_root));
}

void Card::RequireSomething() const {
    std::error_code error;
    if (fs::is_empty(Folder(), error) && !error) {
        throw Failure(Folder(), "is empty", "no card is there");
    }
}

void Card::ThrowNoPlaylists() const {
    RequireOpen();
    RequireSomething();
    throw Failure(Folder(), "no folder of playlists", "not an AVCHD card");
}

} // namespace nqp2::tool
