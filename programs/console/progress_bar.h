// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string>

namespace nqp2::tool {

/// What a bar shows at one moment.
struct Progress {
    std::string label;
    std::uint64_t done = 0; ///< KiB
    std::uint64_t total = 0;
    double seconds = 0; ///< since the beginning
};

/// "0001AB [=====>    ]  50 %  12.0 MiB/s  0:07 left", at most `width` columns wide.
std::string BarText(const Progress& progress, int width);
/// "1:05", "1:00:05".
std::string TimeText(double seconds);

/// Draws the bar on standard error in the place of what was drawn before; takes it away.
void DrawBar(const Progress& progress);
void EraseBar();

} // namespace nqp2::tool
