// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/descriptor.h"

#include <memory>

namespace nqp2::channel {

/// Becomes readable when RingAbortBell is called next in this process. Whoever waits with an abort
/// flag has it before looking at the flag, and polls it. Null without descriptors or memory: then
/// the flag is looked at from time to time, as one must be that a host sets without ringing.
std::shared_ptr<const platform::Descriptor> AbortBell();

/// Wakes all that hold a bell: a flag was set.
void RingAbortBell();

} // namespace nqp2::channel
