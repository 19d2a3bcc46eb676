// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/target.h"

#include "console/console.h"
#include "offload/mhl/history.h"
#include "offload/unfinished_mark.h"
#include "platform/durable_file.h"

#include <algorithm>
#include <optional>

namespace nqp2::offload {

using platform::EntryKind;
using platform::FileInfo;
using platform::Folder;
using platform::IoError;
using platform::IoStatus;

namespace {

/// Entries that mean something: not what killed programs left, nor a folder of lists without any.
bool IsEmpty(Folder& folder) {
    std::vector<platform::FolderEntry> entries;
    if (!folder.List(entries)) {
        return false;
    }
    return std::all_of(entries.begin(), entries.end(), [&](const auto& entry) {
        std::unique_ptr<Folder> below;
        return platform::IsLeftoverName(entry.name) ||
               (entry.name == mhl::kHistoryFolder && folder.OpenFolder(entry.name, below) &&
                IsEmpty(*below));
    });
}

/// The identity that the newest list tells which tells one.
CardIdentity IdentityInLists(const mhl::History& history) {
    const std::vector<mhl::Generation>& generations = history.Generations();
    for (auto generation = generations.rbegin(); generation != generations.rend(); ++generation) {
        CardIdentity identity = IdentityIn(generation->head.metadata);
        if (!identity.files.empty()) {
            return identity;
        }
    }
    return {};
}

std::string FirstFault(const mhl::Findings& found) {
    const auto first = std::find_if(found.Kept().begin(), found.Kept().end(),
                                    [](const mhl::Finding& each) { return each.isFault; });
    return first == found.Kept().end() ? "too much is said of it" : first->Text();
}

void SetState(Target& target, TargetState same, const CardIdentity& found,
              const CardIdentity& card) {
    if (found.IsSame(card)) {
        target.state = same;
    } else {
        target.whyTaken = found.files.empty()        ? "it is no copy that this program made"
                          : found.IsOtherState(card) ? "it is a copy of this card in another state"
                                                     : "it is a copy of another card";
    }
}

/// Opens the folder of that name, which stays null when there is none. False, and the target says
/// why, when what is there cannot become a copy.
bool OpenCopy(Target& target, const std::string& name, std::shared_ptr<Folder>& copy) {
    FileInfo info;
    IoStatus status = target.opened->Stat(name, info);
    if (status.error == IoError::NotFound) {
        return true;
    }
    if (status && info.kind != EntryKind::Folder) {
        target.whyTaken = info.kind == EntryKind::Link ? "it is a link" : "it is a file";
        return false;
    }
    std::unique_ptr<Folder> opened;
    if (status) {
        status = target.opened->OpenFolder(name, opened);
    }
    if (!status) {
        target.whyTaken = status.reason;
    }
    copy = std::move(opened);
    return bool(status);
}

} // namespace

std::vector<FileId> IdsUpward(const std::string& path) {
    std::vector<FileId> ids;
    FileInfo info;
    for (std::string step = path; platform::Files().Stat(step, info); step += "/..") {
        if (!ids.empty() && ids.back() == IdOf(info)) {
            break; // the top is above itself
        }
        ids.push_back(IdOf(info));
    }
    return ids;
}

Target OpenTarget(const std::string& folder) {
    Target target;
    target.folder = folder;
    std::unique_ptr<Folder> opened;
    if (const IoStatus status = platform::Files().OpenFolder(folder, opened); !status) {
        throw tool::Failure(folder, "is no folder that can be copied to", status.reason);
    }
    target.opened = std::move(opened);
    target.upward = IdsUpward(folder);
    // What cannot be asked is unknown, which speaks against the copy by itself.
    static_cast<void>(target.opened->Medium(target.medium));
    return target;
}

void LookAt(Target& target, const std::string& name, const CardIdentity& card) {
    target.path = platform::PathIn(target.folder, name);
    target.state = TargetState::Taken;
    target.formats = {};
    target.listFault.clear();
    target.list.reset();
    target.listsBefore.reset();
    std::shared_ptr<Folder> copy;
    if (!OpenCopy(target, name, copy)) {
        return;
    }
    if (copy == nullptr || IsEmpty(*copy)) {
        target.state = TargetState::New;
        return;
    }
    const auto list = std::make_shared<const mhl::History>(mhl::History::Open(copy));
    const mhl::History& history = *list;
    target.formats = history.Formats();
    const std::optional<UnfinishedMark> mark = MarkIn(*copy);
    SetState(target, mark ? TargetState::Unfinished : TargetState::Finished,
             mark ? mark->identity : IdentityInLists(history), card);
    target.listsBefore = mark ? mark->lists : std::nullopt;
    if (!mark && history.Found().Faults() != 0) {
        target.listFault = FirstFault(history.Found());
    }
    if (history.Found().Faults() == 0) {
        target.list = list;
    }
}

} // namespace nqp2::offload
