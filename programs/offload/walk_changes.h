// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/walk.h"

#include <functional>

namespace nqp2::offload {

/// How a folder differs by now from what it was: what is new, gone or in another state, and what
/// a second walk could not look at.
OddEntries ChangesSince(const FolderIndex& before, platform::Folder& root, const WalkRules& rules,
                        const OnFolder& onFolder);

using TellEntry = std::function<void(const OddEntry& entry)>;

/// Tells the files and folders of another folder that have no place in the tree of this one.
void TellStrangeEntries(const mhl::Tree& tree, platform::Folder& root, const WalkRules& rules,
                        const OnFolder& onFolder, const TellEntry& tell);

} // namespace nqp2::offload
