// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/run_progress.h"

#include "console/byte_size.h"
#include "console/display_text.h"
#include "console/object_line.h"
#include "console/progress_bar.h"
#include "NQP2ParserU/Terminal.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace nqp2::tool {
namespace {

constexpr std::uint64_t kBarUnit = 1024;

struct FormFacts {
    std::string_view name;
    ProgressForm form;
    std::chrono::milliseconds pause; ///< between two that are shown
};
constexpr FormFacts kForms[] = {{"none", ProgressForm::None, {}},
                                {"bar", ProgressForm::Bar, std::chrono::milliseconds(100)},
                                {"lines", ProgressForm::Lines, std::chrono::milliseconds(5000)},
                                {"json", ProgressForm::Json, std::chrono::milliseconds(500)}};

const FormFacts& FactsOf(ProgressForm form) {
    return *std::find_if(std::begin(kForms), std::end(kForms),
                         [form](const FormFacts& each) { return each.form == form; });
}

void WriteSideLine(std::string_view text) {
    WriteSide(Printable(text, LineBreaks::Escape) + '\n');
}

std::uint64_t Percent(std::uint64_t done, std::uint64_t total) {
    return total == 0 ? 100 : std::min(done, total) * 100 / total;
}

} // namespace

ProgressForm ProgressFormNamed(std::string_view name) {
    const auto* const found =
        std::find_if(std::begin(kForms), std::end(kForms),
                     [name](const FormFacts& each) { return each.name == name; });
    if (found != std::end(kForms)) {
        return found->form;
    }
    return IsTerminal(stderr) ? ProgressForm::Bar : ProgressForm::Lines;
}

double RunProgress::Seconds() const {
    return std::chrono::duration<double>(Clock::now() - m_begin).count();
}

void RunProgress::Begin(std::string_view phase, std::uint64_t totalFiles,
                        std::uint64_t totalBytes) {
    const std::lock_guard lock(m_mutex);
    m_phase = phase;
    m_totalFiles = totalFiles;
    m_totalBytes = totalBytes;
    m_begin = Clock::now();
    // The first line has something to tell, the first of the others shows that it has begun.
    m_shown = m_form == ProgressForm::Lines ? m_begin : Clock::time_point();
}

void RunProgress::Show(const RunState& state) {
    const std::lock_guard lock(m_mutex);
    const Clock::time_point now = Clock::now();
    if (m_form == ProgressForm::None || now - m_shown < FactsOf(m_form).pause) {
        return;
    }
    m_shown = now;
    Draw(state);
}

void RunProgress::Draw(const RunState& state) {
    if (m_form == ProgressForm::Lines) {
        WriteLine(state, false);
    } else if (m_form == ProgressForm::Json) {
        WriteObject(state);
    } else {
        // The name may be long: numbers go first, and the rest of the line is for the bar.
        const std::string what =
            fmt::format("{} {}", m_phase,
                        CutToWidth(Printable(state.target.empty() ? state.file : state.target,
                                             LineBreaks::Escape),
                                   30));
        DrawBar({what, state.bytes / kBarUnit, m_totalBytes / kBarUnit, Seconds()});
        m_isDrawn = true;
    }
}

void RunProgress::WriteLine(const RunState& state, bool isEnd) const {
    const double seconds = Seconds();
    const double rate = static_cast<double>(state.bytes) / std::max(seconds, 0.001);
    std::string line =
        fmt::format("{}: {} % of {} files, {}", m_phase, Percent(state.bytes, m_totalBytes),
                    m_totalFiles, BytesText(state.bytes));
    line +=
        fmt::format(" in {}, {}/s", TimeText(seconds), BytesText(static_cast<std::uint64_t>(rate)));
    if (!isEnd && rate > 0) {
        const double left = static_cast<double>(m_totalBytes - std::min(state.bytes, m_totalBytes));
        line += fmt::format(", {} left", TimeText(left / rate));
    }
    if (!state.target.empty()) {
        line += fmt::format(", slowest: {}", state.target);
    }
    WriteSideLine(line);
}

void RunProgress::WriteObject(const RunState& state) const {
    const double seconds = Seconds();
    const double rate = static_cast<double>(state.bytes) / std::max(seconds, 0.001);
    ObjectLine line;
    line.Put("phase", std::string_view(m_phase));
    line.PutPath("file", "fileBytes", state.file);
    line.Put("files", state.files);
    line.Put("totalFiles", m_totalFiles);
    line.Put("bytes", state.bytes);
    line.Put("totalBytes", m_totalBytes);
    line.Put("seconds", seconds);
    line.Put("rate", rate);
    line.PutPath("target", "targetBytes", state.target);
}

void RunProgress::Fail(std::string_view file, std::string_view target, std::string_view sentence) {
    const std::lock_guard lock(m_mutex);
    ClearBar();
    if (m_form == ProgressForm::Json) {
        ObjectLine line;
        line.PutGiven("phase", m_phase);
        line.PutPath("file", "fileBytes", file);
        line.PutPath("target", "targetBytes", target);
        line.Put("failure", sentence);
        return;
    }
    const bool hasBoth = !file.empty() && !target.empty();
    WriteSideLine(fmt::format("nqp2: {}{}{}: {}", target, hasBoth ? ": " : "", file, sentence));
}

void RunProgress::Remark(std::string_view sentence) {
    const std::lock_guard lock(m_mutex);
    ClearBar();
    if (m_form == ProgressForm::Json) {
        ObjectLine line;
        line.PutGiven("phase", m_phase);
        line.Put("remark", sentence);
    } else {
        WriteSideLine(fmt::format("nqp2: {}", sentence));
    }
}

void RunProgress::End(const RunState& state) {
    const std::lock_guard lock(m_mutex);
    ClearBar();
    if (m_form == ProgressForm::Lines) {
        WriteLine(state, true);
    } else if (m_form == ProgressForm::Json) {
        WriteObject(state);
    }
}

void RunProgress::Clear() {
    const std::lock_guard lock(m_mutex);
    ClearBar();
}

void RunProgress::ClearBar() {
    if (m_isDrawn) {
        EraseBar();
    }
    m_isDrawn = false;
}

} // namespace nqp2::tool
