// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/io_status.h"

#include <string>
#include <utility>

namespace nqp2::copy {

/// How an operation ended.
struct [[nodiscard]] Outcome {
    bool failed = false;
    std::string error; ///< one sentence for a person, UTF-8

    explicit operator bool() const { return !failed; }
};

inline Outcome Failure(std::string sentence) {
    return {true, std::move(sentence)};
}

/// "Cannot <what> <path>: <the system's words>."
inline Outcome Failure(const std::string& what, const std::string& path,
                       const platform::IoStatus& status) {
    return Failure("Cannot " + what + " " + path + ": " + status.reason + ".");
}

} // namespace nqp2::copy
