// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Any bytes as the beginning of a stream, as its video alone and as a parameter set.

#include "avchd/stream_head.h"
#include "fuzz/measured_input.h"
#include "fuzz/require.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace {

using nqp2::avchd::SequenceParameters;
using nqp2::fuzz::Require;

constexpr std::uint16_t kPid = 0x1011;

void Check(const std::optional<SequenceParameters>& parameters) {
    Require(!parameters || (parameters->pixels > 0 && parameters->pixels <= 16 * 1024 &&
                            parameters->lines > 0 && parameters->lines <= 32 * 1024),
            "a raster is one that a camera could have");
    Require(!parameters || (parameters->bitDepth >= 8 && parameters->bitDepth <= 14),
            "a bit depth is one that the coding knows");
}

} // namespace

int nqp2::fuzz::TestInput(const std::uint8_t* data, std::size_t size) {
    const nqp2::avchd::Bytes bytes(data, size);
    Check(nqp2::avchd::DecodeSequenceParameters(bytes));
    Require(nqp2::avchd::VideoBytes(bytes, kPid).size() <= size, "video is a part of its stream");
    const nqp2::avchd::StreamHead head = nqp2::avchd::DecodeStreamHead(bytes, kPid);
    Check(head.parameters);
    Require(!head.complete || head.parameters, "a complete head has its parameters");
    return 0;
}
