// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/worker_proxy.h"
#include "platform/guard.h"

#include <cstdint>

/// What the parser's front ends make of a proxy's answers. They differ: kept, hosts rely on it.
namespace nqp2::bridge {

/// The answer of a call of the proxy; kRefused without one. A call that throws counts as a channel
/// that failed.
template <class Call>
std::int32_t AskProxy(CTNQ264BitSupport* proxy, Call call) {
    return proxy == nullptr ? kRefused
                            : platform::Guarded(kChannelFailed, [&] { return call(*proxy); });
}

/// 1 for success.
inline int OneWhenDone(std::int32_t answer) {
    return answer == kDone ? 1 : 0;
}

/// 0 for success.
inline std::int64_t ZeroWhenDone(std::int32_t answer) {
    return answer == kDone ? 0 : 1;
}

} // namespace nqp2::bridge
