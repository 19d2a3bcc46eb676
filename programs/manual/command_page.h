// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

namespace nqp2::manual {

/// An argument or an option.
struct Entry {
    std::vector<std::string> names; ///< "-o", "--output"; the one of an argument: "CARD"
    std::string value;              ///< what an option's value is called; "" of a flag
    std::string meaning;
    std::vector<std::string> words; ///< the only values that it takes; empty: any
    std::string range;              ///< "1 to 100"; "" where there is none
    std::vector<std::string> needs; ///< options without which it means nothing
    std::vector<std::string> excludes;
    bool isRequired = false;
    bool isRepeated = false;
};

/// Something numbered or named, and what it means.
struct Meaning {
    std::string name;
    std::string text;
};

/// All that is told of a command or program, in help, manual and completion alike.
struct CommandPage {
    std::string name; ///< with what stands before it: "nqp2 edl write"
    std::string purpose;
    std::vector<Entry> arguments;
    std::vector<Entry> options;
    std::vector<CommandPage> commands;
    std::vector<std::string> notes; ///< paragraphs; lines that begin with blanks stay as they are
    std::vector<Meaning> statuses;  ///< with which it exits
    std::vector<Meaning> files;     ///< that it reads or writes by itself
    std::vector<std::string> examples;
    bool isListed = true;
};

} // namespace nqp2::manual
