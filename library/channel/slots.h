// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "channel/channel_end.h"
#include "NQP2ParserU/SysInterface.h"

namespace nqp2::channel {

using CreateChannelSlot = decltype(SysInterfaceTable::CreateChannel);

/// The table that both ends share but for the way in which a first channel comes about.
SysInterfaceTable TableWith(CreateChannelSlot createChannel);

} // namespace nqp2::channel
