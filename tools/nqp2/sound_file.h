// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/MediaHeaders.h"
#include "tools/nqp2/input_file.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace nqp2::tool {

/// A WAV file with PCM, or bare samples.
class SoundFile {
public:
    /// `bare` describes the samples of a file without a header of its own. Throws Failure as the
    /// calls do.
    SoundFile(const std::string& path, const WAVEFORMATEX& bare);

    [[nodiscard]] const WAVEFORMATEX& Format() const { return m_format; }
    /// The next samples of all channels, interleaved; fewer at the end.
    std::string Read(std::size_t samples);

private:
    void ReadChunks(const std::string& path);

    InputFile m_file;
    WAVEFORMATEX m_format;
    std::string m_ahead;                      ///< of a bare file, what was looked at
    std::uint64_t m_left = ~std::uint64_t{0}; ///< bytes of samples
};

} // namespace nqp2::tool
