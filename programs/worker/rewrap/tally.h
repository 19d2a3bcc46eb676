// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/digest.h"
#include "worker/base/media_streams.h"
#include "worker/rewrap/containers.h"
#include "worker/rewrap/units_of_h264.h"

#include <cstdint>
#include <string>

namespace nqp2::worker::rewrap {

/// What a track is made of, whatever container it is in: as much as tells one from another.
class Tally {
public:
    /// Units that come from a stream like that.
    Tally(Essence essence, const MediaStream& stream);

    /// Throws a Failure, in which the file is called `name`, for a unit that is not whole.
    void Add(const MediaUnit& unit, const std::string& name);

    /// Units; of PCM, samples of each channel.
    [[nodiscard]] std::uint64_t Count() const;
    /// What differs in the other, which was made of the file that this one's units went to; "" when
    /// nothing does.
    [[nodiscard]] std::string DifferenceTo(const Tally& written) const;
    /// When the first unit is shown, in seconds.
    [[nodiscard]] double Start() const;

private:
    [[nodiscard]] bool IsH264() const;
    void AddTime(const MediaUnit& unit);

    Essence m_essence;
    Tick m_tick;
    FrameRate m_rate;
    std::uint64_t m_sampleBytes; ///< of PCM, all channels
    UnitForm m_form;
    copy::Digest m_digest;
    copy::Digest m_times;    ///< of pictures: the order in which they are shown
    ParameterSets m_sets;    ///< in the units
    ParameterSets m_ownSets; ///< the container's record, which may be a guess
    std::uint64_t m_units = 0;
    std::int64_t m_start = kNoTime;
};

} // namespace nqp2::worker::rewrap
