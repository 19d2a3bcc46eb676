// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "channel/channel_end.h"

#include <memory>

/// The numbers by which callers of the slots know channels. No number is used twice in a process,
/// so that a call on a channel that another thread has just closed finds nothing.
namespace nqp2::channel {

/// 0 for null.
ChannelHandle AddChannel(std::shared_ptr<ChannelEnd> channel);
/// Null when there is none, or no longer.
std::shared_ptr<ChannelEnd> FindChannel(ChannelHandle handle);
std::shared_ptr<ChannelEnd> RemoveChannel(ChannelHandle handle);

} // namespace nqp2::channel
