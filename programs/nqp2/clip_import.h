// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/import_plan.h"
#include "nqp2/transfer_watch.h"
#include "nqp2/worker_session.h"
#include "NQP2ParserU/R8P2TransInfo.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace nqp2::tool {

/// What has become of a planned clip.
enum class ClipFate : std::int32_t {
    Left, ///< not begun
    Imported,
    Refused,
};

struct ImportedClip {
    const PlannedClip* clip = nullptr;
    ClipFate fate = ClipFate::Left;
    stu_R8P2TransInfo info; ///< what the worker told of an import
    std::string failure;    ///< of one that is not imported
};

/// How a run of imports has ended.
struct ImportRun {
    std::vector<ImportedClip> clips; ///< as planned
    bool hasLostWorker = false;

    [[nodiscard]] std::vector<const ImportedClip*> With(ClipFate fate) const;
    /// Whether all that was planned is imported.
    [[nodiscard]] bool IsEvery() const { return With(ClipFate::Imported).size() == clips.size(); }
};

/// Where to, and whether clips that are not whole are taken.
struct ImportTarget {
    std::string folder;
    bool incomplete = false;
};

/// Hears of each clip that was imported.
using TellImported = std::function<void(const ImportedClip& clip)>;

/// Imports clip by clip. One that fails is told, and the run goes on; it ends where it is cancelled
/// and where the worker has gone.
ImportRun ImportClips(WorkerSession& session, TransferWatch& watch, const ImportPlan& plan,
                      const ImportTarget& target, const TellImported& tell);

} // namespace nqp2::tool
