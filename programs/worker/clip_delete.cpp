// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/clip_delete.h"

#include "worker/card_folder.h"
#include "worker/clip_files.h"

#include <algorithm>

namespace nqp2::worker {
namespace {

Outcome RemoveFrom(platform::Folder& contents, const std::string& placed,
                   const std::vector<std::string>& names) {
    std::unique_ptr<platform::Folder> folder;
    std::string failed = names.front();
    platform::IoStatus status = contents.OpenFolder(placed, folder);
    if (status) {
        status = folder->RemoveFiles(names, failed);
    }
    return status ? Outcome()
                  : Failure("delete", contents.Path() + "/" + placed + "/" + failed, status);
}

/// The metadata first: a clip that shows is whole. Metadata that stay keep all others too.
Outcome RemoveFiles(platform::Folder& contents, const std::vector<ClipFile>& files) {
    Outcome outcome;
    for (auto file = files.rbegin(); file != files.rend();) {
        const ClipFile& first = *file;
        std::vector<std::string> names;
        for (; file != files.rend() && file->placed == first.placed; ++file) {
            names.push_back(file->name);
        }
        Outcome removed = RemoveFrom(contents, first.placed, names);
        if (!removed && first.part == ClipPart::Metadata) {
            return removed;
        }
        if (outcome) {
            outcome = std::move(removed);
        }
    }
    return outcome;
}

} // namespace

Outcome DeleteClip(const CString& clipName, const CString& cardRoot) {
    CardFolders card;
    Outcome outcome = CheckClipName(clipName);
    if (outcome) {
        outcome = OpenCard(cardRoot, card);
    }
    // A card on which no name can be kept, a full one for instance, is cleared all the same.
    std::unique_ptr<platform::NameLock> lock;
    if (outcome && card.root->LockName(Shown(clipName), lock).error == platform::IoError::Busy) {
        outcome = Failure("A transfer is working on " + Shown(clipName) + " in " +
                          card.root->Path() + ".");
    }
    std::vector<std::vector<ClipFile>> files;
    if (outcome) {
        outcome = FindClipFiles(ListInFolder(card.contents.get()), {&clipName, 1}, files);
    }
    if (outcome && files.front().empty()) {
        outcome = MissingClip(card.contents->Path(), clipName);
    }
    return outcome ? RemoveFiles(*card.contents, files.front()) : outcome;
}

} // namespace nqp2::worker
