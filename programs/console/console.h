// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace nqp2::tool {

/// Says standard output in the place of a file.
inline constexpr const char* kStandardOutput = "-";

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

/// Whether the words of a command line ask for `--progress json` and not for silence.
bool AsksForObjects(int count, const char* const* words);

/// The program's standard streams: results go out, messages go to the side.
class Console {
public:
    /// Messages are objects of JSON from here on, one a line, as those of the progress.
    void TellAsObjects() { m_tellsObjects = true; }
    /// Adds to standard output. Throws Failure when it cannot be written.
    void Write(std::string_view text);
    /// One line on standard output, made harmless for a terminal. Throws Failure as Write does.
    void WriteLine(std::string_view text);
    /// One line on standard error, made harmless for a terminal.
    void Message(std::string_view text);
    /// The same for what went wrong, with the program's name in front.
    void Fail(std::string_view sentence);
    /// Writes what is still buffered. Throws Failure when it cannot be written.
    void Finish();
    /// Columns that standard output offers; nothing when it is no terminal.
    [[nodiscard]] std::optional<int> OutputWidth() const;

private:
    bool m_tellsObjects = false;
};

} // namespace nqp2::tool
