// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/clip_order.h"
#include "nqp2/shown_clip.h"

#include <cstddef>
#include <functional>
#include <string_view>

namespace nqp2::tool {

class ClipDetails;
class OutputText;

/// Puts the clip that has that place in the list.
using PutClipAt = std::function<void(const ShownClip& shown, std::size_t index)>;

/// A form in which clips are printed.
struct ClipForm {
    PutClipAt put; ///< into the output, when it is the clip's turn
    /// One for each thread: into a text, before it. What was put is taken away each time.
    std::function<PutClipAt(OutputText& text)> into;
    std::function<void(std::string_view text)> putText; ///< such a text into the output
    bool hasPaths = false;                              ///< of each clip, as JSON has
};

/// Shows clips in that order, each with what is wanted of it. With metadata a few threads, where
/// there are any to be had, make those that come next.
void ShowClips(ClipDetails& details, const ClipOrder& clips, const ClipForm& form);

} // namespace nqp2::tool
