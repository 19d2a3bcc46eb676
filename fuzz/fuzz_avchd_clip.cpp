// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Any bytes as AVCHD clip information.

#include "avchd/clip_information.h"
#include "fuzz/fuzz_target.h"

namespace nqp2::fuzz {

void TestInput(Input input) {
    Require(avchd::StreamsOf(input).size() * 3 <= input.size(), "every stream is in the file");
    static_cast<void>(avchd::RecorderOf(input));
    static_cast<void>(avchd::StreamSizeIn(input));
    const auto clip = avchd::DecodeClipInformation(input);
    if (!clip) {
        return;
    }
    Require(clip->stretches.size() * 14 <= input.size(), "every stretch stands in the file");
    const auto* rate = avchd::RateOf(clip->video.rateCode, false);
    Require(rate == nullptr || clip->Frames(*rate) >= 0, "no length is negative");
}

} // namespace nqp2::fuzz
