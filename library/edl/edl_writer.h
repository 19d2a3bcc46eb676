// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/P2EDL.h"
#include "platform/io_status.h"
#include "platform/place.h"

#include <string>
#include <utility>

class CMarkupMSXML;

namespace nqp2::edl {

/// A failure that is not the system's, in words of our own.
inline platform::IoStatus Refusal(std::string reason) {
    return {platform::IoError::Other, std::move(reason)};
}

/// The document of an edit list of clips that are on the card. What the edit is made of (edit unit,
/// rate, codec) comes from the first event's clip that is there. A list without such a clip is
/// refused, and one that could not be read again. The reason of a failure is a sentence.
platform::IoStatus EditListText(const platform::Place& contents, const tag_P2EDL& edl,
                                CMarkupMSXML& reader, std::string& text);

} // namespace nqp2::edl
