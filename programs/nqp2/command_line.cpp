// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/command_line.h"

#include "manual/help_text.h"
#include "nqp2/command_line_state.h"
#include "nqp2/near_name.h"

#include <fmt/core.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::tool {
namespace {

/// The command that the user has come to: the program itself when none was named.
const CLI::App& ChosenCommand(const CLI::App& from) {
    const std::vector<CLI::App*> commands = from.get_subcommands();
    return commands.empty() ? from : ChosenCommand(*commands.front());
}

/// The names of a command and of those that it belongs to.
std::string WholeName(const CLI::App& command) {
    const CLI::App* above = command.get_parent();
    return (above == nullptr ? "" : WholeName(*above) + ' ') + command.get_name();
}

manual::CommandPage ChosenPage(const CommandLineState& state) {
    const CLI::App& command = ChosenCommand(state.app);
    const std::string name = WholeName(command);
    return PageOf(state, command, name.substr(0, name.size() - command.get_name().size()));
}

/// What may stand behind a command: those below it, its options and those that all have.
std::vector<std::string> KnownNames(const CommandLineState& state,
                                    const manual::CommandPage& page) {
    std::vector<std::string> names;
    for (const manual::Meaning& command : manual::ListedCommands(page)) {
        names.push_back(command.name);
    }
    for (const auto& options : {page.options, PageOf(state, state.app, "").options}) {
        for (const manual::Entry& option : options) {
            names.push_back(option.names.back());
        }
    }
    return names;
}

/// Whether the user has come to a command that is nothing without one below it.
bool NeedsCommand(const CLI::App& program) {
    return ChosenCommand(program).get_require_subcommand_min() > 0;
}

/// `help COMMAND` is `COMMAND --help`.
std::vector<const char*> WithHelpAsOption(int count, const char* const* arguments) {
    std::vector<const char*> words(arguments, arguments + count);
    if (words.size() > 1 && std::string_view(words[1]) == "help") {
        words.erase(words.begin() + 1);
        words.push_back("--help");
    }
    return words;
}

void ShowShortHelp(const manual::CommandPage& page, Console& console) {
    std::string text = manual::ShortHelp(page);
    text.pop_back();
    for (std::size_t from = 0; from <= text.size();) {
        const std::size_t end = std::min(text.find('\n', from), text.size());
        console.Message(text.substr(from, end - from));
        from = end + 1;
    }
}

[[noreturn]] void ThrowUsage(const CommandLineState& state, const CLI::ParseError& error) {
    const std::vector<std::string> unexpected = state.app.remaining(true);
    const manual::CommandPage page = ChosenPage(state);
    const std::string before =
        page.name.substr(std::min(page.name.find(' ') + 1, page.name.size()));
    const std::string command = &ChosenCommand(state.app) == &state.app ? "" : before + ' ';
    const std::string see = fmt::format("see {} --help", page.name);
    if (unexpected.empty()) {
        throw Failure(command + "usage", error.what(), see, kUsage);
    }
    const std::string& word = unexpected.front();
    const std::string near = NearName(word.substr(0, word.find('=')), KnownNames(state, page));
    throw Failure(command + word, "is not understood",
                  near.empty() ? see : fmt::format("did you mean {}?", near), kUsage);
}

} // namespace

CommandLine::CommandLine() : m_state(std::make_unique<CommandLineState>()) {
    CLI::App& program = m_state->app;
    program.name("nqp2");
    program.description("Reads P2 cards, AVCHD cards and copies of them, and writes to P2 cards");
    program.set_version_flag("--version", "nqp2 " NQP2_TOOL_VERSION, "Print the version");
    program.set_help_flag("-h,--help", "Print this help");
    program.require_subcommand(1);
    program.fallthrough();
}

CommandLine::~CommandLine() = default;

Command CommandLine::Program() {
    return {m_state->app, *m_state};
}

Action CommandLine::Parse(int count, const char* const* arguments, Console& console) {
    const std::vector<const char*> words = WithHelpAsOption(count, arguments);
    try {
        m_state->app.parse(static_cast<int>(words.size()), words.data());
    } catch (const CLI::ParseError& outcome) {
        const bool namesNoCommand =
            NeedsCommand(m_state->app) && !m_state->app.remaining(true).empty();
        if (outcome.get_exit_code() == 0 && !namesNoCommand) {
            const bool wantsVersion = dynamic_cast<const CLI::CallForVersion*>(&outcome) != nullptr;
            console.Write(wantsVersion ? std::string(outcome.what()) + '\n'
                                       : manual::HelpText(ChosenPage(*m_state)));
            console.Finish();
            return {};
        }
        if (NeedsCommand(m_state->app) && !namesNoCommand) {
            ShowShortHelp(ChosenPage(*m_state), console);
            throw Failure("COMMAND", "is missing",
                          fmt::format("see {} --help", WholeName(ChosenCommand(m_state->app))),
                          kUsage);
        }
        ThrowUsage(*m_state, outcome);
    }
    return m_state->chosen;
}

} // namespace nqp2::tool
