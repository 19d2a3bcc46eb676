// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace nqp2::clips {

/// The element that holds everything about a clip.
inline constexpr std::string_view kClipContentPath = "//P2Main/ClipContent";

/// What the clip readers ask of a clip's metadata, one value an element.
enum class ClipPath {
    ClipName,
    UserClipName,
    GlobalClipID,
    Duration,
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

/// Where each value stands: the only place that says so.
inline constexpr std::array<ClipPathEntry, kClipPathCount> kClipPaths = {{
    {ClipPath::ClipName, "ClipName"},
    {ClipPath::UserClipName, "ClipMetadata/UserClipName"},
    {ClipPath::GlobalClipID, "GlobalClipID"},
    {ClipPath::Duration, "Duration"},
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

inline constexpr std::string_view kAudioPath = "EssenceList/Audio";
inline constexpr std::string_view kProxyAudioPath =
    "ClipMetadata/Proxy/ProxyElementList/ProxyAudio";
inline constexpr std::string_view kMemoPath = "ClipMetadata/MemoList/Memo";

} // namespace nqp2::clips
