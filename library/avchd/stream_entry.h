// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"
#include "avchd/video_format.h"

namespace nqp2::avchd {

/// The attributes of a stream as playlists and clip information both give them; zeros for a stream
/// that is no video. The process identifier is not among them.
VideoStream ReadVideoAttributes(ByteReader& attributes);

} // namespace nqp2::avchd
