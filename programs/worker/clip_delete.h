// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "worker/outcome.h"

namespace nqp2::worker {

/// Removes a clip's files, the metadata file first: a clip that shows is whole. Goes on after a
/// file that cannot be removed and then fails with the first of them; metadata that stays keeps all
/// others too. Fails when there is no file of that name.
Outcome DeleteClip(const CString& clipName, const CString& cardRoot);

} // namespace nqp2::worker
