// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"

#include <cstdint>

namespace nqp2 {

// Texts stand as in the file, "" where it has none. Dates carry their time zone; coordinates are
// decimal degrees and metres as the camera wrote them.

/// Who made the clip's entry and who changed it last, and when (ISO 8601).
struct AccessMetadata {
    CString creator;          ///< who made it: the name that the camera was given
    CString creationDate;     ///< when it was made
    CString lastUpdateDate;   ///< when it was changed last
    CString lastUpdatePerson; ///< who changed it last
};

/// What it was recorded with.
struct DeviceMetadata {
    CString manufacturer; ///< "Panasonic"
    CString modelName;    ///< "AJ-HPX3700"
    CString serialNo;     ///< the device's own number
};

/// Who recorded it and when (ISO 8601).
struct ShootMetadata {
    CString shooter;   ///< camera operator
    CString startDate; ///< of the first frame
    CString endDate;   ///< of the last frame
};

/// Where it was recorded, as a receiver told it or a person.
struct PlaceMetadata {
    CString name;      ///< in words
    CString longitude; ///< degrees: "E009.9937" on P2 cards, else a number, negative to the west
    CString latitude;  ///< degrees: "N53.5511" on P2 cards, else a number, negative to the south
    CString altitude;  ///< metres
    CString source;    ///< who told the position: "GPS"
};

/// What of a script it shows.
struct ScenarioMetadata {
    CString programName; ///< of the production
    CString sceneNo;     ///< as in the script
    CString takeNo;      ///< try at the scene; no segment of a take
};

/// Who reports about what.
struct NewsMetadata {
    CString reporter; ///< name
    CString purpose;  ///< occasion
    CString object;   ///< what is shown
};

/// A text memo, or a mark or chapter of an AVCHD playlist.
struct MemoMetadata {
    std::int32_t offset = 0; ///< frames from the clip's start
    CString person;          ///< author
    CString text;            ///< what is noted
    CString voicePath;       ///< interface path of its voice recording, when the card has it
    CString picturePath;     ///< interface path of the picture that it names, when the card has it
};

/// A segment of a take, as a clip's metadata name it.
struct SegmentReference {
    CString clipName;     ///< its file's title
    CString globalClipID; ///< UMID (SMPTE ST 330) in hexadecimal digits
    CString serialNo;     ///< of the card that holds it
};

/// The clip's place in a take; each segment names its neighbours.
struct RelationMetadata {
    CString offsetInShot;      ///< frames
    CString globalShotID;      ///< identifier that all segments of the take share
    SegmentReference top;      ///< the first segment
    SegmentReference previous; ///< the one before
    SegmentReference next;     ///< the one behind
};

/// The clip's small copy, as its metadata describe it: of several sound channels the first.
struct ProxyMetadata {
    CString format;       ///< container, "MP4"
    CString videoCodec;   ///< "AVC", "MPEG-4"
    CString videoBitRate; ///< bits a second
    CString frameRate;    ///< "29.97p"
    CString resolution;   ///< "640x360", "QVGA"
    CString aspectRatio;  ///< "16:9"
    CString audioCodec;   ///< "AAC", "LPCM"
    CString audioBitRate; ///< bits a second
    CString samplingRate; ///< samples a second
};

/// The clip's icon, as its metadata describe it.
struct ThumbnailMetadata {
    CString frameOffset; ///< the frame that it shows, from the clip's start
    CString format;      ///< "BMP"
    CString width;       ///< pixels
    CString height;      ///< pixels
};

/// A stream of sound or picture, as files tell of it that describe their streams one by one.
struct TrackMetadata {
    CString kind;     ///< "video", "audio", "subtitle"
    CString codec;    ///< as the field's standard calls it: "AC-3"
    CString language; ///< as the file has it, mostly a code of ISO 639
    CString format;   ///< raster or channels, and rate
};

/// A text of the file that has no member of its own.
struct MetadataText {
    /// Names from the file's root, without prefixes, with "/" between them; "@" before an
    /// attribute's name; "[2]" behind a name for the second of its kind in its parent, and so on.
    /// Each stretch of text between elements stands by itself, under the path of the element
    /// around it.
    CString path;
    CString text; ///< as in the file
};

/// Everything that a clip's own files tell beside its record.
struct ClipMetadata {
    AccessMetadata access;        ///< who made and changed the entry, and when
    DeviceMetadata device;        ///< camera or recorder
    ShootMetadata shoot;          ///< who recorded it, and when
    PlaceMetadata place;          ///< where it was recorded
    ScenarioMetadata scenario;    ///< what of a script it shows
    NewsMetadata news;            ///< reporter and subject
    CArray<MemoMetadata> memos;   ///< in the order of the file, for AVCHD the playlist's
    RelationMetadata relation;    ///< neighbours in a take
    ProxyMetadata proxy;          ///< the small copy
    ThumbnailMetadata thumbnail;  ///< the icon
    CArray<TrackMetadata> tracks; ///< in the file's order; none for P2 clips
    CArray<MetadataText> others;  ///< in the file's order
    bool isCut = false;           ///< there was more than a file of its size may give
};

/// What became of reading a clip's metadata.
enum class MetadataStatus : std::int32_t {
    Read,       ///< the metadata are there
    NoFile,     ///< the clip has no file that could tell
    Unreadable, ///< cannot be opened, read or understood
};

} // namespace nqp2
