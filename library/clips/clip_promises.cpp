// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_promises.h"

#include <new>

namespace nqp2::clips {

void ClipPromises::Add(const std::string& path, const dom::FieldValues& values) noexcept {
    try {
        m_byPath.insert_or_assign(path, PromisesOf(values));
    } catch (const std::bad_alloc&) {
        m_byPath.erase(path); // who asks reads the file, and tells of the memory
    }
}

const std::vector<ClipEssence>* ClipPromises::Of(const std::string& path) const {
    const auto found = m_byPath.find(path);
    return found == m_byPath.end() ? nullptr : &found->second;
}

} // namespace nqp2::clips
