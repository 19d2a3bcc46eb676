// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_metadata.h"

#include "avchd/codings.h"
#include "avchd/limits.h"
#include "media/dates.h"
#include "media/track_texts.h"
#include "platform/file_system.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <new>
#include <optional>
#include <utility>

namespace nqp2::avchd {
namespace {

/// Marks of all playlists that are kept; a card has some thousand.
constexpr std::size_t kMostMarks = 200'000;

struct Maker {
    std::uint16_t number;
    const wchar_t* name;
};
constexpr Maker kMakers[] = {
    {0x0103, L"Panasonic"}, {0x0108, L"Sony"}, {0x1011, L"Canon"}, {0x1104, L"JVC"}};

/// As files write it: "0x3001".
CString NumberText(std::uint16_t number) {
    CString text;
    text.Format(L"0x%04X", static_cast<unsigned>(number));
    return text;
}

CString MakerText(std::uint16_t number) {
    const auto* const found =
        std::find_if(std::begin(kMakers), std::end(kMakers),
                     [number](const Maker& each) { return each.number == number; });
    return found != std::end(kMakers) ? CString(found->name) : NumberText(number);
}

CString VideoText(const VideoStream& video) {
    const Raster raster = RasterOf(video.format);
    return media::PictureText(raster.pixels, raster.lines, RateOf(video.rateCode, Is25p(video, 0)));
}

CString AudioText(unsigned codes) {
    return media::SoundText(ChannelsOf(codes >> 4U), 1000 * SamplingOf(codes & 0x0FU));
}

/// Three letters (ISO 639-2); "" for anything else.
CString LanguageOf(Bytes bytes) {
    constexpr std::size_t kLetters = 3;
    const bool isCode =
        bytes.size() == kLetters && std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) {
            return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
        });
    return isCode ? platform::TextFromUtf8(std::string(bytes.begin(), bytes.end())) : CString();
}

TrackMetadata TrackOf(Bytes attributes) {
    ByteReader reader(attributes);
    const std::uint8_t type = reader.U8();
    const Coding* const coding = CodingOf(type);
    TrackMetadata track;
    track.codec = coding != nullptr ? CString(coding->name) : NumberText(type);
    if (coding == nullptr) {
        return track;
    }
    ByteReader video(attributes);
    switch (coding->kind) {
    case StreamKind::Video:
        track.kind = L"video";
        track.format = VideoText(ReadVideoAttributes(video));
        break;
    case StreamKind::Audio:
        track.kind = L"audio";
        track.format = AudioText(reader.U8());
        track.language = LanguageOf(reader.Take(3));
        break;
    case StreamKind::Subtitle:
        track.kind = L"subtitle";
        track.language = LanguageOf(reader.Take(3));
        break;
    }
    return track;
}

/// The frames before a moment of the clip; nothing for one that is not in it.
std::optional<std::int32_t> FramesBefore(std::uint32_t time, const ClipInformation& clip,
                                         const FrameRate& rate) {
    std::int32_t frames = 0;
    for (const ClipInformation::Stretch& stretch : clip.stretches) {
        if (time - stretch.start < stretch.end - stretch.start) {
            return AddFrames(frames, FramesBetween(stretch.start, time, rate));
        }
        frames = AddFrames(frames, FramesBetween(stretch.start, stretch.end, rate));
    }
    return std::nullopt;
}

/// Several playlists may have the same mark.
void AddMemo(std::int32_t offset, const CString& text, CArray<MemoMetadata>& memos) {
    MemoMetadata memo;
    memo.offset = offset;
    memo.text = text;
    const auto isEarlier = [](const MemoMetadata& left, const MemoMetadata& right) {
        return left.offset != right.offset ? left.offset < right.offset : left.text < right.text;
    };
    const auto place = std::lower_bound(memos.begin(), memos.end(), memo, isEarlier);
    if (place == memos.end() || isEarlier(memo, *place)) {
        memos.InsertAt(place - memos.begin(), memo);
    }
}

void SetUnlessKnown(CString& member, const CString& text) {
    member = member.IsEmpty() ? text : member;
}

void FillRecorder(const Recorder& recorder, ClipMetadata& metadata) {
    if (recorder.maker != 0 && metadata.device.manufacturer.IsEmpty()) {
        metadata.device.manufacturer = MakerText(recorder.maker);
        SetUnlessKnown(metadata.device.modelName, NumberText(recorder.model));
    }
}

