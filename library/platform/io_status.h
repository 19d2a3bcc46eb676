// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace nqp2::platform {

/// Why a file operation failed; nothing above this folder sees the system's error numbers.
enum class IoError {
    None,
    NotFound,
    Denied,
    Exists, ///< the name is taken
    IsFolder,
    NotAFile, ///< a socket, pipe or device: never read
    IsLink,   ///< a link, where none is followed
    Busy,     ///< in use by another
    TooLarge,
    NoSpace,
    ReadOnly,
    Device, ///< read or write error, medium removed
    Other,
};

/// Outcome of a file operation with the system's own words for a person.
struct [[nodiscard]] IoStatus {
    IoError error = IoError::None;
    std::string reason;

    explicit operator bool() const { return error == IoError::None; }
};

/// The outcome that an error number of the system (errno) means, with the system's words.
IoStatus SystemStatus(int errorNumber);

} // namespace nqp2::platform
