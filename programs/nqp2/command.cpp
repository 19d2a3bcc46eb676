// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/command_line_state.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace nqp2::tool {

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
    m_option->check(CLI::Range(least, most).description(fmt::format("{} to {}", least, most)));
    return *this;
}

Option Option::RequiredByAnyName() const {
    m_option->group(kOneOfNames);
    return *this;
}

Option Option::Unlisted() const {
    m_option->group("");
    return *this;
}

void Option::OneOf(const std::vector<int>& numbers) const {
    std::vector<std::string> words(numbers.size());
    std::transform(numbers.begin(), numbers.end(), words.begin(),
                   [](int number) { return std::to_string(number); });
    OneOf(words);
}

void Option::OneOf(const std::vector<std::string>& words) const {
    std::string listed;
    for (const std::string& word : words) {
        (listed += kWordMark) += word;
    }
    m_option->check(CLI::IsMember(words).description(listed));
}

bool Option::IsGiven() const {
    return m_option->count() > 0;
}

Command Command::Add(const std::string& name, const std::string& description) const {
    return {*m_app->add_subcommand(name, description), *m_line};
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

Option Command::JsonFlag(bool& json) const {
    return Flag("--json", json, "Print JSON");
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

void Command::Note(const std::string& note) const {
    m_line->texts[m_app].notes.push_back(note);
}

void Command::File(const std::string& path, const std::string& meaning) const {
    m_line->texts[m_app].files.push_back({path, meaning});
}

void Command::Statuses(std::vector<manual::Meaning> statuses) const {
    m_line->texts[m_app].statuses = std::move(statuses);
}

void Command::Example(const std::string& example) const {
    m_line->texts[m_app].examples.push_back(example);
}

void Command::Alias(const std::string& name) const {
    m_app->alias(name);
}

void Command::Unlisted() const {
    m_line->texts[m_app].isListed = false;
}

manual::CommandPage Command::ProgramPage() const {
    return PageOf(*m_line, m_line->app, "");
}

void Command::SetAction(Action action) const {
    m_app->callback([line = m_line, action = std::move(action)] { line->chosen = action; });
}

} // namespace nqp2::tool
