// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/file_hashes.h"
#include "offload/folder_index.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace nqp2::offload {

/// Where a reading has come.
struct ReadingState {
    std::uint64_t bytes = 0;
    std::uint64_t files = 0; ///< read or failed
    std::string file;        ///< the one begun last
};

/// Is told what becomes of each file. Called from several threads, never at once.
class ReadingWatch {
public:
    virtual ~ReadingWatch() = default;
    /// Asked often. Returns false to end the reading.
    [[nodiscard]] virtual bool GoesOn(const ReadingState& state) = 0;
    virtual void HasRead(mhl::NodeId file, const mhl::Hashes& hashes) = 0;
    /// It cannot be read, or is not any more what the index says.
    virtual void CannotRead(mhl::NodeId file, const std::string& sentence) = 0;
};

/// Reads all files of a folder around the cache, in the order of the index, and hashes them. Throws
/// a copy::Failure when the folder cannot be opened, and when the watch ends it.
class FolderReading {
public:
    /// `all`: the formats that any of the files needs. Everything outlives this.
    FolderReading(std::string folder, const FolderIndex& index, mhl::FormatSet all,
                  FormatsOfFile formatsOf, ReadingWatch& watch);

    /// By that many readers, each with a thread of its own and one for each slow format.
    void Run(std::size_t readers);
    [[nodiscard]] const ReadingState& State() const { return m_state; }

private:
    class Reader;
    class Queue;

    std::string m_folder;
    const FolderIndex& m_index;
    mhl::FormatSet m_all;
    FormatsOfFile m_formatsOf;
    ReadingWatch& m_watch;
    ReadingState m_state;
};

/// How many readers a folder's medium is read by best: one where a disk has to move for each.
std::size_t ReadersFor(platform::Folder& folder);

} // namespace nqp2::offload
