// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/input_file.h"
#include "NQP2ParserU/MediaHeaders.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

using SNDFILE = struct sf_private_tag;

namespace nqp2::tool {

/// Of all sound that is recorded, in hertz.
inline constexpr std::uint32_t kSampleRate = 48000;

/// Sound of 16 or 24 bits in any container that libsndfile knows (WAV, RF64, AIFF, FLAC and more),
/// or bare samples. Throws Failure as the calls do.
class SoundFile {
public:
    /// A sound file, which says itself what it is.
    explicit SoundFile(const std::string& path);
    /// A file, or pipe, of samples without a header.
    SoundFile(const std::string& path, const WAVEFORMATEX& bare);

    [[nodiscard]] const WAVEFORMATEX& Format() const { return m_format; }
    /// The next samples of all channels, interleaved, little-endian; fewer at the end.
    std::string Read(std::size_t samples);

private:
    struct Close {
        void operator()(SNDFILE* file) const;
    };

    std::string m_path;
    WAVEFORMATEX m_format;
    std::unique_ptr<SNDFILE, Close> m_file;
    std::optional<InputFile> m_bare;
};

} // namespace nqp2::tool
