// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/channel_line.h"

namespace nqp2::worker {

/// Serves as peer of a host's request server on its channel: connects, asks once whether the host
/// offers services, disconnects, and stays until the host closes the channel.
void TalkToHost(ChannelLine& server);

} // namespace nqp2::worker
