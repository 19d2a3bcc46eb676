// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/seal_verify.h"

#include "console/run_progress.h"
#include "NQP2ParserU/Interrupt.h"
#include "offload/arguments.h"
#include "offload/inspection.h"
#include "offload/inspection_output.h"
#include "offload/list_head.h"
#include "offload/unfinished_mark.h"
#include "platform/folder.h"

#include <fmt/core.h>

#include <memory>
#include <string>

namespace nqp2::offload {
namespace {

/// Why no generation can be added; "" when there is one now.
std::string AddGeneration(const Inspection& inspection, Added& added) {
    if (!inspection.IsComplete()) {
        return "not all could be read";
    }
    const platform::IoStatus status = inspection.history.AddGeneration(
        NewHead(mhl::Process::InPlace), inspection.index.tree, added.generations);
    return status ? "" : status.reason;
}

/// Tells of a run into the folder that did not come to its end. What a chain records can be held
/// against it all the same; without one, the copy is nobody's proof of anything.
void LookForMark(Inspection& inspection, bool isFault) {
    platform::FileInfo info;
    if (!platform::Files().Stat(platform::PathIn(inspection.folder, MarkPath()), info)) {
        return;
    }
    if (!inspection.history.HasChain()) {
        throw tool::Failure(inspection.folder, "is a copy that was not finished",
                            "run nqp2 offload with the same card and targets again");
    }
    inspection.history.Tell({isFault, MarkPath(), 0, "a run into this copy was not finished"});
}

/// A list of all that is there ends what a run had begun.
void RemoveMark(const Inspection& inspection, Added& added) {
    std::unique_ptr<platform::Folder> lists;
    platform::IoStatus status =
        inspection.root->OpenFolder(std::string(mhl::kHistoryFolder), lists);
    status = status ? lists->RemoveFile(std::string(kMarkFile)) : status;
    if (!status && status.error != platform::IoError::NotFound) {
        added.whyNot = "its mark stays: " + status.reason;
    }
}

tool::Status Run(tool::Console& console, const Arguments& arguments, Inspection& inspection,
                 bool adds) {
    CatchInterrupt();
    tool::RunProgress progress(tool::ProgressFormNamed(arguments.progress));
    Inspect(inspection, FormatsNamed(arguments.hashes), progress);
    Added added{adds, {}, {}};
    if (adds) {
        added.whyNot = AddGeneration(inspection, added);
    }
    if (arguments.operation == Operation::Seal && added.whyNot.empty() && inspection.IsClean()) {
        RemoveMark(inspection, added);
    }
    progress.Clear();
    Print(console, arguments, inspection, added);
    return inspection.IsClean() && added.whyNot.empty() ? tool::kDone : tool::kFailed;
}

} // namespace

tool::Status RunVerify(tool::Console& console, const Arguments& arguments) {
    Inspection inspection(arguments.folder);
    LookForMark(inspection, true);
    if (!inspection.history.Exists()) {
        throw tool::Failure(arguments.folder, "has no list of hashes",
                            "nqp2 seal makes one; what was copied before is not proven by it");
    }
    return Run(console, arguments, inspection, arguments.append);
}

tool::Status RunSeal(tool::Console& console, const Arguments& arguments) {
    Inspection inspection(arguments.folder);
    LookForMark(inspection, false);
    return Run(console, arguments, inspection, true);
}

} // namespace nqp2::offload
