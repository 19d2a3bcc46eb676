// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/card_identity.h"
#include "offload/mhl/history.h"
#include "platform/folder.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace nqp2::offload {

/// What tells a file or folder from all others, whatever path leads to it.
struct FileId {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    friend bool operator==(const FileId& a, const FileId& b) = default;
};
inline FileId IdOf(const platform::FileInfo& info) {
    return {info.device, info.inode};
}

/// The folder behind a path and all those above it, up to the top of the system.
std::vector<FileId> IdsUpward(const std::string& path);

/// What a copy of the card finds in its place.
enum class TargetState {
    New,        ///< nothing
    Unfinished, ///< an unfinished copy of the same card
    Finished,   ///< a finished one
    Taken,      ///< anything else
};

/// A folder that receives a copy.
struct Target {
    std::string folder; ///< as it was asked for, whole
    std::shared_ptr<platform::Folder> opened;
    std::vector<FileId> upward; ///< itself, and what is above it
    platform::MediumFacts medium;

    // Once the copy's name is known:
    std::string path; ///< of the copy
    TargetState state = TargetState::New;
    mhl::FormatSet formats; ///< of the lists that the copy has already
    /// Of an unfinished copy: the manifests that its runs found.
    std::optional<std::vector<std::string>> listsBefore;
    std::string whyTaken;                     ///< the end of a sentence
    std::string listFault;                    ///< of a copy that was finished; "" when it has none
    std::shared_ptr<const mhl::History> list; ///< of a copy that has one without a fault
    std::unique_ptr<platform::NameLock> lock; ///< against other runs into the same place

    // Once the copy is begun:
    std::shared_ptr<platform::Folder> copy;
    std::shared_ptr<platform::Folder> writing; ///< the same, for the one who copies into it
    FileId begun;                              ///< of it
};

/// Opens the folder. Throws tool::Failure when there is none.
Target OpenTarget(const std::string& folder);

/// Looks what has the name in the target's folder.
void LookAt(Target& target, const std::string& name, const CardIdentity& card);

} // namespace nqp2::offload
