// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/fan_target.h"

#include "copy/copier.h"
#include "copy/new_file.h"
#include "copy/target_end.h"

#include <utility>

namespace nqp2::copy {

FanTarget::FanTarget(std::size_t number, FanRoot root, const FanSettings& settings, FanNews& news,
                     const std::atomic<bool>& isOver)
    : m_number(number), m_root(std::move(root)), m_settings(settings), m_news(news),
      m_isOver(isOver) {}

template <class Action>
void FanTarget::Guard(const FanItem* item, const Action& action) {
    if (m_hasEnded || m_isOver) {
        return;
    }
    try {
        action();
    } catch (const TargetEnd& end) {
        EndTarget(end.what());
    } catch (const Cancelled&) {
        m_file.reset();
    } catch (const Failure& failure) {
        m_file.reset();
        if (item == nullptr) {
            EndTarget(failure.what());
        } else {
            TellFailure(*item, failure.what());
        }
    }
}

void FanTarget::TellFailure(const FanItem& item, const std::string& sentence) {
    m_news.Add([number = m_number, item, sentence](FanReport& report) {
        report.HasFailed(number, item, sentence);
    });
}

void FanTarget::EndTarget(const std::string& sentence) {
    m_hasEnded = true;
    m_file.reset();
    m_prover.reset(); // with what waits
    m_news.Add(
        [number = m_number, sentence](FanReport& report) { report.HasEnded(number, sentence); });
}

void FanTarget::Open() {
    Guard(nullptr, [this] {
        m_block.resize(kDefaultBlock);
        m_way = m_root.folder != nullptr ? std::make_unique<WritingWay>(m_root.folder)
                                         : std::make_unique<WritingWay>(m_root.path);
        platform::MediumFacts facts;
        Require(m_way->Root().Medium(facts), "ask for the medium of", m_root.path);
        const auto setAside = [this](const FanItem& item, const std::string& aside) {
            m_news.Add([number = m_number, item, aside](FanReport& report) {
                report.HasSetAside(number, item, aside);
            });
        };
        const auto whyKept = [this](const FanItem& item, platform::FileReader& there) {
            return m_settings.whyKept ? m_settings.whyKept(m_number, item, there) : std::string();
        };
        m_place.emplace(IncomingFile::Place{*m_way, facts.largestFile, m_settings.smallFile,
                                            m_block, setAside, whyKept});
        const auto arrived = [this](const Arriving& file) {
            m_proven += file.reading->item.info.size;
            m_news.AddAfter(file.reading, [number = m_number, reading = file.reading,
                                           how = file.how](FanReport& report) {
                report.HasArrived(number, reading->item, how);
            });
        };
        const auto failed = [this](const FanItem& item, const std::string& sentence) {
            TellFailure(item, sentence);
        };
        m_prover.emplace(m_settings, *m_way, m_block, m_isOver, Prover::Tellers{arrived, failed});
    });
}

void FanTarget::Begin(const ReadingPtr& reading) {
    Guard(&reading->item, [&] {
        m_reading = reading;
        m_file.reset();
        BeginFile();
    });
}

void FanTarget::BeginFile() {
    try {
        m_file.emplace(*m_place, m_reading->item);
    } catch (const TargetEnd&) {
        throw;
    } catch (const Failure&) {
        if (!m_prover->IsWaiting()) {
            throw;
        }
        m_prover->Settle(); // files that wait are open, and may be too many
        m_file.emplace(*m_place, m_reading->item);
    }
}

void FanTarget::Take(std::string_view bytes) {
    if (m_file) {
        Guard(&m_reading->item, [&] {
            m_file->Take(bytes);
            m_written += bytes.size();
        });
    }
}

void FanTarget::End() {
    if (!m_file) {
        return;
    }
    Guard(&m_reading->item, [&] {
        Arriving file;
        file.writer = m_file->End();
        file.reading = m_reading;
        file.path = m_file->Path();
        file.folder = m_file->Folder();
        file.how = file.writer == nullptr ? Arrival::WasThere
                   : m_file->IsAnew()     ? Arrival::CopiedAnew
                                          : Arrival::Copied;
        m_file.reset();
        m_prover->Add(std::move(file));
    });
}

void FanTarget::Drop() {
    m_file.reset();
}

void FanTarget::MakeFolder(const FanItem& folder) {
    Guard(&folder, [&] { m_way->Reach(folder.path); });
}

void FanTarget::KeepTimes(const std::vector<FanItem>& folders) {
    for (const FanItem& folder : folders) {
        Guard(&folder, [&] {
            const FolderWay::Step& step = m_way->Reach(folder.path);
            RequireOn(TimeKept(step.folder->KeepTime("", folder.info)), "set the time of",
                      step.folder->Path());
        });
    }
    Guard(nullptr, [&] { RequireOn(m_way->Root().FlushAll(), "write", m_root.path); });
}

void FanTarget::Settle() {
    Guard(nullptr, [&] {
        m_prover->Settle();
        m_way->FlushNames();
    });
}

FanProgress FanTarget::Progress() const {
    return {m_written, m_proven, m_hasEnded};
}

} // namespace nqp2::copy
