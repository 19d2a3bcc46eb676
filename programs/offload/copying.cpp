// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/copying.h"

#include "console/run_progress.h"
#include "copy/failure.h"
#include "copy/fan.h"
#include "NQP2ParserU/Interrupt.h"
#include "offload/copy_watch.h"
#include "offload/file_hashes.h"
#include "offload/media_order.h"
#include "offload/own_list.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>

namespace nqp2::offload {
namespace {

using copy::Arrival;
using copy::FanItem;
using copy::FanProgress;
using mhl::NodeId;

FanItem ItemOf(const FolderIndex& index, NodeId node) {
    return {index.tree.PathOf(node), index.InfoOf(node), node};
}

/// Takes what the fan tells of a copy in the making.
class Copying final : public copy::FanReport {
public:
    Copying(Plan& plan, FileHashes& hashes, tool::RunProgress& progress, SecondReading* again,
            Outcome& outcome)
        : m_plan(plan), m_hashes(hashes), m_progress(progress), m_again(again), m_outcome(outcome) {
        for (std::size_t i = 0; i < outcome.copies.size(); ++i) {
            if (outcome.copies[i].ended.empty()) {
                m_copies.push_back(i);
            }
        }
    }

    [[nodiscard]] std::vector<copy::FanRoot> Roots() const {
        std::vector<copy::FanRoot> roots;
        for (const std::size_t copy : m_copies) {
            roots.emplace_back(m_plan.targets[copy].path, m_plan.targets[copy].writing);
        }
        return roots;
    }
    void Follow(const copy::Fan& fan) { m_fan = &fan; }
    [[nodiscard]] copy::FanSettings Settings() const {
        copy::FanSettings settings;
        settings.whyKept = [this](std::size_t target, const FanItem& file,
                                  platform::FileReader& there) {
            const auto& list = m_plan.targets[m_copies[target]].list;
            return list != nullptr ? WhyKept(*list, file.path, there) : "";
        };
        if (m_again != nullptr) {
            settings.meanwhile = [this] { return m_again->ReadSome(); };
        }
        return settings;
    }

    void CopyAll(copy::Fan& fan) {
        const mhl::Tree& tree = m_plan.index.tree;
        for (const MediaRank rank : {MediaRank::Media, MediaRank::Rest}) {
            ForEachInOrder(tree, [&](NodeId node) {
                if (fan.HasNoTarget()) {
                    return;
                }
                const bool isNow = rank == (tree.IsFolder(node) ? MediaRank::Media
                                                                : MediaRankOf(tree.NameOf(node)));
                if (isNow && tree.IsFolder(node)) {
                    fan.MakeFolder(ItemOf(m_plan.index, node));
                } else if (isNow) {
                    FanItem item = ItemOf(m_plan.index, node);
                    m_file = item.path;
                    fan.Copy(item);
                }
            });
            fan.Finish(); // all media are proven before the first of the rest has its name
        }
    }

    void KeepFolderTimes(copy::Fan& fan) {
        const mhl::Tree& tree = m_plan.index.tree;
        std::vector<FanItem> folders;
        for (NodeId node = tree.FirstInPostOrder(mhl::kScope); node != mhl::kNoNode;
             node = tree.NextInPostOrder(node, mhl::kScope)) {
            // The copy's own folder gets its lists later, and its time with them.
            if (tree.IsFolder(node) && node != mhl::kScope) {
                folders.push_back(ItemOf(m_plan.index, node));
            }
        }
        fan.KeepTimes(folders);
        fan.Finish();
    }

    /// The targets count half for what is written and half for what is proven.
    [[nodiscard]] tool::RunState State() const {
        tool::RunState state;
        state.file = m_file;
        state.files = m_outcome.filesRead;
        state.bytes = m_plan.index.bytes;
        for (std::size_t i = 0; i < m_copies.size(); ++i) {
            const FanProgress target = m_fan->Progress(i);
            const std::uint64_t done = (target.written + target.proven) / 2;
            if (!target.hasEnded && done <= state.bytes) {
                state.bytes = done;
                state.target = m_copies.size() > 1
                                   ? std::string_view(m_plan.targets[m_copies[i]].folder)
                                   : std::string_view();
            }
        }
        return state;
    }

