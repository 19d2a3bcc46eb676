// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "channel/channel_end.h"

#include <memory>

/// The numbers by which callers of the slots know channels. No number is used twice in a process,
/// so that a call on a channel that another thread has just closed finds nothing; nor in processes
/// that fork: a child finds none of its parent's, which it could only spoil.
namespace nqp2::channel {

/// 0 for null.
ChannelHandle AddChannel(std::shared_ptr<ChannelEnd> channel);
/// Null when there is none, or no longer.
std::shared_ptr<ChannelEnd> FindChannel(ChannelHandle handle);
/// Forgets the channel once it is closed and nobody holds a buffer of it any more.
void ForgetIfOver(ChannelHandle handle, const ChannelEnd& channel);

} // namespace nqp2::channel
