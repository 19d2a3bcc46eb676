// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/RealPaths.h"

#include "NQP2ParserU/PathText.h"
#include "platform/file_system.h"
#include "platform/folder_index.h"

#include <map>

namespace nqp2 {
namespace {

bool Stands(const std::string& path) {
    platform::FileInfo info;
    return static_cast<bool>(platform::Files().Stat(path, info));
}

} // namespace

struct RealPaths::Cache {
    std::map<std::string, std::string> folders; ///< as asked for, as it stands
    std::map<std::string, platform::FolderIndex> indexes;

    std::string Folder(const std::string& folder) {
        const auto known = folders.find(folder);
        if (known != folders.end()) {
            return known->second;
        }
        std::string real = Stands(folder) ? folder : Spelled(folder);
        folders.emplace(folder, real);
        return real;
    }

    /// The last component as its folder spells it.
    std::string Spelled(const std::string& path) {
        const std::size_t slash = path.find_last_of('/');
        if (slash == std::string::npos || slash == 0) {
            return path;
        }
        const std::string folder = Folder(path.substr(0, slash));
        const std::string name = path.substr(slash + 1);
        auto index = indexes.find(folder);
        if (index == indexes.end()) {
            index = indexes.emplace(folder, platform::FolderIndex::Read(folder)).first;
        }
        const platform::FolderEntry* const entry = index->second.Find(name);
        return folder + "/" + (entry != nullptr ? entry->name : name);
    }
};

RealPaths::RealPaths() : m_cache(std::make_unique<Cache>()) {}

RealPaths::~RealPaths() = default;

std::string RealPaths::Find(const CString& path) {
    const std::string asked = PosixPath(path);
    if (asked.empty() || Stands(asked)) {
        return asked;
    }
    const std::string real = m_cache->Spelled(asked);
    return Stands(real) ? real : asked;
}

} // namespace nqp2
