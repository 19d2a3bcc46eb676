// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/containers.h"

#include "copy/failure.h"
#include "platform/unicode.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace nqp2::worker::rewrap {
namespace {

/// By RewrapContainer, as libavformat calls them.
struct ContainerRow {
    const char* writer;
    const char* reader;
};
constexpr std::array<ContainerRow, 4> kContainers = {
    {{"mov", "mov"}, {"mxf", "mxf"}, {"matroska", "matroska"}, {"mp4", "mp4"}}};

const ContainerRow& RowOf(RewrapContainer container) {
    return kContainers.at(static_cast<std::size_t>(container));
}

constexpr std::uint32_t Tag(std::string_view text) {
    std::uint32_t tag = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        tag |= static_cast<std::uint32_t>(static_cast<unsigned char>(text[i])) << (8 * i);
    }
    return tag;
}

enum class Scan { Any, Interlaced, Progressive };
enum class Family { Any, Is50, Is60 };

/// The mark of a picture in MOV.
struct TagRow {
    std::string_view pixels; ///< how the pixel format begins
    std::int32_t height;
    Scan scan;
    Family family;
    std::uint32_t tag;
};
constexpr TagRow kDvTags[] = {
    {"yuv411p", 480, Scan::Any, Family::Any, Tag("dvc ")},
    {"yuv420p", 576, Scan::Any, Family::Any, Tag("dvcp")},
    {"yuv411p", 576, Scan::Any, Family::Any, Tag("dvpp")},
    {"yuv422p", 480, Scan::Any, Family::Any, Tag("dv5n")},
    {"yuv422p", 576, Scan::Any, Family::Any, Tag("dv5p")},
    {"yuv422p", 1080, Scan::Any, Family::Is50, Tag("dvh5")},
    {"yuv422p", 1080, Scan::Any, Family::Is60, Tag("dvh6")},
    {"yuv422p", 720, Scan::Any, Family::Is50, Tag("dvhq")},
    {"yuv422p", 720, Scan::Any, Family::Is60, Tag("dvhp")},
};
constexpr TagRow kAvcIntraTags[] = {
    {"yuv420p10", 1080, Scan::Interlaced, Family::Is50, Tag("ai55")},
    {"yuv420p10", 1080, Scan::Interlaced, Family::Is60, Tag("ai56")},
    {"yuv420p10", 1080, Scan::Progressive, Family::Is50, Tag("ai52")},
    {"yuv420p10", 1080, Scan::Progressive, Family::Is60, Tag("ai53")},
    {"yuv420p10", 720, Scan::Any, Family::Is50, Tag("ai5q")},
    {"yuv420p10", 720, Scan::Any, Family::Is60, Tag("ai5p")},
    {"yuv422p10", 1080, Scan::Interlaced, Family::Is50, Tag("ai15")},
    {"yuv422p10", 1080, Scan::Interlaced, Family::Is60, Tag("ai16")},
    {"yuv422p10", 1080, Scan::Progressive, Family::Is50, Tag("ai12")},
    {"yuv422p10", 1080, Scan::Progressive, Family::Is60, Tag("ai13")},
    {"yuv422p10", 720, Scan::Any, Family::Is50, Tag("ai1q")},
    {"yuv422p10", 720, Scan::Any, Family::Is60, Tag("ai1p")},
};

/// Colour of a picture that does not tell it, by its height.
struct ColourRow {
    std::int32_t height;
    std::int32_t primaries;
    std::int32_t transfer;
    std::int32_t matrix;
};
constexpr ColourRow kColours[] = {{480, 6, 6, 6}, {576, 5, 1, 5}, {720, 1, 1, 1}, {1080, 1, 1, 1}};

/// Class 200 has twice the bytes of class 100, and no mark of its own.
constexpr std::int64_t kMostBytesOfClass100 = 20'000'000;

