// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/file_system.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace nqp2::worker {

/// What a file has before and behind its essence, as it was written last: parts of it are written
/// again when the file is completed, and only then can it be compared with the medium.
class EssenceEnds {
public:
    /// Notes what was written at a position; `essenceEnd`: where the essence ends by then. False
    /// for what would change the essence.
    bool Note(std::uint64_t position, std::string_view bytes, std::uint64_t essenceEnd);
    /// Says where the essence begins; until then everything counts as lying before it.
    void BeginEssence(std::uint64_t start);
    /// Fails unless the medium, onto which the file was flushed, gives both ends back.
    void Check(platform::FileWriter& writer, const std::string& path,
               std::uint64_t essenceEnd) const;

private:
    std::string m_head;
    std::string m_tail;
    bool m_hasEssence = false;
};

} // namespace nqp2::worker
