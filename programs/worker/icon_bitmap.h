// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/MediaHeaders.h"
#include "worker/outcome.h"

#include <string>
#include <string_view>

namespace nqp2::worker {

/// A 24-bit bitmap file of pixels in blue, green, red, the bottom row first, rows not padded.
/// Fails unless there are exactly as many as the size says.
Outcome MakeBitmap(std::string_view pixels, const SIZE& size, std::string& bitmap);

/// Writes CONTENTS/ICON/clipName.BMP, in place of the icon that is there. Fails when the card does
/// not hold that clip.
Outcome WriteIcon(const CString& cardRoot, const CString& clipName, std::string_view pixels,
                  const SIZE& size);

} // namespace nqp2::worker
