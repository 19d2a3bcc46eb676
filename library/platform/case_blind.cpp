// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/case_blind.h"

#include "platform/case_fold.h"
#include "platform/folder_memory.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace nqp2::platform {
namespace {

/// The system refuses longer paths; searching for one would cost without end.
constexpr std::size_t kLongestPath = 4096;

using Names = std::span<const std::string_view>;

std::vector<std::string_view> SplitNames(std::string_view path) {
    std::vector<std::string_view> names;
    while (!path.empty()) {
        const std::size_t length = std::min(path.find('/'), path.size());
        if (length != 0) {
            names.push_back(path.substr(0, length));
        }
        path.remove_prefix(std::min(length + 1, path.size()));
    }
    return names;
}

/// `base` is empty for the current folder.
std::string Join(std::string base, Names names) {
    for (const std::string_view name : names) {
        if (!base.empty() && base.back() != '/') {
            base += '/';
        }
        base += name;
    }
    return base;
}

std::string FolderOrCurrent(const std::string& folder) {
    return folder.empty() ? "." : folder;
}

/// Where is searched, and what may know its folders' names.
struct Search {
    FileSystem& files;
    FolderMemory* memory;
};

/// The names in a folder that differ from `name` in nothing but case, sorted by their bytes.
std::vector<std::string> SpellingsIn(const Search& search, const std::string& folder,
                                     std::string_view name) {
    if (search.memory != nullptr) {
        return search.memory->NamesOf(FolderOrCurrent(folder)).index->Spellings(name);
    }
    std::vector<FolderEntry> entries;
    const IoStatus listed = ListWhole(search.files, FolderOrCurrent(folder), entries);
    static_cast<void>(listed); // what came is searched
    std::vector<std::string> spellings;
    const std::string folded = FoldNameCase(name);
    for (FolderEntry& entry : entries) {
        if (FoldNameCase(entry.name) == folded) {
            spellings.push_back(std::move(entry.name));
        }
    }
    std::sort(spellings.begin(), spellings.end());
    return spellings;
}

/// How many of `names` exist under `base` exactly as written; nothing when not even the base
/// exists or something else than a missing name is in the way.
std::optional<std::size_t> CountExact(const Search& search, const std::string& base, Names names) {
    for (std::size_t count = names.size();; --count) {
        FileInfo info;
        const IoStatus status =
            search.files.Stat(FolderOrCurrent(Join(base, names.first(count))), info);
        if (status) {
            return count;
        }
        if (count == 0 || status.error != IoError::NotFound) {
            return std::nullopt;
        }
    }
}

std::optional<std::string> Resolve(const Search& search, const std::string& base, Names names) {
    const std::optional<std::size_t> exact = CountExact(search, base, names);
    if (!exact) {
        return std::nullopt;
    }
    const std::string folder = Join(base, names.first(*exact));
    if (*exact == names.size()) {
        return folder;
    }
    for (const std::string_view spelling : SpellingsIn(search, folder, names[*exact])) {
        const std::string next = Join(folder, Names(&spelling, 1));
        if (auto found = Resolve(search, next, names.subspan(*exact + 1))) {
            return found;
        }
    }
    return std::nullopt;
}

std::optional<std::string> Find(const Search& search, const std::string& path) {
    FileSystem& files = search.files;
    FileInfo info;
    const IoStatus status = files.Stat(path, info);
    if (status) {
        return path;
    }
    const bool searchable = status.error == IoError::NotFound && !path.empty() &&
                            path.size() < kLongestPath && path.find('\0') == std::string::npos;
    if (!searchable) {
        return std::nullopt;
    }
    std::optional<std::string> found =
        Resolve(search, path.front() == '/' ? "/" : "", SplitNames(path));
    if (found && path.back() == '/') {
        *found += '/';
        return files.Stat(*found, info) ? found : std::nullopt;
    }
    return found;
}

} // namespace

std::optional<std::string> FindExisting(FileSystem& files, const std::string& path) {
    return Find({files, nullptr}, path);
}

std::optional<std::string> FindExisting(const std::string& path, FolderMemory* memory) {
    return Find({Files(), memory}, path);
}

NearestExisting FindNearest(const std::string& path) {
    NearestExisting nearest;
    std::string above = path;
    std::optional<std::string> found = FindExisting(above);
    while (!found && above.size() > 1) {
        nearest.missing.push_back(NamePart(above));
        above.resize(std::max<std::size_t>(FolderPart(above).size(), 2) - 1);
        found = FindExisting(above);
    }
    nearest.path = found.value_or("");
    return nearest;
}

} // namespace nqp2::platform
