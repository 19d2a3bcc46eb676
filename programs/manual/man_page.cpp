// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "manual/man_page.h"

#include "manual/help_text.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace nqp2::manual {
namespace {

/// What troff would take for its own: a backslash, a hyphen that is to be typed, and a dot or quote
/// at the start of a line.
std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char each : text) {
        const bool isAtStart = escaped.empty() || escaped.back() == '\n';
        if (isAtStart && (each == '.' || each == '\'')) {
            escaped += "\\&";
        }
        escaped += each == '\\' ? "\\e" : each == '-' ? "\\-" : std::string(1, each);
    }
    return escaped;
}

std::string Bold(std::string_view text) {
    return "\\fB" + Escaped(text) + "\\fR";
}

std::string Section(const char* heading, const std::string& text) {
    return text.empty() ? "" : std::string(".SH ") + heading + '\n' + text;
}

std::string Tagged(const std::string& tag, const std::string& text) {
    return ".TP\n" + tag + '\n' + Escaped(text) + '\n';
}

std::string Entries(const std::vector<Entry>& entries) {
    std::string text;
    for (const Entry& entry : entries) {
        std::string tag;
        for (const std::string& name : entry.names) {
            tag += (tag.empty() ? "" : ", ") + Bold(name);
        }
        tag += entry.value.empty() ? "" : " \\fI" + Escaped(entry.value) + "\\fR";
        text += Tagged(tag + (entry.isRepeated ? " ..." : ""), WholeMeaning(entry));
    }
    return text;
}

std::string Meanings(const std::vector<Meaning>& meanings) {
    std::string text;
    for (const Meaning& meaning : meanings) {
        text += Tagged(Bold(meaning.name), meaning.text);
    }
    return text;
}

std::string Commands(const std::vector<CommandPage>& commands) {
    std::string text;
    for (const CommandPage& command : commands) {
        if (command.isListed) {
            text += Tagged("\\fB" + Escaped(ManName(command)) + "\\fR(1)", command.purpose);
        }
    }
    return text;
}

/// Paragraphs; lines with blanks before them stay lines.
std::string Paragraphs(const std::vector<std::string>& notes) {
    std::string text;
    for (const std::string& note : notes) {
        const bool isSet = note.front() == ' ';
        text += ".PP\n" + std::string(isSet ? ".nf\n" : "") + Escaped(note) + '\n' +
                (isSet ? ".fi\n" : "");
    }
    return text;
}

std::string Examples(const std::vector<std::string>& examples) {
    std::string text;
    for (const std::string& example : examples) {
        text += ".PP\n.RS 4\n.nf\n" + Escaped(example) + "\n.fi\n.RE\n";
    }
    return text;
}

std::string SeeAlso(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ",\n") + Bold(name) + "(1)";
    }
    return text.empty() ? "" : text + '\n';
}

} // namespace

std::string ManName(const CommandPage& page) {
    std::string name = page.name;
    std::replace(name.begin(), name.end(), ' ', '-');
    return name;
}

std::string ManPage(const CommandPage& page, const std::string& source,
                    const std::vector<std::string>& also) {
    std::string title = ManName(page);
    std::transform(title.begin(), title.end(), title.begin(),
                   [](unsigned char each) { return static_cast<char>(std::toupper(each)); });
    return ".TH " + Escaped(title) + " 1 \"\" \"" + Escaped(source) + "\" \"User Commands\"\n" +
           Section("NAME", Escaped(ManName(page) + " - " + page.purpose) + '\n') +
           Section("SYNOPSIS",
                   Bold(page.name) + Escaped(Synopsis(page).substr(page.name.size())) + '\n') +
           Section("DESCRIPTION", Escaped(page.purpose) + ".\n" + Paragraphs(page.notes)) +
           Section("ARGUMENTS", Entries(page.arguments)) +
           Section("OPTIONS", Entries(page.options)) +
           Section("COMMANDS", Commands(page.commands)) +
           Section("EXIT STATUS", Meanings(page.statuses)) +
           Section("FILES", Meanings(page.files)) + Section("EXAMPLES", Examples(page.examples)) +
           Section("SEE ALSO", SeeAlso(also));
}

} // namespace nqp2::manual
