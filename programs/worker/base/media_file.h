// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/base/media_module.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace nqp2::worker {

/// What describing one camera file may cost. Their heads take a few MiB and milliseconds; a file
/// made to be searched to its end would take hours.
struct MediaLimits {
    std::uint64_t bytes = std::uint64_t{64} << 20U; ///< read, what is read again included
    std::chrono::nanoseconds processorTime = std::chrono::seconds(5);
};

/// Reads the head of a QuickTime, MP4, AVI or MXF file. Follows no reference to another file. Fails
/// when the limits are reached or `goesOn` returns false, which is asked all the while.
MediaFacts ReadMediaFile(const std::string& path, const std::function<bool()>& goesOn,
                         const MediaLimits& limits = {});

/// All that the container of a QuickTime, MP4, AVI, MXF or transport stream file tells. Fails as
/// ReadMediaFile does.
MediaDescription ReadMediaDescription(const std::string& path, const std::function<bool()>& goesOn,
                                      const MediaLimits& limits = {});

class BoundedFile;

/// The picture in a picture file, or the first of a video, made small enough to fit into `width` x
/// `height` pixels. Fails as ReadMediaFile does.
Picture ReadPicture(BoundedFile& file, std::int32_t width, std::int32_t height);

} // namespace nqp2::worker
