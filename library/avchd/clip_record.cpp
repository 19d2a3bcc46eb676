// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_record.h"

#include "media/dates.h"
#include "media/identifier.h"
#include "media/timecode.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>

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

void FillDate(const std::optional<media::CalendarTime>& date, _tag_P2Clip& clip) {
    if (date) {
        clip.StartDate = media::DateText(*date);
        clip.ShootStartTime = MomentOf(*date);
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

/// How camera files call a coder of DV, and our names for its pictures at the two families of
/// rates.
struct DvName {
    const wchar_t* inFile;
    const wchar_t* at50;
    const wchar_t* at60;
};
constexpr DvName kDvNames[] = {
    {L"DVSD", L"DV25_420", L"DV25_411"},
    {L"DVC", L"DV25_420", L"DV25_411"},
    {L"DVCP", L"DV25_420", L"DV25_411"},
    {L"DVPP", L"DV25_411", L"DV25_411"},
    {L"DV5P", L"DV50_422", L"DV50_422"},
    {L"DV5N", L"DV50_422", L"DV50_422"},
    {L"DVHQ", L"DV100_720/50p", L"DV100_720/59.94p"},
    {L"DVHP", L"DV100_720/50p", L"DV100_720/59.94p"},
    {L"DVH2", L"DV100_1080/50i", L"DV100_1080/59.94i"},
    {L"DVH3", L"DV100_1080/50i", L"DV100_1080/59.94i"},
    {L"DVH5", L"DV100_1080/50i", L"DV100_1080/59.94i"},
    {L"DVH6", L"DV100_1080/50i", L"DV100_1080/59.94i"},
};

/// The coder's name as clips have it; other coders keep the name that their files give them.
CString CodecOf(const NQP2BaseClipInfo& base) {
    const auto* const found =
        std::find_if(std::begin(kDvNames), std::end(kDvNames),
                     [&](const DvName& row) { return base.codec.CompareNoCase(row.inFile) == 0; });
    if (found == std::end(kDvNames)) {
        return base.codec;
    }
    const bool is50 = base.text1.Left(2) == L"50" || base.text1.Left(2) == L"25";
    return is50 ? found->at50 : found->at60;
}

/// Counts of frames travel in 64 bits, of which the lower half counts.
std::int32_t LowHalf(std::int64_t value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

void FillEssence(const NQP2BaseClipInfo& base, const CString& path, _tag_P2Clip& clip) {
    clip.VideoPath = base.text3.IsEmpty() ? path : base.text3;
    clip.EssenceMask = 1;
    const std::int64_t count =
        std::min<std::int64_t>(base.texts.GetSize(), _tag_P2Clip::kAudioSlots);
    for (std::int64_t i = 0; i < count; ++i) {
        clip.AudioPath[i] = base.texts[i];
        clip.EssenceMask |=
            clip.AudioPath[i].IsEmpty() ? 0 : std::uint64_t{2} << static_cast<unsigned>(i);
    }
}

} // namespace

bool FillRecord(const ClipInformation& information, const ShotTable::Entry& recorded,
                const StreamHead& stream, _tag_P2Clip& clip) {
    // A mark further into the clip tells of another moment than the clip's first frame.
    const bool fromStart =
        recorded.shot && recorded.shot->time == information.stretches.front().start;
    const Shot start = fromStart ? *recorded.shot : Shot();
    clip.SourceKind = 1;
    FillPicture(information, stream, Is25p(information.video, recorded.pulldown), clip);
    const std::optional<RecordedTimecode>& timecode =
        FirstOf(FirstOf(information.timecode, start.timecode), stream.timecode);
    FillTimecode(timecode, clip);
    FillDate(FirstOf(start.date, stream.date), clip);
    FillIdentifier(FirstOf(information.clipId, start.clipId), clip);
    return timecode.has_value();
}

void FillFromBase(const NQP2BaseClipInfo& base, const CString& path, _tag_P2Clip& clip) {
    clip.SourceKind = 1;
    clip.ClipName = base.clipText1;
    clip.UserClipName = base.clipText3.IsEmpty() ? base.clipText1 : base.clipText3;
    clip.GlobalClipGuid = base.identifier;
    clip.StartDate = base.clipText2;
    clip.Duration = LowHalf(base.value2);
    clip.StartTimecode = LowHalf(base.value3);
    clip.CodecName = CodecOf(base);
    clip.FrameRate = base.text1;
    clip.AspectRatio = base.text2;
    clip.ActivePixel = base.value4 & 0xFFFF;
    clip.ActiveLine = base.value4 >> 16;
    clip.DropFrame = media::CanDropFrames(base.text1.View()) ? 1 : 0;
    FillEssence(base, path, clip);
}

} // namespace nqp2::avchd
