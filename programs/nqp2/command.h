// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/console.h"
#include "manual/command_page.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace nqp2::tool {

/// What a chosen command does once all options are known. Throws Failure.
using Action = std::function<Status(Console&)>;

/// How records are printed; a table by default.
struct OutputForm {
    bool json = false;
    bool csv = false;
};

/// How a run shows where it has come: as bar, lines or JSON, by itself when not told.
struct ProgressOptions {
    std::string form;
    bool quiet = false;
};

struct CommandLineState;

/// An argument or option of a command. Valid as long as the command line.
class Option {
public:
    explicit Option(CLI::Option* option) : m_option(option) {}

    Option Required(bool required = true) const; // NOLINT(modernize-use-nodiscard)
    Option Needs(const Option& other) const;     // NOLINT(modernize-use-nodiscard)
    Option Excludes(const Option& other) const;  // NOLINT(modernize-use-nodiscard)
    Option NotEmpty() const;                     // NOLINT(modernize-use-nodiscard)
    Option Between(int least, int most) const;   // NOLINT(modernize-use-nodiscard)
    /// Shown as required: the command itself asks for it, because an older name will do.
    Option RequiredByAnyName() const; // NOLINT(modernize-use-nodiscard)
    /// Understood, but not in the help: a name that it had before.
    Option Unlisted() const; // NOLINT(modernize-use-nodiscard)
    void OneOf(const std::vector<int>& numbers) const;
    void OneOf(const std::vector<std::string>& words) const;
    [[nodiscard]] bool IsGiven() const;

private:
    CLI::Option* m_option;
};

/// A command that is being put together. What is added comes in the help in that order. Only
/// command.cpp knows the library that parses command lines.
class Command {
public:
    Command(CLI::App& app, CommandLineState& line) : m_app(&app), m_line(&line) {}

    /// A command below this one.
    [[nodiscard]] Command Add(const std::string& name, const std::string& description) const;
    /// One that has no action of its own and consists of commands.
    [[nodiscard]] Command AddGroup(const std::string& name, const std::string& description) const;
    /// Makes the options of the command, to be filled from the command line, and lets it do `run`.
    template <class Options>
    [[nodiscard]] Options& Runs(Status (*run)(Console&, const Options&)) const {
        const auto options = std::make_shared<Options>();
        SetAction([run, options](Console& console) { return run(console, *options); });
        return *options;
    }

    /// A positional argument, required; a vector takes one or more. The types are those for which
    /// command.cpp instantiates it.
    template <class Value>
    Option Argument(const std::string& name, Value& value, const std::string& description) const;
    /// `--name PLACEHOLDER`; values as above.
    template <class Value>
    Option ValueOption(const std::string& name, Value& value, const std::string& placeholder,
                       const std::string& description) const;
    /// `--name PLACEHOLDER` once for each value.
    Option RepeatedOption(const std::string& name, std::vector<std::string>& values,
                          const std::string& placeholder, const std::string& description) const;
    Option Flag(const std::string& name, bool& value, const std::string& description) const;

    /// What several commands have, the same for all: the arguments CARD, that once or more, and
    /// CLIP once or more,
    Option CardArgument(std::string& card) const;
    void CardArguments(std::vector<std::string>& cards) const;
    void ClipArguments(std::vector<std::string>& clips) const;
    /// --json, and --csv, with words for what they print,
    Option JsonFlag(bool& json) const; // NOLINT(modernize-use-nodiscard)
    void JsonAndCsvFlags(OutputForm& form, const std::string& ofJson,
                         const std::string& ofCsv) const;
    /// --progress with --quiet, --worker and --incomplete.
    void AddProgressOptions(ProgressOptions& progress) const;
    void WorkerOption(std::string& program) const;
    void IncompleteFlag(bool& incomplete) const;

    /// For help and manual: a paragraph, a file that it reads or writes by itself, what it exits
    /// with where that is not as everywhere, and an example.
    void Note(const std::string& note) const;
    void File(const std::string& path, const std::string& meaning) const;
    void Statuses(std::vector<manual::Meaning> statuses) const;
    void Example(const std::string& example) const;
    /// A name that it had before: understood, and told nowhere.
    void Alias(const std::string& name) const;
    /// The same of the command itself.
    void Unlisted() const;
    /// All that is told of the program and its commands, once all are added.
    [[nodiscard]] manual::CommandPage ProgramPage() const;

private:
    void SetAction(Action action) const;

    CLI::App* m_app;
    CommandLineState* m_line;
};

/// Adds a command to the program. One such function a command, listed in main.cpp.
using AddCommand = void (*)(const Command& program);

void AddClipsCommand(const Command& program);
void AddClipCommand(const Command& program);
void AddInfoCommand(const Command& program);
void AddUmidCommand(const Command& program);
void AddFreeNameCommand(const Command& program);
void AddSpaceCommand(const Command& program);
void AddEdlCommand(const Command& program);
void AddEdlWriteCommand(const Command& group);
void AddIngestCommand(const Command& program);
void AddPlaylistsCommand(const Command& program);
void AddImportCommand(const Command& program);
void AddExportCommand(const Command& program);
void AddDeleteCommand(const Command& program);
void AddIconCommand(const Command& program);
void AddSerialCommand(const Command& program);
void AddProbeCommand(const Command& program);
void AddRecordCommand(const Command& program);
void AddOffloadCommand(const Command& program);
void AddSealCommand(const Command& program);
void AddVerifyCommand(const Command& program);
void AddCatalogCommand(const Command& program);
void AddReportCommand(const Command& program);
void AddTimelineCommand(const Command& program);
void AddRewrapCommand(const Command& program);
void AddLastErrorCommand(const Command& program);
void AddManualCommand(const Command& program);
void AddCompleteCommand(const Command& program);

} // namespace nqp2::tool
