// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/folder_index.h"
#include "offload/mhl/ignore.h"
#include "platform/folder.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace nqp2::offload {

/// Is told of each folder that is entered; false ends the walk with a Failure, "Cancelled.".
using OnFolder = std::function<bool(const std::string& path, const platform::FileInfo& info)>;

/// What a walk leaves out.
struct WalkRules {
    WalkRules(const mhl::IgnoreList& patterns, // NOLINT(google-explicit-constructor)
              const mhl::IgnoreList* strangers = nullptr)
        : ignored(patterns), foreign(strangers) {}

    const mhl::IgnoreList& ignored;           ///< it is told as ignored,
    const mhl::IgnoreList* foreign = nullptr; ///< and by these patterns of a stranger as left out
    bool areListsLookedInto = false; ///< what lies beside lists in their folders is left out
};

/// Takes a file or folder of a walk; the number under which a folder is entered, nothing to pass it
/// over.
using TakeEntry = std::function<std::optional<mhl::NodeId>(
    mhl::NodeId parent, const std::string& path, std::string_view name, const platform::FileInfo&)>;

/// Walks through a folder and all below it without following a link. What is not for `take` is
/// told in `findings`; a Failure is thrown for the root alone.
void WalkThrough(platform::Folder& root, const WalkRules& rules, const OnFolder& onFolder,
                 TakeEntry take, WalkFindings& findings);

/// Walks a folder and all below it without following a link. What it cannot look at below is told
/// in the index; a Failure is thrown for the root alone.
void WalkFolder(platform::Folder& root, const WalkRules& rules, const OnFolder& onFolder,
                FolderIndex& index);

} // namespace nqp2::offload
