// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>

namespace nqp2::copy {

/// Hears how far a transfer has come and tells whether it shall go on.
class Watch {
public:
    virtual ~Watch() = default;
    /// Bytes done of bytes in all. Returns false to end the transfer.
    [[nodiscard]] virtual bool GoesOn(std::uint64_t done, std::uint64_t total) = 0;
    /// Told once, with everything verified and nothing under its final name yet. Returns false
    /// to drop it all.
    [[nodiscard]] virtual bool MayFinish(std::uint64_t total) = 0;
};

} // namespace nqp2::copy
