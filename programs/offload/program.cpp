// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/program.h"

#include "console/program_run.h"
#include "offload/arguments.h"
#include "offload/mhl/hash_format.h"
#include "offload/run_offload.h"
#include "offload/seal_verify.h"

namespace nqp2::offload {
namespace {

tool::Status Run(int count, const char* const* words, tool::Console& console) {
    const Arguments arguments = ReadArguments(count, words);
    // What no list can do without is looked for before hours of copying.
    static_cast<void>(mhl::Hasher(mhl::HashFormat::C4));
    tool::Status status = tool::kUsage;
    switch (arguments.operation) {
    case Operation::Offload:
        status = RunOffload(console, arguments);
        break;
    case Operation::Seal:
        status = RunSeal(console, arguments);
        break;
    case Operation::Verify:
        status = RunVerify(console, arguments);
        break;
    }
    console.Finish();
    return status;
}

} // namespace

tool::Status RunProgram(int count, const char* const* words) noexcept {
    return tool::RunProgram(Run, count, words, AskForObjects(count, words));
}

} // namespace nqp2::offload
