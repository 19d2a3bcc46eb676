// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/card_status.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/ScanReport.h"
#include "platform/unicode.h"

#include <exception>
#include <new>

namespace nqp2::parser {

/// What keeps the card with that root from being reached; `lack` when nothing does.
CString WhyUnreadable(const CString& root, const wchar_t* lack);

/// Runs a scan and, when that fails, writes the reason into the report. `lack` says what a card
/// that can be reached has not got.
template <class Operation>
__int64 Scanned(const CString& root, const wchar_t* lack, ScanReport& report,
                const Operation& scan) {
    try {
        if (scan() == media::kRead) {
            return media::kRead;
        }
        report.failure = WhyUnreadable(root, lack);
    } catch (const std::bad_alloc&) {
        report.failure = L"out of memory";
        throw;
    } catch (const std::exception& error) {
        report.failure = platform::TextFromUtf8(error.what());
        throw;
    }
    return media::kCannotRead;
}

} // namespace nqp2::parser
