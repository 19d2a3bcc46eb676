// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_promises.h"

#include <new>

namespace nqp2::clips {

void ClipPromises::Clear() {
    m_find.clear();
    m_clips.clear();
    m_all.clear();
    m_next = 0;
    m_contents.reset();
}

void ClipPromises::Add(std::string_view name, const dom::FieldValues& values) noexcept {
    const std::size_t first = m_all.size();
    m_find.clear(); // its names lie in the list that grows
    try {
        AppendPromises(values, m_all);
        m_clips.push_back({std::string(name), first, m_all.size() - first});
    } catch (const std::bad_alloc&) {
        m_all.resize(first); // who asks reads the file, and tells of the memory
    }
}

const ClipPromises::OfClip* ClipPromises::Find(std::string_view name) {
    if (m_next < m_clips.size() && m_clips[m_next].name == name) {
        return &m_clips[m_next++];
    }
    if (m_find.empty()) {
        for (std::size_t i = 0; i < m_clips.size(); ++i) {
            m_find.emplace(m_clips[i].name, i);
        }
    }
    const auto found = m_find.find(name);
    if (found == m_find.end()) {
        return nullptr;
    }
    m_next = found->second + 1;
    return &m_clips[found->second];
}

bool ClipPromises::Tell(std::string_view name, std::vector<ClipEssence>& promises) {
    const OfClip* const clip = Find(name);
    if (clip == nullptr) {
        return false;
    }
    const auto first = m_all.begin() + static_cast<std::ptrdiff_t>(clip->first);
    promises.assign(first, first + static_cast<std::ptrdiff_t>(clip->count));
    return true;
}

} // namespace nqp2::clips
