// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "manual/command_page.h"

#include <string>

namespace nqp2::manual {

/// A command's page of the manual, section 1, in the macros of man(7). `source` names and numbers
/// the project; `also` are the names of other pages.
std::string ManPage(const CommandPage& page, const std::string& source,
                    const std::vector<std::string>& also);
/// What that page is called: "nqp2-edl-write".
std::string ManName(const CommandPage& page);

} // namespace nqp2::manual
