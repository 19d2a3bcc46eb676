// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/fan_news.h"
#include "copy/incoming_file.h"
#include "copy/prover.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::copy {

/// What one target of a fan does with the files, in one thread. It throws nothing but want of
/// memory: what fails is told.
class FanTarget {
public:
    /// All outlive it.
    FanTarget(std::size_t number, FanRoot root, const FanSettings& settings, FanNews& news,
              const std::atomic<bool>& isOver);

    /// Before all others.
    void Open();
    void Begin(const ReadingPtr& reading);
    void Take(std::string_view bytes);
    /// The file was read, and has its digest.
    void End();
    /// The file could not be read.
    void Drop();
    void MakeFolder(const FanItem& folder);
    void KeepTimes(const std::vector<FanItem>& folders);
    void Settle();

    /// In any thread.
    [[nodiscard]] FanProgress Progress() const;

private:
    /// A failure is told, of the item if there is one and it does not end the target.
    template <class Action>
    void Guard(const FanItem* item, const Action& action);
    void BeginFile();
    void TellFailure(const FanItem& item, const std::string& sentence);
    void EndTarget(const std::string& sentence);

    std::size_t m_number;
    FanRoot m_root;
    const FanSettings& m_settings;
    FanNews& m_news;
    const std::atomic<bool>& m_isOver;
    std::string m_block;
    std::unique_ptr<WritingWay> m_way;
    std::optional<IncomingFile::Place> m_place;
    std::optional<Prover> m_prover;
    ReadingPtr m_reading;
    std::optional<IncomingFile> m_file; ///< none: there is none, or it has failed here
    std::atomic<std::uint64_t> m_written = 0;
    std::atomic<std::uint64_t> m_proven = 0;
    std::atomic<bool> m_hasEnded = false;
};

} // namespace nqp2::copy
