// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/progress_bar.h"

#include "console/display_text.h"
#include "NQP2ParserU/Terminal.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace nqp2::tool {
namespace {

constexpr std::chrono::milliseconds kPause(100);
constexpr const char* kClearLine = "\r\x1b[K";

std::string RateText(double kibPerSecond) {
    constexpr double kMiB = 1024;
    return kibPerSecond >= kMiB ? fmt::format("{:.1f} MiB/s", kibPerSecond / kMiB)
                                : fmt::format("{:.0f} KiB/s", kibPerSecond);
}

/// Empty as long as the rate is not known.
std::string RestText(const Progress& progress) {
    constexpr double kSoonest = 0.5; // a rate of fewer seconds says little
    if (progress.done == 0 || progress.seconds < kSoonest) {
        return "";
    }
    const double rate = static_cast<double>(progress.done) / progress.seconds;
    const double left = static_cast<double>(progress.total - progress.done) / rate;
    return fmt::format("  {}  {} left", RateText(rate), TimeText(left));
}

std::string Bar(std::uint64_t percent, int room) {
    const auto columns = static_cast<std::size_t>(std::clamp(room, 0, 40));
    const std::size_t filled = columns * percent / 100;
    return columns < 5 ? ""
                       : fmt::format(" [{}{}]", std::string(filled, '='),
                                     std::string(columns - filled, ' '));
}

} // namespace

std::string BarText(const Progress& progress, int width) {
    Progress sound = progress;
    sound.done = std::min(progress.done, progress.total);
    const std::uint64_t percent = sound.total == 0 ? 100 : sound.done * 100 / sound.total;
    const std::string numbers = fmt::format(" {:3} %", percent) + RestText(sound);
    constexpr int kFrame = 3; // blank and brackets
    const int room = width - DisplayWidth(sound.label) - DisplayWidth(numbers) - kFrame;
    return CutToWidth(sound.label + Bar(percent, room) + numbers, std::max(width, 1));
}

std::string TimeText(double seconds) {
    const std::int64_t whole = std::llround(seconds);
    return whole < 3600 ? fmt::format("{}:{:02}", whole / 60, whole % 60)
                        : fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

void DrawBar(const Progress& progress) {
    // The last column stays free: a full line makes some terminals go on to the next.
    std::fputs((kClearLine + BarText(progress, TerminalWidth(stderr) - 1)).c_str(), stderr);
}

void EraseBar() {
    std::fputs(kClearLine, stderr);
}

ProgressBar::ProgressBar(bool quiet) : m_isWanted(!quiet && IsTerminal(stderr)) {}

void ProgressBar::Begin(const std::string& label) {
    const std::lock_guard lock(m_mutex);
    m_label = Printable(label, LineBreaks::Escape);
    m_begin = Clock::now();
    m_drawn = {};
    m_isRunning = m_isWanted;
}

void ProgressBar::Show(std::uint64_t done, std::uint64_t total) {
    const std::lock_guard lock(m_mutex);
    const Clock::time_point now = Clock::now();
    if (!m_isRunning || (m_isDrawn && now - m_drawn < kPause)) {
        return;
    }
    const std::chrono::duration<double> seconds = now - m_begin;
    DrawBar({m_label, done, total, seconds.count()});
    m_drawn = now;
    m_isDrawn = true;
}

void ProgressBar::End() {
    const std::lock_guard lock(m_mutex);
    if (m_isDrawn) {
        EraseBar();
    }
    m_isDrawn = m_isRunning = false;
}

} // namespace nqp2::tool
