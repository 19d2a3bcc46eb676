// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_record.h"

#include "media/dates.h"
#include "media/identifier.h"
#include "media/timecode.h"

#include <algorithm>

namespace nqp2::avchd {
namespace {

constexpr std::uint8_t kAspect4To3 = 2;
constexpr std::uint8_t kAspect16To9 = 3;
constexpr std::int32_t kLines1080 = 1080;

const wchar_t* AspectOf(const VideoStream& video,
                        const std::optional<SequenceParameters>& parameters) {
    bool isWide = video.aspect != kAspect4To3;
    if (isWide && video.aspect != kAspect16To9 && parameters && parameters->shapeHeight != 0) {
        // Nearer to 16:9 than to 4:3, in ninths of the height.
        const std::uint64_t width =
            static_cast<std::uint64_t>(parameters->pixels) * parameters->shapeWidth * 9;
        const std::uint64_t height =
            static_cast<std::uint64_t>(parameters->lines) * parameters->shapeHeight;
        isWide = width >= height * 14;
    }
    return isWide ? L"16:9" : L"4:3";
}

/// The stream's own raster, unless it is another one than the file names: 1080 lines can have 1440
/// or 1920 elements.
Raster ShownRaster(const VideoStream& video, const std::optional<SequenceParameters>& parameters) {
    Raster raster = RasterOf(video.format);
    if (parameters && (raster.lines == kLines1080 || raster.lines == 0)) {
        raster = {parameters->pixels, parameters->lines};
    }
    return raster;
}

void FillPicture(const ClipInformation& information, const StreamHead& stream, bool is25p,
                 _tag_P2Clip& clip) {
    const VideoStream& video = information.video;
    const FrameRate* rate = RateOf(video.rateCode, is25p);
    const Raster raster = ShownRaster(video, stream.parameters);
    const bool interlaced = IsInterlaced(video.format) && !is25p;
    clip.CodecName = FormatText(raster, interlaced, rate);
    clip.ActivePixel = raster.pixels;
    clip.ActiveLine = raster.lines;
    clip.BitDepth = stream.parameters.value_or(SequenceParameters()).bitDepth;
    clip.AspectRatio = AspectOf(video, stream.parameters);
    clip.FrameRate = rate != nullptr ? rate->text : L"";
    clip.Duration = rate != nullptr ? information.Frames(*rate) : 0;
}

/// Whether one time of a clip comes before another; the clock starts anew at 2^32.
bool IsEarlier(std::uint32_t time, std::uint32_t other) {
    return static_cast<std::int32_t>(time - other) < 0;
}

/// The frames before a timecode at the clip's true rate. Recorders number every second frame where
/// there are 50 and more.
std::int32_t FramesBefore(media::Timecode timecode, const _tag_P2Clip& clip) {
    constexpr int kDoubledFrom = 50;
    media::TimecodeRate rate = media::ClipTimecodeRate(clip.FrameRate.View(), clip.DropFrame != 0);
    rate.nominal = media::NominalRate(clip.FrameRate.View());
    timecode.frames *= rate.nominal >= kDoubledFrom ? 2 : 1;
    return media::FrameCount(timecode, rate);
}

/// Needs the record's rate. Without a timecode the flag keeps its default where it means anything.
void FillTimecode(const std::optional<RecordedTimecode>& recorded, _tag_P2Clip& clip) {
    const bool canDrop = media::CanDropFrames(clip.FrameRate.View());
    clip.DropFrame = canDrop && (!recorded || recorded->dropFrame) ? 1 : 0;
    clip.StartTimecode = recorded ? FramesBefore(recorded->timecode, clip) : 0;
}

void FillDate(const std::optional<RecordedDate>& date, _tag_P2Clip& clip) {
    if (date) {
        clip.StartDate = media::DateText(
            {date->year, date->month, date->day, date->hour, date->minute, date->second});
        clip.ShootStartTime.SetDateTime(date->year, date->month, date->day, date->hour,
                                        date->minute, date->second);
    }
}

void FillIdentifier(const std::optional<GlobalClipId>& id, _tag_P2Clip& clip) {
    clip.GlobalClipID = id ? ClipIdText(*id) : CString();
    clip.GlobalClipGuid = media::GuidFromIdentifier(clip.GlobalClipID);
}

template <class Value>
const std::optional<Value>& FirstOf(const std::optional<Value>& first,
                                    const std::optional<Value>& second) {
    return first ? first : second;
}

} // namespace

void ShotTable::Add(const Playlist& playlist) {
    for (const PlayItem& item : playlist.items) {
        if (item.shot == PlayItem::kNoShot) {
            continue;
        }
        const Shot& shot = playlist.shots[static_cast<std::size_t>(item.shot)];
        const auto [place, isNew] = m_entries.try_emplace(std::string(item.Name()));
        Entry& entry = place->second;
        if (!item.continues && (!entry.shot || IsEarlier(shot.time, entry.shot->time))) {
            entry.shot = shot;
            entry.pulldown = shot.pulldown;
        } else if (isNew) {
            entry.pulldown = shot.pulldown;
        }
    }
}

const ShotTable::Entry& ShotTable::Find(std::string_view clipName) const {
    static const Entry kUnknown;
    const auto found = m_entries.find(clipName);
    return found == m_entries.end() ? kUnknown : found->second;
}

void FillRecord(const ClipInformation& information, const ShotTable::Entry& recorded,
                const StreamHead& stream, _tag_P2Clip& clip) {
    // A mark further into the clip tells of another moment than the clip's first frame.
    const bool fromStart =
        recorded.shot && recorded.shot->time == information.stretches.front().start;
    const Shot start = fromStart ? *recorded.shot : Shot();
    clip.SourceKind = 1;
    FillPicture(information, stream, Is25p(information.video, recorded.pulldown), clip);
    FillTimecode(FirstOf(FirstOf(information.timecode, start.timecode), stream.timecode), clip);
    FillDate(FirstOf(start.date, stream.date), clip);
    FillIdentifier(FirstOf(information.clipId, start.clipId), clip);
}

CString ClipIdText(const GlobalClipId& id) {
    constexpr std::wstring_view kDigits = L"0123456789ABCDEF";
    std::wstring text;
    text.reserve(2 * id.size());
    for (const unsigned byte : id) {
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 0x0FU];
    }
    return CString(text);
}

} // namespace nqp2::avchd
