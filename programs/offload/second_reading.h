// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/run_progress.h"
#include "copy/digest.h"
#include "copy/folder_way.h"
#include "copy/source_file.h"
#include "offload/folder_index.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

namespace nqp2::offload {

/// Reads files of the card once more, around the cache, in the order of the first reading, and
/// compares. It may do so piece by piece while others wait for the targets, far enough behind the
/// first reading that no memory of the medium's own still holds what it gave then. Used by one
/// thread.
class SecondReading {
public:
    static constexpr std::uint64_t kFarBehind = std::uint64_t{1} << 30U;

    /// All outlive it. `otherwise` gets the files that give other bytes than at first; `distance`:
    /// bytes between both readings of a file.
    SecondReading(const FolderIndex& index, platform::Folder& card, OddEntries& otherwise,
                  tool::RunProgress& progress, std::uint64_t distance = kFarBehind);

    /// A file was read the first time, and had these bytes.
    void Add(mhl::NodeId node, const copy::Digest::Bytes& digest);
    /// Reads a little where a file is far enough behind. False: there is none now.
    bool ReadSome();
    /// Reads the rest, as long as nobody interrupts.
    void ReadRest();

    /// Files that had the same bytes both times.
    [[nodiscard]] std::uint64_t Agreed() const { return m_agreed; }
    /// All that was added was read again.
    [[nodiscard]] bool IsDone() const { return m_waiting.empty(); }
    [[nodiscard]] tool::RunState State() const;

private:
    struct Waiting {
        mhl::NodeId node;
        copy::Digest::Bytes digest;
    };

    void ReadPiece();
    /// Reads on in the file that was begun. Whether it was read to its end.
    bool ReadOn(std::uint64_t size);
    void Disagree(const std::string& sentence);

    const FolderIndex& m_index;
    OddEntries& m_otherwise;
    tool::RunProgress& m_progress;
    copy::ReadingWay m_way;
    std::uint64_t m_distance;
    std::string m_block;
    std::deque<Waiting> m_waiting;            ///< the first may have been begun
    std::optional<copy::SourceFile> m_source; ///< it, once it was begun
    std::optional<copy::Digest> m_digest;     ///< of what was read of it
    std::string m_path;
    std::uint64_t m_firstRead = 0; ///< bytes of files that were added
    std::uint64_t m_readAgain = 0; ///< of those that are done
    std::uint64_t m_bytes = 0;     ///< really read
    std::uint64_t m_files = 0;
    std::uint64_t m_agreed = 0;
};

} // namespace nqp2::offload
