// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

namespace nqp2::tool {

/// How a long run shows on standard error where it has come.
enum class ProgressForm {
    None,  ///< failures are told all the same
    Bar,   ///< one line that is drawn again and again
    Lines, ///< a line every few seconds and at the end of each phase
    Json   ///< the same as objects, more often
};

/// The form of that name: "none", "bar", "lines", "json". Anything else is a bar where standard
/// error is a terminal, and lines elsewhere.
ProgressForm ProgressFormNamed(std::string_view name);

/// Where a phase of a run has come.
struct RunState {
    std::uint64_t bytes = 0;
    std::uint64_t files = 0;
    std::string_view file;   ///< the one at work
    std::string_view target; ///< the one that the others wait for; empty when there is none
};

/// Shows how a run goes on, phase by phase, for all its files and targets together. Whoever reports
/// may do so as often as it likes. From any thread.
class RunProgress {
public:
    explicit RunProgress(ProgressForm form) : m_form(form) {}
    ~RunProgress() { Clear(); }
    RunProgress(const RunProgress&) = delete;
    RunProgress& operator=(const RunProgress&) = delete;

    /// `phase` is a word. What is not known in advance is 0.
    void Begin(std::string_view phase, std::uint64_t totalFiles, std::uint64_t totalBytes);
    void Show(const RunState& state);
    /// What went wrong with a file, and where; either may be empty. The run goes on.
    void Fail(std::string_view file, std::string_view target, std::string_view sentence);
    /// A line on standard error beside the progress, for a person; an object of its own for a
    /// program.
    void Remark(std::string_view sentence);
    /// Ends the phase; `state` is where it has come.
    void End(const RunState& state);
    /// Makes place for other output.
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] double Seconds() const;
    void ClearBar();
    void Draw(const RunState& state);
    void WriteLine(const RunState& state, bool isEnd) const;
    void WriteObject(const RunState& state) const;

    const ProgressForm m_form;
    std::mutex m_mutex;
    std::string m_phase;
    std::uint64_t m_totalFiles = 0;
    std::uint64_t m_totalBytes = 0;
    Clock::time_point m_begin;
    Clock::time_point m_shown;
    bool m_isDrawn = false;
};

} // namespace nqp2::tool
