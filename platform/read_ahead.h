// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/io_status.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace nqp2::platform {

/// Reads a list of files in order. When the medium turns out slow, a few threads read ahead while
/// the caller works on what has come; on a fast one nothing but the caller's thread is used. What
/// Next gives is the same in both cases.
class ReadAhead {
public:
    /// `limit`: files larger than this are not read (IoError::TooLarge).
    ReadAhead(std::vector<std::string> paths, std::uint64_t limit);
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// The next file's content. Must not be called more often than there are paths.
    IoStatus Next(std::string& content);

private:
    class Crew;

    IoStatus ReadHere(std::string& content);

    std::vector<std::string> m_paths;
    std::uint64_t m_limit;
    std::size_t m_next = 0;
    int m_slowReads = 0; ///< in a row
    std::unique_ptr<Crew> m_crew;
};

} // namespace nqp2::platform
