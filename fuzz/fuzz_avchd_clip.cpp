// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Any bytes as AVCHD clip information.

#include "avchd/clip_information.h"
#include "fuzz/measured_input.h"
#include "fuzz/require.h"

#include <cstddef>
#include <cstdint>

int nqp2::fuzz::TestInput(const std::uint8_t* data, std::size_t size) {
    using nqp2::fuzz::Require;
    const auto clip = nqp2::avchd::DecodeClipInformation({data, size});
    if (!clip) {
        return 0;
    }
    Require(!clip->stretches.empty(), "a clip lasts");
    Require(clip->stretches.size() * 14 <= size, "every stretch stands in the file");
    Require(nqp2::avchd::IsVideoCoding(clip->video.codingType), "a clip has a picture");
    Require(clip->audioChannels >= 0, "no number of channels is negative");
    const auto* rate = nqp2::avchd::RateOf(clip->video.rateCode, false);
    Require(rate == nullptr || clip->Frames(*rate) >= 0, "no length is negative");
    return 0;
}
