// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/fan_news.h"
#include "copy/folder_way.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace nqp2::copy {

/// A file that is written and waits for its proof and its name.
struct Arriving {
    ReadingPtr reading;
    std::string path;
    std::shared_ptr<platform::Folder> folder;
    std::unique_ptr<platform::FileWriter> writer;
    Arrival how = Arrival::Copied;
};

/// Reads files of a target back from the medium, compares them and gives them their names: large
/// ones each for itself, small ones in batches that are flushed together. Throws a TargetEnd; what
/// concerns one file only is told of it.
class Prover {
public:
    struct Tellers {
        std::function<void(const Arriving&)> hasArrived;
        std::function<void(const FanItem&, const std::string& sentence)> hasFailed;
    };

    /// All outlive it. `isOver`: the proofs are no longer wanted.
    Prover(const FanSettings& settings, WritingWay& way, std::string& block,
           const std::atomic<bool>& isOver, Tellers tellers)
        : m_settings(settings), m_way(way), m_block(block), m_isOver(isOver),
          m_tellers(std::move(tellers)) {}

    /// A file without a writer was there.
    void Add(Arriving file);
    /// Proves what was added and waits.
    void Settle();
    [[nodiscard]] bool IsWaiting() const { return !m_batch.empty(); }

private:
    void ProveAlone(Arriving& file);
    void Compare(Arriving& file);
    void FlushTogether(std::vector<Arriving>& files);
    /// Does it for each that is still hopeful; one that fails is dropped.
    template <class Action>
    void ForEach(std::vector<Arriving>& files, const Action& action);

    const FanSettings& m_settings;
    WritingWay& m_way;
    std::string& m_block;
    const std::atomic<bool>& m_isOver;
    Tellers m_tellers;
    std::vector<Arriving> m_batch;
    std::uint64_t m_bytes = 0; ///< of the batch
};

} // namespace nqp2::copy
