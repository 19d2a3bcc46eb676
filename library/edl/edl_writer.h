// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/P2EDL.h"
#include "platform/place.h"

#include <optional>
#include <string>

class CMarkupMSXML;

namespace nqp2::edl {

/// The document of an edit list of clips that are on the card. What the edit is made of (edit unit,
/// rate, codec) comes from the first event's clip that is there. Nothing for a list without such a
/// clip, and for one that could not be read again.
std::optional<std::string> EditListText(const platform::Place& contents, const tag_P2EDL& edl,
                                        CMarkupMSXML& reader);

} // namespace nqp2::edl
