// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/guard.h"

#include <cstdint>
#include <string>
#include <string_view>

struct _xmlError;

namespace nqp2::dom {

/// What kind of fault ended a load; finer than the platform's error codes where a person is told.
enum class Fault {
    None,
    NotFound,
    Unreadable,
    IsFolder,
    TooLarge,
    DocumentType,
    NotWellFormed,
    OutOfMemory, ///< says nothing about the file
};

/// The first error of a load, in the form that the platform DOM reports it.
struct ParseError {
    std::uint32_t errorCode = 0; ///< the platform's code, 0 for none
    std::string reason;          ///< one sentence, UTF-8
    int line = 0;                ///< from 1; 0 when there is none
    int linepos = 0;             ///< column from 1; 0 when there is none
    Fault fault = Fault::None;
};

inline constexpr std::uint32_t kErrorNotFound = 0x800C0006U;
inline constexpr std::uint32_t kErrorDocumentType = 0xC00CE584U;
inline constexpr std::uint32_t kErrorTooLarge = 0x8007000EU;
inline constexpr std::uint32_t kErrorUnreadable = 0x80004005U;
inline constexpr const char* kFileTooLarge = "the file is larger than metadata may be";
inline constexpr std::uint32_t kErrorMissingRoot = 0xC00CE558U;

/// The reason is short enough to be told without memory.
inline ParseError OutOfMemory() noexcept {
    ++platform::timesOutOfMemory;
    return {kErrorTooLarge, "out of memory", 0, 0, Fault::OutOfMemory};
}

/// What libxml2 reported, in that form. `ahead`: the input from where the parser is, as far as it
/// is read; the platform tells some faults apart by it.
ParseError NotWellFormed(const _xmlError& error, std::string_view ahead);

} // namespace nqp2::dom
