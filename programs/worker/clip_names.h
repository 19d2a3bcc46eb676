// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "worker/base/card_folder.h"
#include "worker/clip_files.h"

#include <memory>
#include <set>
#include <string>

namespace nqp2::worker {

/// The names of clips that are taken on a card.
class ClipNames {
public:
    /// Reads the names of all clip files below a CONTENTS folder.
    void Read(const ListFolder& list);
    [[nodiscard]] bool IsTaken(const CString& name) const;
    void Take(const CString& name);
    /// A free name: the four digits of `wanted` count up, from 9999 on to 0001, and its last two
    /// letters stay. A name of another form gives "0001AA" to start from. Fails when all are taken.
    [[nodiscard]] CString FindFree(const CString& wanted) const;

private:
    std::set<std::wstring> m_taken; ///< in upper case
};

/// A clip name on a card that nobody else takes as long as this lasts: no other session, no other
/// worker, and no transfer.
struct ClaimedName {
    CString name;
    std::unique_ptr<platform::NameLock> lock; ///< null where files cannot be locked
};

/// Claims a name that the host chose. Fails when it is taken, or none that a card's file system and
/// the files of a clip can have.
ClaimedName ClaimName(const CardFolders& card, const CString& wanted);

/// Claims the next free name after another one; "" begins with "0001AA".
ClaimedName ClaimFreeName(const CardFolders& card, const CString& after);

/// Fails unless a recording can have the name; see ClaimName.
void CheckRecordingName(const CString& name);

} // namespace nqp2::worker
