// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/CString.h"

namespace nqp2::edl {

/// A file name for a new edit list in the folder (with its trailing separator): the number behind
/// the largest there is, up to 999, then the first gap; two letters of the id text. Returns false
/// when the folder is missing or holds 999 lists numbered to the end.
bool NewEditListName(const CString& folder, const CString& id, CString& name);

/// Whether a file that `pattern` finds has the number in its title.
bool IsNumberTaken(int number, const CString& pattern);

} // namespace nqp2::edl
