// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/arguments.h"
#include "catalogue/commands.h"
#include "catalogue/open_catalogue.h"
#include "console/console.h"
#include "NQP2ParserU/Terminal.h"

#include <fmt/core.h>

#include <exception>

namespace {

using namespace nqp2; // NOLINT(google-build-using-namespace)

tool::Status Run(int count, const char* const* words, tool::Console& console) {
    const catalogue::Arguments arguments = catalogue::ReadArguments(count, words);
    const catalogue::Address address = catalogue::AddressOf(arguments.database);
    try {
        const tool::Status status = catalogue::RunCommand(console, arguments, address);
        console.Finish();
        return status;
    } catch (const catalogue::DatabaseError& error) {
        throw catalogue::FailureOf(error, address.name);
    }
}

} // namespace

int main(int count, char** words) {
    const bool hasStreams = OpenStandardStreams();
    LetWritesFail();
    tool::Console console;
    try {
        if (!hasStreams) {
            throw tool::Failure("a standard stream", "is closed", "and /dev/null cannot be opened");
        }
        return Run(count, words, console);
    } catch (const tool::Failure& failure) {
        if (!failure.IsSilent()) {
            console.Fail(failure.what());
        }
        return failure.GetStatus();
    } catch (const std::exception& error) {
        console.Fail(fmt::format("internal error: {}", error.what()));
        return tool::kFailed;
    }
}
