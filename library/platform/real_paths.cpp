// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/RealPaths.h"

#include "NQP2ParserU/PathText.h"
#include "platform/place.h"

#include <functional>
#include <map>
#include <string_view>

namespace nqp2 {

struct RealPaths::Cache {
    std::map<std::wstring, platform::Place, std::less<>> folders;

    /// The place of a folder, from the place above it: each folder on the way is listed once.
    platform::Place PlaceOf(std::wstring_view folder) {
        const auto known = folders.find(folder);
        if (known != folders.end()) {
            return known->second;
        }
        const std::size_t end = folder.find_last_not_of(L'\\') + 1;
        const std::size_t start = folder.substr(0, end).find_last_of(L'\\') + 1;
        const platform::Place place =
            start == 0 ? platform::Place(CString(folder))
                       : PlaceOf(folder.substr(0, start)).Below(CString(folder.substr(start)));
        return folders.emplace(folder, place).first->second;
    }
};

RealPaths::RealPaths() : m_cache(std::make_unique<Cache>()) {}

RealPaths::~RealPaths() = default;

std::string RealPaths::Find(const CString& path) {
    std::string asked = PosixPath(path);
    platform::FileInfo info;
    if (asked.empty() || platform::Files().Stat(asked, info)) {
        return asked;
    }
    const platform::PathParts parts = platform::SplitPath(path);
    const platform::Place folder = m_cache->PlaceOf(parts.folder.Written().View());
    if (parts.name.IsEmpty()) {
        return folder.Exists() ? folder.OnDisk() + '/' : asked;
    }
    platform::FoundFile found;
    return folder.Find(parts.name, found) ? found.posixPath : asked;
}

} // namespace nqp2
