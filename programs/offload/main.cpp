// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/console.h"
#include "NQP2ParserU/Terminal.h"
#include "offload/arguments.h"
#include "offload/run_offload.h"
#include "offload/seal_verify.h"

#include <fmt/core.h>

#include <exception>

namespace {

using namespace nqp2; // NOLINT(google-build-using-namespace)

tool::Status Run(int count, const char* const* words, tool::Console& console) {
    const offload::Arguments arguments = offload::ReadArguments(count, words);
    tool::Status status = tool::kUsage;
    switch (arguments.operation) {
    case offload::Operation::Offload:
        status = offload::RunOffload(console, arguments);
        break;
    case offload::Operation::Seal:
        status = offload::RunSeal(console, arguments);
        break;
    case offload::Operation::Verify:
        status = offload::RunVerify(console, arguments);
        break;
    }
    console.Finish();
    return status;
}

} // namespace

int main(int count, char** words) {
    const bool hasStreams = OpenStandardStreams();
    LetWritesFail();
    tool::Console console;
    if (offload::AskForObjects(count, words)) {
        console.TellAsObjects();
    }
    try {
        if (!hasStreams) {
            throw tool::Failure("a standard stream", "is closed", "and /dev/null cannot be opened");
        }
        return Run(count, words, console);
    } catch (const tool::Failure& failure) {
        console.Fail(failure.what());
        return failure.GetStatus();
    } catch (const std::exception& error) {
        console.Fail(fmt::format("internal error: {}", error.what()));
        return tool::kFailed;
    }
}
