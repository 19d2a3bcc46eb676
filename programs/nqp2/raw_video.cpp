// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/raw_video.h"

#include "nqp2/code_types.h"

#include "console/console.h"

#include <fmt/core.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <string>
#include <string_view>

namespace nqp2::tool {
namespace {

/// A frame of DV is made of DIF channels (SMPTE ST 314, ST 370).
struct DvForm {
    std::string_view prefix;
    std::size_t channels;
};

constexpr DvForm kDvForms[] = {
    {"CT_DV25_", 1}, {"CT_DV50_", 2}, {"CT_DV100_1080_", 4}, {"CT_DV100_720_", 2}};

constexpr std::size_t kSequenceSize = 12000;

/// Sequences of a channel, as many as the frame's lines ask for.
std::size_t SequencesAt(const FrameRate& rate) {
    return rate.Is50Hz() ? 12 : 10;
}

constexpr std::size_t kPiece = std::size_t{1} << 20U;
constexpr std::size_t kLargestUnit = std::size_t{16} << 20U;
constexpr std::string_view kDelimiter("\0\0\1\x09", 4);

} // namespace

StreamForm StreamFormOf(eCodeType type) {
    const std::string_view name = CodeTypeName(type);
    const FrameRate* const rate = RateInName(type);
    if (rate == nullptr) {
        throw Failure(fmt::format("code type {}", static_cast<int>(type)), "cannot be recorded",
                      "it has no name");
    }
    const auto* const dv =
        std::find_if(std::begin(kDvForms), std::end(kDvForms),
                     [name](const DvForm& form) { return name.starts_with(form.prefix); });
    const std::size_t channels = dv == std::end(kDvForms) ? 0 : dv->channels;
    return {channels * SequencesAt(*rate) * kSequenceSize, *rate};
}

bool AccessUnits::Next(std::string& unit) {
    if (m_unitSize == 0) {
        return NextOfStream(unit);
    }
    unit = m_file.Read(m_unitSize);
    return !unit.empty();
}

bool AccessUnits::NextOfStream(std::string& unit) {
    // The unit's own delimiter may have a zero byte before it.
    std::size_t from = kDelimiter.size();
    std::size_t end = m_ahead.find(kDelimiter, from);
    while (end == std::string::npos && !m_hasEnded) {
        // A delimiter may lie across two pieces.
        from = std::max(from, m_ahead.size() - std::min(m_ahead.size(), kDelimiter.size() - 1));
        const std::string piece = m_file.Read(kPiece);
        m_hasEnded = piece.empty();
        m_ahead += piece;
        end = m_ahead.find(kDelimiter, from);
        if (end == std::string::npos && m_ahead.size() > kLargestUnit) {
            throw Failure(m_path, "is no stream of access units",
                          "no delimiter within 16 MiB; is it Annex B?");
        }
    }
    if (end == std::string::npos) {
        end = m_ahead.size();
    } else if (m_ahead[end - 1] == '\0') {
        --end;
    }
    unit = m_ahead.substr(0, end);
    m_ahead.erase(0, end);
    return !unit.empty();
}

} // namespace nqp2::tool