    bool GoesOn() override {
        m_progress.Show(State());
        return !WasInterrupted();
    }
    void HasRead(const FanItem& file, const copy::Digest::Bytes& digest) override {
        ++m_outcome.filesRead;
        const auto node = static_cast<NodeId>(file.number);
        m_plan.index.tree.SetHashes(node, m_hashes.Take(file, digest));
        if (m_again != nullptr) {
            m_again->Add(node, digest);
        }
    }
    void CannotRead(const FanItem& file, const std::string& sentence) override {
        m_outcome.cannotRead.Add(file.path, sentence);
        m_progress.Fail(file.path, "", sentence);
    }
    void HasArrived(std::size_t target, const FanItem& file, Arrival how) override {
        CopyOutcome& copy = CopyOf(target);
        ++copy.files;
        copy.bytes += file.info.size;
        ++(how == Arrival::Copied     ? copy.copied
           : how == Arrival::WasThere ? copy.wereThere
                                      : copy.copiedAnew);
        NoteArrival(m_plan.targets[m_copies[target]], file.path, file.number, copy);
    }
    void HasSetAside(std::size_t target, const FanItem& file, const std::string& aside) override {
        CopyOf(target).setAside.Add(file.path, aside);
        m_progress.Fail(file.path, PathOf(target), "had other bytes, which are kept as " + aside);
    }
    void HasFailed(std::size_t target, const FanItem& item, const std::string& sentence) override {
        // A folder that could not be made has no time to be kept either.
        if (m_failed.emplace(target, item.number).second) {
            CopyOf(target).failures.Add(item.path, sentence);
            m_progress.Fail(item.path, PathOf(target), sentence);
        }
    }
    void HasEnded(std::size_t target, const std::string& sentence) override {
        CopyOf(target).ended = sentence;
        m_progress.Fail("", PathOf(target), sentence);
    }

private:
    CopyOutcome& CopyOf(std::size_t target) { return m_outcome.copies[m_copies[target]]; }
    [[nodiscard]] const std::string& PathOf(std::size_t target) const {
        return m_plan.targets[m_copies[target]].path;
    }

    Plan& m_plan;
    FileHashes& m_hashes;
    tool::RunProgress& m_progress;
    SecondReading* m_again;
    Outcome& m_outcome;
    std::vector<std::size_t> m_copies; ///< the fan's targets, as numbers of the plan's
    std::set<std::pair<std::size_t, std::size_t>> m_failed; ///< target and number of the item
    const copy::Fan* m_fan = nullptr;
    std::string m_file;
};

/// The engine's one way to say that it was asked to end.
void RequireCancelled(const copy::Failure& failure) {
    if (!WasInterrupted()) {
        throw copy::Failure(failure);
    }
}

} // namespace

double SecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

void CopyCard(Plan& plan, tool::RunProgress& progress, SecondReading* again, Outcome& outcome) {
    const mhl::FormatSet formats = plan.FormatsToMake();
    FileHashes hashes(formats, [formats](std::size_t) { return formats; });
    Copying copying(plan, hashes, progress, again, outcome);
    progress.Begin("copy", plan.index.tree.FileCount(), plan.index.bytes);
    try {
        copy::Fan fan(*plan.opened, copying.Roots(), hashes.Takers(), copying, copying.Settings());
        copying.Follow(fan);
        copying.CopyAll(fan);
        copying.KeepFolderTimes(fan);
        outcome.bytesRead = fan.BytesRead();
        progress.End(copying.State());
    } catch (const copy::Failure& failure) {
        RequireCancelled(failure);
        outcome.wasCancelled = true;
    }
}

void ReadCardAgain(const Plan& plan, tool::RunProgress& progress, SecondReading& again,
                   Outcome& outcome) {
    progress.Begin("reread", outcome.filesRead, outcome.bytesRead);
    again.ReadRest();
    progress.End(again.State());
    outcome.wasCancelled = !again.IsDone();
    outcome.card.isReadTwice = again.IsDone();
    outcome.card.readingsAgree = again.IsDone() && outcome.readOtherwise.Count() == 0 &&
                                 again.Agreed() == plan.index.tree.FileCount();
}

} // namespace nqp2::offload
