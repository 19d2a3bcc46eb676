// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_promises.h"

#include <new>

namespace nqp2::clips {

void ClipPromises::Clear() {
    m_byPath.clear();
    m_all.clear();
}

void ClipPromises::Add(const std::string& path, const dom::FieldValues& values) noexcept {
    const std::size_t first = m_all.size();
    try {
        AppendPromises(values, m_all);
        m_byPath.insert_or_assign(path, Range{first, m_all.size() - first});
    } catch (const std::bad_alloc&) {
        m_all.resize(first); // who asks reads the file, and tells of the memory
    }
}

bool ClipPromises::Tell(const std::string& path, std::vector<ClipEssence>& promises) const {
    const auto found = m_byPath.find(path);
    if (found == m_byPath.end()) {
        return false;
    }
    const auto first = m_all.begin() + static_cast<std::ptrdiff_t>(found->second.first);
    promises.assign(first, first + static_cast<std::ptrdiff_t>(found->second.count));
    return true;
}

} // namespace nqp2::clips
