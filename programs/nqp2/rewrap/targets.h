// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/rewrap/plan.h"
#include "NQP2ParserU/Rewrap.h"

#include <string>
#include <vector>

namespace nqp2::rewrap {

/// A kind of file by its name, which is its suffix, too.
struct Form {
    const char* name;
    RewrapContainer container;
};
inline constexpr Form kForms[] = {{"mov", RewrapContainer::Mov},
                                  {"mxf", RewrapContainer::Mxf},
                                  {"mkv", RewrapContainer::Mkv},
                                  {"mp4", RewrapContainer::Mp4}};

std::vector<std::string> FormNames();
/// In any letter case; null for a name that is none.
const Form* FindForm(const std::string& name);
/// The name of a container.
const char* NameOf(RewrapContainer container);

/// Lets a plan go to a file, unless that kind of file cannot hold it. Throws the failure to report
/// for one that is there.
void SetTarget(Plan& plan, const Form& form, const std::string& file);
/// Lets plans go to files in a folder, named after them, each its own. Throws as above.
void SetTargets(std::vector<Plan>& plans, const Form& form, const std::string& folder);

} // namespace nqp2::rewrap
