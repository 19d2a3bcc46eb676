// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/rewrap_plans.h"
#include "nqp2/transfer_watch.h"
#include "nqp2/worker_session.h"
#include "NQP2ParserU/Rewrap.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace nqp2::tool {

/// What has become of a planned file.
enum class FileFate : std::int32_t {
    Left, ///< not begun
    Written,
    Refused,
};

struct RewrappedFile {
    const rewrap::Plan* plan = nullptr;
    FileFate fate = FileFate::Left;
    RewrapResult result; ///< of one that is written
    std::string failure; ///< of one that is refused
};

/// How a run has ended.
struct RewrapRun {
    std::vector<RewrappedFile> files; ///< as planned
    bool hasLostWorker = false;

    [[nodiscard]] std::vector<const RewrappedFile*> With(FileFate fate) const;
};

/// Of plans that nothing is done with yet: those that are not possible are refused.
RewrapRun NewRun(const std::vector<rewrap::Plan>& plans);

/// Hears of each file that was written.
using TellRewrapped = std::function<void(const RewrappedFile& file)>;

/// Makes file by file. One that fails is told, and the run goes on; it ends where it is cancelled
/// and where the worker has gone.
void RewrapFiles(WorkerSession& session, TransferWatch& watch, RewrapRun& run,
                 const TellRewrapped& tell);

/// What a person has to know before anything is written.
void TellPlans(RunProgress& shown, const RewrapRun& run, const std::vector<Loss>& losses);
/// What is done and what is not, of a run of several.
void TellEnd(RunProgress& shown, const RewrapRun& run);

} // namespace nqp2::tool
