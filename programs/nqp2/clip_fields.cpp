// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_fields.h"

#include "nqp2/field.h"

#include <cstdint>
#include <string>
#include <string_view>

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
void PutShootStartDays(ValueSink& sink, const Clip& clip) {
    sink.Put(clip.StartDate.IsEmpty() ? 0.0 : clip.ShootStartTime.GetDays());
}
void PutShootStartStatus(ValueSink& sink, const Clip& clip) {
    const auto status =
        clip.StartDate.IsEmpty() ? COleDateTime::null : clip.ShootStartTime.GetStatus();
    sink.Put(std::int64_t{status});
}
void PutMemos(ValueSink& sink, const Clip& clip) {
    sink.BeginList(ListOf::Records);
    for (const Memo& memo : clip.Memos) {
        PutFields(sink, kMemoFields, memo);
    }
    sink.EndList();
}
void PutEnum(ValueSink& sink, std::int32_t value, const std::string& name) {
    sink.BeginRecord();
    sink.Name("value");
    sink.Put(std::int64_t{value});
    sink.Name("name");
    sink.Put(std::string_view(name));
    sink.EndRecord();
}
void PutCodeType(ValueSink& sink, const Clip& clip) {
    const eCodeType type = CodeTypeOf(clip);
    PutEnum(sink, type, CodeTypeName(type));
}
void PutStandard(ValueSink& sink, const Clip& clip) {
    const eP2_VIDEO_STANDARD standard = StandardOf(clip);
    PutEnum(sink, standard, StandardName(standard));
}

constexpr Field<Clip> kClipFields[] = {
    {"ShootStartTime", PutShootStartDays},
    {"ShootStartTimeStatus", PutShootStartStatus},
    {"GlobalClipGuid", Plain<&Clip::GlobalClipGuid>},
    {"GlobalClipID", Plain<&Clip::GlobalClipID>},
    {"CodecName", Plain<&Clip::CodecName>},
    {"ActivePixel", Plain<&Clip::ActivePixel>},
    {"ActiveLine", Plain<&Clip::ActiveLine>},
    {"BitDepth", Plain<&Clip::BitDepth>},
    {"ExtraPath", Path<&Clip::ExtraPath>},
    {"IconPath", Path<&Clip::IconPath>},
    {"VideoPath", Path<&Clip::VideoPath>},
    {"AudioPath", Path<&Clip::AudioPath>},
    {"XmlPath", Path<&Clip::XmlPath>},
    {"ProxyPath", Path<&Clip::ProxyPath>},
    {"ProxyVideoCodecName", Plain<&Clip::ProxyVideoCodecName>},
    {"Proxy", Members<&Clip::Proxy, kProxyFields>},
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
    {"Memos", PutMemos},
    {"AudioBitsPerSample", Plain<&Clip::AudioBitsPerSample>},
    {"UserClipName", Plain<&Clip::UserClipName>},
    {"StartTimecode", Plain<&Clip::StartTimecode>},
    {"DropFrame", Plain<&Clip::DropFrame>},
    {"SourceKind", Plain<&Clip::SourceKind>},
    {"CodeType", PutCodeType},
    {"VideoStandard", PutStandard},
};

} // namespace

void PutClip(ValueSink& sink, const _tag_P2Clip& clip) {
    PutFields(sink, kClipFields, clip);
}

void PutClipMembers(ValueSink& sink, const _tag_P2Clip& clip) {
    PutMembers(sink, kClipFields, clip);
}

void PutClipOfCard(ValueSink& sink, const std::string& card, const _tag_P2Clip& clip) {
    sink.BeginRecord();
    sink.Name("Card");
    sink.Put(std::string_view(card));
    PutClipMembers(sink, clip);
    sink.EndRecord();
}

// Where texts are is told by the record, which is asked for one clip earlier.
void FetchAhead(const ClipOrder& clips, std::size_t index, std::size_t step) {
    if (index + 2 * step < clips.size()) {
        FetchObject(*clips[index + 2 * step]);
    }
    if (index + step < clips.size()) {
        FetchFields(kClipFields, *clips[index + step]);
    }
}

eCodeType CodeTypeOf(const _tag_P2Clip& clip) {
    return CodeTypeFromCodec(clip.CodecName, clip.FrameRate, clip.AvcIntraClass50, clip.CodecClass);
}

eP2_VIDEO_STANDARD StandardOf(const _tag_P2Clip& clip) {
    return StandardFromRateIndex(RateIndexFromText(clip.FrameRate));
}

Content CodeTypeRecord(eCodeType type) {
    return [type](ValueSink& sink) { PutEnum(sink, type, CodeTypeName(type)); };
}

Content StandardRecord(eP2_VIDEO_STANDARD standard) {
    return [standard](ValueSink& sink) { PutEnum(sink, standard, StandardName(standard)); };
}

} // namespace nqp2::tool
