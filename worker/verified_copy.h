// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/file_system.h"
#include "worker/outcome.h"
#include "worker/transfer_watch.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace nqp2::worker {

inline constexpr std::size_t kDefaultBlock = std::size_t{1} << 20U;
inline constexpr std::size_t kSmallestBlock = std::size_t{4} << 10U;
inline constexpr std::size_t kLargestBlock = std::size_t{64} << 20U;

/// Copies and compares files block by block. Reading a byte and reading it back count half each
/// in what the watch hears.
class VerifiedCopier {
public:
    /// `totalBytes`: of all files that will be handled.
    VerifiedCopier(std::size_t blockSize, std::uint64_t totalBytes, TransferWatch& watch)
        : m_block(blockSize, '\0'), m_total(totalBytes), m_watch(watch) {}

    /// Copies `source`, which has `size` bytes, into a writer; flushes it and reads it back.
    Outcome Copy(const std::string& source, std::uint64_t size, platform::FileWriter& writer);
    /// The same with bytes that are in memory; `path` is what failures call the file.
    Outcome Write(std::string_view content, const std::string& path, platform::FileWriter& writer);
    /// Whether two files of `size` bytes have the same content.
    Outcome Compare(const std::string& left, const std::string& right, std::uint64_t size,
                    bool& same);
    /// Whether a file holds exactly these bytes.
    Outcome Compare(const std::string& path, std::string_view content, bool& same);

private:
    class Digest;

    Outcome Step(std::uint64_t bytes);
    Outcome ReadAll(const std::string& path, std::uint64_t size, platform::FileWriter* target,
                    Digest& digest);
    Outcome Verify(platform::FileWriter& writer, const std::string& path, std::uint64_t size,
                   const Digest& expected);

    std::string m_block;
    std::uint64_t m_halves = 0; ///< bytes read once or read back
    std::uint64_t m_total;
    TransferWatch& m_watch;
};

} // namespace nqp2::worker
