// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/program.h"

#include "console/object_line.h"
#include "NQP2ParserU/Terminal.h"
#include "offload/arguments.h"
#include "offload/mhl/hash_format.h"
#include "offload/run_offload.h"
#include "offload/seal_verify.h"

#include <fmt/core.h>

#include <exception>
#include <new>

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

/// Allocates nothing.
tool::Status TellNoMemory(bool asksForObjects) noexcept {
    tool::WriteSide(asksForObjects ? "{\"failure\":\"there is not enough memory\"}\n"
                                   : "nqp2: there is not enough memory\n");
    return tool::kFailed;
}

/// What is thrown goes no further, unless there is no memory to tell of it.
tool::Status RunOrTell(int count, const char* const* words, bool hasStreams, bool asksForObjects) {
    tool::Console console;
    if (asksForObjects) {
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
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        console.Fail(fmt::format("internal error: {}", error.what()));
        return tool::kFailed;
    }
}

} // namespace

tool::Status RunProgram(int count, const char* const* words) noexcept {
    const bool hasStreams = OpenStandardStreams();
    LetWritesFail();
    const bool asksForObjects = AskForObjects(count, words);
    try {
        return RunOrTell(count, words, hasStreams, asksForObjects);
    } catch (const std::bad_alloc&) {
        return TellNoMemory(asksForObjects);
    }
}

} // namespace nqp2::offload
