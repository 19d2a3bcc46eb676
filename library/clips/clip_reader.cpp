// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_reader.h"

#include "media/families.h"
#include "media/timecode.h"
#include "platform/diagnostics.h"

#include <cstdint>

namespace nqp2::clips {
namespace {

using media::ClassReader;

void ReadClass(const ClipTexts& texts, _tag_P2Clip& clip) {
    clip.CodecClass = texts.Attribute(ClipPath::Codec);
    clip.AvcIntraClass50 = media::LooksAtClass(ClassReader::Scan, clip.CodecName.View()) &&
                                   clip.CodecClass == media::kClass50
                               ? 1
                               : 0;
    if (media::NameCarriesClass(clip.CodecName.View())) {
        clip.CodecName = clip.CodecName + L"-" + clip.CodecClass + L"M";
    }
}

void ReadRaster(const ClipTexts& texts, _tag_P2Clip& clip) {
    constexpr std::int32_t kHdLines = 720;
    constexpr std::int32_t kHdPixels = 1280;
    constexpr std::int32_t kFullHdPixels = 1920;
    clip.ActivePixel = texts.Int32(ClipPath::ActivePixel);
    clip.ActiveLine = texts.Int32(ClipPath::ActiveLine);
    if (!texts.Text(ClipPath::BitDepth).IsEmpty()) {
        clip.BitDepth = texts.Int32(ClipPath::BitDepth);
    }
    if (clip.ActivePixel == 0) {
        clip.ActivePixel = clip.ActiveLine == kHdLines ? kHdPixels : kFullHdPixels;
    }
}

void ReadDropFrame(const ClipTexts& texts, bool inFamily, _tag_P2Clip& clip) {
    if (inFamily) {
        clip.DropFrame = texts.Text(ClipPath::TimecodeType) == L"NonDrop" ? 0 : 1;
        return;
    }
    if (!texts.Has(ClipPath::FrameRate)) {
        platform::OutputDebugStringW(L"selectSingleNode Failed");
    }
    const CString flag = texts.Attribute(ClipPath::FrameRate);
    if (flag == L"false" || flag == L"0") {
        clip.DropFrame = 0;
    }
}

void ReadTimecode(const ClipTexts& texts, _tag_P2Clip& clip) {
    const CString text = texts.Text(ClipPath::StartTimecode);
    if (!text.IsEmpty()) {
        clip.StartTimecode =
            media::ClipFrameCount(text.View(), clip.FrameRate.View(), clip.DropFrame != 0);
    }
}

int ChannelCount(const ClipTexts& texts, bool inFamily) {
    return inFamily ? texts.Int32(ClipPath::AudioChannel)
                    : static_cast<int>(texts.Count(ClipList::Audio));
}

} // namespace

void ReadNamedClip(const ClipTexts& texts, const EssenceLookup& essence, _tag_P2Clip& clip) {
    clip.ClipName = texts.Text(ClipPath::ClipName);
    ReadSharedFields(texts, clip);
    clip.AvcIntraClass50 = 0;
    if (media::LooksAtClass(ClassReader::First, clip.CodecName.View()) &&
        texts.Attribute(ClipPath::Codec) == media::kClass50) {
        clip.AvcIntraClass50 = 1;
    }
    clip.ProxyVideoCodecName = texts.Text(ClipPath::ProxyVideoCodec);
    FindNamedFiles(essence, clip);
}

void ReadScannedClip(const ClipTexts& texts, const EssenceLookup& essence, _tag_P2Clip& clip) {
    ReadSharedFields(texts, clip);
    clip.UnusedOffset = texts.Int32(ClipPath::UnusedOffset);
    const bool inFamily = media::FamilyOfCodec(clip.CodecName.View()) != media::CodecFamily::Other;
    ReadClass(texts, clip);
    if (inFamily) {
        ReadRaster(texts, clip);
    }
    ReadDropFrame(texts, inFamily, clip);
    ReadTimecode(texts, clip);
    FindScannedFiles(essence, inFamily, ChannelCount(texts, inFamily), clip);
}

} // namespace nqp2::clips
