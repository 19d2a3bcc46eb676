// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"

#include <cstdint>
#include <vector>

namespace nqp2::avchd {

/// The bytes of one video stream out of the beginning of a .MTS or .m2ts file: its packets of 192
/// bytes (four in front of each ISO/IEC 13818-1 packet), the headers of the packetised stream taken
/// off. Starts with the first header; packets without sync, with errors or scrambled are passed over.
/// Never longer than `file`.
std::vector<std::uint8_t> VideoBytes(Bytes file, std::uint16_t pid);

} // namespace nqp2::avchd
