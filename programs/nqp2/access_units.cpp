// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/access_units.h"

#include "nqp2/console.h"

#include <algorithm>
#include <string_view>

namespace nqp2::tool {
namespace {

constexpr std::size_t kPiece = std::size_t{1} << 20U;
constexpr std::size_t kLargestUnit = std::size_t{16} << 20U;
constexpr std::string_view kDelimiter("\0\0\1\x09", 4);

} // namespace

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
