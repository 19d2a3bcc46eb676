// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

class CNQP2Parser;

namespace nqp2::tool {

class Console;

/// What a bar shows at one moment.
struct Progress {
    std::string label;
    std::uint64_t done = 0; ///< KiB
    std::uint64_t total = 0;
    double seconds = 0; ///< since the beginning
};

/// "0001AB [=====>    ]  50 %  12.0 MiB/s  0:07 left", at most `width` columns wide.
std::string BarText(const Progress& progress, int width);

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

/// Says that a clip was taken although it is not whole.
void TellIncomplete(Console& console, const std::string& label, const std::string& sentence);
/// Bits of the transfer record's value 2: to take clips that are not whole, and that one was not.
inline constexpr std::uint32_t kTakeIncomplete = 1;
inline constexpr std::uint32_t kWasIncomplete = 2;

/// Shows how a transfer goes and lets Ctrl-C cancel it. Outlives the parser that it watches, which
/// may still be calling when a transfer has ended.
class TransferWatch {
public:
    /// From here on Ctrl-C ends no more than the transfer.
    explicit TransferWatch(bool quiet);

    /// From here on the parser reports its transfers to this.
    void Follow(CNQP2Parser& parser);
    /// A transfer begins. Throws the failure to report after Ctrl-C.
    void Begin(const std::string& label);
    /// Where it has come, in KiB. False when it has to end.
    bool GoesOn(std::uint64_t done, std::uint64_t total);
    void End() { m_bar.End(); }

private:
    ProgressBar m_bar;
};

} // namespace nqp2::tool
