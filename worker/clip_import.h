// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/CString.h"
#include "worker/transfer.h"

namespace nqp2::worker {

struct ImportRequest {
    CString cardRoot;
    CString clipName;
    CString destination; ///< receives a CONTENTS tree; made when missing
};

/// Copies a clip from a card to a folder.
Outcome ImportClip(const ImportRequest& request, std::size_t blockSize, TransferWatch& watch,
                   TransferSizes& sizes);

/// The items for all files of a clip under the name it has. Fails when the clip has no metadata file.
Outcome CollectClip(const std::string& contents, const CString& clipName,
                    std::vector<ClipFile>& files);

} // namespace nqp2::worker
