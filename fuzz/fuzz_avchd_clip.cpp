// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Any bytes as AVCHD clip information.

#include "avchd/clip_information.h"
#include "fuzz/fuzz_target.h"

namespace nqp2::fuzz {

void TestInput(Input input) {
    const auto clip = avchd::DecodeClipInformation(input);
    if (!clip) {
        return;
    }
    Require(clip->stretches.size() * 14 <= input.size(), "every stretch stands in the file");
    const auto* rate = avchd::RateOf(clip->video.rateCode, false);
    Require(rate == nullptr || clip->Frames(*rate) >= 0, "no length is negative");
}

} // namespace nqp2::fuzz
