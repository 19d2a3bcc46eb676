// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/RealPaths.h"

#include "NQP2ParserU/PathText.h"
#include "platform/place.h"

#include <map>

namespace nqp2 {

struct RealPaths::Cache {
    std::map<std::wstring, platform::Place> folders;
};

RealPaths::RealPaths() : m_cache(std::make_unique<Cache>()) {}

RealPaths::~RealPaths() = default;

std::string RealPaths::Find(const CString& path) {
    std::string asked = PosixPath(path);
    platform::FileInfo info;
    if (platform::Files().Stat(asked, info)) {
        return asked;
    }
    const platform::PathParts parts = platform::SplitPath(path);
    const platform::Place& folder =
        m_cache->folders.emplace(parts.folder.Written().View(), parts.folder).first->second;
    platform::FoundFile found;
    return folder.Find(parts.name, found) ? found.posixPath : asked;
}

} // namespace nqp2
