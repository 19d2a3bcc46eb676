// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "manual/help_text.h"

#include <algorithm>
#include <utility>

namespace nqp2::manual {
namespace {

constexpr std::size_t kNames = 2; ///< column in which names begin,
constexpr std::size_t kGap = 2;   ///< least number of blanks behind them,
/// and the column in which what they mean begins at the latest.
constexpr std::size_t kLastMeanings = 26;

/// Puts lines together anew.
class Filler {
public:
    Filler(std::size_t indent, std::size_t width) : m_margin(indent, ' '), m_width(width) {}

    void Add(std::string_view line) {
        if (line.starts_with(' ')) {
            EndLine();
            m_line = line;
            EndLine();
            return;
        }
        while (!line.empty()) {
            const std::size_t end = std::min(line.find(' '), line.size());
            AddWord(line.substr(0, end));
            line.remove_prefix(std::min(end + 1, line.size()));
        }
    }
    std::string Text() {
        EndLine();
        return std::move(m_text);
    }

private:
    void AddWord(std::string_view word) {
        if (!m_line.empty() && m_margin.size() + m_line.size() + 1 + word.size() > m_width) {
            EndLine();
        }
        (m_line += m_line.empty() ? "" : " ") += word;
    }
    void EndLine() {
        m_text += m_line.empty() ? "" : m_margin + m_line + '\n';
        m_line.clear();
    }

    std::string m_margin;
    std::size_t m_width;
    std::string m_line;
    std::string m_text;
};

std::string Joined(const std::vector<std::string>& words, std::string_view between) {
    std::string joined;
    for (const std::string& word : words) {
        joined += joined.empty() ? word : std::string(between) + word;
    }
    return joined;
}

bool TellsAll(const std::string& meaning, const std::vector<std::string>& words) {
    return std::all_of(words.begin(), words.end(), [&](const std::string& word) {
        return meaning.find(word) != std::string::npos;
    });
}

std::string NameOf(const Entry& entry) {
    const std::string dots = entry.isRepeated ? " ..." : "";
    return Joined(entry.names, ", ") + (entry.value.empty() ? "" : ' ' + entry.value) + dots;
}

/// As it stands in a synopsis.
std::string Placed(const Entry& entry) {
    const bool isOption = entry.names.back().front() == '-';
    const std::string name = entry.names.back() + (isOption ? ' ' + entry.value : "") +
                             (entry.isRepeated && !isOption ? "..." : "");
    return entry.isRequired ? ' ' + name : " [" + name + ']';
}

/// Names and meanings in two columns; a name that is too long has a line of its own.
std::string Table(const char* heading, const std::vector<Meaning>& rows) {
    std::size_t longest = 0;
    for (const Meaning& row : rows) {
        longest = std::max(longest, row.name.size());
    }
    const std::size_t column = std::min(kNames + longest + kGap, kLastMeanings);
    std::string table = rows.empty() ? "" : '\n' + std::string(heading) + ":\n";
    for (const Meaning& row : rows) {
        std::string line = std::string(kNames, ' ') + row.name;
        const std::string text = Filled(row.text, column);
        if (line.size() + kGap > column) {
            (table += line) += '\n';
            table += text;
        } else {
            line.resize(column, ' ');
            table += line + text.substr(std::min(column, text.size()));
        }
    }
    return table;
}

std::string Entries(const char* heading, const std::vector<Entry>& entries) {
    std::vector<Meaning> rows;
    for (const Entry& entry : entries) {
        rows.push_back({NameOf(entry), WholeMeaning(entry)});
    }
    return Table(heading, rows);
}

std::string Commands(const CommandPage& page) {
    return Table("Commands", ListedCommands(page));
}

std::string Statuses(const std::vector<Meaning>& statuses) {
    std::string text;
    for (const Meaning& status : statuses) {
        text += (text.empty() ? "Exit status: " : ", ") + status.name + ' ' + status.text;
    }
    return text.empty() ? "" : '\n' + Filled(text + '.', 0);
}

} // namespace

std::string Filled(std::string_view text, std::size_t indent, std::size_t width) {
    Filler filler(indent, width);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        filler.Add(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return filler.Text();
}

std::vector<Meaning> ListedCommands(const CommandPage& page) {
    std::vector<Meaning> commands;
    for (const CommandPage& command : page.commands) {
        if (command.isListed) {
            commands.push_back({command.name.substr(page.name.size() + 1), command.purpose});
        }
    }
    return commands;
}

std::string WholeMeaning(const Entry& entry) {
    std::string more;
    const auto add = [&more](const std::string& part) {
        more += (more.empty() ? "" : "; ") + part;
    };
    if (!TellsAll(entry.meaning, entry.words)) {
        add(Joined(entry.words, ", "));
    }
    if (!entry.range.empty()) {
        add(entry.range);
    }
    if (entry.isRequired && entry.names.back().front() == '-') {
        add("required");
    }
    if (!entry.needs.empty()) {
        add("with " + Joined(entry.needs, ", "));
    }
    if (!entry.excludes.empty()) {
        add("not with " + Joined(entry.excludes, ", "));
    }
    return entry.meaning + (more.empty() ? "" : " (" + more + ')');
}

std::string Synopsis(const CommandPage& page) {
    std::string text = page.name + (page.options.empty() ? "" : " [OPTIONS]");
    for (const Entry& option : page.options) {
        text += option.isRequired ? Placed(option) : "";
    }
    for (const Entry& argument : page.arguments) {
        text += Placed(argument);
    }
    return text + (page.commands.empty() ? "" : " COMMAND");
}

std::string ShortHelp(const CommandPage& page) {
    return "Usage: " + Synopsis(page) + '\n' + Commands(page);
}

std::string HelpText(const CommandPage& page) {
    std::string text = Filled(page.purpose, 0) + "Usage: " + Synopsis(page) + '\n' +
                       Entries("Arguments", page.arguments) + Entries("Options", page.options) +
                       Commands(page);
    for (const std::string& note : page.notes) {
        text += '\n' + Filled(note, 0);
    }
    text += Statuses(page.statuses);
    for (const std::string& example : page.examples) {
        text += "\nExample: " + example + '\n';
    }
    return text;
}

} // namespace nqp2::manual
