// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/essence_ends.h"

#include "copy/digest.h"

#include <algorithm>

namespace nqp2::worker {
namespace {

/// As in a file: what lies between the end and the offset is zeros.
void Overwrite(std::string& content, std::uint64_t offset, std::string_view bytes) {
    const auto begin = static_cast<std::size_t>(offset);
    content.resize(std::max(content.size(), begin + bytes.size()), '\0');
    content.replace(begin, bytes.size(), bytes);
}

} // namespace

bool EssenceEnds::Note(std::uint64_t position, std::string_view bytes, std::uint64_t essenceEnd) {
    if (!m_hasEssence || position + bytes.size() <= m_head.size()) {
        Overwrite(m_head, position, bytes);
        return true;
    }
    if (position < essenceEnd) {
        return false;
    }
    Overwrite(m_tail, position - essenceEnd, bytes);
    return true;
}

void EssenceEnds::BeginEssence(std::uint64_t start) {
    m_head.resize(static_cast<std::size_t>(start));
    m_hasEssence = true;
}

void EssenceEnds::Check(platform::FileWriter& writer, const std::string& path,
                        std::uint64_t essenceEnd) const {
    copy::CheckReadBack(writer, path, 0, m_head);
    copy::CheckReadBack(writer, path, essenceEnd, m_tail);
}

} // namespace nqp2::worker
