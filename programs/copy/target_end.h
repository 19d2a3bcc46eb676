// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/failure.h"

#include <string>

namespace nqp2::copy {

/// A failure after which nothing more can come to a target.
class TargetEnd final : public Failure {
public:
    using Failure::Failure;
};

/// Whether a failure is one of the medium and not of one file.
inline bool IsOfMedium(platform::IoError error) {
    return error == platform::IoError::NoSpace || error == platform::IoError::ReadOnly ||
           error == platform::IoError::Device;
}

/// As Require, for files and folders of a target.
inline void RequireOn(const platform::IoStatus& status, const std::string& what,
                      const std::string& path) {
    if (!status && IsOfMedium(status.error)) {
        throw TargetEnd(what, path, status);
    }
    Require(status, what, path);
}

} // namespace nqp2::copy