/// 1080 lines are coded as 1088.
std::int32_t LinesOf(const MediaStream& picture) {
    constexpr std::int32_t kFull = 1080;
    return picture.height == kFull + 8 ? kFull : picture.height;
}

template <std::size_t Count>
std::uint32_t FindTag(const TagRow (&rows)[Count], const MediaStream& picture, bool interlaced) {
    const auto* const found =
        std::find_if(std::begin(rows), std::end(rows), [&](const TagRow& row) {
            const bool isFamily =
                row.family == Family::Any || (row.family == Family::Is50) == picture.rate.Is50Hz();
            const bool isScan =
                row.scan == Scan::Any || (row.scan == Scan::Interlaced) == interlaced;
            return picture.pixels.starts_with(row.pixels) && row.height == LinesOf(picture) &&
                   isFamily && isScan;
        });
    return found != std::end(rows) ? found->tag : 0;
}

std::uint32_t TagOf(Essence essence, const MediaStream& picture, bool interlaced,
                    std::int64_t bytesASecond) {
    if (essence == Essence::Dv) {
        return FindTag(kDvTags, picture, interlaced);
    }
    const std::uint32_t tag = essence == Essence::AvcIntra && bytesASecond <= kMostBytesOfClass100
                                  ? FindTag(kAvcIntraTags, picture, interlaced)
                                  : 0;
    return tag != 0 ? tag : Tag("avc1");
}

FieldOrder FieldsOf(Essence essence, const MediaStream& picture, bool interlaced) {
    constexpr std::int32_t kHighDefinition = 720;
    if (essence == Essence::Dv) {
        return picture.height < kHighDefinition    ? FieldOrder::BottomFirst
               : picture.height == kHighDefinition ? FieldOrder::Progressive
                                                   : FieldOrder::TopFirst;
    }
    if (picture.order != FieldOrder::Unknown && picture.order != FieldOrder::Progressive) {
        return picture.order;
    }
    return interlaced ? FieldOrder::TopFirst : FieldOrder::Progressive;
}

} // namespace

Essence EssenceOf(const MediaStream& stream, const std::string& name) {
    if (stream.codec == "dvvideo") {
        return Essence::Dv;
    }
    if (stream.codec == "h264") {
        return stream.isIntra ? Essence::AvcIntra : Essence::H264;
    }
    if (stream.codec == "pcm_s16le" || stream.codec == "pcm_s24le") {
        return Essence::Pcm;
    }
    if (stream.codec == "ac3") {
        return Essence::Ac3;
    }
    throw copy::Failure(name + " holds " + stream.codec +
                        ", which is not put into other containers.");
}

void RequireLegal(RewrapContainer container, const std::vector<Essence>& all) {
    CArray<RewrapEssence> tracks;
    for (const Essence each : all) {
        tracks.Add(each);
    }
    if (const CString obstacle = RewrapObstacle(container, tracks); !obstacle.IsEmpty()) {
        throw copy::Failure(platform::Utf8FromText(obstacle.View()));
    }
}

const char* WriterName(RewrapContainer container) {
    return RowOf(container).writer;
}

const char* ReaderName(RewrapContainer container) {
    return RowOf(container).reader;
}

PictureMarks MarksOf(Essence essence, const MediaStream& picture, RewrapContainer container,
                     bool interlaced, std::int64_t bytesASecond) {
    PictureMarks marks;
    if (container == RewrapContainer::Mov) {
        marks.tag = TagOf(essence, picture, interlaced, bytesASecond);
    }
    marks.order = FieldsOf(essence, picture, interlaced);
    const auto* const colour =
        std::find_if(std::begin(kColours), std::end(kColours),
                     [&](const ColourRow& row) { return row.height == LinesOf(picture); });
    if (!picture.hasColour && colour != std::end(kColours)) {
        marks.primaries = colour->primaries;
        marks.transfer = colour->transfer;
        marks.matrix = colour->matrix;
    }
    return marks;
}

} // namespace nqp2::worker::rewrap
