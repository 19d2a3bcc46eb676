// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string>

namespace nqp2::dom {

/// What kind of fault ended a load; finer than the platform's error codes where a person is told.
enum class Fault { None, NotFound, Unreadable, IsFolder, TooLarge, DocumentType, NotWellFormed };

/// The first error of a load, in the form that the platform DOM reports it.
struct ParseError {
    std::uint32_t errorCode = 0; ///< the platform's code, 0 for none
    std::string reason;          ///< one sentence, UTF-8
    int line = 0;                ///< from 1; 0 when there is none
    int linepos = 0;             ///< column from 1; 0 when there is none
    Fault fault = Fault::None;
};

/// Short enough to be told without memory.
inline constexpr const char* kOutOfMemory = "out of memory";

inline constexpr std::uint32_t kErrorNotFound = 0x800C0006U;
inline constexpr std::uint32_t kErrorDocumentType = 0xC00CE584U;
inline constexpr std::uint32_t kErrorTooLarge = 0x8007000EU;
inline constexpr std::uint32_t kErrorUnreadable = 0x80004005U;
inline constexpr const char* kFileTooLarge = "the file is larger than metadata may be";
inline constexpr std::uint32_t kErrorMissingRoot = 0xC00CE558U;

inline ParseError OutOfMemory() noexcept {
    return {kErrorTooLarge, kOutOfMemory, 0, 0, Fault::TooLarge};
}

} // namespace nqp2::dom
