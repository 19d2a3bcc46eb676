// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/fan.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace nqp2::copy {

/// A file that is being read, or was.
struct Reading {
    FanItem item;
    Digest::Bytes digest{};            ///< with everything read
    std::atomic<std::size_t> takers{}; ///< that have not ended it
    bool isTold = false;               ///< that it was read; for the caller's thread alone
};
using ReadingPtr = std::shared_ptr<Reading>;

/// What the threads have to report, until the caller's thread tells it.
class FanNews {
public:
    using Telling = std::function<void(FanReport&)>;

    void Add(Telling telling) { AddAfter(nullptr, std::move(telling)); }
    /// Not before it was told that the file was read.
    void AddAfter(ReadingPtr reading, Telling telling);
    /// Tells what may be told. Whether there was anything.
    bool Tell(FanReport& report);

private:
    struct Piece {
        ReadingPtr after;
        Telling telling;
    };

    std::mutex m_lock;
    std::vector<Piece> m_pieces;
    std::vector<Piece> m_held; ///< for the caller's thread alone
};

} // namespace nqp2::copy
