// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/messages.h"
#include "bridge/wire.h"
#include "NQP2ParserU/ClipListRecords.h"
#include "NQP2ParserU/ClipMetadataRecords.h"
#include "NQP2ParserU/NQP2BaseClipInfo.h"
#include "NQP2ParserU/R8P2TransInfo.h"
#include "NQP2ParserU/Rewrap.h"

/// The wire order of the records that travel inside messages, and of those that hosts exchange.
namespace nqp2::bridge {

template <class Archive, RecordOf<tag_NQFileFormatEx> Self>
void Describe(Archive& archive, Self& format) {
    archive(format.fileType, format.codeType, format.width, format.height);
    archive(format.rateScale, format.rate, format.interlaced, format.topFieldFirst);
    archive(format.aspectWidth, format.aspectHeight, format.videoBitRate);
    archive(format.audioFormat, format.audioChannels, format.audioRate, format.audioBits);
    archive(format.flags);
}

template <class Archive, RecordOf<stu_R8PRelationClipInfo> Self>
void Describe(Archive& archive, Self& clip) {
    archive(clip.value1, clip.value2, clip.value3, clip.identifier1, clip.identifier2);
    archive(clip.text1, clip.text2, clip.text3);
}

template <class Archive, RecordOf<TaggedText> Self>
void Describe(Archive& archive, Self& tagged) {
    archive(tagged.value1, tagged.text, tagged.value2);
}

template <class Archive, RecordOf<DescribedIdentifier> Self>
void Describe(Archive& archive, Self& described) {
    archive(described.text, described.value1, described.value2, described.value3);
    archive(described.identifier);
}

/// Text 4 travels ahead of the numbers. Kept, workers rely on it: the size figure leaves out both
/// tables, and the number behind each of them and behind the identifier, although they travel.
template <class Archive, RecordOf<stu_R8P2TransInfo> Self>
void Describe(Archive& archive, Self& info) {
    archive(info.text1, info.text2, info.text3, info.text4);
    archive(info.value1, info.value2, info.value3, info.value4, info.value5, info.value6);
    archive(info.value7, info.value8, info.value9, info.value10, info.value11, info.size1);
    archive(info.value12, info.value13, info.size2, info.value14, info.value15);
    archive.Uncounted(info.taggedTexts1, info.value16);
    archive(info.describedIdentifier);
    archive.Uncounted(info.value17);
    archive(info.size3, info.size4, info.size5, info.size6, info.relatedClips, info.value18);
    archive(info.format1, info.format2, info.value19, info.value20);
    archive(info.format3, info.format4, info.format5, info.format6, info.format7);
    archive.Uncounted(info.taggedTexts2, info.value21);
    archive(info.text5, info.value22);
}

template <class Archive, RecordOf<NQP2BaseClipInfo> Self>
void Describe(Archive& archive, Self& info) {
    archive(info.clipText1, info.identifier, info.clipText2);
    archive(info.value1, info.value2, info.value3);
    archive(info.codec, info.text1, info.text2, info.text3, info.texts, info.clipText3);
    archive(info.value4);
}

template <class Archive, RecordOf<PictureRecord> Self>
void Describe(Archive& archive, Self& picture) {
    archive(picture.problem);
    archive.Run(picture.data, picture.length);
}

template <class Archive, RecordOf<TrackMetadata> Self>
void Describe(Archive& archive, Self& track) {
    archive(track.kind, track.codec, track.language, track.format);
}

template <class Archive, RecordOf<MetadataText> Self>
void Describe(Archive& archive, Self& text) {
    archive(text.path, text.text);
}

template <class Archive, RecordOf<RewrapPart> Self>
void Describe(Archive& archive, Self& part) {
    archive(part.name, part.video, part.sounds, part.first, part.frames, part.promised);
}

template <class Archive, RecordOf<RewrapChapter> Self>
void Describe(Archive& archive, Self& chapter) {
    archive(chapter.frame, chapter.text);
}

template <class Archive, RecordOf<RewrapRequest> Self>
void Describe(Archive& archive, Self& request) {
    archive(request.target, request.container, request.join, request.oneTrack, request.codec);
    archive(request.rate.frames, request.rate.seconds, request.interlaced);
    archive(request.aspectWidth, request.aspectHeight, request.timecode);
    archive(request.title, request.reel, request.date, request.parts, request.chapters);
}

template <class Archive, RecordOf<RewrapResult> Self>
void Describe(Archive& archive, Self& result) {
    archive(result.bytes, result.frames, result.samples, result.soundTracks, result.remarks);
}

template <class Archive, RecordOf<_BLCLIP> Self>
void Describe(Archive& archive, Self& clip) {
    archive(clip.text1, clip.text2, clip.text3, clip.text4, clip.text5, clip.text6);
    archive(clip.value1, clip.value2, clip.value3, clip.value4, clip.value5, clip.value6);
    archive(clip.value7, clip.value8, clip.value9);
    archive(clip.text7, clip.text8, clip.text9, clip.value10, clip.text10);
    archive(clip.value11, clip.value12, clip.value13, clip.text11);
}

template <class Archive, RecordOf<_NQBRDBROKENPOINT> Self>
void Describe(Archive& archive, Self& point) {
    archive(point.first, point.second);
}

} // namespace nqp2::bridge
