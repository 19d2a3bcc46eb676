// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/transport_stream.h"

namespace nqp2::avchd {
namespace {

constexpr std::size_t kPacketSize = 192;
constexpr std::size_t kArrivalTimeSize = 4;
constexpr std::uint8_t kSync = 0x47;

constexpr unsigned kErrorFlag = 0x8000;
constexpr unsigned kStartFlag = 0x4000;
constexpr unsigned kPidBits = 0x1FFF;
constexpr unsigned kScrambledBits = 0xC0;
constexpr unsigned kAdaptationFlag = 0x20;
constexpr unsigned kPayloadFlag = 0x10;

struct Payload {
    Bytes bytes;
    bool starts = false; ///< begins with the header of the packetised stream
};

Payload PayloadOf(Bytes packet, std::uint16_t pid) {
    ByteReader reader(From(packet, kArrivalTimeSize));
    const bool synced = reader.U8() == kSync;
    const unsigned flags = reader.U16();
    const unsigned control = reader.U8();
    if (!synced || (flags & kErrorFlag) != 0 || (flags & kPidBits) != pid ||
        (control & kScrambledBits) != 0 || (control & kPayloadFlag) == 0) {
        return {};
    }
    if ((control & kAdaptationFlag) != 0) {
        reader.Skip(reader.U8());
    }
    return {reader.Take(reader.Left()), (flags & kStartFlag) != 0};
}

/// What follows the header of the packetised stream; empty when that is none.
Bytes BehindHeader(Bytes payload) {
    ByteReader reader(payload);
    const bool isVideo = reader.U32() >> 4U == 0x1EU; // 00 00 01 E0 to EF
    reader.Skip(2 + 2);                               // length, flags
    reader.Skip(reader.U8());
    return isVideo ? reader.Take(reader.Left()) : Bytes();
}

} // namespace

std::vector<std::uint8_t> VideoBytes(Bytes file, std::uint16_t pid) {
    std::vector<std::uint8_t> video;
    bool started = false;
    for (; file.size() >= kPacketSize; file = file.subspan(kPacketSize)) {
        Payload payload = PayloadOf(file.first(kPacketSize), pid);
        if (payload.starts) {
            payload.bytes = BehindHeader(payload.bytes);
            started = true;
        }
        if (started) {
            video.insert(video.end(), payload.bytes.begin(), payload.bytes.end());
        }
    }
    return video;
}

} // namespace nqp2::avchd
