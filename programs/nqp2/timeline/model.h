// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/FrameRate.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Timelines as editing systems know them, and the documents that tell them. Frames count from 0,
/// ends are exclusive, texts are UTF-8 as far as their sources were.
namespace nqp2::timeline {

/// A remark of the camera's operator on a frame.
struct Memo {
    std::int64_t frame = 0; ///< from the clip's first
    std::string person;
    std::string text;
};

/// A file with picture or sound.
struct MediaFile {
    std::string path; ///< whole; "" of a clip that is not on the card
    bool isThere = false;
    bool hasPicture = false;
    int channels = 0; ///< of sound
};

/// Where a channel of sound lies.
struct SoundSource {
    std::size_t file = 0;
    int channel = 0; ///< within the file
};

/// The lines of a picture and how they are scanned.
struct Raster {
    std::int32_t lines = 1080;
    bool isInterlaced = false;
    bool isWide = true; ///< 16:9

    /// Of a picture of square pixels, or of standard definition as it is recorded.
    [[nodiscard]] std::int32_t Width() const { return lines < 720 ? 720 : lines * 16 / 9; }
};

/// A clip's place in a recording that goes over several.
struct TakePlace {
    std::string topIdentifier;
    std::int64_t number = 1; ///< from 1, missing segments counted
    std::int64_t count = 1;
    std::int64_t offset = 0; ///< frames from the recording's first
};

/// What people wrote about a clip, or the camera.
struct Logging {
    std::string title;
    std::string date;
    std::string scene;
    std::string take;
    std::string camera;
    std::string shooter;
};

/// A clip, as events use it.
struct Media {
    std::string name;
    std::string reel; ///< A to Z, 0 to 9, at most eight: a name of its own
    std::string identifier;
    bool isThere = false; ///< whether the card has the clip
    FrameRate rate;
    std::int64_t start = 0; ///< timecode of the first frame, as editing systems read it in the file
    bool dropFrame = false;
    std::string timecode; ///< of the first frame, as the card tells it
    std::int64_t length = 0;
    Raster raster;
    std::int32_t bits = 16; ///< of a sample
    std::size_t picture = 0;
    std::optional<std::size_t> proxy;
    std::vector<SoundSource> sound; ///< by channel
    std::vector<Memo> memos;        ///< by their frames
    std::optional<TakePlace> take;
    Logging logging;
};

/// What is heard on a track while an event lasts.
struct SoundUse {
    static constexpr std::int32_t kSilent = -1;
    std::int32_t channel = kSilent; ///< index into the media's sound
    double level = 1.0;

    [[nodiscard]] bool IsHeard() const { return channel != kSilent; }
};

/// A stretch of a clip at its place.
struct Event {
    std::size_t media = 0;
    std::int64_t start = 0;    ///< on the timeline, in its frames
    std::int64_t duration = 0; ///< the same
    FrameRate rate;            ///< in which the stretch is told: the clip's or the timeline's
    std::int64_t in = 0;       ///< from the clip's first frame
    std::int64_t length = 0;
    std::vector<SoundUse> sound; ///< by track
    std::string note;
    std::string serialNo; ///< of the card that the list names

    [[nodiscard]] std::int64_t End() const { return start + duration; }
    /// What is heard on a track, silence on those beyond.
    [[nodiscard]] SoundUse OnTrack(std::size_t track) const {
        return track < sound.size() ? sound[track] : SoundUse();
    }
};

/// What the events of timelines use.
struct Sources {
    std::vector<MediaFile> files;
    std::vector<Media> media;
};

/// What is told of a timeline beside its events.
struct TimelineHead {
    std::string name;
    bool isBin = false;
    FrameRate rate;
    std::int64_t start = 0; ///< timecode of frame 0
    bool dropFrame = false;
    Raster raster;
    bool showsProxies = false; ///< instead of the pictures that they are copies of
    std::shared_ptr<const Sources> sources;

    [[nodiscard]] const Media& MediaOf(const Event& event) const {
        return sources->media[event.media];
    }
    /// The file whose picture is shown.
    [[nodiscard]] std::size_t PictureOf(const Media& media) const {
        return showsProxies ? media.proxy.value_or(media.picture) : media.picture;
    }
};

/// An edit, or the clips of a card one after the other.
struct Timeline : TimelineHead {
    std::vector<Event> events; ///< as they follow each other, none over another

    [[nodiscard]] std::int64_t Length() const { return events.empty() ? 0 : events.back().End(); }
    /// Tracks of sound: one for each channel that is heard.
    [[nodiscard]] std::size_t SoundTracks() const;
};

/// A memo where an event shows it.
struct PlacedMemo {
    const Memo* memo;
    std::int64_t inSource; ///< frames of the event's rate from the clip's first
    std::int64_t at;       ///< frame of the timeline
};

/// The memos on the frames that an event shows.
std::vector<PlacedMemo> MemosOf(const TimelineHead& timeline, const Event& event);

/// Which part of a recording over several clips it is; "" for a recording of its own.
std::string PartText(const Media& media);

/// A short text for a memo, and the whole with its author; never "".
std::string MemoTitle(const Memo& memo);
std::string MemoText(const Memo& memo);

bool IsSame(const FrameRate& left, const FrameRate& right);
/// The place of a frame by another rate, to the nearest frame.
std::int64_t Rescaled(std::int64_t frames, const FrameRate& from, const FrameRate& to);
/// A camera's rate of so many frames a second; null for any other.
const FrameRate* CameraRate(std::int64_t frames, std::int64_t seconds);

/// The timeline by rates: one for each that its clips have, in which all is told at that rate. Its
/// events stay at their times, those of a bin follow each other.
std::vector<Timeline> SplitByRate(const Timeline& timeline);
/// The timeline in parts of at most so many events.
std::vector<Timeline> SplitByCount(Timeline timeline, std::size_t most);

} // namespace nqp2::timeline
