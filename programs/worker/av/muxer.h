// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/media_module.h"

namespace nqp2::worker {

/// See MediaModule::MuxVideo and MuxSound.
std::unique_ptr<EssenceMuxer> MakeVideoMuxer(const VideoFormat& format, MediaOutput& output,
                                             std::string& reason);
std::unique_ptr<EssenceMuxer> MakeSoundMuxer(const SoundFormat& format, MediaOutput& output,
                                             std::string& reason);

} // namespace nqp2::worker
