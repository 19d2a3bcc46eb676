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
    Require(!clip->stretches.empty(), "a clip lasts");
    Require(clip->stretches.size() * 14 <= input.size(), "every stretch stands in the file");
    Require(avchd::IsVideoCoding(clip->video.codingType), "a clip has a picture");
    Require(clip->audioChannels >= 0, "no number of channels is negative");
    const auto* rate = avchd::RateOf(clip->video.rateCode, false);
    Require(rate == nullptr || clip->Frames(*rate) >= 0, "no length is negative");
}

} // namespace nqp2::fuzz
