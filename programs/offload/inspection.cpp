// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/inspection.h"

#include "console/console.h"
#include "console/run_progress.h"
#include "copy/failure.h"
#include "copy/fan.h"
#include "NQP2ParserU/Interrupt.h"
#include "offload/file_hashes.h"
#include "platform/folder.h"

#include <fmt/core.h>

#include <chrono>
#include <memory>
#include <set>
#include <utility>

namespace nqp2::offload {
namespace {

using copy::FanItem;
using mhl::FormatSet;
using mhl::HashFormat;
using mhl::NodeId;
using mhl::Tree;

/// The formats that each file of a tree is hashed in.
class FormatsByFile {
public:
    /// Files of which the history knows nothing get all that it has: some may be a missing one
    /// under another name.
    FormatsByFile(const mhl::History& history, const Tree& tree, FormatSet wished)
        : m_all(wished | history.Formats()) {
        m_all = m_all.IsEmpty() ? FormatSet(HashFormat::Xxh128) : m_all;
        m_bits.resize(tree.Size());
        for (NodeId node = 0; node < tree.Size(); ++node) {
            if (!tree.IsFolder(node)) {
                const FormatSet known = mhl::FormatsToCheck(history, tree.PathOf(node));
                m_bits[node] = (known.IsEmpty() ? m_all : known | wished).Bits();
            }
        }
    }

    [[nodiscard]] FormatSet All() const { return m_all; }
    [[nodiscard]] FormatSet Of(std::size_t node) const { return FormatSet::Of(m_bits[node]); }

private:
    FormatSet m_all;
    std::vector<std::uint8_t> m_bits;
};

/// Takes what the fan tells of files that are read for no target.
class Reading final : public copy::FanReport {
public:
    Reading(Inspection& inspection, FileHashes& hashes, tool::RunProgress& progress)
        : m_inspection(inspection), m_hashes(hashes), m_progress(progress) {}

    void Follow(const copy::Fan& fan) { m_fan = &fan; }
    void BeginFile(std::string path) { m_file = std::move(path); }
    [[nodiscard]] tool::RunState State() const {
        return {m_fan->BytesRead(), m_inspection.filesRead, m_file, {}};
    }

    bool GoesOn() override {
        m_progress.Show(State());
        return !WasInterrupted();
    }
    void HasRead(const FanItem& file, const copy::Digest::Bytes& digest) override {
        ++m_inspection.filesRead;
        m_inspection.index.tree.SetHashes(static_cast<NodeId>(file.number),
                                          m_hashes.Take(file, digest));
    }
    void CannotRead(const FanItem& file, const std::string& sentence) override {
        m_inspection.unreadable.Add(file.path, sentence);
        m_progress.Fail(file.path, "", sentence);
    }
    // There are no targets.
    void HasArrived(std::size_t /*target*/, const FanItem& /*file*/,
                    copy::Arrival /*how*/) override {}
    void HasSetAside(std::size_t /*target*/, const FanItem& /*file*/,
                     const std::string& /*aside*/) override {}
    void HasFailed(std::size_t /*target*/, const FanItem& /*item*/,
                   const std::string& /*sentence*/) override {}
    void HasEnded(std::size_t /*target*/, const std::string& /*sentence*/) override {}

private:
    Inspection& m_inspection;
    FileHashes& m_hashes;
    tool::RunProgress& m_progress;
    const copy::Fan* m_fan = nullptr;
    std::string m_file;
};

/// In the order of folders and names, which is the one in which copies are written.
void ReadAll(Inspection& inspection, copy::Fan& fan, Reading& reading) {
    const Tree& tree = inspection.index.tree;
    for (NodeId node = tree.FirstInPostOrder(mhl::kScope); node != mhl::kNoNode;
         node = tree.NextInPostOrder(node, mhl::kScope)) {
        if (!tree.IsFolder(node)) {
            const std::string path = tree.PathOf(node);
            reading.BeginFile(path);
            fan.Copy({path, inspection.index.InfoOf(node), node});
        }
    }
    fan.Finish();
}

void HashFiles(Inspection& inspection, platform::Folder& root, FormatSet wished,
               tool::RunProgress& progress) {
    const FormatsByFile formats(inspection.history, inspection.index.tree, wished);
    inspection.formats = formats.All();
    FileHashes hashes(formats.All(), [&](std::size_t node) { return formats.Of(node); });
    Reading reading(inspection, hashes, progress);
    copy::Fan fan(root, {}, hashes.Takers(), reading);
    reading.Follow(fan);
    progress.Begin("read", inspection.index.tree.FileCount(), inspection.index.bytes);
    ReadAll(inspection, fan, reading);
    inspection.bytesRead = fan.BytesRead();
    reading.BeginFile("");
    progress.End(reading.State());
    inspection.index.tree.HashFolders(formats.All());
}

/// Tells whether a path, or a folder above it, is one of those that could not be looked at.
class UnseenPaths {
public:
    explicit UnseenPaths(const OddEntries& unread) {
        for (const OddEntry& each : unread.Kept()) {
            m_paths.insert(each.path);
        }
    }

