// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_source.h"

#include "avchd/clip_information.h"
#include "avchd/limits.h"
#include "avchd/stream_head.h"
#include "platform/diagnostics.h"
#include "platform/file_system.h"
#include "platform/unicode.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <vector>

namespace nqp2::avchd {
namespace {

std::optional<ClipInformation> DecodeTimed(const CardKind& kind, const std::string& content) {
    const StopWatch watch;
    std::optional<ClipInformation> information = DecodeClipInformation(BytesIn(content));
    if (kind.timedAs != nullptr) {
        watch.Report(kind.timedAs);
    }
    return information;
}

/// False when memory is short: a playlist must not take those behind it along.
bool TakeAlone(platform::FileContent& file, const std::string& path,
               const ClipSource::TakePlaylist& take) {
    try {
        if (const std::string* content = WholeContent(file, path, kMaxPlaylistFile)) {
            take(BytesIn(*content));
        }
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

/// What the first step reads; "" for a stream that cannot be read.
std::string BeginningOf(const std::optional<std::string>& stream) {
    std::string begin;
    if (stream && !platform::ReadHead(platform::Files(), *stream, kStreamSteps[0], begin)) {
        begin.clear();
    }
    return begin;
}

/// `begin` is what was read for the first step; a shorter stream has no more.
StreamHead DecodeStream(const std::optional<std::string>& path, const VideoStream& video,
                        const std::string& begin) {
    if (!path || video.codingType != kAvcCoding) {
        return {};
    }
    StreamHead head = DecodeStreamHead(BytesIn(begin), video.pid);
    std::string content;
    bool isWhole = begin.size() < kStreamSteps[0];
    for (std::size_t step = 1; step < std::size(kStreamSteps) && !head.complete && !isWhole;
         ++step) {
        const std::uint64_t limit = kStreamSteps[step];
        if (!platform::ReadHead(platform::Files(), *path, limit, content)) {
            break;
        }
        head = DecodeStreamHead(BytesIn(content), video.pid);
        isWhole = content.size() < limit;
    }
    return head;
}

std::uint64_t ChannelBits(std::int32_t channels) {
    return ((std::uint64_t{1} << static_cast<unsigned>(channels)) - 1) << 1U;
}

} // namespace

Bytes BytesIn(const std::string& content) {
    return {reinterpret_cast<const std::uint8_t*>(content.data()), content.size()};
}

platform::FileRequest InformationRequest(std::string path) {
    return {std::move(path), platform::kReadAheadLimit, false, true};
}

platform::FileRequest StreamRequest(std::string path) {
    return {std::move(path), kStreamSteps[0], true, false};
}

const std::string* WholeContent(platform::FileContent& file, const std::string& path,
                                std::uint64_t limit) {
    if (file.status.error == platform::IoError::TooLarge) {
        file.status = platform::Files().Read(path, limit, file.bytes);
    }
    return file.status ? &file.bytes : nullptr;
}

platform::IoStatus ReadPlaylistFile(const std::string& path, std::optional<Playlist>& playlist) {
    std::string content;
    platform::IoStatus status = platform::Files().Read(path, kMaxPlaylistFile, content);
    playlist = status ? DecodePlaylist(BytesIn(content)) : std::nullopt;
    if (status && !playlist && CountPlayItems(BytesIn(content)) > kMaxPlayItems) {
        status = {platform::IoError::TooLarge,
                  "it has more than " + std::to_string(kMaxPlayItems) + " items"};
    }
    return status;
}

platform::Place ClipsFolder(const platform::Place& root) {
    const platform::Place avchd = root.Below(media::kAvchd.BelowDrive());
    return avchd.Below(media::kClipInformation.Path()).Exists()
               ? avchd
               : root.Below(media::kDisc.BelowDrive());
}

std::optional<std::string> FileIn(const platform::Place& folder, const CString& name) {
    static_cast<void>(folder.Names()); // one listing instead of a question for each name
    platform::FoundFile file;
    const bool isFile = folder.Find(name, file) && !file.isFolder && !file.isSpecial;
    return isFile ? std::optional(std::move(file.posixPath)) : std::nullopt;
}

std::optional<std::string> ClipSource::StreamOf(const CardKind& kind, const CString& name) const {
    return FileIn(m_streams, name + kind.files.stream.Text());
}

const ClipSource::PlaylistFacts& ClipSource::Facts(const CardKind& kind) {
    const auto [place, isNew] = m_facts.try_emplace(kind.files.playlist.Text());
    PlaylistFacts& facts = place->second;
    if (isNew) {
        facts.isWhole = ReadPlaylists(kind, [&](Bytes content) {
            if (const std::optional<Playlist> playlist = DecodePlaylist(content)) {
                facts.shots.Add(*playlist);
                facts.splits.Add(*playlist);
            }
        });
    }
    return facts;
}

bool ClipSource::ReadPlaylists(const CardKind& kind, const TakePlaylist& take) const {
    platform::IoStatus listed;
    std::vector<platform::FileRequest> requests;
    for (platform::FoundFile& file :
         m_playlists.List(CString(L"*") + kind.files.playlist.Text(), listed)) {
        if (!file.isFolder && !file.isSpecial) {
            requests.push_back({std::move(file.posixPath), platform::kReadAheadLimit});
        }
    }
    platform::ReadAhead contents(requests);
    platform::FileContent file;
    bool isWhole = true;
    for (const platform::FileRequest& request : requests) {
        contents.Next(file);
        isWhole = TakeAlone(file, request.path, take) && isWhole;
    }
    return isWhole;
}

/// Sound lies in the stream beside the picture.
void ClipSource::FillPaths(const CardKind& kind, const CString& name, bool hasStream,
                           std::int32_t channels, _tag_P2Clip& clip) const {
    const std::int32_t slots = std::min(channels, std::int32_t{_tag_P2Clip::kAudioSlots});
    clip.ClipName = name;
    clip.UserClipName = name;
    clip.VideoPath = hasStream ? m_streams.PathOf(name + kind.files.stream.Text()) : L"";
    clip.EssenceMask = hasStream ? ChannelBits(slots) | 1U : 0;
    for (std::int32_t i = 0; i < _tag_P2Clip::kAudioSlots; ++i) {
        clip.AudioPath[i] = i < slots ? clip.VideoPath : CString();
    }
}

bool ClipSource::Decode(const CardKind& kind, const CString& name, const std::string& information,
                        const std::string& streamHead, _tag_P2Clip& clip, bool& tellsTimecode) {
    const std::optional<ClipInformation> decoded = DecodeTimed(kind, information);
    if (!decoded) {
        return false;
    }
    const std::optional<std::string> stream = StreamOf(kind, name);
    const ShotTable::Entry& recorded =
        Facts(kind).shots.Find(platform::NameBytesFromText(name.View()));
    tellsTimecode =
        FillRecord(*decoded, recorded, DecodeStream(stream, decoded->video, streamHead), clip);
    FillPaths(kind, name, stream.has_value(), decoded->audioChannels, clip);
    return true;
}

StreamHead ClipSource::HeadOf(const CardKind& kind, const CString& name,
                              const VideoStream& video) const {
    const std::optional<std::string> stream = StreamOf(kind, name);
    return DecodeStream(stream, video, BeginningOf(stream));
}

bool ClipSource::Read(const CardKind& kind, const CString& name, _tag_P2Clip& clip) {
    const std::optional<std::string> path =
        FileIn(m_information, name + kind.files.information.Text());
    std::string information;
    if (!path || !platform::Files().Read(*path, kMaxClipInformationFile, information)) {
        return false;
    }
    if (!Facts(kind).isWhole) {
        throw std::bad_alloc(); // the record would lack what the playlists tell
    }
    bool tellsTimecode = false;
    return Decode(kind, name, information, BeginningOf(StreamOf(kind, name)), clip, tellsTimecode);
}

void StopWatch::Report(const wchar_t* called) const {
    const auto passed = std::chrono::steady_clock::now() - m_start;
    const std::int64_t milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(passed).count();
    CString text;
    text.Format(L"\n===Call %s Cost %d", called, milliseconds);
    platform::OutputDebugStringW(text);
}

} // namespace nqp2::avchd
