// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/card_status.h"
#include "NQP2ParserU/CString.h"
#include "platform/unicode.h"

#include <exception>
#include <new>

namespace nqp2::parser {

inline constexpr const wchar_t* kNotReady = L"Init was not called";
inline constexpr const wchar_t* kNoContents = L"the card has no CONTENTS folder";

/// What keeps the card with that root from being reached; `lack` when nothing does.
CString WhyUnreadable(const CString& root, const wchar_t* lack);

/// Runs an operation and, when that fails, writes what `why` answers then, or what was thrown.
template <class Operation, class Why>
__int64 Reported(CString& failure, const Operation& operation, const Why& why) {
    try {
        if (operation() == media::kRead) {
            return media::kRead;
        }
        failure = why();
    } catch (const std::bad_alloc&) {
        failure = L"out of memory";
        throw;
    } catch (const std::exception& error) {
        failure = platform::TextFromUtf8(error.what());
        throw;
    }
    return media::kCannotRead;
}

/// Runs a scan and, when that fails, writes the reason into the report. `lack` says what a card
/// that can be reached has not got.
template <class Operation>
__int64 Scanned(const CString& root, const wchar_t* lack, CString& failure, const Operation& scan) {
    return Reported(failure, scan, [&] { return WhyUnreadable(root, lack); });
}

} // namespace nqp2::parser
