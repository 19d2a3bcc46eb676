// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/playlist.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace nqp2::avchd {

/// Which clips are one recording that the camera went on with in a new file, because the one before
/// had become as large as a file may be.
class SplitRecordings {
public:
    /// A clip is followed by the one that the first playlist to tell names; what would close a
    /// circle is left out.
    void Add(const Playlist& playlist);
    /// The names of each recording's clips in their order, two at least.
    [[nodiscard]] std::vector<std::vector<std::string>> Chains() const;

private:
    using Number = std::uint32_t; ///< that the digits of a clip's name make
    static constexpr Number kNone = UINT32_MAX;

    struct Place {
        Number previous = kNone;
        Number next = kNone;
        Number otherEnd = kNone; ///< of its chain; kept at the two ends alone
    };

    Place& PlaceOf(Number clip);
    void Connect(Number first, Number second);

    std::map<Number, Place> m_places;
};

} // namespace nqp2::avchd
