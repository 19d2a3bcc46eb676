// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/ComError.h"

#include <new>

namespace nqp2::xml {

/// Runs a DOM operation; what the DOM raises, and memory giving out, becomes the failure value.
template <class Result, class Operation>
Result DomGuarded(Result failure, Operation&& operation) {
    try {
        return operation();
    } catch (const _com_error&) {
        return failure;
    } catch (const std::bad_alloc&) {
        return failure;
    }
}

} // namespace nqp2::xml
