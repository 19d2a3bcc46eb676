// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "capacity/card_space.h"

#include "media/card_layout.h"
#include "platform/file_system.h"
#include "platform/place.h"

#include <algorithm>
#include <limits>

namespace nqp2::capacity {

std::optional<std::int64_t> FreeBytes(const CString& root) {
    const platform::Place card(media::WithDrive(root));
    if (!card.Below(media::kContents.Path()).Exists()) {
        return std::nullopt;
    }
    constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
    std::uint64_t bytes = 0;
    return platform::Files().FreeSpace(card.OnDisk(), bytes)
               ? static_cast<std::int64_t>(std::min(bytes, kMost))
               : 0;
}

} // namespace nqp2::capacity
