// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

namespace nqp2::platform {

/// Runs an exported operation; no exception leaves it. Whatever is thrown, memory giving out
/// included, becomes the operation's failure value.
template <class Result, class Operation>
Result Guarded(Result failure, Operation&& operation) noexcept {
    try {
        return operation();
    } catch (...) {
        return failure;
    }
}

} // namespace nqp2::platform
