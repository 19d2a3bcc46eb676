// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/rewrap/stream_file.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace nqp2::worker::rewrap {

/// The samples of one stream of PCM, of a part or of a stretch of it.
class SoundFeed {
public:
    /// From its sample `first` on, at most `most` samples; -1: all. `file` may be shared with
    /// others, who then hand over what they meet of it, and outlives the feed.
    SoundFeed(StreamFile& file, std::size_t stream, std::int64_t first, std::int64_t most);

    /// Bytes of a unit of the stream.
    void Take(const MediaUnit& unit);
    /// Nothing more comes.
    void End() { m_isEnded = true; }
    [[nodiscard]] bool IsEnded() const { return m_isEnded || m_left == 0; }

    /// Samples that are there.
    [[nodiscard]] std::int64_t Available() const;
    /// Takes samples that are there out; until the next call of anything.
    std::string_view Out(std::int64_t samples);
    [[nodiscard]] std::int64_t Total() const { return m_total; } ///< samples taken so far
    [[nodiscard]] std::size_t Stream() const { return m_stream; }
    [[nodiscard]] StreamFile& File() const { return m_file; }
    [[nodiscard]] std::size_t SampleBytes() const { return m_sampleBytes; }

private:
    StreamFile& m_file;
    std::size_t m_stream;
    std::size_t m_sampleBytes;
    std::int64_t m_first;
    std::int64_t m_left;      ///< samples that may still come; -1: any number
    std::int64_t m_skip = -1; ///< samples before the first one; -1: not known yet
    std::int64_t m_total = 0;
    std::string m_bytes;
    std::size_t m_used = 0; ///< of them
    bool m_isEnded = false;
};

} // namespace nqp2::worker::rewrap
