// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/P2Clip.h"

#include <string>

namespace nqp2::tool {

/// The name that a person gave; many cameras put the clip's own name or identifier there.
std::string OwnTitle(const _tag_P2Clip& clip);

/// The codec with its class, unless the codec's name ends in it already ("AVC-LongG422-50M").
std::string CodecAndClass(const _tag_P2Clip& clip);

/// Audio channels. Where sound has files of its own, the scan gives a path to one channel fewer
/// than the clip has; the word length tells whether there is sound at all.
int AudioChannels(const _tag_P2Clip& clip);

} // namespace nqp2::tool
