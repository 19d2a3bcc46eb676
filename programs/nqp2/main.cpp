// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/command_line.h"

#include "console/program_run.h"
#include "NQP2ParserU/DebugOutput.h"
#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/TextBytes.h"

#include <string>
#include <vector>

namespace {

using namespace nqp2::tool; // NOLINT(google-build-using-namespace)

constexpr AddCommand kCommands[] = {
    AddClipsCommand,     AddClipCommand,     AddInfoCommand,    AddUmidCommand,
    AddFreeNameCommand,  AddSpaceCommand,    AddEdlCommand,     AddIngestCommand,
    AddPlaylistsCommand, AddImportCommand,   AddExportCommand,  AddDeleteCommand,
    AddIconCommand,      AddSerialCommand,   AddProbeCommand,   AddRecordCommand,
    AddReportCommand,    AddTimelineCommand, AddRewrapCommand,  AddOffloadCommand,
    AddSealCommand,      AddVerifyCommand,   AddCatalogCommand, AddLastErrorCommand,
    AddManualCommand,    AddCompleteCommand};

void ShowDebugOutput(Console& console) {
    nqp2::SetDebugOutput([&console](const CString& text) {
        CString line = text;
        line.Trim();
        console.Message(nqp2::BytesFromText(line));
    });
}

Status Run(int count, const char* const* arguments, Console& console) {
    bool verbose = false;
    std::vector<std::string> drives;
    CommandLine commandLine;
    const Command program = commandLine.Program();
    program.Flag("-v,--verbose", verbose, "Show the library's debugger output");
    program.RepeatedOption("--drive", drives, "LETTER=FOLDER",
                           "Let a drive letter stand for a folder (repeatable)");
    for (const AddCommand add : kCommands) {
        add(program);
    }
    program.Note("nqp2 COMMAND --help and man nqp2-COMMAND tell all of a command.");
    program.Example("nqp2 clips /media/card --json");
    program.File(NQP2_LIBEXEC "/nqp2-worker", "the program that does what writes to a card");
    program.File(NQP2_SCHEMAS, "schemas of what --json prints, and what of it may change");
    const Action action = commandLine.Parse(count, arguments, console);
    if (!action) {
        return kDone;
    }
    if (verbose) {
        ShowDebugOutput(console);
    }
    for (const std::string& drive : drives) {
        if (!nqp2::MapDriveFromArgument(drive)) {
            throw Failure("--drive " + drive, "is no drive", "expected E=FOLDER", kUsage);
        }
    }
    const Status status = action(console);
    console.Finish();
    return status;
}

} // namespace

int main(int count, char** arguments) {
    return RunProgram(Run, count, arguments, AsksForObjects(count, arguments));
}
