// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/io_status.h"

#include <stdexcept>
#include <string>

namespace nqp2::copy {

/// Why something could not be done: one sentence for a person, UTF-8. Thrown by everything that
/// serves a request, caught where the request is answered.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& sentence) : std::runtime_error(sentence) {}
    /// "Cannot <what> <path>: <the system's words>."
    Failure(const std::string& what, const std::string& path, const platform::IoStatus& status)
        : Failure("Cannot " + what + " " + path + ": " + status.reason + ".") {}
};

/// Somebody wanted it to end.
class Cancelled final : public Failure {
public:
    Cancelled() : Failure("Cancelled.") {}
};

/// "PATH changed while it was being read."
inline std::string ChangedInReading(const std::string& path) {
    return path + " changed while it was being read.";
}

/// Throws that unless the file operation succeeded.
inline void Require(const platform::IoStatus& status, const std::string& what,
                    const std::string& path) {
    if (!status) {
        throw Failure(what, path, status);
    }
}

} // namespace nqp2::copy
