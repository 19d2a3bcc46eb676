// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/file_system.h"
#include "platform/io_status.h"
#include "platform/read_pace.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace nqp2::platform {

/// Metadata files have some thousand bytes. Larger ones than this are left to the caller, one at a
/// time, so that the files held at a time stay small.
inline constexpr std::uint64_t kReadAheadLimit = std::uint64_t{256} << 10U;

/// One file to read.
struct FileRequest {
    std::string path;
    std::uint64_t limit = 0; ///< a larger file is not read (IoError::TooLarge)
    bool headOnly = false;   ///< reads up to `limit` bytes from the beginning of any file instead
    bool withInfo = false;   ///< asks for the file's status as well
};

/// What came of it.
struct FileContent {
    IoStatus status;
    std::string bytes;
    std::optional<FileInfo> info; ///< when asked for and available
};

/// Reads a list of files in order. While the medium is slow, a few threads read ahead of the
/// caller, who works on what has come; on a quick one, and where no thread can be made, nothing but
/// the caller's thread is used. What Next gives is the same in all cases.
class ReadAhead {
public:
    explicit ReadAhead(std::vector<FileRequest> requests);
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// The next file's content. Must not be called more often than there are requests. The memory
    /// of the bytes is used again.
    void Next(FileContent& file);
    /// The same in parts; `info` may be null.
    IoStatus Next(std::string& content, std::optional<FileInfo>* info);

private:
    class Crew;

    void ReadHere(const FileRequest& request, FileContent& file);
    bool HasWaited();

    std::vector<FileRequest> m_requests;
    FileContent m_file; ///< of the caller who asks for the bytes alone
    std::size_t m_next = 0;
    ReadPace m_pace{ReadPace::Guess::Quick};
    std::int64_t m_waits = WaitsOfThread(); ///< when it was looked at last
    std::unique_ptr<Crew> m_crew;
};

/// Lets that many threads start during its own lifetime and fails all others. For tests.
class ScopedThreadLimit {
public:
    explicit ScopedThreadLimit(int threads);
    ~ScopedThreadLimit();
    ScopedThreadLimit(const ScopedThreadLimit&) = delete;
    ScopedThreadLimit& operator=(const ScopedThreadLimit&) = delete;
};

} // namespace nqp2::platform
