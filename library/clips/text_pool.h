// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace nqp2::clips {

/// Remembers the short texts that were read last, so that what a card repeats from clip to clip
/// (codec, rate, aspect, names of people) stands in memory once. Of fixed size.
class TextPool {
public:
    /// The text of the UTF-8 bytes; shared with earlier ones of the same content when it can be.
    CString TextOf(std::string_view utf8);

private:
    static constexpr std::size_t kSlots = 256;
    static constexpr std::size_t kLongestShared = 32;
    struct Slot {
        std::string bytes;
        CString text;
    };
    std::array<Slot, kSlots> m_slots;
};

} // namespace nqp2::clips
