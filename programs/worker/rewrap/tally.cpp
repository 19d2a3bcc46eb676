// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/tally.h"

#include "copy/failure.h"

#include <algorithm>
#include <cmath>

namespace nqp2::worker::rewrap {

Tally::Tally(Essence essence, const MediaStream& stream)
    : m_essence(essence), m_tick(stream.tick), m_rate(stream.rate),
      m_sampleBytes(static_cast<std::uint64_t>(std::max(stream.channels * stream.bits / 8, 1))),
      m_form(UnitForm::Of(stream.parameterSets)) {
    if (IsH264()) {
        AddOwnSets(stream.parameterSets, m_ownSets);
    }
}

bool Tally::IsH264() const {
    return m_essence == Essence::AvcIntra || m_essence == Essence::H264;
}

void Tally::AddTime(const MediaUnit& unit) {
    const double seconds =
        static_cast<double>(unit.shown - m_start) * m_tick.numerator / m_tick.denominator;
    const std::int64_t frame = std::llround(seconds * m_rate.PerSecond());
    m_times.Add({reinterpret_cast<const char*>(&frame), sizeof frame});
}

void Tally::Add(const MediaUnit& unit, const std::string& name) {
    if (m_units++ == 0) {
        m_start = unit.shown;
    }
    if (!IsH264()) {
        m_digest.Add(unit.bytes);
    } else if (!AddPieces(unit.bytes, m_form, m_digest, m_sets)) {
        throw copy::Failure("Picture " + std::to_string(m_units) + " of " + name +
                            " is not whole.");
    }
    if (m_essence != Essence::Pcm && m_essence != Essence::Ac3) {
        AddTime(unit);
    }
}

std::uint64_t Tally::Count() const {
    return m_essence == Essence::Pcm ? m_digest.Size() / m_sampleBytes : m_units;
}

double Tally::Start() const {
    return m_start == kNoTime
               ? 0.0
               : static_cast<double>(m_start) * m_tick.numerator / m_tick.denominator;
}

std::string Tally::DifferenceTo(const Tally& written) const {
    const char* const what = m_essence == Essence::Pcm ? " samples" : " units";
    if (Count() != written.Count()) {
        return std::to_string(written.Count()) + what + " instead of " + std::to_string(Count());
    }
    if (m_digest.Value() != written.m_digest.Value()) {
        return std::string("other") + what;
    }
    if (m_times.Value() != written.m_times.Value()) {
        return "pictures at other times";
    }
    const ParameterSets& sets = m_sets.IsEmpty() ? m_ownSets : m_sets;
    const bool areThere = written.m_sets.Includes(sets) || written.m_ownSets.Includes(sets);
    return areThere ? "" : "other parameter sets";
}

} // namespace nqp2::worker::rewrap
