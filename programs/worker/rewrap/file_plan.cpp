// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/file_plan.h"

#include "copy/failure.h"
#include "worker/rewrap/units_of_h264.h"

#include <algorithm>
#include <numeric>

namespace nqp2::worker::rewrap {
namespace {

/// What sets and their padding take in cameras' units.
constexpr std::size_t kSetsSize = 512;

bool HasIndexInFront(RewrapContainer container) {
    return container == RewrapContainer::Mov || container == RewrapContainer::Mp4;
}

/// Entries of 12 bytes and a few more for reordered pictures, of units that are shorter than a
/// picture too; what is not needed stays a hole of that size.
std::uint64_t HeadRoom(const Request& request, const RecordingInput& input, std::size_t marks) {
    constexpr std::uint64_t kFixed = 64 << 10U;
    constexpr std::uint64_t kUnit = 40;
    constexpr std::uint64_t kMark = 2048;    // its text too
    constexpr std::uint64_t kUnknown = 8192; // bytes of a picture at least
    // LPCM has two hundred units a second.
    const std::uint64_t unitsAFrame = request.join == RewrapJoin::Bytes ? 10 : 1;
    const std::uint64_t frames =
        input.ExpectedFrames() != 0 ? input.ExpectedFrames() : input.Bytes() / kUnknown;
    const std::uint64_t sounds = input.Tracks().size() - 1;
    return kFixed + kUnit * (frames + frames / 8) * (1 + sounds * unitsAFrame) + kMark * marks;
}

void SetShape(const Request& request, const MediaStream& picture, TrackPlan& plan) {
    plan.pixelWidth = picture.pixelWidth;
    plan.pixelHeight = picture.pixelHeight;
    if (request.aspectWidth > 0 && picture.width > 0 && picture.height > 0) {
        const std::int64_t wide = std::int64_t{request.aspectWidth} * picture.height;
        const std::int64_t tall = std::int64_t{request.aspectHeight} * picture.width;
        const std::int64_t common = std::gcd(wide, tall);
        plan.pixelWidth = static_cast<std::int32_t>(wide / common);
        plan.pixelHeight = static_cast<std::int32_t>(tall / common);
    }
}

/// Cameras leave the sets out of AVC-Intra, whose decoders know them. In MOV, where players do not
/// look elsewhere, each unit gets them.
std::string SetsToInsert(const Request& request, const MediaStream& picture, bool interlaced) {
    if (picture.parameterSets.empty()) {
        throw copy::Failure(request.parts.front().name +
                            " has no parameter sets, and none are known for it.");
    }
    if (request.rate.frames != 0 && picture.order != FieldOrder::Unknown &&
        interlaced == (picture.order == FieldOrder::Progressive)) {
        throw copy::Failure(request.parts.front().name +
                            " has no parameter sets, and its file and its metadata do not agree "
                            "on whether it is interlaced.");
    }
    std::string sets;
    if (request.container == RewrapContainer::Mov) {
        sets = picture.parameterSets;
        sets.resize(std::max(sets.size(), kSetsSize), '\0');
    }
    return sets;
}

TrackPlan PicturePlan(const Request& request, const MediaStream& picture,
                      const PictureMarks& marks) {
    TrackPlan plan;
    plan.details = picture.details;
    plan.tick = picture.tick;
    plan.rate = picture.rate;
    plan.marks = marks;
    SetShape(request, picture, plan);
    return plan;
}

TrackPlan SoundPlan(const MediaStream& sound, std::size_t number, bool isOnly) {
    TrackPlan plan;
    plan.details = sound.details;
    plan.tick = sound.tick;
    plan.channels = sound.channels;
    plan.bits = sound.bits;
    plan.name = isOnly ? "" : "Channel " + std::to_string(number);
    return plan;
}

} // namespace

std::vector<MediaMark> MarksFor(const Request& request, const FrameRate& rate) {
    std::vector<MediaMark> marks;
    if (request.container == RewrapContainer::Mxf || request.chapters.empty()) {
        return marks;
    }
    if (request.chapters.front().frame != 0) { // MOV would move the first one there
        marks.push_back({0, request.parts.front().name});
    }
    for (const Chapter& chapter : request.chapters) {
        marks.push_back(
            {std::int64_t{chapter.frame} * 1000 * rate.seconds / rate.frames, chapter.text});
    }
    return marks;
}

PlannedFile PlanFor(const Request& request, RecordingInput& input) {
    const std::vector<MediaStream>& tracks = input.Tracks();
    const MediaStream& picture = tracks.front();
    PlannedFile plan;
    for (const MediaStream& each : tracks) {
        plan.essence.push_back(EssenceOf(each, request.parts.front().name));
    }
    RequireLegal(request.container, plan.essence);
    CheckTimecode(request.timecode, picture.rate);
    const bool interlaced =
        request.rate.frames != 0 ? request.interlaced : picture.order != FieldOrder::Progressive;
    const std::string first = input.FirstPicture();
    const std::string sets = plan.essence.front() == Essence::AvcIntra ? SetsIn(first) : "";
    if (plan.essence.front() == Essence::AvcIntra && sets.empty()) {
        plan.setsToInsert = SetsToInsert(request, picture, interlaced);
    }
    const auto bytesASecond =
        static_cast<std::int64_t>(static_cast<double>(first.size()) * picture.rate.PerSecond());
    FilePlan& file = plan.file;
    file.container = WriterName(request.container);
    plan.reader = ReaderName(request.container);
    file.title = request.title;
    file.reel = request.reel;
    file.date = request.date;
    file.timecode = request.timecode;
    file.marks = MarksFor(request, picture.rate);
    file.tracks.push_back(PicturePlan(
        request, picture,
        MarksOf(plan.essence.front(), picture, request.container, interlaced, bytesASecond)));
    file.tracks.front().parameterSets = sets; // else those that the reader has guessed
    for (std::size_t i = 1; i < tracks.size(); ++i) {
        file.tracks.push_back(SoundPlan(tracks[i], i, tracks.size() == 2));
    }
    if (HasIndexInFront(request.container)) {
        file.headRoom = HeadRoom(request, input, file.marks.size());
    }
    if (input.ExpectedFrames() != 0) {
        const auto frames = static_cast<std::int64_t>(input.ExpectedFrames());
        file.length = frames * 1000 * picture.rate.seconds / picture.rate.frames;
        if (!request.chapters.empty() && request.chapters.back().frame >= frames) {
            throw copy::Failure("The request for the file has a chapter behind its end.");
        }
    }
    return plan;
}

} // namespace nqp2::worker::rewrap
