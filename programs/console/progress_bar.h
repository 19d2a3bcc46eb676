// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
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

/// One line on standard error that follows a transfer, drawn at most ten times a second; nothing
/// when standard error is no terminal. From any thread.
class ProgressBar {
public:
    /// A quiet one draws nothing.
    explicit ProgressBar(bool quiet);
    ~ProgressBar() { End(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void Begin(const std::string& label);
    /// Where the transfer has come, in KiB.
    void Show(std::uint64_t done, std::uint64_t total);
    /// Clears the line; what is shown after that waits for the next Begin.
    void End();

private:
    using Clock = std::chrono::steady_clock;

    bool m_isWanted;
    std::mutex m_mutex;
    bool m_isRunning = false;
    bool m_isDrawn = false;
    std::string m_label;
    Clock::time_point m_begin;
    Clock::time_point m_drawn;
};

} // namespace nqp2::tool
