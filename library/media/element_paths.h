// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

/// Where the metadata of clips and edit lists keep their values: the only place that says so.
namespace nqp2::media {

/// The element that holds everything about a clip.
inline constexpr std::string_view kClipContentPath = "//P2Main/ClipContent";

/// What the clip readers ask of a clip's metadata, one value an element.
enum class ClipPath {
    ClipName,
    UserClipName,
    GlobalClipID,
    Duration,
    EditUnit,
    TopName,
    TopSerialNo,
    TopGlobalClipID,
    PreviousName,
    PreviousSerialNo,
    PreviousGlobalClipID,
    NextName,
    NextSerialNo,
    NextGlobalClipID,
    GlobalShotID,
    OffsetInShot,
    Codec,
    FrameRate,
    AspectRatio,
    StartTimecode,
    TimecodeType,
    ActivePixel,
    ActiveLine,
    BitDepth,
    VideoStartByteOffset,
    VideoDataSize,
    AudioChannel,
    AudioBitsPerSample,
    AudioStartByteOffset,
    AudioDataSize,
    UnusedOffset,
    StartDate,
    EndDate,
    ProxyFormat,
    ProxyVideoCodec,
    ProxyVideoBitRate,
    ProxyFrameRate,
    ProxyResolution,
    ProxyAspectRatio,
    ProxyAudioCodec,
    ProxyAudioBitRate,
    ProxySamplingRate,
    Count,
};

inline constexpr std::size_t kClipPathCount = static_cast<std::size_t>(ClipPath::Count);

struct ClipPathEntry {
    ClipPath path;
    std::string_view below; ///< path below kClipContentPath
};

/// By ClipPath.
inline constexpr std::array<ClipPathEntry, kClipPathCount> kClipPaths = {{
    {ClipPath::ClipName, "ClipName"},
    {ClipPath::UserClipName, "ClipMetadata/UserClipName"},
    {ClipPath::GlobalClipID, "GlobalClipID"},
    {ClipPath::Duration, "Duration"},
    {ClipPath::EditUnit, "EditUnit"},
    {ClipPath::TopName, "Relation/Connection/Top/ClipName"},
    {ClipPath::TopSerialNo, "Relation/Connection/Top/P2SerialNo."},
    {ClipPath::TopGlobalClipID, "Relation/Connection/Top/GlobalClipID"},
    {ClipPath::PreviousName, "Relation/Connection/Previous/ClipName"},
    {ClipPath::PreviousSerialNo, "Relation/Connection/Previous/P2SerialNo."},
    {ClipPath::PreviousGlobalClipID, "Relation/Connection/Previous/GlobalClipID"},
    {ClipPath::NextName, "Relation/Connection/Next/ClipName"},
    {ClipPath::NextSerialNo, "Relation/Connection/Next/P2SerialNo."},
    {ClipPath::NextGlobalClipID, "Relation/Connection/Next/GlobalClipID"},
    {ClipPath::GlobalShotID, "Relation/GlobalShotID"},
    {ClipPath::OffsetInShot, "Relation/OffsetInShot"},
    {ClipPath::Codec, "EssenceList/Video/Codec"},
    {ClipPath::FrameRate, "EssenceList/Video/FrameRate"},
    {ClipPath::AspectRatio, "EssenceList/Video/AspectRatio"},
    {ClipPath::StartTimecode, "EssenceList/Video/StartTimecode"},
    {ClipPath::TimecodeType, "EssenceList/Video/TimecodeType"},
    {ClipPath::ActivePixel, "EssenceList/Video/ActivePixel"},
    {ClipPath::ActiveLine, "EssenceList/Video/ActiveLine"},
    {ClipPath::BitDepth, "EssenceList/Video/BitDepth"},
    {ClipPath::VideoStartByteOffset, "EssenceList/Video/VideoIndex/StartByteOffset"},
    {ClipPath::VideoDataSize, "EssenceList/Video/VideoIndex/DataSize"},
    {ClipPath::AudioChannel, "EssenceList/Audio/Channel"},
    {ClipPath::AudioBitsPerSample, "EssenceList/Audio/BitsPerSample"},
    {ClipPath::AudioStartByteOffset, "EssenceList/Audio/AudioIndex/StartByteOffset"},
    {ClipPath::AudioDataSize, "EssenceList/Audio/AudioIndex/DataSize"},
    {ClipPath::UnusedOffset, "EssenceList/UnusedOffset"},
    {ClipPath::StartDate, "ClipMetadata/Shoot/StartDate"},
    {ClipPath::EndDate, "ClipMetadata/Shoot/EndDate"},
    {ClipPath::ProxyFormat, "ClipMetadata/Proxy/ProxyFormat"},
    {ClipPath::ProxyVideoCodec, "ClipMetadata/Proxy/ProxyElementList/ProxyVideo/ProxyVideoCodec"},
    {ClipPath::ProxyVideoBitRate,
     "ClipMetadata/Proxy/ProxyElementList/ProxyVideo/ProxyVideoBitRate"},
    {ClipPath::ProxyFrameRate, "ClipMetadata/Proxy/ProxyElementList/ProxyVideo/ProxyFrameRate"},
    {ClipPath::ProxyResolution, "ClipMetadata/Proxy/ProxyElementList/ProxyVideo/ProxyResolution"},
    {ClipPath::ProxyAspectRatio, "ClipMetadata/Proxy/ProxyElementList/ProxyVideo/AspectRatio"},
    {ClipPath::ProxyAudioCodec, "ClipMetadata/Proxy/ProxyElementList/ProxyAudio/ProxyAudioCodec"},
    {ClipPath::ProxyAudioBitRate,
     "ClipMetadata/Proxy/ProxyElementList/ProxyAudio/ProxyAudioBitRate"},
    {ClipPath::ProxySamplingRate,
     "ClipMetadata/Proxy/ProxyElementList/ProxyAudio/ProxySamplingRate"},
}};

constexpr bool ClipPathsAreInOrder() {
    for (std::size_t i = 0; i < kClipPathCount; ++i) {
        if (static_cast<std::size_t>(kClipPaths[i].path) != i) {
            return false;
        }
    }
    return true;
}
static_assert(ClipPathsAreInOrder(), "the table is indexed by ClipPath");

/// The value's path below kClipContentPath.
constexpr std::string_view Below(ClipPath path) {
    return kClipPaths[static_cast<std::size_t>(path)].below;
}

/// The value's full path, for a question about it alone.
std::string FullPath(ClipPath path);
CString FullPathText(ClipPath path);

/// Elements below kClipContentPath of which there may be several.
inline constexpr std::string_view kAudioPath = "EssenceList/Audio";
inline constexpr std::string_view kProxyAudioPath =
    "ClipMetadata/Proxy/ProxyElementList/ProxyAudio";
inline constexpr std::string_view kMemoPath = "ClipMetadata/MemoList/Memo";

/// What the icon is, where there is one.
inline constexpr std::string_view kIconFormatPath = "ClipMetadata/Thumbnail/ThumbnailFormat";

enum class ClipList { Audio, ProxyAudio, Memo, Count };
inline constexpr std::size_t kClipListCount = static_cast<std::size_t>(ClipList::Count);
/// By ClipList.
inline constexpr std::array<std::string_view, kClipListCount> kClipLists = {
    kAudioPath, kProxyAudioPath, kMemoPath};

/// What a memo keeps, one value a child element.
enum class MemoName {
    Offset,
    Person,
    Text,
    VoiceBitsPerSample,
    VoiceSamplingRate,
    VoiceFormat,
    Count,
};
/// By MemoName.
inline constexpr std::array<std::string_view, static_cast<std::size_t>(MemoName::Count)>
    kMemoNames = {"Offset",     "Person", "Text", "VoiceBitsPerSample", "VoiceSamplingRate",
                  "VoiceFormat"};

/// A value of an audio channel, seen from the channel's element at kAudioPath.
constexpr std::string_view InAudio(ClipPath path) {
    return Below(path).substr(kAudioPath.size() + 1);
}

/// The clips to which one belongs, below kClipContentPath.
struct RelatedPaths {
    ClipPath name;
    ClipPath globalClipID;
};
inline constexpr std::array<RelatedPaths, 3> kRelatedPaths = {{
    {ClipPath::TopName, ClipPath::TopGlobalClipID},
    {ClipPath::PreviousName, ClipPath::PreviousGlobalClipID},
    {ClipPath::NextName, ClipPath::NextGlobalClipID},
}};

/// The attribute that is read of a value's element, "" where none is.
constexpr std::string_view AttributeOf(ClipPath path) {
    switch (path) {
    case ClipPath::Codec:
        return "Class";
    case ClipPath::FrameRate:
        return "DropFrameFlag";
    default:
        return {};
    }
}

/// The element that holds everything about an edit list.
inline constexpr std::string_view kEditContentPath = "//P2Main/EditContent";

/// What is there once in an edit list.
enum class EditPath { Duration, EditUnit, StartTimecode, FrameRate, Codec, Thumbnail, Count };
inline constexpr std::size_t kEditPathCount = static_cast<std::size_t>(EditPath::Count);

/// By EditPath, below kEditContentPath.
inline constexpr std::array<std::string_view, kEditPathCount> kEditPaths = {
    "Duration", "EditUnit", "StartTimecode", "FrameRate", "Codec", "Thumbnail/FrameOffset"};

/// The events below kEditContentPath; those of schema 3.0 have another track.
inline constexpr std::string_view kEventsPath = "TrackList/ClipTrack/EventList/Event";
inline constexpr std::string_view kEventsPathOf30 = "TrackList/VideoTrack/EventList/Event";

/// A full path below kEditContentPath.
std::string InEditContent(std::string_view below);
std::string FullPath(EditPath path);

/// What an event keeps.
enum class EventPath {
    Offset,
    Duration,
    SerialNo,
    ClipName,
    GlobalClipID,
    SourceOffset,
    Channel,
    AudioInOffset,
    AudioOutOffset,
    AudioLevel,
    Note,
    Count,
};
inline constexpr std::size_t kEventPathCount = static_cast<std::size_t>(EventPath::Count);

/// By EventPath, below the event.
inline constexpr std::array<std::string_view, kEventPathCount> kEventPaths = {
    "Offset",
    "Duration",
    "Source/P2SerialNo.",
    "Source/ClipName",
    "Source/GlobalClipID",
    "Source/Offset",
    "Source/Channel",
    "AudioInOffset",
    "AudioOutOffset",
    "AudioLevel",
    "Note",
};

} // namespace nqp2::media
