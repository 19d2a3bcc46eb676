// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/P2EDL.h"
#include "parser/ScanReport.h"
#include "platform/CArray.h"
#include "tools/nqp2/console.h"

namespace CLI {
class App;
} // namespace CLI

namespace nqp2::tool {

/// How edit lists are printed; a table by default.
struct EdlForm {
    bool json = false;
    bool csv = false;
    bool strict = false; ///< a file that was skipped shows in the status
};

/// Adds the options that choose the form.
void AddEdlForm(CLI::App& command, EdlForm& form);

/// Sorts edit lists by name and prints them on standard output; on standard error what the scan left
/// out and, for a table, their number. Returns the command's status.
Status PrintEdls(Console& console, CArray<tag_P2EDL>& edls, const ScanReport& report,
                 const EdlForm& form);

} // namespace nqp2::tool
