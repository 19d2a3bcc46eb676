// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/recording_format.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace nqp2::worker {
namespace {

constexpr VideoCodec kDv = VideoCodec::Dv;
constexpr VideoCodec kAvc = VideoCodec::AvcIntra;

// The sizes of DV access units are those of SMPTE ST 314 and ST 370.
constexpr RecordingFormat kFormats[] = {
    {CT_DV25_50I, L"DV25_411", L"", L"50i", kDv, 720, 576, 144000, false},
    {CT_DV25_25P, L"DV25_411", L"", L"25p", kDv, 720, 576, 144000, false},
    {CT_DV25_5994I, L"DV25_411", L"", L"59.94i", kDv, 720, 480, 120000, false},
    {CT_DV25_2997P, L"DV25_411", L"", L"29.97p", kDv, 720, 480, 120000, false},
    {CT_DV50_50I, L"DV50_422", L"", L"50i", kDv, 720, 576, 288000, false},
    {CT_DV50_25P, L"DV50_422", L"", L"25p", kDv, 720, 576, 288000, false},
    {CT_DV50_5994I, L"DV50_422", L"", L"59.94i", kDv, 720, 480, 240000, false},
    {CT_DV50_2997P, L"DV50_422", L"", L"29.97p", kDv, 720, 480, 240000, false},
    {CT_DV100_1080_50I, L"DV100_1080/50i", L"", L"50i", kDv, 1440, 1080, 576000, true},
    {CT_DV100_1080_25P, L"DV100_1080/50i", L"", L"25p", kDv, 1440, 1080, 576000, true},
    {CT_DV100_1080_5994I, L"DV100_1080/59.94i", L"", L"59.94i", kDv, 1280, 1080, 480000, true},
    {CT_DV100_1080_2997P, L"DV100_1080/59.94i", L"", L"29.97p", kDv, 1280, 1080, 480000, true},
    {CT_DV100_720_50P, L"DV100_720/50p", L"", L"50p", kDv, 960, 720, 288000, true},
    {CT_DV100_720_25P, L"DV100_720/50p", L"", L"25p", kDv, 960, 720, 288000, true},
    {CT_DV100_720_5994P, L"DV100_720/59.94p", L"", L"59.94p", kDv, 960, 720, 240000, true},
    {CT_DV100_720_2997P, L"DV100_720/59.94p", L"", L"29.97p", kDv, 960, 720, 240000, true},
    {CT_AVCI100_1080_50I, L"AVC-I_1080/50i", L"100", L"50i", kAvc, 1920, 1080, 0, true},
    {CT_AVCI100_1080_25P, L"AVC-I_1080/25p", L"100", L"25p", kAvc, 1920, 1080, 0, true},
    {CT_AVCI100_1080_5994I, L"AVC-I_1080/59.94i", L"100", L"59.94i", kAvc, 1920, 1080, 0, true},
    {CT_AVCI100_1080_2997P, L"AVC-I_1080/29.97p", L"100", L"29.97p", kAvc, 1920, 1080, 0, true},
    {CT_AVCI100_720_50P, L"AVC-I_720/50p", L"100", L"50p", kAvc, 1280, 720, 0, true},
    {CT_AVCI100_720_5994P, L"AVC-I_720/59.94p", L"100", L"59.94p", kAvc, 1280, 720, 0, true},
    {CT_AVCI50_1080_50I, L"AVC-I_1080/50i", L"50", L"50i", kAvc, 1440, 1080, 0, true},
    {CT_AVCI50_1080_25P, L"AVC-I_1080/25p", L"50", L"25p", kAvc, 1440, 1080, 0, true},
    {CT_AVCI50_1080_5994I, L"AVC-I_1080/59.94i", L"50", L"59.94i", kAvc, 1440, 1080, 0, true},
    {CT_AVCI50_1080_2997P, L"AVC-I_1080/29.97p", L"50", L"29.97p", kAvc, 1440, 1080, 0, true},
    {CT_AVCI50_720_50P, L"AVC-I_720/50p", L"50", L"50p", kAvc, 960, 720, 0, true},
    {CT_AVCI50_720_5994P, L"AVC-I_720/59.94p", L"50", L"59.94p", kAvc, 960, 720, 0, true},
    {CT_AVCI200_1080_50I, L"AVC-I_1080/50i", L"200", L"50i", kAvc, 1920, 1080, 0, true},
    {CT_AVCI200_1080_5994I, L"AVC-I_1080/59.94i", L"200", L"59.94i", kAvc, 1920, 1080, 0, true},
    {CT_AVCI200_1080_25P, L"AVC-I_1080/25p", L"200", L"25p", kAvc, 1920, 1080, 0, true},
    {CT_AVCI200_1080_2997P, L"AVC-I_1080/29.97p", L"200", L"29.97p", kAvc, 1920, 1080, 0, true},
    {CT_AVCI200_1080_50P, L"AVC-I_1080/50p", L"200", L"50p", kAvc, 1920, 1080, 0, true},
    {CT_AVCI200_1080_5994P, L"AVC-I_1080/59.94p", L"200", L"59.94p", kAvc, 1920, 1080, 0, true},
    {CT_AVCI200_720_50P, L"AVC-I_720/50p", L"200", L"50p", kAvc, 1280, 720, 0, true},
    {CT_AVCI200_720_5994P, L"AVC-I_720/59.94p", L"200", L"59.94p", kAvc, 1280, 720, 0, true},
};

bool Is50Hz(const RecordingFormat& format) {
    const CString rate = format.rate;
    return rate == L"50i" || rate == L"25p" || rate == L"50p";
}

unsigned Byte(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

Outcome CheckDvUnit(const RecordingFormat& format, std::string_view unit) {
    constexpr unsigned kSectionMask = 0xE0; // 0: a header block
    constexpr unsigned kSystem50Hz = 0x80;
    if (unit.size() != format.unitSize) {
        return Failure("A frame of this format has " + std::to_string(format.unitSize) +
                       " bytes, " + std::to_string(unit.size()) + " came.");
    }
    const bool is50Hz = (Byte(unit, 3) & kSystem50Hz) != 0;
    return (Byte(unit, 0) & kSectionMask) == 0 && is50Hz == Is50Hz(format)
               ? Outcome()
               : Failure("This is no frame of DV of that rate.");
}

/// Whether an Annex B stream holds a unit of that type near its beginning.
bool HoldsUnit(std::string_view stream, unsigned wantedType) {
    constexpr std::size_t kNear = 4096;
    constexpr unsigned kTypeMask = 0x1F;
    const std::string_view startCode("\0\0\1", 3);
    const std::string_view head = stream.substr(0, kNear);
    for (std::size_t at = head.find(startCode); at < head.size() - startCode.size();
         at = head.find(startCode, at + 1)) {
        if ((Byte(head, at + startCode.size()) & kTypeMask) == wantedType) {
            return true;
        }
    }
    return false;
}

Outcome CheckAvcUnit(std::string_view unit, bool first) {
    constexpr unsigned kSequenceParameters = 7;
    constexpr std::size_t kShortest = 8;
    const bool isAnnexB =
        unit.size() >= kShortest && (unit.starts_with(std::string_view("\0\0\1", 3)) ||
                                     unit.starts_with(std::string_view("\0\0\0\1", 4)));
    if (!isAnnexB) {
        return Failure("This is no access unit of AVC in the form of Annex B.");
    }
    return !first || HoldsUnit(unit, kSequenceParameters)
               ? Outcome()
               : Failure("The first access unit carries no parameter sets.");
}

} // namespace

const RecordingFormat* FindRecordingFormat(eCodeType type) {
    const auto* const found =
        std::find_if(std::begin(kFormats), std::end(kFormats),
                     [type](const RecordingFormat& format) { return format.type == type; });
    return found != std::end(kFormats) ? found : nullptr;
}

Outcome CheckAccessUnit(const RecordingFormat& format, std::string_view unit, bool first) {
    return format.essence == VideoCodec::Dv ? CheckDvUnit(format, unit) : CheckAvcUnit(unit, first);
}

CString CodecName(const RecordingFormat& format, std::string_view unit) {
    constexpr std::size_t kApplication = 4; // of the first header block; 0: the consumers' format
    constexpr unsigned kApplicationMask = 7;
    const bool isConsumers = format.essence == VideoCodec::Dv && Is50Hz(format) &&
                             format.unitSize == 144000 &&
                             (Byte(unit, kApplication) & kApplicationMask) == 0;
    return isConsumers ? L"DV25_420" : format.codec;
}

} // namespace nqp2::worker
