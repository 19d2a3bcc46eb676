// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_metadata_fields.h"

#include "nqp2/field.h"

namespace nqp2::tool {
namespace {

#define NQP2_FIELD(record, member) Field<record>(#member, Plain<&record::member>)
#define NQP2_PATH(record, member) Field<record>(#member, Path<&record::member>)

constexpr Field<AccessMetadata> kAccessFields[] = {
    NQP2_FIELD(AccessMetadata, creator),
    NQP2_FIELD(AccessMetadata, creationDate),
    NQP2_FIELD(AccessMetadata, lastUpdateDate),
    NQP2_FIELD(AccessMetadata, lastUpdatePerson),
};
constexpr Field<DeviceMetadata> kDeviceFields[] = {
    NQP2_FIELD(DeviceMetadata, manufacturer),
    NQP2_FIELD(DeviceMetadata, modelName),
    NQP2_FIELD(DeviceMetadata, serialNo),
};
constexpr Field<ShootMetadata> kShootFields[] = {
    NQP2_FIELD(ShootMetadata, shooter),
    NQP2_FIELD(ShootMetadata, startDate),
    NQP2_FIELD(ShootMetadata, endDate),
};
constexpr Field<PlaceMetadata> kPlaceFields[] = {
    NQP2_FIELD(PlaceMetadata, name),     NQP2_FIELD(PlaceMetadata, longitude),
    NQP2_FIELD(PlaceMetadata, latitude), NQP2_FIELD(PlaceMetadata, altitude),
    NQP2_FIELD(PlaceMetadata, source),
};
constexpr Field<ScenarioMetadata> kScenarioFields[] = {
    NQP2_FIELD(ScenarioMetadata, programName),
    NQP2_FIELD(ScenarioMetadata, sceneNo),
    NQP2_FIELD(ScenarioMetadata, takeNo),
};
constexpr Field<NewsMetadata> kNewsFields[] = {
    NQP2_FIELD(NewsMetadata, reporter),
    NQP2_FIELD(NewsMetadata, purpose),
    NQP2_FIELD(NewsMetadata, object),
};
constexpr Field<MemoMetadata> kTimedMemoFields[] = {
    NQP2_FIELD(MemoMetadata, offset),     NQP2_FIELD(MemoMetadata, person),
    NQP2_FIELD(MemoMetadata, text),       NQP2_PATH(MemoMetadata, voicePath),
    NQP2_PATH(MemoMetadata, picturePath),
};
constexpr Field<SegmentReference> kSegmentFields[] = {
    NQP2_FIELD(SegmentReference, clipName),
    NQP2_FIELD(SegmentReference, globalClipID),
    NQP2_FIELD(SegmentReference, serialNo),
};
constexpr Field<ProxyMetadata> kToldProxyFields[] = {
    NQP2_FIELD(ProxyMetadata, format),       NQP2_FIELD(ProxyMetadata, videoCodec),
    NQP2_FIELD(ProxyMetadata, videoBitRate), NQP2_FIELD(ProxyMetadata, frameRate),
    NQP2_FIELD(ProxyMetadata, resolution),   NQP2_FIELD(ProxyMetadata, aspectRatio),
    NQP2_FIELD(ProxyMetadata, audioCodec),   NQP2_FIELD(ProxyMetadata, audioBitRate),
    NQP2_FIELD(ProxyMetadata, samplingRate),
};
constexpr Field<ThumbnailMetadata> kThumbnailFields[] = {
    NQP2_FIELD(ThumbnailMetadata, frameOffset),
    NQP2_FIELD(ThumbnailMetadata, format),
    NQP2_FIELD(ThumbnailMetadata, width),
    NQP2_FIELD(ThumbnailMetadata, height),
};
constexpr Field<TrackMetadata> kTrackFields[] = {
    NQP2_FIELD(TrackMetadata, kind),
    NQP2_FIELD(TrackMetadata, codec),
    NQP2_FIELD(TrackMetadata, language),
    NQP2_FIELD(TrackMetadata, format),
};

/// A member that is a list of records with that table of fields.
template <auto Member, const auto& Fields, class Source>
void ListOfMembers(ValueSink& sink, const Source& source) {
    sink.BeginList(ListOf::Records);
    for (const auto& each : source.*Member) {
        PutFields(sink, Fields, each);
    }
    sink.EndList();
}

void PutTexts(ValueSink& sink, const ClipMetadata& metadata) {
    sink.BeginList(ListOf::Records);
    for (const MetadataText& each : metadata.others) {
        sink.PutPair({"path", "text"}, each.path, each.text);
    }
    sink.EndList();
}

constexpr Field<RelationMetadata> kRelationFields[] = {
    NQP2_FIELD(RelationMetadata, offsetInShot),
    NQP2_FIELD(RelationMetadata, globalShotID),
    {"top", Members<&RelationMetadata::top, kSegmentFields>},
    {"previous", Members<&RelationMetadata::previous, kSegmentFields>},
    {"next", Members<&RelationMetadata::next, kSegmentFields>},
};

constexpr Field<ClipMetadata> kMetadataFields[] = {
    {"access", Members<&ClipMetadata::access, kAccessFields>},
    {"device", Members<&ClipMetadata::device, kDeviceFields>},
    {"shoot", Members<&ClipMetadata::shoot, kShootFields>},
    {"place", Members<&ClipMetadata::place, kPlaceFields>},
    {"scenario", Members<&ClipMetadata::scenario, kScenarioFields>},
    {"news", Members<&ClipMetadata::news, kNewsFields>},
    {"memos", ListOfMembers<&ClipMetadata::memos, kTimedMemoFields>},
    {"relation", Members<&ClipMetadata::relation, kRelationFields>},
    {"proxy", Members<&ClipMetadata::proxy, kToldProxyFields>},
    {"thumbnail", Members<&ClipMetadata::thumbnail, kThumbnailFields>},
    {"tracks", ListOfMembers<&ClipMetadata::tracks, kTrackFields>},
    {"others", PutTexts},
    NQP2_FIELD(ClipMetadata, isCut),
};

#undef NQP2_FIELD
#undef NQP2_PATH

} // namespace

void PutMetadata(ValueSink& sink, const ClipMetadata& metadata) {
    PutFields(sink, kMetadataFields, metadata);
}

} // namespace nqp2::tool
