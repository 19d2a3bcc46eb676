// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/raw_video.h"
#include "nqp2/sound_file.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <utility>

namespace nqp2::tool {

/// Frames of one size, one behind the other, and their sound.
struct Frames {
    std::string video;
    std::string sound; ///< interleaved samples
    std::int32_t count = 0;
};

/// Video and sound of a recording in step, gathered so that a worker is not woken for each frame.
class FrameStream {
public:
    /// `video` is cut as `form` says.
    FrameStream(const StreamForm& form, AccessUnits video, std::optional<SoundFile> sound)
        : m_form(form), m_units(std::move(video)), m_sound(std::move(sound)) {}

    /// The next frames: of a file some that take at most 2 MiB, or one; of a pipe always one, since
    /// nobody knows when it gives more. False at the end. What cannot be read is told, by the
    /// Failure thrown, when all before it has been given.
    bool Next(Frames& frames);

    /// How many were given.
    [[nodiscard]] std::int64_t Given() const { return m_given; }
    /// How many the file holds; 0 when it does not tell.
    [[nodiscard]] std::uint32_t Expected() const;
    [[nodiscard]] WAVEFORMATEX SoundFormat() const {
        return m_sound ? m_sound->Format() : WAVEFORMATEX();
    }
    [[nodiscard]] const InputFile& File() const { return m_units.File(); }

private:
    /// Reads the next frame unless that is done already. False when there is none.
    bool LookAhead();
    void Read();
    /// Whether the frame that was read goes with those.
    [[nodiscard]] bool Fits(const Frames& frames) const;
    [[nodiscard]] std::int64_t SamplesUpTo(std::int64_t frame) const;

    StreamForm m_form;
    AccessUnits m_units;
    std::optional<SoundFile> m_sound;
    std::string m_unit; ///< the next frame, once it was read, and its sound
    std::string m_samples;
    std::exception_ptr m_failure; ///< why there is none
    std::int64_t m_given = 0;
};

} // namespace nqp2::tool
