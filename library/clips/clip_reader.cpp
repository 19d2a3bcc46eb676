// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_reader.h"

#include "clips/clip_fields.h"
#include "media/card_layout.h"
#include "media/families.h"
#include "media/timecode.h"
#include "platform/diagnostics.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace nqp2::clips {
namespace {

constexpr const wchar_t* kClass50 = L"50";

// Channels that the reader of a named clip looks for.
constexpr int kNamedChannels = 4;

// The codecs that can be of class 50 for the scan; for the reader of a named clip the first alone.
constexpr const wchar_t* kClassCodecs[] = {
    L"AVC-I_1080/50i",    L"AVC-I_1080/25p",    L"AVC-I_720/50p",
    L"AVC-I_1080/59.94i", L"AVC-I_1080/29.97p", L"AVC-I_720/59.94p",
};

bool HasClass(const CString& codec) {
    return std::any_of(std::begin(kClassCodecs), std::end(kClassCodecs),
                       [&](const wchar_t* each) { return codec == each; });
}

std::uint64_t Bit(int number) {
    return std::uint64_t{1} << static_cast<unsigned>(number);
}

/// Bit 0 of the mask is the video, bit n the audio channel n-1.
void MarkIfPresent(_tag_P2Clip& clip, const CString& path, int bit) {
    if (!path.IsEmpty()) {
        clip.EssenceMask |= Bit(bit);
    }
}

CString AudioName(const CString& clipName, int channel) {
    static constexpr const wchar_t* kEndings[_tag_P2Clip::kAudioSlots] = {
        L"00.MXF", L"01.MXF", L"02.MXF", L"03.MXF", L"04.MXF", L"05.MXF", L"06.MXF", L"07.MXF"};
    return clipName + kEndings[channel];
}

/// The files that both readers look for in the same way.
void FindCompanions(EssenceLookup& essence, _tag_P2Clip& clip) {
    const CString& name = clip.ClipName;
    _tag_P2Proxy& proxy = clip.Proxy;
    constexpr int kMov = 2;
    proxy.ProxyExt = proxy.ProxyFormat == kMov ? media::kMovExtension : media::kMp4Extension;
    proxy.ProxyFilePath = essence.PathIfExists(media::kProxyFolder, name + proxy.ProxyExt);
    clip.ProxyPath = essence.PathIfExists(media::kProxyFolder, name + media::kMp4Extension);
    clip.IconPath = essence.PathIfExists(media::kIconFolder, name + media::kIconExtension);
    clip.XmlPath = essence.PathIfExists(media::kClipFolder, name + media::kXmlExtension);
}

void FindNamedEssence(EssenceLookup& essence, _tag_P2Clip& clip) {
    clip.VideoPath =
        essence.PathIfExists(media::kVideoFolder, clip.ClipName + media::kEssenceExtension);
    MarkIfPresent(clip, clip.VideoPath, 0);
    for (int channel = 0; channel < kNamedChannels; ++channel) {
        clip.AudioPath[channel] =
            essence.PathIfExists(media::kAudioFolder, AudioName(clip.ClipName, channel));
        MarkIfPresent(clip, clip.AudioPath[channel], channel + 1);
    }
}

/// Video and audio in one file.
void FindFamilyEssence(EssenceLookup& essence, int channels, _tag_P2Clip& clip) {
    clip.VideoPath =
        essence.PathIfExists(media::kAvClipFolder, clip.ClipName + media::kEssenceExtension);
    MarkIfPresent(clip, clip.VideoPath, 0);
    for (int channel = 0; channel < std::min(channels, _tag_P2Clip::kAudioSlots); ++channel) {
        clip.AudioPath[channel] = clip.VideoPath;
        MarkIfPresent(clip, clip.VideoPath, channel + 1);
    }
}

/// A file each. Nobody asks whether they exist, and the last channel gets no path: kept, hosts
/// rely on it. A name that could lead out of the card's folders makes no path at all.
void AssumeEssence(const EssenceLookup& essence, int channels, _tag_P2Clip& clip) {
    if (!media::IsPlainName(clip.ClipName)) {
        return;
    }
    clip.VideoPath =
        essence.Contents() + media::kVideoFolder + clip.ClipName + media::kEssenceExtension;
    clip.EssenceMask |= Bit(0);
    for (int channel = 0; channel < std::min(channels - 1, _tag_P2Clip::kAudioSlots); ++channel) {
        clip.AudioPath[channel] =
            essence.Contents() + media::kAudioFolder + AudioName(clip.ClipName, channel);
        clip.EssenceMask |= Bit(channel + 1);
    }
}

void ReadClass(const ClipTexts& texts, _tag_P2Clip& clip) {
    clip.CodecClass = texts.Attribute(ClipPath::Codec, media::kClassAttribute);
    clip.AvcIntraClass50 = HasClass(clip.CodecName) && clip.CodecClass == kClass50 ? 1 : 0;
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
    if (texts.Find(ClipPath::FrameRate) == nullptr) {
        platform::OutputDebugStringW(L"selectSingleNode Failed");
    }
    const CString flag = texts.Attribute(ClipPath::FrameRate, media::kDropFrameAttribute);
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
                    : static_cast<int>(texts.All(media::kAudioPath).size());
}

} // namespace

void ReadNamedClip(const ClipTexts& texts, EssenceLookup& essence, _tag_P2Clip& clip) {
    clip.ClipName = texts.Text(ClipPath::ClipName);
    ReadSharedFields(texts, clip);
    clip.AvcIntraClass50 = 0;
    if (clip.CodecName == kClassCodecs[0] &&
        texts.Attribute(ClipPath::Codec, media::kClassAttribute) == kClass50) {
        clip.AvcIntraClass50 = 1;
    }
    clip.ProxyVideoCodecName = texts.Text(ClipPath::ProxyVideoCodec);
    clip.EssenceMask = 0;
    FindCompanions(essence, clip);
    FindNamedEssence(essence, clip);
}

void ReadScannedClip(const ClipTexts& texts, EssenceLookup& essence, _tag_P2Clip& clip) {
    ReadSharedFields(texts, clip);
    clip.UnusedOffset = texts.Int32(ClipPath::UnusedOffset);
    const bool inFamily = media::FamilyOfCodec(clip.CodecName.View()) != media::CodecFamily::Other;
    ReadClass(texts, clip);
    if (inFamily) {
        ReadRaster(texts, clip);
    }
    ReadDropFrame(texts, inFamily, clip);
    ReadTimecode(texts, clip);
    clip.EssenceMask = 0;
    FindCompanions(essence, clip);
    const int channels = ChannelCount(texts, inFamily);
    if (inFamily) {
        FindFamilyEssence(essence, channels, clip);
    } else {
        AssumeEssence(essence, channels, clip);
    }
}

} // namespace nqp2::clips
