// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/program_run.h"

#include "console/object_line.h"
#include "NQP2ParserU/Terminal.h"

#include <fmt/core.h>

#include <exception>
#include <new>

namespace nqp2::tool {
namespace {

/// What is thrown goes no further, unless there is no memory to tell of it.
Status RunOrTell(ProgramWork work, int count, const char* const* words, bool hasStreams,
                 Console& console) {
    try {
        if (!hasStreams) {
            throw Failure("a standard stream", "is closed", "and /dev/null cannot be opened");
        }
        return work(count, words, console);
    } catch (const Failure& failure) {
        if (!failure.IsSilent()) {
            console.Fail(failure.what());
        }
        return failure.GetStatus();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        console.Fail(fmt::format("internal error: {}", error.what()));
        return kFailed;
    }
}

} // namespace

Status RunProgram(ProgramWork work, int count, const char* const* words,
                  bool asksForObjects) noexcept {
    const bool hasStreams = OpenStandardStreams();
    LetWritesFail();
    Console console;
    if (asksForObjects) {
        console.TellAsObjects();
    }
    try {
        return RunOrTell(work, count, words, hasStreams, console);
    } catch (const std::bad_alloc&) {
        WriteSide(asksForObjects ? "{\"failure\":\"there is not enough memory\"}\n"
                                 : "nqp2: there is not enough memory\n");
        return kFailed;
    }
}

} // namespace nqp2::tool
