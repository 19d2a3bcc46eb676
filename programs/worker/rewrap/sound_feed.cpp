// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/sound_feed.h"

#include "copy/failure.h"
#include "worker/base/media_module.h"

#include <algorithm>

namespace nqp2::worker::rewrap {

SoundFeed::SoundFeed(StreamFile& file, std::size_t stream, std::int64_t first, std::int64_t most)
    : m_file(file), m_stream(stream), m_first(first), m_left(most) {
    const MediaStream& facts = file.Streams()[stream];
    m_sampleBytes = static_cast<std::size_t>(std::max(facts.channels * facts.bits / 8, 1));
}

void SoundFeed::Take(const MediaUnit& unit) {
    constexpr std::size_t kMostWaiting = std::size_t{8} << 20U;
    if (unit.isDamaged || unit.bytes.size() % m_sampleBytes != 0) {
        throw copy::Failure(m_file.Name() + " is damaged or cut off in its sound.");
    }
    if (m_skip < 0) { // the first unit tells where in the stream it is
        const Tick tick = m_file.Streams()[m_stream].tick;
        const std::int64_t at = m_first == 0 || unit.shown == kNoTime
                                    ? 0
                                    : unit.shown * tick.numerator * kSampleRate / tick.denominator;
        if (at > m_first) {
            throw copy::Failure(m_file.Name() + " does not tell where its samples are.");
        }
        m_skip = m_first - at;
    }
    std::int64_t samples = static_cast<std::int64_t>(unit.bytes.size() / m_sampleBytes);
    const std::int64_t skipped = std::min(m_skip, samples);
    m_skip -= skipped;
    samples -= skipped;
    if (m_left >= 0) {
        samples = std::min(samples, m_left);
        m_left -= samples;
    }
    if (m_used > 0 && m_used == m_bytes.size()) {
        m_bytes.clear();
        m_used = 0;
    }
    if (m_bytes.size() - m_used > kMostWaiting) {
        throw copy::Failure(m_file.Name() + " keeps its sound too far from its pictures.");
    }
    m_bytes.append(unit.bytes.substr(static_cast<std::size_t>(skipped) * m_sampleBytes,
                                     static_cast<std::size_t>(samples) * m_sampleBytes));
    m_total += samples;
}

std::int64_t SoundFeed::Available() const {
    return static_cast<std::int64_t>((m_bytes.size() - m_used) / m_sampleBytes);
}

std::string_view SoundFeed::Out(std::int64_t samples) {
    const std::size_t size = static_cast<std::size_t>(samples) * m_sampleBytes;
    if (m_used > (std::size_t{1} << 20U)) {
        m_bytes.erase(0, m_used);
        m_used = 0;
    }
    const std::string_view bytes = std::string_view(m_bytes).substr(m_used, size);
    m_used += size;
    return bytes;
}

} // namespace nqp2::worker::rewrap
