// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/SysInterface.h"

#include <cstddef>
#include <memory>
#include <span>

namespace nqp2::bridge {

/// What a proxy knows of one of its channels. Three words, as hosts know it.
struct ChannelLink {
    void* unused = nullptr;
    ChannelHandle handle = 0;
    std::unique_ptr<unsigned char[]> data; ///< for replies that hand out data; null when none
};
static_assert(sizeof(ChannelLink) == 3 * sizeof(void*));

/// Owns a link and knows the size of its data buffer.
struct ChannelHolder {
    std::size_t dataSize = 0;
    std::unique_ptr<ChannelLink> link;

    explicit ChannelHolder(std::size_t size = 0)
        : dataSize(size), link(std::make_unique<ChannelLink>()) {
        if (size > 0) {
            // Left as it comes: pages that no reply fills cost nothing.
            link->data.reset(new unsigned char[size]);
        }
    }

    /// A copy in the data buffer, which grows when it is too small; growing ends the life of what
    /// was handed out before. Throws when memory gives out.
    unsigned char* Keep(std::span<const unsigned char> bytes);
};

} // namespace nqp2::bridge
