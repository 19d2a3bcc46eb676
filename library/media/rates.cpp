// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/rates.h"

#include "platform/case_fold.h"

#include <algorithm>
#include <cmath>

namespace nqp2::media {
namespace {

template <class Condition>
const FrameRate* FirstWith(Condition condition) {
    const auto* const found = std::find_if(kFrameRates.begin(), kFrameRates.end(), condition);
    return found == kFrameRates.end() ? nullptr : &*found;
}

} // namespace

const FrameRate* FindRate(std::wstring_view text) {
    return FirstWith(
        [text](const FrameRate& rate) { return platform::EqualNoCase(rate.text, text); });
}

const FrameRate* FindRate(const FrameRate& rate, bool interlaced) {
    const auto isNear = [&rate](const FrameRate& clipRate) {
        constexpr double kTolerance = 0.005;
        return std::fabs(clipRate.PerSecond() - rate.PerSecond()) < kTolerance;
    };
    const FrameRate* const exact = FirstWith([&](const FrameRate& clipRate) {
        return isNear(clipRate) && clipRate.IsInterlaced() == interlaced;
    });
    return exact != nullptr ? exact : FirstWith(isNear);
}

CString EditUnitText(const FrameRate& rate) {
    CString text;
    text.Format(L"%d/%d", rate.seconds, rate.frames);
    return text;
}

} // namespace nqp2::media

namespace nqp2 {
namespace {

int IndexOf(const FrameRate* rate) {
    return rate == nullptr ? 0 : static_cast<int>(rate - kFrameRates.data());
}

} // namespace

int RateIndexFromText(const CString& rate) noexcept {
    return IndexOf(media::FindRate(rate.View()));
}

int RateIndexFromFps(double fps) noexcept {
    // 23.98 is not looked for: kept, hosts rely on it. Frames a second tell no scan: where the
    // table has both, the interlaced rate comes first.
    const FrameRate* const found = media::FirstWith([fps](const FrameRate& rate) {
        constexpr double kTolerance = 0.001;
        const double inHundredths = std::round(rate.PerSecond() * 100) / 100;
        return rate.standard != VS_2398P && std::fabs(fps - inHundredths) < kTolerance;
    });
    return IndexOf(found);
}

eP2_VIDEO_STANDARD StandardFromRateIndex(int index) noexcept {
    const auto place = static_cast<std::size_t>(index);
    return place < kFrameRates.size() ? kFrameRates[place].standard : VS_50I;
}

} // namespace nqp2