    [[nodiscard]] bool Hold(std::string_view path) const {
        for (;;) {
            if (m_paths.find(path) != m_paths.end()) {
                return true;
            }
            if (path.empty()) {
                return false;
            }
            const std::size_t slash = path.rfind('/');
            path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
        }
    }

private:
    std::set<std::string, std::less<>> m_paths;
};

/// What could not be looked at may be there.
void LeaveOutUnseen(Inspection& inspection) {
    const UnseenPaths unseen(inspection.index.unread);
    const Tree& expected = inspection.history.Expected();
    for (std::vector<NodeId>* const nodes :
         {&inspection.comparison.missing, &inspection.comparison.missingFolders}) {
        inspection.unseen +=
            std::erase_if(*nodes, [&](NodeId node) { return unseen.Hold(expected.PathOf(node)); });
    }
}

[[noreturn]] void ThrowCancelled(const Inspection& inspection) {
    throw tool::Failure(inspection.folder, "not read to the end",
                        fmt::format("cancelled after {} of {} files", inspection.filesRead,
                                    inspection.index.tree.FileCount()));
}

void LookAndRead(Inspection& inspection, FormatSet wished, tool::RunProgress& progress) {
    std::unique_ptr<platform::Folder> root;
    copy::Require(platform::Files().OpenFolder(inspection.folder, root), "open", inspection.folder);
    WalkFolder(
        *root, inspection.history.Ignored(),
        [](const std::string& /*path*/, const platform::FileInfo& /*info*/) {
            return !WasInterrupted();
        },
        inspection.index);
    HashFiles(inspection, *root, wished, progress);
}

} // namespace

Inspection::Inspection(std::string folderToInspect)
    : folder(std::move(folderToInspect)), history(mhl::History::Open(platform::Files(), folder)) {}

bool Inspection::IsComplete() const {
    return index.unread.Count() == 0 && unreadable.Count() == 0;
}

bool Inspection::IsClean() const {
    return IsComplete() && index.leftOut.Count() == 0 && comparison.IsClean() &&
           history.Found().Faults() == 0;
}

void Inspect(Inspection& inspection, FormatSet wished, tool::RunProgress& progress) {
    const auto begin = std::chrono::steady_clock::now();
    try {
        LookAndRead(inspection, wished, progress);
    } catch (const copy::Failure& failure) {
        progress.Clear();
        if (WasInterrupted()) {
            ThrowCancelled(inspection);
        }
        throw tool::Failure(inspection.folder, "cannot be read", failure.what());
    }
    inspection.comparison = mhl::Compare(inspection.history, inspection.index.tree);
    LeaveOutUnseen(inspection);
    inspection.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

} // namespace nqp2::offload
