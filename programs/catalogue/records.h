// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/columns.h"

#include <cstdint>
#include <string>
#include <vector>

/// What the catalogue keeps. Numbers that stand for a truth are 0 or 1; texts are UTF-8, "" where
/// nothing is known; times are seconds since 1970 UTC.
namespace nqp2::catalogue {

/// A card or a copy of one, wherever it is.
struct CardRecord {
    std::int64_t id = 0;
    std::string mediumKey;  ///< what it lies on, however that is mounted
    std::int64_t epoch = 1; ///< counts the contents of the same medium that have no clip in common
    std::string kind;       ///< "p2", "avchd", "camera"
    std::int64_t isMedium = 0; ///< it has a volume of its own: a card, not a copy in a folder
    std::string serial;        ///< as its clips tell it
    std::string volume;        ///< serial number of its volume
    std::string volumeLabel;
    std::string label; ///< on the shelf
    std::string host;
    std::string place;    ///< path there, when it was seen last; see StoredPath
    std::string contents; ///< digest of the identifiers of its clips
    std::string state;    ///< digest of all paths, sizes and times below it
    std::int64_t clips = 0;
    std::int64_t bytes = 0;
    std::int64_t added = 0;
    std::int64_t changed = 0; ///< when it was read last
    std::int64_t seen = 0;
};

inline constexpr Column<CardRecord> kCardColumns[] = {
    {"medium_key", &CardRecord::mediumKey},
    {"epoch", &CardRecord::epoch},
    {"kind", &CardRecord::kind},
    {"is_medium", &CardRecord::isMedium},
    {"serial", &CardRecord::serial},
    {"volume", &CardRecord::volume},
    {"volume_label", &CardRecord::volumeLabel},
    {"label", &CardRecord::label},
    {"host", &CardRecord::host},
    {"place", &CardRecord::place},
    {"contents", &CardRecord::contents},
    {"state", &CardRecord::state},
    {"clips", &CardRecord::clips},
    {"bytes", &CardRecord::bytes},
    {"added", &CardRecord::added},
    {"changed", &CardRecord::changed},
    {"seen", &CardRecord::seen},
};

/// A clip, one for all cards that have it.
struct ClipRecord {
    std::string identity; ///< global identifier in capital letters, or what stands for one
    std::string name;
    std::string title;
    std::string start; ///< as IsoDate writes it: local time, with its zone where that is told
    std::int64_t frames = 0;
    std::int64_t milliseconds = 0;
    std::string rate;
    std::string codec;
    std::string timecode;
    std::string manufacturer;
    std::string camera;
    std::string cameraSerial;
    std::string programme;
    std::string scene;
    std::string take;
    std::string place;
    std::string latitude;
    std::string longitude;
    std::string people; ///< lines, as memos
    std::string memos;
    std::string words; ///< all that is searched, see words.h
};

inline constexpr Column<ClipRecord> kClipColumns[] = {
    {"identity", &ClipRecord::identity},   {"name", &ClipRecord::name},
    {"title", &ClipRecord::title},         {"start", &ClipRecord::start},
    {"frames", &ClipRecord::frames},       {"milliseconds", &ClipRecord::milliseconds},
    {"rate", &ClipRecord::rate},           {"codec", &ClipRecord::codec},
    {"timecode", &ClipRecord::timecode},   {"manufacturer", &ClipRecord::manufacturer},
    {"camera", &ClipRecord::camera},       {"camera_serial", &ClipRecord::cameraSerial},
    {"programme", &ClipRecord::programme}, {"scene", &ClipRecord::scene},
    {"take", &ClipRecord::take},           {"place", &ClipRecord::place},
    {"latitude", &ClipRecord::latitude},   {"longitude", &ClipRecord::longitude},
    {"people", &ClipRecord::people},       {"memos", &ClipRecord::memos},
    {"words", &ClipRecord::words},
};

/// A clip as one card has it, and what it says of the take that it is a part of.
struct HoldingRecord {
    std::int64_t clip = 0;
    std::string name;       ///< of its files on the card
    std::string stamp;      ///< digest of sizes and times of its files
    std::string identifier; ///< global identifier as it is written
    std::int64_t bytes = 0;
    std::int64_t fileGaps = 0;    ///< files that are missing, empty or short
    std::int64_t segmentGaps = 0; ///< segments of its take that the card does not have
    std::int64_t isIngested = 0;
    std::int64_t offsetInShot = 0;
    std::string topIdentity;
    std::string topName;
    std::string topSerial;
    std::string previousIdentity;
    std::string previousName;
    std::string previousSerial;
    std::string nextIdentity;
    std::string nextName;
    std::string nextSerial;
};

inline constexpr Column<HoldingRecord> kHoldingColumns[] = {
    {"clip_id", &HoldingRecord::clip},
    {"name", &HoldingRecord::name},
    {"stamp", &HoldingRecord::stamp},
    {"identifier", &HoldingRecord::identifier},
    {"bytes", &HoldingRecord::bytes},
    {"file_gaps", &HoldingRecord::fileGaps},
    {"segment_gaps", &HoldingRecord::segmentGaps},
    {"is_ingested", &HoldingRecord::isIngested},
    {"offset_in_shot", &HoldingRecord::offsetInShot},
    {"top_identity", &HoldingRecord::topIdentity},
    {"top_name", &HoldingRecord::topName},
    {"top_serial", &HoldingRecord::topSerial},
    {"previous_identity", &HoldingRecord::previousIdentity},
    {"previous_name", &HoldingRecord::previousName},
    {"previous_serial", &HoldingRecord::previousSerial},
    {"next_identity", &HoldingRecord::nextIdentity},
    {"next_name", &HoldingRecord::nextName},
    {"next_serial", &HoldingRecord::nextSerial},
};

/// Something that a clip of a card needs and the card does not have.
struct GapRecord {
    std::string clip;     ///< its name on the card
    std::string kind;     ///< "file" or "segment"
    std::string what;     ///< path below the card; name of the segment
    std::string problem;  ///< of a file: "missing", "empty", "short"
    std::string identity; ///< of the segment, as of clips
    std::string serial;   ///< of the card that has it, as the clip tells
};

inline constexpr Column<GapRecord> kGapColumns[] = {
    {"clip", &GapRecord::clip},         {"kind", &GapRecord::kind},
    {"what", &GapRecord::what},         {"problem", &GapRecord::problem},
    {"identity", &GapRecord::identity}, {"serial", &GapRecord::serial},
};

/// A use of a clip by an edit list or playlist.
struct EventRecord {
    std::string list;
    std::int64_t ordinal = 0;
    std::string identity; ///< of the clip
    std::string clip;     ///< its name
    std::string serial;   ///< of its card, as the list tells
    std::int64_t position = 0;
    std::int64_t sourceIn = 0;
    std::int64_t sourceOut = 0;
};

inline constexpr Column<EventRecord> kEventColumns[] = {
    {"list", &EventRecord::list},          {"ordinal", &EventRecord::ordinal},
    {"identity", &EventRecord::identity},  {"clip", &EventRecord::clip},
    {"serial", &EventRecord::serial},      {"position", &EventRecord::position},
    {"source_in", &EventRecord::sourceIn}, {"source_out", &EventRecord::sourceOut},
};

/// An edit list or playlist.
struct ListRecord {
    std::string name;
    std::string kind; ///< "edl" or "playlist"
    std::string rate;
    std::int64_t frames = 0;
};

inline constexpr Column<ListRecord> kListColumns[] = {
    {"name", &ListRecord::name},
    {"kind", &ListRecord::kind},
    {"rate", &ListRecord::rate},
    {"frames", &ListRecord::frames},
};

/// A stretch of a clip that was taken in.
struct IngestRecord {
    std::string clip; ///< its name
    std::int64_t inPoint = 0;
    std::int64_t outPoint = 0;
};

inline constexpr Column<IngestRecord> kIngestColumns[] = {
    {"clip", &IngestRecord::clip},
    {"in_point", &IngestRecord::inPoint},
    {"out_point", &IngestRecord::outPoint},
};

/// A generation of the list of hashes that a copy has.
struct GenerationRecord {
    std::int64_t number = 0;
    std::string manifest; ///< its file
    std::string c4;       ///< of that file, as the chain tells
    std::int64_t created = 0;
    std::string rootFormat; ///< "xxh128"; "" when the manifest tells no hash of the whole
    std::string rootContent;
    std::string rootStructure;
};

inline constexpr Column<GenerationRecord> kGenerationColumns[] = {
    {"number", &GenerationRecord::number},
    {"manifest", &GenerationRecord::manifest},
    {"c4", &GenerationRecord::c4},
    {"created", &GenerationRecord::created},
    {"root_format", &GenerationRecord::rootFormat},
    {"root_content", &GenerationRecord::rootContent},
    {"root_structure", &GenerationRecord::rootStructure},
};

/// A clip of a card that was read.
struct CardClip {
    ClipRecord clip;
    HoldingRecord holding;
};

/// What a reading of a card has found. Unchanged clips are among `holdings` alone.
struct CardContents {
    CardRecord card;
    std::vector<CardClip> read;
    std::vector<HoldingRecord> unchanged;
    std::vector<GapRecord> gaps; ///< of the clips that were read: files; of all: segments
    std::vector<ListRecord> lists;
    std::vector<EventRecord> events;
    std::vector<IngestRecord> ingests;
    std::vector<GenerationRecord> generations;
};

} // namespace nqp2::catalogue
