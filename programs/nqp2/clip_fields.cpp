// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_fields.h"

#include "nqp2/field.h"

#include <string>
#include <utility>

namespace nqp2::tool {
namespace {

using Memo = _tag_P2Memo;
constexpr Field<Memo> kMemoFields[] = {
    {"Offset", Plain<&Memo::Offset>},
    {"Person", Plain<&Memo::Person>},
    {"Text", Plain<&Memo::Text>},
    {"VoiceFormat", Plain<&Memo::VoiceFormat>},
    {"VoiceSamplingRate", Plain<&Memo::VoiceSamplingRate>},
    {"VoiceBitsPerSample", Plain<&Memo::VoiceBitsPerSample>},
    {"VoiceChannelFlag", Plain<&Memo::VoiceChannelFlag>},
};

using Proxy = nqp2::P2Proxy;
constexpr Field<Proxy> kProxyFields[] = {
    {"ProxyFilePath", Path<&Proxy::ProxyFilePath>},
    {"ProxyFormat", Plain<&Proxy::ProxyFormat>},
    {"ProxyExt", Plain<&Proxy::ProxyExt>},
    {"ProxyAudioMask", Plain<&Proxy::ProxyAudioMask>},
    {"ProxyVideoCodec", Plain<&Proxy::ProxyVideoCodec>},
    {"ProxyVideoBitRate", Plain<&Proxy::ProxyVideoBitRate>},
    {"ProxyFrameRate", Plain<&Proxy::ProxyFrameRate>},
    {"ProxyResolution", Plain<&Proxy::ProxyResolution>},
    {"ProxyAspectRatio", Plain<&Proxy::ProxyAspectRatio>},
    {"ProxyAudioCodec", Plain<&Proxy::ProxyAudioCodec>},
    {"ProxyAudioBitRate", Plain<&Proxy::ProxyAudioBitRate>},
    {"ProxySamplingRate", Plain<&Proxy::ProxySamplingRate>},
    {"ProxyAudioChannels", Plain<&Proxy::ProxyAudioChannels>},
};

using Clip = _tag_P2Clip;

/// A scan's record keeps the moment of the clip before where the metadata have no start; shown is
/// that there is none.
Value ShootStartDays(const Clip& clip) {
    return clip.StartDate.IsEmpty() ? 0.0 : clip.ShootStartTime.GetDays();
}
Value ShootStartStatus(const Clip& clip) {
    return static_cast<std::int32_t>(clip.StartDate.IsEmpty() ? COleDateTime::null
                                                              : clip.ShootStartTime.GetStatus());
}
Value AudioPaths(const Clip& clip) {
    List paths;
    for (const CString& path : clip.AudioPath) {
        paths.emplace_back(RealPath(path));
    }
    return paths;
}
Value ProxyRecord(const Clip& clip) {
    return Fields(kProxyFields, clip.Proxy);
}
Record MemoRecord(const Memo& memo) {
    return Fields(kMemoFields, memo);
}
Value MemoRecords(const Clip& clip) {
    return SequenceOf(clip.Memos, MemoRecord);
}
Value ClipCodeType(const Clip& clip) {
    return CodeTypeRecord(CodeTypeOf(clip));
}
Value ClipStandard(const Clip& clip) {
    return StandardRecord(StandardOf(clip));
}

constexpr Field<Clip> kClipFields[] = {
    {"ShootStartTime", ShootStartDays},
    {"ShootStartTimeStatus", ShootStartStatus},
    {"GlobalClipGuid", Plain<&Clip::GlobalClipGuid>},
    {"GlobalClipID", Plain<&Clip::GlobalClipID>},
    {"CodecName", Plain<&Clip::CodecName>},
    {"ActivePixel", Plain<&Clip::ActivePixel>},
    {"ActiveLine", Plain<&Clip::ActiveLine>},
    {"BitDepth", Plain<&Clip::BitDepth>},
    {"ExtraPath", Path<&Clip::ExtraPath>},
    {"IconPath", Path<&Clip::IconPath>},
    {"VideoPath", Path<&Clip::VideoPath>},
    {"AudioPath", AudioPaths},
    {"XmlPath", Path<&Clip::XmlPath>},
    {"ProxyPath", Path<&Clip::ProxyPath>},
    {"ProxyVideoCodecName", Plain<&Clip::ProxyVideoCodecName>},
    {"Proxy", ProxyRecord},
    {"AvcIntraClass50", Plain<&Clip::AvcIntraClass50>},
    {"CodecClass", Plain<&Clip::CodecClass>},
    {"ClipIdDigit", Plain<&Clip::ClipIdDigit>},
    {"Reserved276", Plain<&Clip::Reserved276>},
    {"Duration", Plain<&Clip::Duration>},
    {"UnusedOffset", Plain<&Clip::UnusedOffset>},
    {"Reserved288", Plain<&Clip::Reserved288>},
    {"AudioStartByteOffset", Plain<&Clip::AudioStartByteOffset>},
    {"AudioDataSize", Plain<&Clip::AudioDataSize>},
    {"VideoStartByteOffset", Plain<&Clip::VideoStartByteOffset>},
    {"VideoDataSize", Plain<&Clip::VideoDataSize>},
    {"EssenceMask", Plain<&Clip::EssenceMask>},
    {"TopClipGuid", Plain<&Clip::TopClipGuid>},
    {"NextClipGuid", Plain<&Clip::NextClipGuid>},
    {"PreviousClipGuid", Plain<&Clip::PreviousClipGuid>},
    {"OffsetInShot", Plain<&Clip::OffsetInShot>},
    {"GlobalShotGuid", Plain<&Clip::GlobalShotGuid>},
    {"TopClipName", Plain<&Clip::TopClipName>},
    {"PreviousClipName", Plain<&Clip::PreviousClipName>},
    {"NextClipName", Plain<&Clip::NextClipName>},
    {"TopSerialNo", Plain<&Clip::TopSerialNo>},
    {"PreviousSerialNo", Plain<&Clip::PreviousSerialNo>},
    {"NextSerialNo", Plain<&Clip::NextSerialNo>},
    {"FrameRate", Plain<&Clip::FrameRate>},
    {"StartDate", Plain<&Clip::StartDate>},
    {"EndDate", Plain<&Clip::EndDate>},
    {"ClipName", Plain<&Clip::ClipName>},
    {"AspectRatio", Plain<&Clip::AspectRatio>},
    {"Memos", MemoRecords},
    {"AudioBitsPerSample", Plain<&Clip::AudioBitsPerSample>},
    {"UserClipName", Plain<&Clip::UserClipName>},
    {"StartTimecode", Plain<&Clip::StartTimecode>},
    {"DropFrame", Plain<&Clip::DropFrame>},
    {"SourceKind", Plain<&Clip::SourceKind>},
    {"CodeType", ClipCodeType},
    {"VideoStandard", ClipStandard},
};

Record EnumRecord(std::int32_t value, std::string name) {
    return {{"value", value}, {"name", std::move(name)}};
}

} // namespace

Record ClipRecord(const _tag_P2Clip& clip) {
    return Fields(kClipFields, clip);
}

eCodeType CodeTypeOf(const _tag_P2Clip& clip) {
    return CodeTypeFromCodec(clip.CodecName, clip.FrameRate, clip.AvcIntraClass50, clip.CodecClass);
}

eP2_VIDEO_STANDARD StandardOf(const _tag_P2Clip& clip) {
    return StandardFromRateIndex(RateIndexFromText(clip.FrameRate));
}

Record CodeTypeRecord(eCodeType type) {
    return EnumRecord(type, CodeTypeName(type));
}

Record StandardRecord(eP2_VIDEO_STANDARD standard) {
    return EnumRecord(standard, StandardName(standard));
}

} // namespace nqp2::tool
