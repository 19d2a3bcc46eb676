// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/console.h"

#include "console/display_text.h"
#include "console/object_line.h"
#include "NQP2ParserU/Terminal.h"

#include <fmt/core.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace nqp2::tool {
namespace {

constexpr std::string_view kPrefix = "nqp2: ";

std::string FailureLine(std::string_view subject, std::string_view problem,
                        std::string_view reason) {
    // Room for every path. Texts from files are quoted at any length.
    constexpr int kColumns = 5000;
    constexpr std::size_t kBytes = std::size_t{4} * kColumns;
    const std::string why = reason.empty() ? "" : fmt::format(" ({})", reason);
    const std::string line = fmt::format("{}: {}{}", subject, problem, why).substr(0, kBytes);
    // A zero would end the text that an exception carries.
    return CutToWidth(Printable(line, LineBreaks::Escape), kColumns);
}

[[noreturn]] void ThrowOutputFailure(int error) {
    // Who reads has had enough, as `head` has: nothing to tell.
    if (error == EPIPE) {
        throw Failure::Silent(kFailed);
    }
    throw Failure("standard output", "cannot be written", std::generic_category().message(error));
}

} // namespace

Failure::Failure(std::string_view subject, std::string_view problem, std::string_view reason,
                 Status status)
    : std::runtime_error(FailureLine(subject, problem, reason)), m_status(status) {}

Failure::Failure(Status status) : std::runtime_error(""), m_status(status) {}

Failure Failure::Silent(Status status) {
    return Failure(status);
}

bool AsksForObjects(int count, const char* const* words) {
    bool asks = false;
    std::string_view before;
    for (int i = 1; i < count; ++i) {
        const std::string_view word = words[i];
        if (word == "-q" || word == "--quiet") {
            return false;
        }
        asks |= word == "--progress=json" || (before == "--progress" && word == "json");
        before = word;
    }
    return asks;
}

void Console::Write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
        ThrowOutputFailure(errno);
    }
}

void Console::WriteLine(std::string_view text) {
    Write(Printable(text, LineBreaks::Escape) + '\n');
}

void Console::Message(std::string_view text) {
    if (m_tellsObjects) {
        ObjectLine().Put("remark", text.substr(text.starts_with(kPrefix) ? kPrefix.size() : 0));
        return;
    }
    WriteSide(Printable(text, LineBreaks::Escape) + '\n');
}

void Console::Fail(std::string_view sentence) {
    if (m_tellsObjects) {
        ObjectLine().Put("failure", sentence);
        return;
    }
    Message(std::string(kPrefix).append(sentence));
}

void Console::Finish() {
    if (std::fflush(stdout) != 0) {
        ThrowOutputFailure(errno);
    }
}

std::optional<int> Console::OutputWidth() const {
    return IsTerminal(stdout) ? std::optional(TerminalWidth(stdout)) : std::nullopt;
}

} // namespace nqp2::tool
