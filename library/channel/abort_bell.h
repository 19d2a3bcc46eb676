// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/descriptor.h"

#include <cstdint>
#include <memory>

namespace nqp2::channel {

/// Becomes readable when RingAbortBell is called next in this process. Whoever waits with an abort
/// flag has it before looking at the flag, and polls it. Null without descriptors or memory: then
/// the flag is looked at from time to time, as one must be that a host sets without ringing.
std::shared_ptr<const platform::Descriptor> AbortBell();

/// Wakes all that hold a bell: a flag was set.
void RingAbortBell();

/// While it lives, other threads set this flag by RaiseFlag alone: whoever waits with it and has a
/// bell need not look at it from time to time.
class RungFlag {
public:
    explicit RungFlag(const std::int32_t& flag);
    ~RungFlag();
    RungFlag(const RungFlag&) = delete;
    RungFlag& operator=(const RungFlag&) = delete;

private:
    const std::int32_t& m_flag;
};

/// Whether a RungFlag says so of that flag.
bool IsRungFor(const std::int32_t* flag);

} // namespace nqp2::channel
