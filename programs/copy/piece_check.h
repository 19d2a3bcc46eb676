// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/digest.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::copy {

/// Reads a growing stretch of a file back from the medium and compares it with what was written:
/// whole pieces in a second thread while more is written, the rest at the end. Where there is no
/// second thread, or no memory for it, everything waits for the end. One thread at a time.
class PieceCheck {
public:
    /// `path`: for messages. The writer outlives this object.
    PieceCheck(platform::FileWriter& writer, std::string path);
    /// Leaves the rest unread.
    ~PieceCheck();
    PieceCheck(const PieceCheck&) = delete;
    PieceCheck& operator=(const PieceCheck&) = delete;

    /// Says where the stretch begins; before the first Add.
    void BeginAt(std::uint64_t start) { m_start = start; }
    [[nodiscard]] std::uint64_t Start() const { return m_start; }
    /// What was written behind what came before. It stays as it is from now on; blocks of the
    /// medium that the stretch shares with what lies before or behind it may be written again.
    void Add(std::string_view bytes);
    /// Of the bytes that were added.
    [[nodiscard]] std::uint64_t Size() const;
    /// With everything written and flushed: fails unless the medium gave and gives back the bytes.
    void Finish();

private:
    struct Piece {
        std::uint64_t offset = 0; ///< in the stretch
        std::unique_ptr<Digest> written;
    };
    using Pieces = std::vector<Piece>;

    void BeginPiece();
    /// Hands on what can no longer change to the second thread, if it has nothing to do.
    void Continue();
    /// Takes over what the thread has come to.
    void Collect();
    void Check(const Pieces& pieces, std::string& block) const;

    platform::FileWriter& m_writer;
    std::string m_path;
    std::uint64_t m_start = 0;
    Pieces m_pieces; ///< not read back yet, the stretch's first before all; the last grows
    Pieces m_handed; ///< with the thread
    std::exception_ptr m_trouble; ///< that the thread had
    std::atomic<bool> m_isOver = false;
    std::future<void> m_reading; ///< last: it ends before the rest goes
};

} // namespace nqp2::copy
