// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/lpcm.h"

#include <cstddef>

namespace nqp2::worker::rewrap {
namespace {

constexpr std::size_t kHead = 4;

unsigned ByteAt(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

} // namespace

LpcmFormat LpcmFormatOf(std::string_view unit) {
    constexpr unsigned kMono = 1;
    constexpr unsigned kStereo = 3;
    constexpr unsigned k48 = 1;                       // kHz
    constexpr std::int32_t kBits[] = {0, 16, 24, 24}; // 20 bits lie in 24
    if (unit.size() < kHead) {
        return {};
    }
    const unsigned assignment = ByteAt(unit, 2) >> 4U;
    const bool isKnown =
        (ByteAt(unit, 2) & 0xFU) == k48 && (assignment == kMono || assignment == kStereo);
    const std::int32_t bits = kBits[ByteAt(unit, 3) >> 6U];
    return isKnown && bits != 0 ? LpcmFormat{assignment == kMono ? 1 : 2, bits} : LpcmFormat();
}

bool UnpackLpcm(std::string_view unit, const LpcmFormat& format, std::string& samples) {
    constexpr std::size_t kStored = 2; // channels
    const auto width = static_cast<std::size_t>(format.bits / 8);
    const auto channels = static_cast<std::size_t>(format.channels);
    const std::string_view stored = unit.substr(kHead);
    if (stored.size() % (kStored * width) != 0) {
        return false;
    }
    samples.resize(stored.size() / kStored * channels);
    std::size_t to = 0;
    for (std::size_t at = 0; at < stored.size(); at += kStored * width) {
        for (std::size_t byte = 0; byte < channels * width; ++byte) {
            const std::size_t sample = byte / width * width;
            samples[to++] = stored[at + sample + width - 1 - byte % width];
        }
    }
    return true;
}

} // namespace nqp2::worker::rewrap
