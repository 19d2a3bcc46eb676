// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "capacity/card_space.h"

#include "media/card_layout.h"
#include "NQP2ParserU/PathText.h"
#include "platform/case_blind.h"
#include "platform/file_system.h"

#include <algorithm>
#include <limits>

namespace nqp2::capacity {

std::optional<std::int64_t> FreeBytes(const CString& root) {
    if (!platform::PathExists(PosixPath(media::ContentsFolder(root)))) {
        return std::nullopt;
    }
    constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
    const auto folder = platform::FindExisting(PosixPath(media::WithDrive(root) + L"\\"));
    std::uint64_t bytes = 0;
    if (!folder || !platform::Files().FreeSpace(*folder, bytes)) {
        return 0;
    }
    return static_cast<std::int64_t>(std::min(bytes, kMost));
}

} // namespace nqp2::capacity
