// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/seal_verify.h"

#include "console/run_progress.h"
#include "NQP2ParserU/Interrupt.h"
#include "offload/arguments.h"
#include "offload/inspection.h"
#include "offload/inspection_output.h"
#include "offload/list_head.h"
#include "offload/target.h"

#include <fmt/core.h>

namespace nqp2::offload {
namespace {

mhl::FormatSet FormatsNamed(const std::vector<std::string>& names) {
    mhl::FormatSet formats;
    for (const std::string& name : names) {
        const auto format = mhl::HashFormatNamed(name);
        if (!format) {
            throw tool::Failure(name, "is no hash format", "", tool::kUsage);
        }
        formats |= *format;
    }
    return formats;
}

/// Why no generation can be added; "" when there is one now.
std::string AddGeneration(const Inspection& inspection, Added& added) {
    if (!inspection.IsComplete()) {
        return "not all could be read";
    }
    const platform::IoStatus status = inspection.history.AddGeneration(
        NewHead(mhl::Process::InPlace), inspection.index.tree, added.generations);
    return status ? "" : status.reason;
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
    progress.Clear();
    Print(console, arguments, inspection, added);
    return inspection.IsClean() && added.whyNot.empty() ? tool::kDone : tool::kFailed;
}

/// A copy that was not finished is nobody's proof of anything.
void RequireFinished(const std::string& folder) {
    platform::FileInfo info;
    if (platform::Files().Stat(folder + '/' + MarkPath(), info)) {
        throw tool::Failure(folder, "is a copy that was not finished",
                            "run nqp2 offload with the same card and targets again");
    }
}

} // namespace

tool::Status RunVerify(tool::Console& console, const Arguments& arguments) {
    RequireFinished(arguments.folder);
    Inspection inspection(arguments.folder);
    if (!inspection.history.Exists()) {
        throw tool::Failure(arguments.folder, "has no list of hashes",
                            "nqp2 seal makes one; what was copied before is not proven by it");
    }
    return Run(console, arguments, inspection, arguments.append);
}

tool::Status RunSeal(tool::Console& console, const Arguments& arguments) {
    RequireFinished(arguments.folder);
    Inspection inspection(arguments.folder);
    return Run(console, arguments, inspection, true);
}

} // namespace nqp2::offload
