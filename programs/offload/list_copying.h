// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/plan.h"

#include <string>
#include <vector>

namespace nqp2::offload {

/// The folders of lists that a copy of the card may have, its own among them.
std::vector<std::string> ListFoldersOf(const Plan& plan);

/// Copies the lists of hashes that the card brings, its own and those of folders below it, proven
/// as all that is copied. A list that goes on in the copy already stays as it is there. Throws a
/// copy::Failure.
void CopyLists(const Plan& plan, const Target& target);

/// Removes the manifest that a killed run has written into a copy that is marked as unfinished, and
/// that no chain names. One that was there before is none of these. Throws a copy::Failure.
void RemoveUnlisted(const Plan& plan, const Target& target);

} // namespace nqp2::offload
