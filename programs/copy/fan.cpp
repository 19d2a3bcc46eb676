// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/fan.h"

#include "copy/block_pool.h"
#include "copy/failure.h"
#include "copy/fan_news.h"
#include "copy/fan_target.h"
#include "copy/lane.h"
#include "copy/source_file.h"
#include "platform/process.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <utility>

namespace nqp2::copy {
namespace {

/// Files that a batch keeps open leave enough to all others.
std::size_t BatchFiles(const FanSettings& settings, std::size_t targets) {
    constexpr std::size_t kForOthers = 100;
    constexpr std::size_t kOfAFile = 2; // itself, and its folder
    const std::size_t divisor = kOfAFile * std::max<std::size_t>(targets, 1);
    const std::size_t allowed =
        platform::AllowOpenFiles(settings.batchFiles * divisor + kForOthers);
    const std::size_t left = allowed > kForOthers ? allowed - kForOthers : 0;
    return std::clamp<std::size_t>(left / divisor, 1, settings.batchFiles);
}

} // namespace

/// The reader's side.
class Fan::Work {
public:
    Work(platform::Folder& source, std::vector<FanRoot> roots, std::vector<BlockTaker*> takers,
         FanReport& report, const FanSettings& settings)
        : m_settings(settings), m_report(report), m_takers(std::move(takers)), m_way(source),
          m_pool(settings.block, settings.mostInFlight, m_bell) {
        m_settings.batchFiles = BatchFiles(settings, roots.size());
        for (std::size_t i = 0; i < roots.size(); ++i) {
            m_targets.push_back(
                std::make_unique<FanTarget>(i, std::move(roots[i]), m_settings, m_news, m_isOver));
        }
        for (std::size_t i = 0; i < m_targets.size() + m_takers.size(); ++i) {
            m_lanes.push_back(std::make_unique<Lane>(m_bell));
        }
        ToTargets([](FanTarget& target) { target.Open(); });
    }
    ~Work() {
        m_isOver = true;
        m_lanes.clear();
    }
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;

    void Copy(const FanItem& file) {
        auto reading = std::make_shared<Reading>();
        reading->item = file;
        reading->takers = m_takers.size();
        GoOn();
        try {
            SourceFile source(m_way, file);
            if (file.info.size <= m_settings.smallFile) {
                CopySmall(source, reading);
            } else {
                CopyLarge(source, reading);
            }
        } catch (const Cancelled&) {
            throw;
        } catch (const Failure& failure) {
            m_report.CannotRead(file, failure.what());
            return;
        }
        if (m_takers.empty()) {
            TellRead(reading);
        }
    }

    void MakeFolder(const FanItem& folder) {
        GoOn();
        ToTargets([folder](FanTarget& target) { target.MakeFolder(folder); });
    }

    void KeepTimes(std::span<const FanItem> folders) {
        const auto all = std::make_shared<std::vector<FanItem>>(folders.begin(), folders.end());
        ToTargets([all](FanTarget& target) { target.KeepTimes(*all); });
        AwaitAll();
    }

    void Finish() {
        ToTargets([](FanTarget& target) { target.Settle(); });
        AwaitAll();
    }

    [[nodiscard]] bool HasNoTarget() const {
        return !m_targets.empty() &&
               std::all_of(m_targets.begin(), m_targets.end(),
                           [](const auto& target) { return target->Progress().hasEnded; });
    }
    [[nodiscard]] std::uint64_t BytesRead() const { return m_bytesRead; }
    [[nodiscard]] FanProgress Progress(std::size_t target) const {
        return m_targets.at(target)->Progress();
    }

private:
    using TargetTask = std::function<void(FanTarget&)>;
    using TakerTask = std::function<void(BlockTaker&)>;

    /// Told when the last taker has ended the file.
    void TellRead(const ReadingPtr& reading) {
        m_news.Add([reading](FanReport& report) {
            report.HasRead(reading->item, reading->digest);
            reading->isTold = true;
        });
    }
    void EndTaking(BlockTaker& taker, const ReadingPtr& reading) {
        taker.End(reading->item, true);
        if (--reading->takers == 0) {
            TellRead(reading);
        }
    }

    /// What has happened is told, and it is asked whether this goes on.
    void GoOn() {
        for (const auto& lane : m_lanes) {
            lane->Rethrow();
        }
        m_news.Tell(m_report);
        if (!m_report.GoesOn()) {
            throw Cancelled();
        }
    }
    template <class Condition>
    void Await(const Condition& condition) {
        constexpr std::chrono::milliseconds kPatience(100);
        for (;;) {
            const std::uint64_t rings = m_bell.Rings();
            if (condition()) {
                return;
            }
            GoOn();
            if (!m_settings.meanwhile || !m_settings.meanwhile()) {
                m_bell.Await(rings, kPatience);
            }
        }
    }
    void AwaitAll() {
        Await([this] {
            return std::all_of(m_lanes.begin(), m_lanes.end(),
                               [](const auto& lane) { return lane->IsIdle(); });
        });
        for (const auto& lane : m_lanes) {
            lane->Rethrow();
        }
        while (m_news.Tell(m_report)) {
        }
    }

