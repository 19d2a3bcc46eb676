// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "channel/channel_end.h"

#include <memory>
#include <string>

namespace nqp2::channel {

/// Opens a channel to the worker that listens there and waits (five seconds at most) until the
/// worker takes it. Null on failure; at once when nobody listens.
std::shared_ptr<ChannelEnd> Connect(const std::string& path, std::uint32_t channelId, Sizes sizes,
                                    TimeOuts timeOuts);

} // namespace nqp2::channel
