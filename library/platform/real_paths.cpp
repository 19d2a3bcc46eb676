// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/RealPaths.h"

#include "NQP2ParserU/PathText.h"
#include "platform/place.h"
#include "platform/sorted_names.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

namespace nqp2 {

namespace {

/// Whoever asks for more files of a folder lists one of them after the other: it is read once.
constexpr int kFewFiles = 16;
/// The same of one who has done so with another folder.
constexpr int kFewFilesOfMany = 2;

bool IsPlainName(std::wstring_view name) {
    return !name.empty() && std::none_of(name.begin(), name.end(),
                                         [](wchar_t ch) { return ch == L'\0' || ch == L':'; });
}

/// Characters of a path up to its last separator.
std::size_t FolderLength(std::wstring_view path) {
    const auto last = std::find_if(path.rbegin(), path.rend(),
                                   [](wchar_t ch) { return ch == L'\\' || ch == L'/'; });
    return static_cast<std::size_t>(path.rend() - last);
}

bool HasDrive(std::wstring_view path) {
    return path.find(L":\\") != std::wstring_view::npos;
}

bool Exists(const std::string& path) {
    platform::FileInfo info;
    return !path.empty() && platform::Files().Stat(path, info);
}

} // namespace

/// What copies have in common.
struct RealPaths::Shared {
    /// A folder of which much is asked, read by whoever asks first.
    struct ListedFolder {
        std::mutex mutex;
        bool isListed = false;
        std::string asked;      ///< PosixPath's answer with a separator at its end, or "",
        bool isAsAsked = false; ///< and whether it leads there
        bool isExact = false;   ///< each name that is asked for counts as there
        platform::SortedNames names;

        void Find(std::wstring_view written) {
            asked = PosixPath(CString(written));
            isAsAsked = Exists(asked);
            isListed = true;
        }
    };

    std::mutex mutex;
    std::map<std::wstring, ListedFolder, std::less<>> folders; ///< none is ever taken out

    /// Null for one that nobody has listed yet, or is about to.
    const ListedFolder* Listed(std::wstring_view written) {
        const std::lock_guard lock(mutex);
        const auto known = folders.find(written);
        if (known == folders.end()) {
            return nullptr;
        }
        const std::unique_lock own(known->second.mutex, std::try_to_lock);
        return own && known->second.isListed ? &known->second : nullptr;
    }
    ListedFolder& FolderOf(std::wstring_view written) {
        const std::lock_guard lock(mutex);
        const auto known = folders.find(written);
        return known != folders.end() ? known->second
                                      : folders.try_emplace(std::wstring(written)).first->second;
    }
};

struct RealPaths::Cache {
    struct Folder {
        explicit Folder(platform::Place found) : place(std::move(found)) {}

        platform::Place place;
        int questions = 0;
        const Shared::ListedFolder* listed = nullptr; ///< once much is asked of it
        std::size_t near = 0;                         ///< where the answer before was, in its names
    };
    explicit Cache(std::shared_ptr<Shared> common) : shared(std::move(common)) {}

    std::shared_ptr<Shared> shared;
    using Folders = std::map<std::wstring, Folder, std::less<>>;
    Folders folders;
    Folders::iterator last = folders.end(); ///< asked for: a clip has several files in some
    int few = kFewFiles;

    /// A folder, its place from the one above it: each folder on the way is listed once.
    Folder& FolderOf(std::wstring_view folder) {
        if (last != folders.end() && last->first == folder) {
            return last->second;
        }
        const auto known = folders.find(folder);
        if (known != folders.end()) {
            last = known;
            return known->second;
        }
        const std::size_t end = folder.find_last_not_of(L'\\') + 1;
        const std::size_t start = folder.substr(0, end).find_last_of(L'\\') + 1;
        platform::Place place =
            start == 0
                ? platform::Place(CString(folder))
                : FolderOf(folder.substr(0, start)).place.Below(CString(folder.substr(start)));
        return folders.emplace(folder, std::move(place)).first->second;
    }
    /// The answer from the names of a folder of which much is asked; nothing where the disk is to
    /// be asked.
    std::optional<std::string> FromNames(std::wstring_view path) {
        const std::size_t start = FolderLength(path);
        const std::wstring_view name = path.substr(start);
        if (start == 0 || !IsPlainName(name)) {
            return std::nullopt;
        }
        Folder& folder = FolderOf(path.substr(0, start));
        if (folder.listed == nullptr && folder.questions++ == 0) {
            folder.listed = shared->Listed(path.substr(0, start));
        }
        if (folder.listed == nullptr) {
            if (folder.questions < few) {
                return std::nullopt;
            }
            few = kFewFilesOfMany;
            Look(folder, path.substr(0, start));
        }
        return AmongNames(folder, platform::NameBytesFromText(name));
    }
    void Look(Folder& folder, std::wstring_view written) {
        Shared::ListedFolder& listed = shared->FolderOf(written);
        const std::lock_guard lock(listed.mutex);
        // Without a drive part a name may end one: then it is more than a name.
        if (!listed.isListed && HasDrive(written)) {
            platform::SortedNames names(folder.place.OnDisk());
            listed.Find(written);
            listed.names = std::move(names);
        }
        listed.isListed = true;
        folder.listed = &listed; // which does not change any more
    }
    static std::optional<std::string> AmongNames(Folder& folder, const std::string& name) {
        const bool isThere = folder.listed->isExact || folder.listed->names.Has(name, folder.near);
        if (isThere && folder.listed->isAsAsked) {
            const std::string& asked = folder.listed->asked;
            std::string path;
            path.reserve(asked.size() + name.size());
            return path.append(asked).append(name);
        }
        return isThere ? std::optional(folder.place.OnDisk() + '/' + name) : std::nullopt;
    }
};

RealPaths::RealPaths() : m_cache(std::make_unique<Cache>(std::make_shared<Shared>())) {}

RealPaths::RealPaths(const RealPaths& other)
    : m_cache(std::make_unique<Cache>(other.m_cache->shared)) {}

RealPaths::~RealPaths() = default;

std::string RealPaths::Find(const CString& path) {
    if (path.IsEmpty()) {
        return {};
    }
    if (std::optional<std::string> known = m_cache->FromNames(path.View())) {
        return *std::move(known);
    }
    std::string asked = PosixPath(path);
    platform::FileInfo info;
    if (asked.empty() || platform::Files().Stat(asked, info)) {
        return asked;
    }
    const platform::PathParts parts = platform::SplitPath(path);
    const platform::Place folder = m_cache->FolderOf(parts.folder.Written().View()).place;
    if (parts.name.IsEmpty()) {
        return folder.Exists() ? folder.OnDisk() + '/' : asked;
    }
    platform::FoundFile found;
    return folder.Find(parts.name, found) ? found.posixPath : asked;
}

void RealPaths::ReadFolderOf(const CString& path) {
    const std::wstring_view written = path.View();
    if (const std::size_t length = FolderLength(written); length > 0) {
        Cache::Folder& folder = m_cache->FolderOf(written.substr(0, length));
        if (folder.listed == nullptr) {
            m_cache->Look(folder, written.substr(0, length));
        }
    }
}

void RealPaths::TakeAsWritten(const CString& folder) {
    Shared::ListedFolder& listed = m_cache->shared->FolderOf(folder.View());
    const std::lock_guard lock(listed.mutex);
    if (!listed.isListed && HasDrive(folder.View())) {
        listed.Find(folder.View());
        listed.isExact = true;
    }
}

} // namespace nqp2