    void Post(Lane& lane, Lane::Task task) {
        Await([&] { return lane.HasRoom(); });
        lane.Post(std::move(task));
    }
    void ToTargets(const TargetTask& task) {
        for (std::size_t i = 0; i < m_targets.size(); ++i) {
            Post(*m_lanes[i], [task, target = m_targets[i].get()] { task(*target); });
        }
    }
    void ToTakers(const TakerTask& task) {
        for (std::size_t i = 0; i < m_takers.size(); ++i) {
            Post(*m_lanes[m_targets.size() + i], [task, taker = m_takers[i]] { task(*taker); });
        }
    }

    BlockPtr ReadBlock(SourceFile& source, std::size_t size) {
        Await([&] { return m_pool.HasRoom(size); });
        BlockPtr block = m_pool.Take(size);
        block->SetSize(source.Read(block->Data(), size));
        m_bytesRead += block->Bytes().size();
        return block;
    }

    void CopySmall(SourceFile& source, const ReadingPtr& reading) {
        const BlockPtr block = ReadBlock(source, static_cast<std::size_t>(reading->item.info.size));
        source.CheckUnchanged();
        reading->digest = DigestOf(block->Bytes());
        ToTargets([reading, block](FanTarget& target) {
            target.Begin(reading);
            target.Take(block->Bytes());
            target.End();
        });
        ToTakers([this, reading, block](BlockTaker& taker) {
            taker.Begin(reading->item);
            taker.Take(block->Bytes());
            EndTaking(taker, reading);
        });
    }

    void CopyLarge(SourceFile& source, const ReadingPtr& reading) {
        ToTargets([reading](FanTarget& target) { target.Begin(reading); });
        ToTakers([reading](BlockTaker& taker) { taker.Begin(reading->item); });
        try {
            CopyBlocks(source, *reading);
        } catch (const Cancelled&) {
            throw;
        } catch (const Failure&) {
            ToTargets([](FanTarget& target) { target.Drop(); });
            ToTakers([reading](BlockTaker& taker) { taker.End(reading->item, false); });
            throw;
        }
        ToTargets([](FanTarget& target) { target.End(); });
        ToTakers([this, reading](BlockTaker& taker) { EndTaking(taker, reading); });
    }

    void CopyBlocks(SourceFile& source, Reading& reading) {
        Digest digest;
        while (digest.Size() < reading.item.info.size) {
            GoOn();
            const BlockPtr block = ReadBlock(source, m_settings.block);
            if (block->Bytes().empty()) {
                break; // CheckUnchanged fails
            }
            digest.Add(block->Bytes());
            ToTargets([block](FanTarget& target) { target.Take(block->Bytes()); });
            ToTakers([block](BlockTaker& taker) { taker.Take(block->Bytes()); });
        }
        source.CheckUnchanged();
        reading.digest = digest.Value();
    }

    FanSettings m_settings;
    FanReport& m_report;
    std::vector<BlockTaker*> m_takers;
    ReadingWay m_way;
    Bell m_bell;
    BlockPool m_pool;
    FanNews m_news;
    std::atomic<bool> m_isOver = false;
    std::uint64_t m_bytesRead = 0;
    std::vector<std::unique_ptr<FanTarget>> m_targets;
    std::vector<std::unique_ptr<Lane>> m_lanes; ///< of the targets, then of the takers
};

Fan::Fan(platform::Folder& source, std::vector<FanRoot> targets, std::vector<BlockTaker*> takers,
         FanReport& report, const FanSettings& settings)
    : m_work(std::make_unique<Work>(source, std::move(targets), std::move(takers), report,
                                    settings)) {}

Fan::~Fan() = default;

void Fan::Copy(const FanItem& file) {
    m_work->Copy(file);
}

void Fan::MakeFolder(const FanItem& folder) {
    m_work->MakeFolder(folder);
}

void Fan::KeepTimes(std::span<const FanItem> folders) {
    m_work->KeepTimes(folders);
}

void Fan::Finish() {
    m_work->Finish();
}

bool Fan::HasNoTarget() const {
    return m_work->HasNoTarget();
}

std::uint64_t Fan::BytesRead() const {
    return m_work->BytesRead();
}

FanProgress Fan::Progress(std::size_t target) const {
    return m_work->Progress(target);
}

} // namespace nqp2::copy
