// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/base_clip.h"

#include "media/timecode.h"

#include <algorithm>
#include <cstdint>

namespace nqp2::avchd {
namespace {

/// DV in camera files goes by its coder's name; the rate tells which of our two names it is.
CString CodecOf(const NQP2BaseClipInfo& base) {
    if (base.codec.CompareNoCase(L"DVSD") != 0) {
        return base.codec;
    }
    const bool is50 = base.text1.Left(2) == L"50" || base.text1.Left(2) == L"25";
    return is50 ? L"DV25_420" : L"DV25_411";
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
    clip.DropFrame = media::ClipTimecodeRate(base.text1.View(), true).droppedNumbers != 0 ? 1 : 0;
    FillEssence(base, path, clip);
}

} // namespace nqp2::avchd
