// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card.h"

#include <functional>
#include <string>
#include <string_view>

namespace nqp2::tool {

/// A file or folder that the user named, as the worker takes it: whole, without links and steps
/// upward, or a mapped drive as it is written. Throws Failure for a path that has no interface
/// form.
CString WorkerPath(const std::string& argument);

/// Why a request fails that gets no answer.
inline constexpr const char* kNoWorker = "the worker has ended or does not answer";

/// The worker process, which runs as long as this lives. Parsers that are made meanwhile lead to
/// it; release them before it is destroyed. One at a time.
class Worker {
public:
    /// Starts `program`, or the worker that belongs to this program when it is empty. Throws
    /// Failure when it does not start.
    explicit Worker(const std::string& program);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
};

/// What a person may do about a refusal; "" when nothing is known.
using Hint = std::function<std::string()>;

/// A worker and the parser that asks it.
class WorkerSession {
public:
    explicit WorkerSession(const std::string& program) : m_worker(program) {}

    CNQP2Parser* operator->() { return m_parser.operator->(); }

    /// Throws the failure to report unless `done`: the worker's own sentence, or that there is no
    /// worker any more. `subject` and `problem` are Failure's.
    /// `hint`, which is asked when the worker refused, is told behind its sentence.
    void Require(bool done, std::string_view subject, std::string_view problem,
                 const Hint& hint = {});
    /// The same for a request whose result is not told and which was the session's first.
    void RequireNoFailure(std::string_view subject, std::string_view problem,
                          const Hint& hint = {});
    /// The sentence that the worker keeps for the session, "" for none.
    [[nodiscard]] std::string Sentence();

private:
    Worker m_worker; // outlives the parser
    ReadyParser m_parser;
};

} // namespace nqp2::tool
