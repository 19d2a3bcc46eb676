// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/file_system.h"
#include "worker/frame_rate_text.h"
#include "worker/outcome.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

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

/// An OP-Atom MXF file (SMPTE ST 390) of one stream, written by libavformat into a file in the
/// making. One thread at a time.
class EssenceFile {
public:
    static Outcome CreateVideo(const std::string& path, const VideoFormat& format,
                               std::unique_ptr<EssenceFile>& file);
    static Outcome CreateSound(const std::string& path, const SoundFormat& format,
                               std::unique_ptr<EssenceFile>& file);
    ~EssenceFile();
    EssenceFile(const EssenceFile&) = delete;
    EssenceFile& operator=(const EssenceFile&) = delete;

    /// Appends one access unit of video, or whole samples of sound.
    Outcome Add(std::string_view bytes);
    /// Completes the file, flushes it and compares the essence on the medium with what was added.
    /// Sound gets silence up to a whole frame, and up to `frames` of them.
    Outcome Finish(std::int64_t frames);
    /// Gives the finished file its name.
    Outcome Commit();

    [[nodiscard]] const std::string& Path() const { return m_path; }
    /// Frames of video, or of sound, that are in the file.
    [[nodiscard]] std::int64_t Frames() const { return m_units; }
    /// Where the essence begins in the file, and how long it is, in bytes.
    [[nodiscard]] std::uint64_t EssenceStart() const { return m_essenceStart; }
    [[nodiscard]] std::uint64_t EssenceSize() const { return m_essenceSize; }

private:
    struct Muxer;

    explicit EssenceFile(std::string path);
    Outcome Open();
    Outcome Begin();
    /// Bytes of sound that belong to the next frame of video.
    [[nodiscard]] std::size_t NextSoundSize() const;
    Outcome Put(std::string_view unit);
    Outcome Verify();
    [[nodiscard]] Outcome Failed(int error) const;
    Outcome AddSilence(std::int64_t frames);

    std::string m_path;
    std::unique_ptr<platform::FileWriter> m_writer;
    std::unique_ptr<Muxer> m_muxer;
    std::string m_sound;      ///< waits until it fills a frame of video
    std::int64_t m_units = 0; ///< access units, or frames of sound, that are in the file
    std::uint64_t m_essenceStart = 0;
    std::uint64_t m_essenceSize = 0;
};

} // namespace nqp2::worker
