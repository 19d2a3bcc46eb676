// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/base_clip.h"

#include "media/timecode.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace nqp2::avchd {
namespace {

/// How camera files call a coder of DV, and our names for its pictures at the two families of rates.
struct DvName {
    const wchar_t* inFile;
    const wchar_t* at50;
    const wchar_t* at60;
};
constexpr DvName kDvNames[] = {
    {L"DVSD", L"DV25_420", L"DV25_411"},
    {L"DVC", L"DV25_420", L"DV25_411"},
    {L"DVCP", L"DV25_420", L"DV25_411"},
    {L"DVPP", L"DV25_411", L"DV25_411"},
    {L"DV5P", L"DV50_422", L"DV50_422"},
    {L"DV5N", L"DV50_422", L"DV50_422"},
    {L"DVHQ", L"DV100_720/50p", L"DV100_720/59.94p"},
    {L"DVHP", L"DV100_720/50p", L"DV100_720/59.94p"},
    {L"DVH2", L"DV100_1080/50i", L"DV100_1080/59.94i"},
    {L"DVH3", L"DV100_1080/50i", L"DV100_1080/59.94i"},
    {L"DVH5", L"DV100_1080/50i", L"DV100_1080/59.94i"},
    {L"DVH6", L"DV100_1080/50i", L"DV100_1080/59.94i"},
};

/// The coder's name as clips have it; other coders keep the name that their files give them.
CString CodecOf(const NQP2BaseClipInfo& base) {
    const auto* const found =
        std::find_if(std::begin(kDvNames), std::end(kDvNames),
                     [&](const DvName& row) { return base.codec.CompareNoCase(row.inFile) == 0; });
    if (found == std::end(kDvNames)) {
        return base.codec;
    }
    const bool is50 = base.text1.Left(2) == L"50" || base.text1.Left(2) == L"25";
    return is50 ? found->at50 : found->at60;
}

/// Counts of frames travel in 64 bits, of which the lower half counts.
std::int32_t LowHalf(std::int64_t value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

void FillEssence(const NQP2BaseClipInfo& base, const CString& path, _tag_P2Clip& clip) {
    clip.VideoPath = base.text3.IsEmpty() ? path : base.text3;
    clip.EssenceMask = 1;
    const std::int64_t count =
        std::min<std::int64_t>(base.texts.GetSize(), _tag_P2Clip::kAudioSlots);
    for (std::int64_t i = 0; i < count; ++i) {
        clip.AudioPath[i] = base.texts[i];
        clip.EssenceMask |=
            clip.AudioPath[i].IsEmpty() ? 0 : std::uint64_t{2} << static_cast<unsigned>(i);
    }
}

} // namespace

void FillFromBase(const NQP2BaseClipInfo& base, const CString& path, _tag_P2Clip& clip) {
    clip.SourceKind = 1;
    clip.ClipName = base.clipText1;
    clip.UserClipName = base.clipText3.IsEmpty() ? base.clipText1 : base.clipText3;
    clip.GlobalClipGuid = base.identifier;
    clip.StartDate = base.clipText2;
    clip.Duration = LowHalf(base.value2);
    clip.StartTimecode = LowHalf(base.value3);
    clip.CodecName = CodecOf(base);
    clip.FrameRate = base.text1;
    clip.AspectRatio = base.text2;
    clip.ActivePixel = base.value4 & 0xFFFF;
    clip.ActiveLine = base.value4 >> 16;
    clip.DropFrame = media::CanDropFrames(base.text1.View()) ? 1 : 0;
    FillEssence(base, path, clip);
}

} // namespace nqp2::avchd
