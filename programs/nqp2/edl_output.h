// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/P2EDL.h"

namespace CLI {
class App;
} // namespace CLI

namespace nqp2::tool {

class Console;

/// How edit lists are printed; a table by default.
struct EdlForm {
    bool json = false;
    bool csv = false;
};

/// Adds the options that choose the form.
void AddEdlForm(CLI::App& command, EdlForm& form);

/// Sorts edit lists by name and prints them on standard output, for a table their number on
/// standard error.
void PrintEdls(Console& console, CArray<tag_P2EDL>& edls, const EdlForm& form);

} // namespace nqp2::tool
