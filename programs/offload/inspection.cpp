// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/inspection.h"

#include "console/console.h"
#include "console/run_progress.h"
#include "copy/failure.h"
#include "NQP2ParserU/Interrupt.h"
#include "offload/folder_check.h"
#include "offload/folder_reading.h"
#include "offload/walk.h"
#include "platform/folder.h"

#include <fmt/core.h>

#include <chrono>
#include <utility>

namespace nqp2::offload {
namespace {

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
        // A folder has its place before what is in it.
        for (NodeId node = 0; node < tree.Size(); ++node) {
            const FormatSet above =
                node == mhl::kScope ? FormatSet() : Of(tree.ParentOf(node)) | wished;
            const FormatSet own = tree.IsFolder(node)
                                      ? OfFolder(history, tree.PathOf(node))
                                      : mhl::FormatsToCheck(history, tree.PathOf(node));
            const bool isUnknown = !tree.IsFolder(node) && own.IsEmpty();
            m_bits[node] = (isUnknown ? m_all : above | own).Bits();
        }
    }

    [[nodiscard]] FormatSet All() const { return m_all; }
    [[nodiscard]] FormatSet Of(std::size_t node) const { return FormatSet::Of(m_bits[node]); }

private:
    /// In which a folder is recorded: its hashes are made of those of all files in it, which a
    /// history below may have recorded otherwise.
    static FormatSet OfFolder(const mhl::History& history, const std::string& path) {
        const NodeId node = history.Expected().Find(path);
        return node != mhl::kNoNode ? history.Expected().FolderHashesOf(node).content.Formats()
                                    : FormatSet();
    }

    FormatSet m_all;
    std::vector<std::uint8_t> m_bits;
};

/// Takes what is told of the files.
class Watch final : public ReadingWatch {
public:
    Watch(Inspection& inspection, tool::RunProgress& progress)
        : m_inspection(inspection), m_progress(progress) {}

    bool GoesOn(const ReadingState& state) override {
        m_progress.Show({state.bytes, state.files, state.file, {}});
        return !WasInterrupted();
    }
    void HasRead(NodeId file, const mhl::Hashes& hashes) override {
        ++m_inspection.filesRead;
        m_inspection.index.tree.SetHashes(file, hashes);
    }
    void CannotRead(NodeId file, const std::string& sentence) override {
        const std::string path = m_inspection.index.tree.PathOf(file);
        m_inspection.unreadable.Add(path, sentence);
        m_progress.Fail(path, "", sentence);
    }

private:
    Inspection& m_inspection;
    tool::RunProgress& m_progress;
};

void HashFiles(Inspection& inspection, FormatSet wished, tool::RunProgress& progress) {
    const FormatsByFile formats(inspection.history, inspection.index.tree, wished);
    Watch watch(inspection, progress);
    FolderReading reading(
        inspection.folder, inspection.index, formats.All(),
        [&](std::size_t node) { return formats.Of(node); }, watch);
    progress.Begin("read", inspection.index.tree.FileCount(), inspection.index.bytes);
    reading.Run(ReadersFor(*inspection.root));
    inspection.bytesRead = reading.State().bytes;
    progress.End({inspection.bytesRead, inspection.filesRead, {}, {}});
    inspection.index.tree.HashFolders(formats.All());
}

/// What could not be looked at may be there.
void LeaveOutUnseen(Inspection& inspection) {
    const Tree& expected = inspection.history.Expected();
    for (std::vector<NodeId>* const nodes :
         {&inspection.comparison.missing, &inspection.comparison.missingFolders}) {
        inspection.unseen += std::erase_if(*nodes, [&](NodeId node) {
            return inspection.index.unread.Hold(expected.PathOf(node));
        });
    }
}

/// Patterns that leave nothing to be checked make a list that any folder agrees with.
void LookForEmptyList(Inspection& inspection) {
    const Tree& expected = inspection.history.Expected();
    bool isAnyExpected = false;
    for (NodeId node = 0; node < expected.Size(); ++node) {
        if (expected.IsFolder(node) || !inspection.history.IsExpected(node)) {
            continue;
        }
        isAnyExpected = true;
        if (!inspection.history.Ignored().IsIgnored(expected.PathOf(node), false)) {
            return;
        }
    }
    if (isAnyExpected) {
        inspection.history.Tell(
            {true, std::string(mhl::kHistoryFolder), 0, "ignores all files that it records"});
    }
}

[[noreturn]] void ThrowCancelled(const Inspection& inspection) {
    throw tool::Failure(inspection.folder, "not read to the end",
                        fmt::format("cancelled after {} of {} files", inspection.filesRead,
                                    inspection.index.tree.FileCount()));
}

std::unique_ptr<platform::Folder> OpenFolder(const std::string& folder) {
    std::unique_ptr<platform::Folder> root;
    if (const platform::IoStatus status = platform::Files().OpenFolder(folder, root); !status) {
        throw tool::Failure(folder, "cannot be opened", status.reason);
    }
    return root;
}

void LookAndRead(Inspection& inspection, FormatSet wished, tool::RunProgress& progress) {
    WalkFolder(
        *inspection.root, inspection.history.Ignored(),
        [](const std::string& /*path*/, const platform::FileInfo& /*info*/) {
            return !WasInterrupted();
        },
        inspection.index);
    HashFiles(inspection, wished, progress);
}

} // namespace

Inspection::Inspection(std::string folderToInspect)
    : folder(std::move(folderToInspect)), root(OpenFolder(folder)),
      history(mhl::History::Open(platform::Files(), folder)) {}

bool Inspection::IsComplete() const {
    return index.unread.Count() == 0 && unreadable.Count() == 0;
}

bool Inspection::IsClean() const {
    return IsComplete() && index.leftOut.Count() == 0 &&
           (comparison.IsClean() || !history.Exists()) && history.Found().Faults() == 0;
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
    KeepUnexplainedFolders(inspection.history, inspection.index.tree, inspection.comparison);
    LeaveOutUnseen(inspection);
    LookForEmptyList(inspection);
    inspection.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

} // namespace nqp2::offload
