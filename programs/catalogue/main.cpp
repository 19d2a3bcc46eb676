// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/arguments.h"
#include "catalogue/commands.h"
#include "catalogue/open_catalogue.h"
#include "console/program_run.h"

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
    return tool::RunProgram(Run, count, words, false);
}
