// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <cstddef>

/// Where thousands of records are shown, what they hold has long left the processor's caches. It is
/// asked for while the record before is shown, without waiting: nothing is read, nothing changes.
namespace nqp2::tool {

inline constexpr std::size_t kLine = 64;
inline constexpr std::size_t kLinesOfText = 2; ///< 28 characters
inline constexpr std::size_t kLinesOfPath = 5; ///< 76

template <std::size_t Lines>
void FetchLines(const void* start) {
    for (std::size_t line = 0; line < Lines; ++line) {
        __builtin_prefetch(static_cast<const char*>(start) + line * kLine);
    }
}

/// The object itself, without what it points to.
template <class Source>
void FetchObject(const Source& source) {
    FetchLines<sizeof(Source) / kLine + 1>(&source);
}

/// The texts of a member that is one or more of them.
template <std::size_t Lines>
void FetchTexts(const CString& text) {
    constexpr std::size_t kBefore = 4; // characters: the length stands before the first
    FetchLines<Lines>(text.GetString() - kBefore);
}
template <std::size_t Lines, std::size_t Count>
void FetchTexts(const CString (&texts)[Count]) {
    for (const CString& text : texts) {
        FetchTexts<Lines>(text);
    }
}
template <std::size_t Lines, class Other>
void FetchTexts(const Other& /*other*/) {}

} // namespace nqp2::tool
