// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace nqp2::tool {

/// Exit statuses of the program.
enum Status : int {
    kDone = 0,
    kFailed = 1,
    kUsage = 2,
    kWorkerFailed = 3, ///< the worker or the channel to it, not what was asked of it
    kSkipped = 4,      ///< done, but something was left out and the user asked to be told
};

/// Ends a command with one line on standard error.
class Failure : public std::runtime_error {
public:
    /// `subject` is a path or argument; `reason` may be empty.
    Failure(std::string_view subject, std::string_view problem, std::string_view reason,
            Status status = kFailed);

    /// One that ends a command without a word.
    static Failure Silent(Status status);

    [[nodiscard]] Status GetStatus() const { return m_status; }
    [[nodiscard]] bool IsSilent() const { return *what() == '\0'; }

private:
    explicit Failure(Status status);

    Status m_status;
};

/// The program's standard streams: results go out, messages go to the side.
class Console {
public:
    /// Adds to standard output. Throws Failure when it cannot be written.
    void Write(std::string_view text);
    /// One line on standard output, made harmless for a terminal. Throws Failure as Write does.
    void WriteLine(std::string_view text);
    /// One line on standard error, made harmless for a terminal.
    void Message(std::string_view text);
    /// Writes what is still buffered. Throws Failure when it cannot be written.
    void Finish();
    /// Columns that standard output offers; nothing when it is no terminal.
    [[nodiscard]] std::optional<int> OutputWidth() const;
};

} // namespace nqp2::tool
