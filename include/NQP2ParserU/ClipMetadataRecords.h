// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"

#include <cstdint>

namespace nqp2 {

// Texts stand as in the file, "" where it has none. Dates carry their time zone; coordinates are
// decimal degrees and metres as the camera wrote them.

struct AccessMetadata {
    CString creator;
    CString creationDate;
    CString lastUpdateDate;
    CString lastUpdatePerson;
};

struct DeviceMetadata {
    CString manufacturer;
    CString modelName;
    CString serialNo;
};

struct ShootMetadata {
    CString shooter;
    CString startDate;
    CString endDate;
};

struct PlaceMetadata {
    CString name;
    CString longitude;
    CString latitude;
    CString altitude;
    CString source; ///< who told the position
};

struct ScenarioMetadata {
    CString programName;
    CString sceneNo;
    CString takeNo;
};

struct NewsMetadata {
    CString reporter;
    CString purpose;
    CString object;
};

/// A text memo, or a mark or chapter of an AVCHD playlist.
struct MemoMetadata {
    std::int32_t offset = 0; ///< frames from the clip's start
    CString person;
    CString text;
    CString voicePath;   ///< interface path of its voice recording, when the card has it
    CString picturePath; ///< interface path of the picture that it names, when the card has it
};

/// A segment of a take, as a clip's metadata name it.
struct SegmentReference {
    CString clipName;
    CString globalClipID;
    CString serialNo; ///< of the card that holds it
};

struct RelationMetadata {
    CString offsetInShot; ///< frames
    CString globalShotID;
    SegmentReference top;
    SegmentReference previous;
    SegmentReference next;
};

/// The clip's small copy, as its metadata describe it: of several sound channels the first.
struct ProxyMetadata {
    CString format;
    CString videoCodec;
    CString videoBitRate;
    CString frameRate;
    CString resolution;
    CString aspectRatio;
    CString audioCodec;
    CString audioBitRate;
    CString samplingRate;
};

struct ThumbnailMetadata {
    CString frameOffset;
    CString format;
    CString width;
    CString height;
};

/// A stream of sound or picture, as files tell of it that describe their streams one by one.
struct TrackMetadata {
    CString kind;  ///< "video", "audio", "subtitle"
    CString codec; ///< as the field's standard calls it: "AC-3"
    CString language;
    CString format; ///< raster or channels, and rate
};

/// A text of the file that has no member of its own.
struct MetadataText {
    /// Names from the file's root, without prefixes, with "/" between them; "@" before an
    /// attribute's name; "[2]" behind a name for the second of its kind in its parent, and so on.
    /// Each stretch of text between elements stands by itself, under the path of the element
    /// around it.
    CString path;
    CString text;
};

/// Everything that a clip's own files tell beside its record.
struct ClipMetadata {
    AccessMetadata access;
    DeviceMetadata device;
    ShootMetadata shoot;
    PlaceMetadata place;
    ScenarioMetadata scenario;
    NewsMetadata news;
    CArray<MemoMetadata> memos;
    RelationMetadata relation;
    ProxyMetadata proxy;
    ThumbnailMetadata thumbnail;
    CArray<TrackMetadata> tracks;
    CArray<MetadataText> others;
    bool isCut = false; ///< there was more than a file of its size may give
};

enum class MetadataStatus : std::int32_t {
    Read,
    NoFile,     ///< the clip has no file that could tell
    Unreadable, ///< cannot be opened, read or understood
};

} // namespace nqp2
