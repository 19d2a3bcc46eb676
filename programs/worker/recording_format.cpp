// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/recording_format.h"

#include "avchd/stream_head.h"
#include "media/rates.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
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

unsigned Byte(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

copy::Failure OfAnotherFormat(const RecordingFormat& format, const std::string& what) {
    const auto text = [](const wchar_t* wide) { return platform::Utf8FromText(wide); };
    const std::string codecClass = text(format.codecClass);
    return copy::Failure("This is no frame of " + text(format.codec) + " at " + text(format.rate) +
                         (codecClass.empty() ? "" : " of class " + codecClass) + ": " + what + ".");
}

// Frames of DV (SMPTE ST 314, ST 370) are sequences of 150 blocks of 80 bytes.
constexpr std::size_t kBlock = 80;
constexpr std::size_t kSequence = 150 * kBlock;

/// The kind of signal that a frame's source pack tells; nothing for a frame without that pack.
std::optional<unsigned> SignalType(std::string_view unit) {
    constexpr std::size_t kPack = 5 * kBlock + 48;
    constexpr unsigned kSourcePack = 0x60;
    constexpr unsigned kTypeMask = 0x1F;
    return Byte(unit, kPack) == kSourcePack ? std::optional(Byte(unit, kPack + 3) & kTypeMask)
                                            : std::nullopt;
}

unsigned SignalTypeOf(const RecordingFormat& format) {
    constexpr std::size_t kLargest25 = 144000;
    switch (format.height) {
    case 1080:
        return 0x14;
    case 720:
        return 0x18;
    default:
        return format.unitSize <= kLargest25 ? 0x00 : 0x04;
    }
}

/// Whether the sequences are numbered as those of one frame, one channel after the other.
bool IsOneFrame(std::string_view unit, std::size_t sequencesOfChannel) {
    constexpr unsigned kSectionMask = 0xE0; // 0: a header block
    for (std::size_t i = 0; i < unit.size() / kSequence; ++i) {
        const std::size_t at = i * kSequence;
        if ((Byte(unit, at) & kSectionMask) != 0 ||
            Byte(unit, at + 1) >> 4U != i % sequencesOfChannel) {
            return false;
        }
    }
    return true;
}

void CheckDvUnit(const RecordingFormat& format, std::string_view unit) {
    constexpr unsigned kSystem50Hz = 0x80;
    if (unit.size() != format.unitSize) {
        throw copy::Failure("A frame of this format has " + std::to_string(format.unitSize) +
                            " bytes, " + std::to_string(unit.size()) + " came.");
    }
    const bool is50Hz = (Byte(unit, 3) & kSystem50Hz) != 0;
    if (is50Hz != RateOf(format).Is50Hz()) {
        throw OfAnotherFormat(format, is50Hz ? "it is one of 50 Hz" : "it is one of 60 Hz");
    }
    if (!IsOneFrame(unit, is50Hz ? 12 : 10)) {
        throw OfAnotherFormat(format, "its sequences are not those of one frame");
    }
    if (SignalType(unit).value_or(SignalTypeOf(format)) != SignalTypeOf(format)) {
        throw OfAnotherFormat(format, "it says that it is of another raster or class");
    }
}

/// What AVC-Intra of class 100 takes for a frame; class 200 takes twice as much.
std::size_t SizeOfClass100(const RecordingFormat& format) {
    if (format.height == 1080) {
        return RateOf(format).Is50Hz() ? 568832 : 472576;
    }
    return RateOf(format).Is50Hz() ? 284672 : 236544;
}

/// Classes 100 and 200 have the same profile and rasters. Above 30 frames a second 1080 lines come
/// in class 200 alone, whose frames are smaller then.
bool IsOfClass(const RecordingFormat& format, std::size_t size) {
    const std::wstring_view codecClass = format.codecClass;
    const bool isLarge = size > SizeOfClass100(format) * 3 / 2;
    const bool isOnlyOne = format.height == 1080 && RateOf(format).PerSecond() > 30;
    return isOnlyOne || codecClass == L"50" || isLarge == (codecClass == L"200");
}

bool IsOfRate(const RecordingFormat& format, const avchd::SequenceParameters& parameters) {
    constexpr double kTolerance = 0.005;
    const double wanted = RateOf(format).PerSecond();
    const double told = parameters.unitsPerSecond / (2.0 * parameters.unitsPerTick);
    return parameters.unitsPerTick == 0 || parameters.unitsPerSecond == 0 ||
           std::abs(told / wanted - 1) < kTolerance;
}

void CheckParameters(const RecordingFormat& format, const avchd::SequenceParameters& parameters,
                     std::size_t size) {
    constexpr unsigned kHigh10 = 110;  // class 50
    constexpr unsigned kHigh422 = 122; // the others
    const bool isClass50 = std::wstring_view(format.codecClass) == L"50";
    const bool isInterlaced = RateOf(format).IsInterlaced();
    if (parameters.pixels != format.width || parameters.lines != format.height) {
        throw OfAnotherFormat(format, "it has " + std::to_string(parameters.pixels) + " x " +
                                          std::to_string(parameters.lines) + " pixels");
    }
    if (!IsOfRate(format, parameters) || (isInterlaced && !parameters.isFieldCoded)) {
        throw OfAnotherFormat(format, "it is of another rate");
    }
    if (parameters.profile != (isClass50 ? kHigh10 : kHigh422) || !IsOfClass(format, size)) {
        throw OfAnotherFormat(format, "it is of another class");
    }
}

void CheckAvcUnit(const RecordingFormat& format, std::string_view unit, bool first) {
    constexpr std::size_t kShortest = 8;
    const bool isAnnexB =
        unit.size() >= kShortest && (unit.starts_with(std::string_view("\0\0\1", 3)) ||
                                     unit.starts_with(std::string_view("\0\0\0\1", 4)));
    if (!isAnnexB) {
        throw copy::Failure("This is no access unit of AVC in the form of Annex B.");
    }
    if (!first) {
        return;
    }
    const auto parameters =
        avchd::DecodeVideoHead({reinterpret_cast<const std::uint8_t*>(unit.data()), unit.size()})
            .parameters;
    if (!parameters) {
        throw copy::Failure("The first access unit carries no parameter sets.");
    }
    CheckParameters(format, *parameters, unit.size());
}

} // namespace

const RecordingFormat* FindRecordingFormat(eCodeType type) {
    const auto* const found =
        std::find_if(std::begin(kFormats), std::end(kFormats),
                     [type](const RecordingFormat& format) { return format.type == type; });
    return found != std::end(kFormats) ? found : nullptr;
}

const FrameRate& RateOf(const RecordingFormat& format) {
    static constexpr FrameRate kNone;
    const FrameRate* const rate = media::FindRate(format.rate);
    return rate != nullptr ? *rate : kNone;
}

void CheckAccessUnit(const RecordingFormat& format, std::string_view unit, bool first) {
    if (format.essence == VideoCodec::Dv) {
        CheckDvUnit(format, unit);
    } else {
        CheckAvcUnit(format, unit, first);
    }
}

CString CodecName(const RecordingFormat& format, std::string_view unit) {
    constexpr std::size_t kApplication = 4; // of the first header block; 0: the consumers' format
    constexpr unsigned kApplicationMask = 7;
    const bool isConsumers = format.essence == VideoCodec::Dv && RateOf(format).Is50Hz() &&
                             format.unitSize == 144000 &&
                             (Byte(unit, kApplication) & kApplicationMask) == 0;
    return isConsumers ? L"DV25_420" : format.codec;
}

} // namespace nqp2::worker