/// What the mark at the clip's first frame tells of the whole clip.
void FillShot(const ShotMark& mark, ClipMetadata& metadata) {
    SetUnlessKnown(metadata.access.creator, mark.creator);
    SetUnlessKnown(metadata.device.serialNo, mark.serialNo);
    SetUnlessKnown(metadata.shoot.shooter, mark.shooter);
    SetUnlessKnown(metadata.shoot.startDate, mark.start.IsEmpty() ? mark.date : mark.start);
    SetUnlessKnown(metadata.shoot.endDate, mark.end);
    FillRecorder({mark.maker, mark.model}, metadata);
}

/// What only the stream tells of a clip that no mark begins with.
void FillFromStream(const StreamHead& head, ClipMetadata& metadata) {
    if (head.date) {
        SetUnlessKnown(metadata.shoot.startDate, media::DateText(*head.date) + ZoneText(head.zone));
    }
    FillRecorder(head.recorder, metadata);
}

void FillMarks(const std::vector<ShotMark>& marks, const ClipInformation& clip,
               ClipMetadata& metadata) {
    const FrameRate* const rate = RateOf(clip.video.rateCode, Is25p(clip.video, 0));
    for (const ShotMark& mark : marks) {
        if (mark.time == clip.stretches.front().start) {
            FillShot(mark, metadata);
        }
        const std::optional<std::int32_t> offset =
            rate != nullptr ? FramesBefore(mark.time, clip, *rate) : std::nullopt;
        if (offset) {
            AddMemo(*offset, mark.name, metadata.memos);
        }
    }
}

void FillInformation(Bytes file, ClipMetadata& metadata) {
    for (const Bytes& attributes : StreamsOf(file)) {
        metadata.tracks.Add(TrackOf(attributes));
    }
    FillRecorder(RecorderOf(file), metadata);
}

} // namespace

const MetadataSource::Marks& MetadataSource::MarksOf(const CardKind& kind) {
    const auto [place, isNew] = m_marks.try_emplace(kind.files.playlist.Text());
    Marks& marks = place->second;
    if (!isNew) {
        return marks;
    }
    const bool isWhole = m_clips.ReadPlaylists(kind, [&](Bytes content) {
        const std::optional<Playlist> playlist = DecodePlaylist(content);
        if (!playlist) {
            return;
        }
        const CString name = PlaylistName(content);
        for (const PlayItem& item : playlist->items) {
            std::vector<CString>& names = marks.playlists[std::string(item.Name())];
            if (!name.IsEmpty() && std::find(names.begin(), names.end(), name) == names.end()) {
                names.push_back(name);
            }
        }
        for (ShotMark& mark : DecodeMarks(content)) {
            marks.isCut = marks.isCut || marks.count == kMostMarks;
            if (mark.item < playlist->items.size() && !marks.isCut) {
                const PlayItem& item = playlist->items[mark.item];
                marks.byClip[std::string(item.Name())].push_back(std::move(mark));
                ++marks.count;
            }
        }
    });
    if (!isWhole) {
        m_marks.erase(place);
        throw std::bad_alloc(); // what is told would lack some of it
    }
    return marks;
}

platform::IoStatus MetadataSource::Read(const CardKind& kind, const CString& name,
                                        ClipMetadata& metadata) {
    const std::optional<std::string> path =
        FileIn(m_clips.Information(), name + kind.files.information.Text());
    std::string content;
    if (!path) {
        return {platform::IoError::NotFound, "the clip has no clip information"};
    }
    platform::IoStatus status = platform::Files().Read(*path, kMaxClipInformationFile, content);
    const std::optional<ClipInformation> clip =
        status ? DecodeClipInformation(BytesIn(content)) : std::nullopt;
    if (!clip) {
        return status ? platform::IoStatus{platform::IoError::Other, "no sound clip information"}
                      : status;
    }
    FillInformation(BytesIn(content), metadata);
    const Marks& marks = MarksOf(kind);
    const std::string bytes = platform::NameBytesFromText(name.View());
    if (const auto found = marks.byClip.find(bytes); found != marks.byClip.end()) {
        FillMarks(found->second, *clip, metadata);
    }
    if (metadata.shoot.startDate.IsEmpty() || metadata.device.manufacturer.IsEmpty()) {
        FillFromStream(m_clips.HeadOf(kind, name, clip->video), metadata);
    }
    if (const auto found = marks.playlists.find(bytes); found != marks.playlists.end()) {
        CString at = L"Playlist/@Name";
        for (std::size_t i = 0; i < found->second.size(); ++i) {
            if (i > 0) {
                at.Format(L"Playlist[%d]/@Name", static_cast<int>(i + 1));
            }
            metadata.others.Add({at, found->second[i]});
        }
    }
    metadata.isCut = marks.isCut;
    return {};
}

} // namespace nqp2::avchd
