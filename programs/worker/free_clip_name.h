// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "worker/clip_files.h"
#include "worker/outcome.h"

#include <set>
#include <string>

namespace nqp2::worker {

/// The names of clips that are taken on a card.
class ClipNames {
public:
    /// Reads the names of all clip files below a CONTENTS folder.
    Outcome Read(const std::string& contents);
    /// The same through an open folder.
    Outcome Read(const ListFolder& list);
    [[nodiscard]] bool IsTaken(const CString& name) const;
    void Take(const CString& name);
    /// A free name: the four digits of `wanted` count up, from 9999 on to 0001, and its last two
    /// letters stay. A name of another form gives "0001AA" to start from. Fails when all are taken.
    Outcome FindFree(const CString& wanted, CString& name) const;

private:
    std::set<std::wstring> m_taken; ///< in upper case
};

} // namespace nqp2::worker
