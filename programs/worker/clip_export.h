// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "worker/transfer.h"

#include <vector>

namespace nqp2::worker {

struct ExportRequest {
    CString cardRoot;
    CString source; ///< folder that holds a CONTENTS tree
    std::vector<CString> clipNames;
    bool incomplete = false; ///< takes clips that are not whole
};

/// Copies clips from a folder onto a card, all or none, under free names where theirs are taken.
Outcome ExportClips(const ExportRequest& request, std::size_t blockSize, TransferWatch& watch,
                    TransferSizes& sizes);

} // namespace nqp2::worker
