// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "capacity/recording_cost.h"

#include "media/families.h"

#include <limits>

namespace nqp2::capacity {
namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();

struct FamilyCost {
    std::int64_t frameBytes; ///< at every standard but 50i
    std::int64_t frameBytes50i;
    std::int64_t headerTail; ///< header bytes beyond the common block
};

// Indexed by CodeTypeFamily.
constexpr FamilyCost kFamilies[] = {
    {120000, 144000, 224}, {240000, 288000, 224}, {480000, 576000, 224},
    {480000, 576000, 836}, {240000, 288000, 836}, {0, 0, 224},
};

constexpr std::int64_t kHeaderBlock = 32768;
constexpr std::int64_t kTrailer = 32768 + 224;
constexpr std::int64_t kReserve = 5242880;
constexpr std::int64_t kAudioChannels = 4;
constexpr std::int64_t kNarrowAudio = 3840; ///< bytes a frame and channel
constexpr std::int64_t kWideAudio = 5760;
constexpr std::int64_t kFileLimit = 4250912992; ///< 4 GiB less 44054304 bytes

std::int64_t Product(std::int64_t left, std::int64_t right) {
    std::int64_t result = 0;
    if (__builtin_mul_overflow(left, right, &result)) {
        return (left < 0) == (right < 0) ? kMost : kLeast;
    }
    return result;
}

std::int64_t Sum(std::int64_t left, std::int64_t right) {
    std::int64_t result = 0;
    if (__builtin_add_overflow(left, right, &result)) {
        return left > 0 ? kMost : kLeast;
    }
    return result;
}

} // namespace

std::int64_t RecordingCost::Space(std::int64_t frames) const {
    return Sum(Product(frames, videoBytes + audioBytes), overhead);
}

bool RecordingCost::Fits(std::int64_t frames, std::int64_t freeBytes) const {
    const std::int64_t need = Space(frames);
    return need != kMost && freeBytes >= need;
}

std::int64_t RecordingCost::Frames(std::int64_t space) const {
    return Sum(space, -overhead) / (videoBytes + audioBytes);
}

RecordingCost CostOf(eCodeType codeType, bool wideAudio, eP2_VIDEO_STANDARD standard) {
    const FamilyCost& family = kFamilies[static_cast<int>(media::FamilyOf(codeType))];
    RecordingCost cost;
    cost.videoBytes = standard == VS_50I ? family.frameBytes50i : family.frameBytes;
    cost.audioBytes = kAudioChannels * (wideAudio ? kWideAudio : kNarrowAudio);
    cost.headerBytes = kHeaderBlock + family.headerTail;
    cost.overhead = cost.headerBytes + kTrailer + kReserve;
    return cost;
}

FileLimit LimitOfFile(const RecordingCost& cost) {
    if (cost.videoBytes == 0) {
        return {};
    }
    // In 32 bits, where a division takes a fraction of the time.
    static_assert(kFileLimit <= std::numeric_limits<std::uint32_t>::max());
    const auto space = static_cast<std::uint32_t>(kFileLimit - cost.headerBytes);
    const std::int64_t frames = space / static_cast<std::uint32_t>(cost.videoBytes) + 1;
    return {frames, cost.Space(frames)};
}

} // namespace nqp2::capacity
