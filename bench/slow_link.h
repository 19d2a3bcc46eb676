// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>
#include <memory>
#include <string>

namespace nqp2::bench {

/// A socket that hands on to another what comes in and what comes back, each so much later: what
/// lies between two machines. Bytes are not slowed down, only late.
class SlowLink {
public:
    /// Listens at `path` until it ends, for what is to reach the socket `target`.
    SlowLink(const std::string& path, std::string target, std::chrono::microseconds delay);
    ~SlowLink();
    SlowLink(const SlowLink&) = delete;
    SlowLink& operator=(const SlowLink&) = delete;

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace nqp2::bench
