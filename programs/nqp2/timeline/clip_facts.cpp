// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/clip_facts.h"

#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string>
#include <string_view>

namespace nqp2::timeline {
namespace {

constexpr std::int32_t kMostLines = 8192;

/// Where the record does not tell the lines, the codec's name does: "AVC-I_720/50p".
std::int32_t LinesOf(const _tag_P2Clip& clip, const FrameRate& rate) {
    if (clip.ActiveLine > 0 && clip.ActiveLine <= kMostLines) {
        return clip.ActiveLine;
    }
    constexpr const wchar_t* kStandard[] = {L"DV25", L"DV50"};
    const bool isStandard =
        std::any_of(std::begin(kStandard), std::end(kStandard),
                    [&](const wchar_t* codec) { return clip.CodecName.Find(codec) == 0; });
    if (isStandard) {
        return rate.Is50Hz() ? 576 : 480;
    }
    return clip.CodecName.Find(L"_720") >= 0 ? 720 : 1080;
}

} // namespace

FrameRate RateOf(const _tag_P2Clip& clip) {
    const FrameRate* const rate = FindFrameRate(clip.FrameRate);
    return rate != nullptr ? *rate : FrameRate();
}

Raster RasterOf(const _tag_P2Clip& clip, const FrameRate& rate, CardKind kind) {
    const std::wstring_view codec = clip.CodecName.View();
    // Records of AVCHD have rates of frames alone, but at 50 Hz.
    const bool isInterlaced =
        rate.IsInterlaced() ||
        (kind == CardKind::Avchd && codec.ends_with(L'i') && rate.Nominal() <= 30);
    return {LinesOf(clip, rate), isInterlaced, !(clip.AspectRatio == L"4:3")};
}

std::int32_t BitsOf(const _tag_P2Clip& clip) {
    const std::string text = BytesFromText(clip.AudioBitsPerSample);
    std::int32_t bits = 0;
    std::from_chars(text.data(), text.data() + text.size(), bits);
    return bits > 0 ? bits : 16;
}

std::int64_t StartOfPictures(const _tag_P2Clip& clip, const FrameRate& rate) {
    // The clip numbers the frames that were shot, which a file may carry more than once.
    const FrameRate told = RateOf(clip);
    const std::int64_t frame = TimecodeFrame(ClipTimecode(clip), told, clip.DropFrame != 0);
    return frame < 0 ? 0 : Rescaled(frame, told, rate);
}

std::int64_t StartOfClip(const _tag_P2Clip& clip, const FrameRate& rate, CardKind kind) {
    // Editing systems find no timecode in transport streams.
    return kind == CardKind::Avchd ? 0 : StartOfPictures(clip, rate);
}

std::int64_t StartOfList(const tag_P2EDL& edit, const FrameRate& rate, bool dropFrame) {
    // The reader has counted the timecode by the whole frames of a second.
    const std::int64_t whole = rate.frames / rate.seconds;
    const std::int64_t frame = std::max(edit.StartTimecode, 0);
    const std::int64_t seconds = frame / whole;
    const std::string text = fmt::format("{:02}:{:02}:{:02}:{:02}", seconds / 3600,
                                         seconds / 60 % 60, seconds % 60, frame % whole);
    return std::max<std::int64_t>(TimecodeFrame(TextFromBytes(text), rate, dropFrame), 0);
}

std::map<CString, TakePlace> PlacesInTakes(const ScanReport& report) {
    std::map<CString, TakePlace> places;
    for (const Take& take : report.takes) {
        const std::int64_t count = take.segments.GetSize() + take.missing.GetSize();
        for (std::int64_t i = 0; i < take.segments.GetSize(); ++i) {
            const auto before =
                std::count_if(take.missing.begin(), take.missing.end(),
                              [i](const MissingSegment& gap) { return gap.before <= i; });
            places[CString(take.segments[i]).MakeUpper()] = {BytesFromText(take.topGlobalClipID),
                                                             i + before + 1, count, 0};
        }
    }
    return places;
}

} // namespace nqp2::timeline
