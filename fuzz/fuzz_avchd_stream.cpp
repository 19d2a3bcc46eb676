// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Any bytes as the beginning of a stream, as its video alone and as a parameter set.

#include "avchd/stream_head.h"
#include "fuzz/fuzz_target.h"

#include <optional>

namespace nqp2::fuzz {
namespace {

using avchd::SequenceParameters;

constexpr std::uint16_t kPid = 0x1011;

void Check(const std::optional<SequenceParameters>& parameters) {
    Require(!parameters || (parameters->pixels > 0 && parameters->pixels <= 16 * 1024 &&
                            parameters->lines > 0 && parameters->lines <= 32 * 1024),
            "a raster is one that a camera could have");
    Require(!parameters || (parameters->bitDepth >= 8 && parameters->bitDepth <= 14),
            "a bit depth is one that the coding knows");
}

} // namespace

void TestInput(Input input) {
    const avchd::Bytes bytes(input);
    Check(avchd::DecodeSequenceParameters(bytes));
    Require(avchd::VideoBytes(bytes, kPid).size() <= input.size(), "video is a part of its stream");
    const avchd::StreamHead head = avchd::DecodeStreamHead(bytes, kPid);
    Check(head.parameters);
    Require(!head.complete || head.parameters, "a complete head has its parameters");
}

} // namespace nqp2::fuzz
