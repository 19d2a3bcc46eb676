// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/card_folders.h"

#include "NQP2ParserU/PathText.h"
#include "platform/case_blind.h"

namespace nqp2::avchd {

bool FolderExists(const CString& folder) {
    return platform::PathExists(PosixPath(folder));
}

CString ClipsFolder(const CString& root) {
    const bool isAvchd = FolderExists(root + kAvchdFolder + kInformationFolder);
    return root + (isAvchd ? kAvchdFolder : kBdmvFolder);
}

} // namespace nqp2::avchd
