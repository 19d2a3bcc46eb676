// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/metadata_paths.h"

#include "media/element_paths.h"

namespace nqp2::media {
namespace {

template <auto Group, auto Field>
CString& Member(ClipMetadata& metadata) {
    return metadata.*Group.*Field;
}

template <auto Neighbour, auto Field>
CString& Segment(ClipMetadata& metadata) {
    return metadata.relation.*Neighbour.*Field;
}

constexpr MetadataPath kPaths[] = {
    {"ClipMetadata/Access/Creator", Member<&ClipMetadata::access, &AccessMetadata::creator>},
    {"ClipMetadata/Access/CreationDate",
     Member<&ClipMetadata::access, &AccessMetadata::creationDate>},
    {"ClipMetadata/Access/LastUpdateDate",
     Member<&ClipMetadata::access, &AccessMetadata::lastUpdateDate>},
    {"ClipMetadata/Access/LastUpdatePerson",
     Member<&ClipMetadata::access, &AccessMetadata::lastUpdatePerson>},
    {"ClipMetadata/Device/Manufacturer",
     Member<&ClipMetadata::device, &DeviceMetadata::manufacturer>},
    {"ClipMetadata/Device/ModelName", Member<&ClipMetadata::device, &DeviceMetadata::modelName>},
    {"ClipMetadata/Device/SerialNo.", Member<&ClipMetadata::device, &DeviceMetadata::serialNo>},
    {"ClipMetadata/Shoot/Shooter", Member<&ClipMetadata::shoot, &ShootMetadata::shooter>},
    {Below(ClipPath::StartDate), Member<&ClipMetadata::shoot, &ShootMetadata::startDate>},
    {Below(ClipPath::EndDate), Member<&ClipMetadata::shoot, &ShootMetadata::endDate>},
    {"ClipMetadata/Shoot/Location/PlaceName", Member<&ClipMetadata::place, &PlaceMetadata::name>},
    {"ClipMetadata/Shoot/Location/Longitude",
     Member<&ClipMetadata::place, &PlaceMetadata::longitude>},
    {"ClipMetadata/Shoot/Location/Latitude",
     Member<&ClipMetadata::place, &PlaceMetadata::latitude>},
    {"ClipMetadata/Shoot/Location/Altitude",
     Member<&ClipMetadata::place, &PlaceMetadata::altitude>},
    {"ClipMetadata/Shoot/Location/Source", Member<&ClipMetadata::place, &PlaceMetadata::source>},
    {"ClipMetadata/Scenario/ProgramName",
     Member<&ClipMetadata::scenario, &ScenarioMetadata::programName>},
    {"ClipMetadata/Scenario/SceneNo.", Member<&ClipMetadata::scenario, &ScenarioMetadata::sceneNo>},
    {"ClipMetadata/Scenario/TakeNo.", Member<&ClipMetadata::scenario, &ScenarioMetadata::takeNo>},
    {"ClipMetadata/News/Reporter", Member<&ClipMetadata::news, &NewsMetadata::reporter>},
    {"ClipMetadata/News/Purpose", Member<&ClipMetadata::news, &NewsMetadata::purpose>},
    {"ClipMetadata/News/Object", Member<&ClipMetadata::news, &NewsMetadata::object>},
    {Below(ClipPath::OffsetInShot),
     Member<&ClipMetadata::relation, &RelationMetadata::offsetInShot>},
    {Below(ClipPath::GlobalShotID),
     Member<&ClipMetadata::relation, &RelationMetadata::globalShotID>},
    {Below(ClipPath::TopName), Segment<&RelationMetadata::top, &SegmentReference::clipName>},
    {Below(ClipPath::TopGlobalClipID),
     Segment<&RelationMetadata::top, &SegmentReference::globalClipID>},
    {Below(ClipPath::TopSerialNo), Segment<&RelationMetadata::top, &SegmentReference::serialNo>},
    {Below(ClipPath::PreviousName),
     Segment<&RelationMetadata::previous, &SegmentReference::clipName>},
    {Below(ClipPath::PreviousGlobalClipID),
     Segment<&RelationMetadata::previous, &SegmentReference::globalClipID>},
    {Below(ClipPath::PreviousSerialNo),
     Segment<&RelationMetadata::previous, &SegmentReference::serialNo>},
    {Below(ClipPath::NextName), Segment<&RelationMetadata::next, &SegmentReference::clipName>},
    {Below(ClipPath::NextGlobalClipID),
     Segment<&RelationMetadata::next, &SegmentReference::globalClipID>},
    {Below(ClipPath::NextSerialNo), Segment<&RelationMetadata::next, &SegmentReference::serialNo>},
    {Below(ClipPath::ProxyFormat), Member<&ClipMetadata::proxy, &ProxyMetadata::format>},
    {Below(ClipPath::ProxyVideoCodec), Member<&ClipMetadata::proxy, &ProxyMetadata::videoCodec>},
    {Below(ClipPath::ProxyVideoBitRate),
     Member<&ClipMetadata::proxy, &ProxyMetadata::videoBitRate>},
    {Below(ClipPath::ProxyFrameRate), Member<&ClipMetadata::proxy, &ProxyMetadata::frameRate>},
    {Below(ClipPath::ProxyResolution), Member<&ClipMetadata::proxy, &ProxyMetadata::resolution>},
    {Below(ClipPath::ProxyAspectRatio), Member<&ClipMetadata::proxy, &ProxyMetadata::aspectRatio>},
    {Below(ClipPath::ProxyAudioCodec), Member<&ClipMetadata::proxy, &ProxyMetadata::audioCodec>},
    {Below(ClipPath::ProxyAudioBitRate),
     Member<&ClipMetadata::proxy, &ProxyMetadata::audioBitRate>},
    {Below(ClipPath::ProxySamplingRate),
     Member<&ClipMetadata::proxy, &ProxyMetadata::samplingRate>},
    {"ClipMetadata/Thumbnail/FrameOffset",
     Member<&ClipMetadata::thumbnail, &ThumbnailMetadata::frameOffset>},
    {kIconFormatPath, Member<&ClipMetadata::thumbnail, &ThumbnailMetadata::format>},
    {"ClipMetadata/Thumbnail/Width", Member<&ClipMetadata::thumbnail, &ThumbnailMetadata::width>},
    {"ClipMetadata/Thumbnail/Height", Member<&ClipMetadata::thumbnail, &ThumbnailMetadata::height>},
};

} // namespace

std::span<const MetadataPath> MetadataPaths() {
    return kPaths;
}

} // namespace nqp2::media
