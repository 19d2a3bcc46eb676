// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/FrameRate.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// How the media module hands out the units of a file's streams, and puts units into a new file.
namespace nqp2::worker {

/// Why the module could not do something: the reason alone; "" when it could.
using MediaFault = std::string;

/// What one step of a clock takes, in seconds.
struct Tick {
    std::int32_t numerator = 1;
    std::int32_t denominator = 1;
};

/// Of a unit that does not tell its time.
inline constexpr std::int64_t kNoTime = std::numeric_limits<std::int64_t>::min();

enum class StreamKind { Picture, Sound, Other };
enum class FieldOrder { Unknown, Progressive, TopFirst, BottomFirst };

/// What is known of a stream without its units.
struct MediaStream {
    StreamKind kind = StreamKind::Other;
    std::string codec; ///< as libavcodec calls it: "dvvideo", "h264", "pcm_s16le", "ac3"
    Tick tick;
    std::int64_t start = kNoTime; ///< ticks; of the first unit
    std::int64_t length = 0;      ///< ticks, as the file's head tells it; 0: it does not
    std::int32_t width = 0;       ///< pixels as coded
    std::int32_t height = 0;
    std::int32_t pixelWidth = 0; ///< shape of a pixel; 0: unknown
    std::int32_t pixelHeight = 0;
    std::string pixels; ///< as libavutil calls it: "yuv411p"
    FrameRate rate = {0, 1};
    FieldOrder order = FieldOrder::Unknown;
    bool isIntra = false;      ///< of a profile that has no other pictures
    std::int32_t delay = 0;    ///< pictures that are decoded before the first is shown
    bool hasColour = false;    ///< it tells its primaries itself
    std::string parameterSets; ///< as the container has them
    std::int32_t channels = 0;
    std::int32_t hertz = 0;
    std::int32_t bits = 0;               ///< of a sample of PCM
    std::shared_ptr<const void> details; ///< the module's own
};

/// One picture, or a piece of sound.
struct MediaUnit {
    std::size_t stream = 0;
    std::string_view bytes;       ///< until the next one is read
    std::int64_t shown = kNoTime; ///< ticks
    std::int64_t coded = kNoTime; ///< ticks; when it is decoded
    std::int64_t duration = 0;    ///< ticks; 0: unknown
    std::uint64_t position = 0;   ///< in the file
    bool isKey = false;
    bool isDamaged = false;    ///< the container tells that something is missing
    const void* own = nullptr; ///< the module's; for as long as the bytes
};

/// A mark in a file: milliseconds from its start.
struct MediaMark {
    std::int64_t start = 0;
    std::string text;
};

/// How much it takes to know the streams of a file, and what its units are.
enum class MediaLook {
    First, ///< pictures are decoded, which takes much longer
    Again, ///< streams are told as far as the head tells of them
    Plain, ///< the same, and units are the container's: their bytes are not searched for their ends
};

/// Reads a file from its beginning.
class MediaReader {
public:
    virtual ~MediaReader() = default;
    [[nodiscard]] virtual const std::vector<MediaStream>& Streams() const = 0;
    /// Of the first picture, "" when there is none.
    [[nodiscard]] virtual const std::string& Timecode() const = 0;
    [[nodiscard]] virtual const std::vector<MediaMark>& Marks() const = 0;
    /// `isEnd` instead of a unit behind the last one.
    virtual MediaFault Next(MediaUnit& unit, bool& isEnd) noexcept = 0;
    /// Whether that stream's last unit was cut out of the container's by its bytes.
    [[nodiscard]] virtual bool IsCut(std::size_t stream) const = 0;
    /// Goes to the last unit of a stream that is not behind that tick, where the file tells where
    /// that is; somewhere before, where it does not.
    virtual MediaFault GoTo(std::size_t stream, std::int64_t tick) noexcept = 0;
};

/// How a picture is marked in a container.
struct PictureMarks {
    std::uint32_t tag = 0; ///< four-character code, the first in the lowest byte; 0: as usual
    FieldOrder order = FieldOrder::Unknown;
    std::int32_t primaries = 0; ///< by the numbers of ITU-T H.273; 0: as the stream has it
    std::int32_t transfer = 0;
    std::int32_t matrix = 0;
};

/// A track of a new file.
struct TrackPlan {
    std::shared_ptr<const void> details; ///< of the stream whose units it takes; null for PCM
    Tick tick;                           ///< of its units' times
    std::string name;
    // Pictures.
    std::string parameterSets; ///< with start codes; "": as the stream has them
    FrameRate rate = {0, 1};
    PictureMarks marks;
    std::int32_t pixelWidth = 0; ///< 0: as the stream has it
    std::int32_t pixelHeight = 0;
    // PCM at 48 kHz, little-endian.
    std::int32_t channels = 0;
    std::int32_t bits = 0;
};

struct FilePlan {
    std::string container;         ///< as libavformat calls it
    std::vector<TrackPlan> tracks; ///< the picture first
    std::string title;
    std::string reel;
    std::string date;
    std::string timecode;
    std::vector<MediaMark> marks;
    std::int64_t length = 0;    ///< milliseconds, for the last mark
    std::uint64_t headRoom = 0; ///< bytes at the front that the index may take
};

/// Puts units into a new file.
class MediaWriter {
public:
    virtual ~MediaWriter() = default;
    /// `unit.stream` is the track.
    virtual MediaFault Put(const MediaUnit& unit) noexcept = 0;
    /// Completes the file.
    virtual MediaFault Finish() noexcept = 0;
};

} // namespace nqp2::worker
