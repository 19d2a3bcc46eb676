// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "worker/transfer.h"

namespace nqp2::worker {

struct ImportRequest {
    CString cardRoot;
    CString clipName;
    CString destination;     ///< receives a CONTENTS tree; made when missing
    bool incomplete = false; ///< takes a clip that is not whole
};

/// Copies a clip from a card to a folder.
Outcome ImportClip(const ImportRequest& request, std::size_t blockSize, TransferWatch& watch,
                   TransferSizes& sizes);

} // namespace nqp2::worker
