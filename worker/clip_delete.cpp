// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/clip_delete.h"

#include "platform/file_system.h"
#include "worker/card_folder.h"
#include "worker/clip_files.h"

#include <algorithm>

namespace nqp2::worker {

Outcome DeleteClip(const CString& clipName, const CString& cardRoot) {
    std::string contents;
    std::vector<ClipFile> files;
    Outcome outcome = CheckClipName(clipName);
    if (outcome) {
        outcome = FindContents(cardRoot, contents);
    }
    if (outcome) {
        outcome = CheckFoldersAreNoLinks(contents);
    }
    if (outcome) {
        outcome = FindClipFiles(contents, clipName, files);
    }
    if (outcome && files.empty()) {
        outcome = MissingClip(contents, clipName);
    }
    if (!outcome) {
        return outcome;
    }
    std::reverse(files.begin(), files.end());
    for (const ClipFile& file : files) {
        const platform::IoStatus status = platform::Files().RemoveFile(file.path);
        if (!status && outcome) {
            outcome = Failure("delete", file.path, status);
        }
        if (!outcome && file.part == ClipPart::Metadata) {
            break;
        }
    }
    return outcome;
}

} // namespace nqp2::worker
