// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/file_system.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace nqp2::copy {

inline constexpr std::size_t kDefaultBlock = std::size_t{1} << 20U;
inline constexpr std::size_t kSmallestBlock = std::size_t{4} << 10U;
inline constexpr std::size_t kLargestBlock = std::size_t{64} << 20U;

/// Is told how far a transfer has come and says whether it shall go on.
class Watch {
public:
    virtual ~Watch() = default;
    /// Bytes done of bytes in all. Returns false to end the transfer.
    [[nodiscard]] virtual bool GoesOn(std::uint64_t done, std::uint64_t total) = 0;
    /// Asked once, with everything verified and nothing under its final name yet. Returns false
    /// to drop it all.
    [[nodiscard]] virtual bool MayFinish(std::uint64_t total) = 0;
};

/// What a file is made of: the bytes of another one, or bytes in memory in their place.
struct Source {
    std::string path; ///< the file, and what failures call the bytes
    std::uint64_t size = 0;
    std::optional<std::string> content;     ///< of `size` bytes, in the file's place
    std::optional<platform::FileInfo> time; ///< whose time of change the copy gets
};

/// Copies and compares files block by block. Reading a byte and reading it back count half each in
/// what the watch is told. Everything throws a Failure, also when the watch ends the transfer. Used
/// by one thread.
class Copier {
public:
    /// `totalBytes`: of all files that will be handled.
    Copier(std::size_t blockSize, std::uint64_t totalBytes, Watch& watch)
        : m_block(blockSize, '\0'), m_total(totalBytes), m_watch(watch) {}

    /// Says that nothing is done yet, and that all is: before names are given.
    void Begin();
    void Finish();

    /// Brings a source's bytes into a new file, with its time, onto the medium, reads them back
    /// from there and closes the file, which then waits for its name. `target`: what failures call
    /// it.
    void Copy(const Source& source, const std::string& target, platform::FileWriter& writer);
    /// Whether a file that was opened under the path `there` has the source's bytes.
    bool IsSame(const Source& source, const std::string& there, platform::FileReader& reader);

private:
    using Take = std::function<void(std::uint64_t position, std::string_view bytes)>;

    void Step(std::uint64_t bytes);
    /// Reads to the end of what has to have `size` bytes.
    void ReadAll(platform::FileReader& reader, const std::string& path, std::uint64_t size,
                 const Take& take);
    /// Hands on every byte of the source.
    void ReadSource(const Source& source, const Take& take);

    std::string m_block;
    std::uint64_t m_halves = 0; ///< bytes read once or read back
    std::uint64_t m_total;
    Watch& m_watch;
};

} // namespace nqp2::copy
