// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/command_line_state.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace nqp2::tool {
namespace {

const std::vector<manual::Meaning>& CommonStatuses() {
    static const std::vector<manual::Meaning> kStatuses = {
        {"0", "done"},
        {"1", "the card cannot be read or something not written"},
        {"2", "wrong usage"},
        {"3", "the worker failed"},
        {"4", "something was skipped (--strict)"}};
    return kStatuses;
}

/// What lies between marks.
std::vector<std::string> MarkedWords(std::string text) {
    std::vector<std::string> words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(kWordMark, 1), text.size());
        words.push_back(text.substr(1, end - 1));
        text.erase(0, end);
    }
    return words;
}

/// Of those that are listed.
std::vector<std::string> LongNames(const std::set<CLI::Option*>& options) {
    std::vector<std::string> names;
    for (const CLI::Option* const option : options) {
        if (!option->get_group().empty()) {
            names.push_back(option->get_name());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> NamesOf(const CLI::Option& option) {
    if (option.get_positional()) {
        return {option.get_name(true)};
    }
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) {
        names.push_back('-' + name);
    }
    for (const std::string& name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    return names;
}

manual::Entry EntryOf(const CLI::Option& option) {
    manual::Entry entry;
    entry.names = NamesOf(option);
    entry.meaning = option.get_description();
    // The library puts the description of a check behind the value's name.
    const std::string type = option.get_type_name();
    const std::size_t colon = std::min(type.find(':'), type.size());
    entry.value = type.substr(0, colon);
    const std::string check = type.substr(std::min(colon + 1, type.size()));
    if (check.starts_with(kWordMark)) {
        entry.words = MarkedWords(check);
    } else {
        entry.range = check;
    }
    entry.needs = LongNames(option.get_needs());
    entry.excludes = LongNames(option.get_excludes());
    entry.isRequired = option.get_required() || option.get_group() == kOneOfNames;
    entry.isRepeated = option.get_items_expected_max() > 1;
    return entry;
}

bool HasOption(const manual::CommandPage& page, const std::string& name) {
    return std::any_of(page.options.begin(), page.options.end(),
                       [&name](const manual::Entry& each) { return each.names.back() == name; });
}

/// Of a command that says no more of them: some ends come with an option alone.
std::vector<manual::Meaning> StatusesOf(const manual::CommandPage& page) {
    std::vector<manual::Meaning> statuses = CommonStatuses();
    if (page.commands.empty()) {
        std::erase_if(statuses, [&page](const manual::Meaning& status) {
            return (status.name == "3" && !HasOption(page, "--worker")) ||
                   (status.name == "4" && !HasOption(page, "--strict"));
        });
    }
    return statuses;
}

} // namespace

manual::CommandPage PageOf(const CommandLineState& state, const CLI::App& command,
                           const std::string& before) {
    const auto found = state.texts.find(&command);
    const CommandTexts texts = found == state.texts.end() ? CommandTexts() : found->second;
    manual::CommandPage page;
    page.name = before + command.get_name();
    page.purpose = command.get_description();
    for (const CLI::Option* option : command.get_options()) {
        if (!option->get_group().empty()) {
            (option->get_positional() ? page.arguments : page.options).push_back(EntryOf(*option));
        }
    }
    for (const CLI::App* each : command.get_subcommands([](const CLI::App*) { return true; })) {
        page.commands.push_back(PageOf(state, *each, page.name + ' '));
    }
    page.notes = texts.notes;
    if (!before.empty()) {
        page.notes.emplace_back("--verbose and --drive serve every command: nqp2 --help");
    }
    page.statuses = texts.statuses.empty() ? StatusesOf(page) : texts.statuses;
    page.files = texts.files;
    page.examples = texts.examples;
    page.isListed = texts.isListed;
    return page;
}

} // namespace nqp2::tool
