// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>

/// What the worker of the tests does, by message id. Channel kEchoChannel takes all of them.
namespace nqp2::test {

inline constexpr std::uint32_t kEchoChannel = 20000;
inline constexpr std::uint32_t kBusyChannel = 20023; ///< sub-channel on which it keeps sending

enum EchoMessage : std::uint32_t {
    kEcho = 1,   ///< sent back
    kForkAndEnd, ///< ends, while a child of its own holds every descriptor for a while
};

} // namespace nqp2::test
