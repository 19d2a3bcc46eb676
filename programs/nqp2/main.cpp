// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/command.h"
#include "nqp2/display_text.h"

#include "NQP2ParserU/DebugOutput.h"
#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/Terminal.h"
#include "NQP2ParserU/TextBytes.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace nqp2::tool; // NOLINT(google-build-using-namespace)

constexpr AddCommand kCommands[] = {AddClipsCommand,    AddClipCommand,     AddFormatCommand,
                                    AddUmidCommand,     AddFreeNameCommand, AddSpaceCommand,
                                    AddEdlCommand,      AddIngestCommand,   AddPlaylistsCommand,
                                    AddImportCommand,   AddExportCommand,   AddDeleteCommand,
                                    AddIconCommand,     AddSerialCommand,   AddBaseInfoCommand,
                                    AddRtExportCommand, AddLastErrorCommand};

constexpr const char* kFooter = "Exit status: 0 done, 1 the card cannot be read or something not "
                                "written,\n2 wrong usage, 3 the worker failed, 4 something was "
                                "skipped (--strict).\n\n"
                                "Example: nqp2 clips /media/card --json";

/// Our words for those of the command-line parser.
constexpr std::pair<const char*, const char*> kLabels[] = {
    {"SUBCOMMAND", "COMMAND"}, {"Positionals", "Arguments"}, {"REQUIRED", ""}};

struct GlobalOptions {
    bool verbose = false;
    std::vector<std::string> drives;
};

void AddGlobalOptions(CLI::App& program, GlobalOptions& options) {
    program.set_version_flag("--version", "nqp2 " NQP2_TOOL_VERSION, "Print the version");
    program.set_help_flag("-h,--help", "Print this help");
    program.add_flag("-v,--verbose", options.verbose, "Show the library's debugger output");
    program
        .add_option("--drive", options.drives, "Let a drive letter stand for a folder (repeatable)")
        ->type_name("LETTER=FOLDER")
        ->allow_extra_args(false);
    program.require_subcommand(1);
    program.fallthrough();
    program.footer(kFooter);
    // Commands take the formatter over when they are added.
    const auto formatter = program.get_formatter();
    for (const auto& [label, text] : kLabels) {
        formatter->label(label, text);
    }
}

void ShowDebugOutput(Console& console) {
    nqp2::SetDebugOutput([&console](const CString& text) {
        CString line = text;
        line.Trim();
        console.Message(nqp2::BytesFromText(line));
    });
}

Status Apply(const GlobalOptions& options, Console& console, const Action& action) {
    if (options.verbose) {
        ShowDebugOutput(console);
    }
    for (const std::string& drive : options.drives) {
        if (!nqp2::MapDriveFromArgument(drive)) {
            throw Failure("--drive " + drive, "is no drive", "expected E=FOLDER", kUsage);
        }
    }
    const Status status = action(console);
    console.Finish();
    return status;
}

/// The names of the commands that the user gave, each with a blank behind it.
std::string ChosenCommand(const CLI::App& program) {
    const std::vector<CLI::App*> commands = program.get_subcommands();
    return commands.empty() ? ""
                            : commands.front()->get_name() + ' ' + ChosenCommand(*commands.front());
}

/// One heading for all commands of a level.
void GroupCommands(CLI::App& level) {
    for (CLI::App* command : level.get_subcommands([](CLI::App*) { return true; })) {
        command->group("Commands");
        GroupCommands(*command);
    }
}

[[noreturn]] void ThrowUsage(const CLI::App& program, const CLI::ParseError& error) {
    const std::vector<std::string> unexpected = program.remaining(true);
    const std::string command = ChosenCommand(program);
    throw Failure(unexpected.empty() ? command + "usage" : command + unexpected.front(),
                  unexpected.empty() ? error.what() : "is not understood",
                  fmt::format("see nqp2 {}--help", command), kUsage);
}

/// Prints what the command-line parser wants to say: help, version or a usage error.
Status AnswerParser(const CLI::App& program, const CLI::ParseError& outcome, Console& console) {
    if (outcome.get_exit_code() != 0) {
        ThrowUsage(program, outcome);
    }
    const bool wantsVersion = dynamic_cast<const CLI::CallForVersion*>(&outcome) != nullptr;
    console.Write(wantsVersion ? std::string(outcome.what()) + '\n' : program.help());
    console.Finish();
    return kDone;
}

Status Run(int count, const char* const* arguments, Console& console) {
    CLI::App program("Reads P2 cards, AVCHD cards and copies of them, and writes to P2 cards.",
                     "nqp2");
    GlobalOptions options;
    Action action;
    AddGlobalOptions(program, options);
    for (const AddCommand add : kCommands) {
        add(program, action);
    }
    GroupCommands(program);
    try {
        program.parse(count, arguments);
    } catch (const CLI::ParseError& outcome) {
        return AnswerParser(program, outcome, console);
    }
    return Apply(options, console, action);
}

} // namespace

int main(int count, char** arguments) {
    const bool hasStreams = nqp2::OpenStandardStreams();
    nqp2::LetWritesFail();
    Console console;
    try {
        if (!hasStreams) {
            throw Failure("a standard stream", "is closed", "and /dev/null cannot be opened");
        }
        return Run(count, arguments, console);
    } catch (const Failure& failure) {
        console.Message(fmt::format("nqp2: {}", failure.what()));
        return failure.GetStatus();
    } catch (const std::exception& error) {
        console.Message(fmt::format("nqp2: internal error: {}", error.what()));
        return kFailed;
    }
}
