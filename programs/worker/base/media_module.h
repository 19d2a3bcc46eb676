// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/FrameRate.h"
#include "worker/base/media_streams.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// What the worker and its media module, nqp2-media.so, have in common. All that needs libavformat
/// is in the module, which is loaded when a camera file or a recording first asks for it: most
/// workers never do, and its libraries take longer to load than all else that a worker does at its
/// start. Both are built and installed together, so the interface is plain C++. No exception
/// crosses it in either direction: libavformat's C functions lie between.
namespace nqp2::worker {

/// Of all sound on a card, in hertz.
inline constexpr std::uint32_t kSampleRate = 48000;

enum class VideoCodec { Dv, AvcIntra };

/// What an essence file holds: one video stream.
struct VideoFormat {
    VideoCodec codec = VideoCodec::Dv;
    std::int32_t width = 0; ///< pixels as coded
    std::int32_t height = 0;
    bool interlaced = false;
    FrameRate rate;
    bool isWide = true; ///< shown as 16:9, else 4:3
    std::string
        timecode; ///< "10:00:00:00" of the first frame; ";" before the frames when drop-frame
};

/// What an essence file holds: one channel of PCM at 48 kHz.
struct SoundFormat {
    std::int32_t bits = 16; ///< 16 or 24
    FrameRate videoRate;
};

/// What a camera file says about itself.
struct MediaFacts {
    std::string codec; ///< four-character code in upper case, else the codec's name
    FrameRate rate = {0, 1};
    bool interlaced = false;
    std::int64_t frames = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int64_t aspectWidth = 0; ///< of the picture as shown, in lowest terms
    std::int64_t aspectHeight = 0;
    int audioChannels = 0;
    std::string timecode;   ///< of the first frame, "" where there is none
    std::string identifier; ///< UMID in hexadecimal, "" where there is none
    std::string date;       ///< ISO 8601 as the file has it, "" where there is none
    std::string title;
};

/// A stream of a media file.
struct MediaTrack {
    std::string kind;  ///< "video", "audio", "subtitle", "data"
    std::string codec; ///< as its standard calls it
    std::string language;
    std::int32_t width = 0;
    std::int32_t height = 0;
    FrameRate rate = {0, 1};
    bool interlaced = false;
    std::int32_t channels = 0;
    std::int32_t hertz = 0;
};

/// A tag of a media file or what else it says in words, as it stands there.
struct MediaText {
    std::string path;
    std::string text;
};

/// All that a container tells.
struct MediaDescription {
    std::vector<MediaTrack> tracks;
    std::vector<MediaText> texts;
    bool isCut = false; ///< it has more than a description holds
};

/// A picture of 24-bit pixels: red, green, blue, the top row first, rows not padded.
struct Picture {
    std::string pixels;
    std::int32_t width = 0;
    std::int32_t height = 0;
};

/// A file that the module reads, as far as it may.
class MediaInput {
public:
    virtual ~MediaInput() = default;
    [[nodiscard]] virtual const std::string& Name() const = 0;
    [[nodiscard]] virtual std::uint64_t Size() const = 0;
    /// Reads up to `capacity` bytes: their number, 0 at the end, -1 when reading has to end.
    virtual std::int64_t ReadAt(std::uint64_t position, char* buffer,
                                std::size_t capacity) noexcept = 0;
    /// Whether the module may go on with this file.
    [[nodiscard]] virtual bool GoesOn() noexcept = 0;
};

/// A file that the module writes.
class MediaOutput {
public:
    virtual ~MediaOutput() = default;
    /// Writes all bytes. False when it could not, from where on nothing is written any more.
    virtual bool WriteAt(std::uint64_t position, std::string_view bytes) noexcept = 0;
};

/// Puts the units of one stream into an OP-Atom MXF file (SMPTE ST 390).
class EssenceMuxer {
public:
    virtual ~EssenceMuxer() = default;
    /// Appends the next frame of video, or the sound that belongs to it. Everything is written when
    /// it returns; but for the first unit that is the unit's own bytes at the end of the file.
    virtual MediaFault Put(std::string_view unit) noexcept = 0;
    /// Completes the file.
    virtual MediaFault Finish() noexcept = 0;
};

/// What the module offers. Safe from any thread.
class MediaModule {
public:
    virtual ~MediaModule() = default;
    /// Reads the head of a QuickTime, MP4, AVI or MXF file.
    virtual MediaFault Describe(MediaInput& input, MediaFacts& facts) const noexcept = 0;
    /// The same, and of transport streams, with all tracks and tags. A file without picture is as
    /// good as any.
    virtual MediaFault DescribeAll(MediaInput& input,
                                   MediaDescription& description) const noexcept = 0;
    /// Decodes a bitmap, PNG or JPEG, or the first picture of a QuickTime, MP4, AVI, MXF or
    /// transport stream file, and makes it fit into `width` x `height`; it is never made larger.
    virtual MediaFault MakePicture(MediaInput& input, std::int32_t width, std::int32_t height,
                                   Picture& picture) const noexcept = 0;
    /// `output` outlives the muxer, which is null when libavformat does not take the format.
    virtual MediaFault MuxVideo(const VideoFormat& format, MediaOutput& output,
                                std::unique_ptr<EssenceMuxer>& muxer) const noexcept = 0;
    virtual MediaFault MuxSound(const SoundFormat& format, MediaOutput& output,
                                std::unique_ptr<EssenceMuxer>& muxer) const noexcept = 0;
    /// Reads the units of a file of one of the containers (libavformat's names, commas between),
    /// which outlives the reader.
    virtual MediaFault OpenReader(MediaInput& input, const char* containers, MediaLook look,
                                  std::unique_ptr<MediaReader>& reader) const noexcept = 0;
    /// `output` outlives the writer.
    virtual MediaFault OpenWriter(const FilePlan& plan, MediaOutput& output,
                                  std::unique_ptr<MediaWriter>& writer) const noexcept = 0;
};

/// The module's one entry point, and its type: null for a worker of another version.
inline constexpr const char* kMediaModuleEntry = "Nqp2MediaModule";
using MediaModuleEntry = const MediaModule* (*)(const char* version);

} // namespace nqp2::worker
