// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/FrameRate.h"

#include <cstdint>

/// The format texts of tracks.
namespace nqp2::media {

/// "1920x1080 25p", of which either may be missing: no pixels or lines, a rate that is null.
CString PictureText(std::int32_t pixels, std::int32_t lines, const FrameRate* rate);

/// "2 channels, 48 kHz", "1 channel, 44.1 kHz"; 0 for what is not known.
CString SoundText(std::int32_t channels, std::int32_t hertz);

} // namespace nqp2::media
