// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/failure.h"
#include "copy/piece_check.h"
#include "platform/folder.h"
#include "worker/base/media_module.h"
#include "worker/essence_ends.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace nqp2::worker {

/// An OP-Atom MXF file (SMPTE ST 390) of one stream in the making: hidden until Commit, gone with
/// the object without it. Everything throws a Failure. One thread at a time.
class EssenceFile final : private MediaOutput {
public:
    EssenceFile(platform::Folder& folder, const std::string& name, const VideoFormat& format);
    EssenceFile(platform::Folder& folder, const std::string& name, const SoundFormat& format);
    ~EssenceFile() override;
    EssenceFile(const EssenceFile&) = delete;
    EssenceFile& operator=(const EssenceFile&) = delete;

    /// Appends one access unit of video, or whole samples of sound. What fails to be written, on a
    /// full medium say, is not in the file, which can be finished with what came before.
    void Add(std::string_view bytes);
    /// Completes the file, flushes it and fails unless all of it is on the medium as it was
    /// written, which for most of the essence was found out while it grew. Sound gets silence up to
    /// a whole frame, and up to `frames` of them; on a full medium, where nothing is left but room
    /// for the end, as much as fits.
    void Finish(std::int64_t frames);
    /// Gives the finished file its name.
    void Commit();

    [[nodiscard]] const std::string& Name() const { return m_name; }
    /// Frames of video, or of sound, that are in the file.
    [[nodiscard]] std::int64_t Frames() const { return m_units; }
    /// Bytes of sound that are missing until that many frames are full.
    [[nodiscard]] std::uint64_t SoundUntil(std::int64_t frames) const;
    /// Where the essence begins in the file, and how long it is, in bytes.
    [[nodiscard]] std::uint64_t EssenceStart() const { return m_essence.Start(); }
    [[nodiscard]] std::uint64_t EssenceSize() const { return m_essence.Size(); }

private:
    EssenceFile(platform::Folder& folder, const std::string& name, FrameRate videoRate,
                std::int32_t sampleBytes);
    bool WriteAt(std::uint64_t position, std::string_view bytes) noexcept override;
    /// Bytes of sound that belong to the next frame of video.
    [[nodiscard]] std::size_t NextSoundSize() const;
    void Put(std::string_view unit);
    [[nodiscard]] std::uint64_t EssenceEnd() const { return EssenceStart() + EssenceSize(); }
    /// Fails when the media module did.
    void Require(const MediaFault& fault) const;
    void AddSilence(std::int64_t frames);

    std::string m_name;
    std::string m_path; ///< for messages
    FrameRate m_videoRate;
    std::int32_t m_sampleBytes; ///< of sound; 0 in a video file
    std::unique_ptr<platform::FileWriter> m_writer;
    std::unique_ptr<EssenceMuxer> m_muxer;
    copy::PieceCheck m_essence;
    EssenceEnds m_ends;
    platform::IoStatus m_failure; ///< the first one of the writer
    std::uint64_t m_size = 0;     ///< of the file
    std::string_view m_ahead;     ///< what is written behind that size already
    std::string m_sound;          ///< waits until it fills a frame of video
    std::int64_t m_units = 0;     ///< access units, or frames of sound, that are in the file
};

} // namespace nqp2::worker
