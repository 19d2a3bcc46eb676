// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/channel_link.h"

#include <algorithm>

namespace nqp2::bridge {

unsigned char* ChannelHolder::Keep(std::span<const unsigned char> bytes) {
    if (bytes.size() > dataSize) {
        link->data.reset(new unsigned char[bytes.size()]);
        dataSize = bytes.size();
    }
    std::copy(bytes.begin(), bytes.end(), link->data.get());
    return link->data.get();
}

} // namespace nqp2::bridge
