// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/failure.h"
#include "worker/base/media_streams.h"
#include "worker/rewrap/request.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace nqp2::worker::rewrap {

/// The parts of a recording as one stream of units. Everything throws a Failure that names the part
/// which is at fault: damaged, cut off, of another format, overlapping or missing.
class RecordingInput {
public:
    virtual ~RecordingInput() = default;

    /// The picture and its tracks of sound; their ticks are those of the units. PCM is
    /// little-endian.
    [[nodiscard]] const std::vector<MediaStream>& Tracks() const { return m_tracks; }
    /// Bytes of what will be read, roughly.
    [[nodiscard]] std::uint64_t Bytes() const { return m_bytes; }
    /// Pictures that there will be, as far as the files tell before they are read; 0: unknown.
    [[nodiscard]] std::uint64_t ExpectedFrames() const { return m_expectedFrames; }
    [[nodiscard]] const std::vector<std::string>& Remarks() const { return m_remarks; }
    /// Bytes of the first picture.
    [[nodiscard]] virtual std::string FirstPicture() = 0;

    /// The next unit of any track, which stays until the next one; false at the end.
    virtual bool Next(MediaUnit& unit) = 0;

protected:
    std::vector<MediaStream> m_tracks;
    std::uint64_t m_bytes = 0;
    std::uint64_t m_expectedFrames = 0;
    std::vector<std::string> m_remarks;
};

/// `request` and `goesOn` outlive it.
std::unique_ptr<RecordingInput> JoinFrames(const Request& request,
                                           const std::function<bool()>& goesOn);
std::unique_ptr<RecordingInput> JoinBytes(const Request& request,
                                          const std::function<bool()>& goesOn);

/// Samples that belong to so many frames from the start.
std::int64_t SamplesUpTo(std::int64_t frames, const FrameRate& rate);

/// The rate of a picture, which has to be the one that the request tells of. Fails when neither
/// tells.
FrameRate RateOf(const MediaStream& picture, const Request& request, const std::string& name);

/// What to say of a part whose picture of that number, from 0, is no good.
copy::Failure DamagedAt(const std::string& name, std::uint64_t picture, const std::string& fault);

/// Fails unless a part's own count fits what its metadata promise; they may count each picture
/// twice.
void CheckPromise(std::uint64_t frames, std::uint64_t promised, const std::string& name,
                  std::uint64_t slack, std::vector<std::string>& remarks);

} // namespace nqp2::worker::rewrap
