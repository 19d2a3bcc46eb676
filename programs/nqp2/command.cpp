// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/command.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <cstdint>
#include <utility>

namespace nqp2::tool {
namespace {

constexpr const char* kFooter = "Exit status: 0 done, 1 the card cannot be read or something not "
                                "written,\n2 wrong usage, 3 the worker failed, 4 something was "
                                "skipped (--strict).\n\n"
                                "Example: nqp2 clips /media/card --json";

/// Our words for those of the command-line parser.
constexpr std::pair<const char*, const char*> kLabels[] = {
    {"SUBCOMMAND", "COMMAND"}, {"Positionals", "Arguments"}, {"REQUIRED", ""}};

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

} // namespace

Option Option::Required(bool required) const {
    m_option->required(required);
    return *this;
}

Option Option::Needs(const Option& other) const {
    m_option->needs(other.m_option);
    return *this;
}

Option Option::Excludes(const Option& other) const {
    m_option->excludes(other.m_option);
    return *this;
}

Option Option::NotEmpty() const {
    m_option->check([](const std::string& text) {
        return text.empty() ? std::string("it is empty") : std::string();
    });
    return *this;
}

Option Option::Between(int least, int most) const {
    m_option->check(CLI::Range(least, most));
    return *this;
}

Option Option::Unlisted() const {
    m_option->group("");
    return *this;
}

void Option::OneOf(const std::vector<int>& numbers) const {
    m_option->check(CLI::IsMember(numbers));
}

void Option::OneOf(const std::vector<std::string>& words) const {
    m_option->check(CLI::IsMember(words));
}

bool Option::IsGiven() const {
    return m_option->count() > 0;
}

Command Command::Add(const std::string& name, const std::string& description) const {
    return {*m_app->add_subcommand(name, description), *m_chosen};
}

Command Command::AddGroup(const std::string& name, const std::string& description) const {
    const Command group = Add(name, description);
    group.m_app->require_subcommand(1);
    return group;
}

template <class Value>
Option Command::Argument(const std::string& name, Value& value,
                         const std::string& description) const {
    return Option(m_app->add_option(name, value, description)->type_name("")->required());
}
template Option Command::Argument(const std::string&, std::string&, const std::string&) const;
template Option Command::Argument(const std::string&, std::vector<std::string>&,
                                  const std::string&) const;

template <class Value>
Option Command::ValueOption(const std::string& name, Value& value, const std::string& placeholder,
                            const std::string& description) const {
    return Option(m_app->add_option(name, value, description)->type_name(placeholder));
}
template Option Command::ValueOption(const std::string&, std::string&, const std::string&,
                                     const std::string&) const;
template Option Command::ValueOption(const std::string&, std::uint16_t&, const std::string&,
                                     const std::string&) const;
template Option Command::ValueOption(const std::string&, std::uint32_t&, const std::string&,
                                     const std::string&) const;

Option Command::RepeatedOption(const std::string& name, std::vector<std::string>& values,
                               const std::string& placeholder,
                               const std::string& description) const {
    return Option(m_app->add_option(name, values, description)
                      ->type_name(placeholder)
                      ->allow_extra_args(false));
}

Option Command::Flag(const std::string& name, bool& value, const std::string& description) const {
    return Option(m_app->add_flag(name, value, description));
}

Option Command::CardArgument(std::string& card) const {
    return Argument("CARD", card, "The card: its folder, one that leads to it, or a mapped drive");
}

void Command::CardArguments(std::vector<std::string>& cards) const {
    Argument("CARD", cards, "Cards: their folders, ones that lead to them, or mapped drives");
}

void Command::ClipArguments(std::vector<std::string>& clips) const {
    Argument("CLIP", clips, "Names of clips, in any letter case");
}

void Command::JsonFlag(bool& json) const {
    Flag("--json", json, "Print JSON");
}

void Command::JsonAndCsvFlags(OutputForm& form, const std::string& ofJson,
                              const std::string& ofCsv) const {
    const Option json = Flag("--json", form.json, "Print JSON" + ofJson);
    Flag("--csv", form.csv, "Print comma-separated values" + ofCsv).Excludes(json);
}

void Command::WorkerOption(std::string& program) const {
    ValueOption("--worker", program, "PATH",
                "The worker program; the nqp2-worker of this installation if left out");
}

void Command::AddProgressOptions(ProgressOptions& progress) const {
    ValueOption("--progress", progress.form, "FORM",
                "Show progress as bar, lines or json (one object a line)")
        .OneOf(std::vector<std::string>{"bar", "lines", "json"});
    Flag("-q,--quiet", progress.quiet, "Show no progress");
}

void Command::IncompleteFlag(bool& incomplete) const {
    Flag("--incomplete", incomplete,
         "Take a clip whose picture or sound is missing or cut off as well");
}

void Command::Example(const std::string& example) const {
    m_app->footer("--verbose and --drive serve every command: nqp2 --help\n\nExample: " + example);
}

void Command::Note(const std::string& note) const {
    m_app->footer(note + "\n\n" + m_app->get_footer());
}

void Command::SetAction(Action action) const {
    m_app->callback([chosen = m_chosen, action = std::move(action)] { *chosen = action; });
}

CommandLine::CommandLine()
    : m_app(std::make_unique<CLI::App>(
          "Reads P2 cards, AVCHD cards and copies of them, and writes to P2 cards.", "nqp2")) {
    m_app->set_version_flag("--version", "nqp2 " NQP2_TOOL_VERSION, "Print the version");
    m_app->set_help_flag("-h,--help", "Print this help");
    m_app->require_subcommand(1);
    m_app->fallthrough();
    m_app->footer(kFooter);
    // Commands take the formatter over when they are added.
    const auto formatter = m_app->get_formatter();
    for (const auto& [label, text] : kLabels) {
        formatter->label(label, text);
    }
}

CommandLine::~CommandLine() = default;

Command CommandLine::Program() {
    return {*m_app, m_chosen};
}

Action CommandLine::Parse(int count, const char* const* arguments, Console& console) {
    GroupCommands(*m_app);
    try {
        m_app->parse(count, arguments);
    } catch (const CLI::ParseError& outcome) {
        if (outcome.get_exit_code() != 0) {
            ThrowUsage(*m_app, outcome);
        }
        const bool wantsVersion = dynamic_cast<const CLI::CallForVersion*>(&outcome) != nullptr;
        console.Write(wantsVersion ? std::string(outcome.what()) + '\n' : m_app->help());
        console.Finish();
        return {};
    }
    return m_chosen;
}

} // namespace nqp2::tool
