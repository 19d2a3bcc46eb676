// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "worker/card_folder.h"
#include "worker/outcome.h"

#include <memory>

namespace nqp2::worker {

/// A clip name on a card that nobody else takes as long as this lasts: no other session, no other
/// worker, and no transfer.
struct ClaimedName {
    CString name;
    std::unique_ptr<platform::NameLock> lock; ///< null where files cannot be locked
};

/// Claims a name that the host chose. Fails when it is taken, or none that a card's file system and
/// the files of a clip can have.
Outcome ClaimName(const CardFolders& card, const CString& wanted, ClaimedName& claimed);

/// Claims the next free name after another one; "" begins with "0001AA".
Outcome ClaimFreeName(const CardFolders& card, const CString& after, ClaimedName& claimed);

/// Whether a recording can have the name; see ClaimName.
Outcome CheckRecordingName(const CString& name);

} // namespace nqp2::worker
