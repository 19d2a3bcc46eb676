// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/frame_stream.h"

#include "console/console.h"

#include <algorithm>
#include <limits>

namespace nqp2::tool {

bool FrameStream::Next(Frames& frames) {
    frames.video.clear();
    frames.sound.clear();
    frames.count = 0;
    const bool isPipe = File().Size() == 0;
    while ((frames.count == 0 || !isPipe) && LookAhead() && Fits(frames)) {
        frames.video += m_unit;
        frames.sound += m_samples;
        m_unit.clear();
        ++frames.count;
        ++m_given;
    }
    if (frames.count == 0 && m_failure) {
        std::rethrow_exception(m_failure);
    }
    return frames.count != 0;
}

bool FrameStream::Fits(const Frames& frames) const {
    constexpr std::size_t kMostOfRequest = std::size_t{2} << 20U;
    const auto count = static_cast<std::size_t>(frames.count);
    return count == 0 || (frames.video.size() == count * m_unit.size() &&
                          frames.video.size() + m_unit.size() <= kMostOfRequest);
}

bool FrameStream::LookAhead() {
    if (m_unit.empty() && !m_failure) {
        try {
            Read();
        } catch (const Failure&) {
            m_unit.clear();
            m_failure = std::current_exception();
        }
    }
    return !m_unit.empty();
}

void FrameStream::Read() {
    if (m_units.Next(m_unit) && m_sound) {
        const std::int64_t samples = SamplesUpTo(m_given + 1) - SamplesUpTo(m_given);
        m_samples = m_sound->Read(static_cast<std::size_t>(samples));
    }
}

std::int64_t FrameStream::SamplesUpTo(std::int64_t frame) const {
    return frame * kSampleRate * m_form.rate.seconds / m_form.rate.frames;
}

std::uint32_t FrameStream::Expected() const {
    constexpr std::uint64_t kMost = std::numeric_limits<std::int32_t>::max();
    const std::uint64_t frames = m_form.unitSize == 0 ? 0 : File().Size() / m_form.unitSize;
    return static_cast<std::uint32_t>(std::min(frames, kMost));
}

} // namespace nqp2::tool
