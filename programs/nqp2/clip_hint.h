// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/P2Clip.h"

#include <string>
#include <vector>

namespace nqp2::tool {

/// "did you mean 0001AB?" when one of the clips has a name that may have been meant; else "".
std::string NearClip(const std::string& name, const CArray<_tag_P2Clip>& clips);

/// What helps with a request for clips of a P2 card that failed, for the first of them that is the
/// card's fault or the name's: where its metadata are broken, or which clip may have been meant. ""
/// when the names are right. Reads the card only for a name that is not.
std::string ClipHint(const Card& card, const std::vector<std::string>& names);

/// A sentence with the hint behind it, if there is one.
std::string WithHint(const std::string& sentence, const std::string& hint);

} // namespace nqp2::tool
