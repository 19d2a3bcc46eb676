// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/ComError.h"

#include <new>

/// The rule for exceptions at the exported edge. Every exported operation is one of these:
/// - it runs under Guarded, and nothing leaves it;
/// - it runs under ComGuarded, and its declaration says that it throws _com_error: nothing else
///   does;
/// - it is noexcept, because all that it does is;
/// - it is an operation of a plain value (CString, CArray, _variant_t ...), which throws
///   std::bad_alloc as the standard library's values do.
/// scripts/check_guards.py holds all exported headers and their definitions against it.
namespace nqp2::platform {

/// How often this thread ran out of memory and went on.
inline thread_local unsigned long timesOutOfMemory = 0;

/// Exported operations are used inside the library too, where a failure value must not be taken for
/// what a file says: whether memory has run out in one of them since this object was made.
class MemoryWatch {
public:
    /// Throws std::bad_alloc when it has.
    void Require() const {
        if (timesOutOfMemory != m_before) {
            throw std::bad_alloc();
        }
    }

private:
    unsigned long m_before = timesOutOfMemory;
};

/// Runs an exported operation. Whatever is thrown, out of memory included, becomes the operation's
/// failure value.
template <class Result, class Operation>
Result Guarded(Result failure, Operation&& operation) noexcept {
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        ++timesOutOfMemory;
        return failure;
    } catch (...) {
        return failure;
    }
}

/// The same for an operation without result.
template <class Operation>
void Guarded(Operation&& operation) noexcept {
    try {
        operation();
    } catch (const std::bad_alloc&) {
        ++timesOutOfMemory;
    } catch (...) { // NOLINT(bugprone-empty-catch): there is no one to tell
    }
}

/// The same for an operation that tells of a path that cannot be evaluated by throwing.
template <class Result, class Operation>
Result ComGuarded(Result failure, Operation&& operation) {
    try {
        return operation();
    } catch (const _com_error&) {
        throw;
    } catch (const std::bad_alloc&) {
        ++timesOutOfMemory;
        return failure;
    } catch (...) {
        return failure;
    }
}

/// The same for one without result: all other faults become a _com_error too.
template <class Operation>
void ComGuarded(Operation&& operation) {
    try {
        operation();
    } catch (const _com_error&) {
        throw;
    } catch (...) {
        throw _com_error(E_OUTOFMEMORY);
    }
}

} // namespace nqp2::platform
