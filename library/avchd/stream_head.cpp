// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/stream_head.h"

#include "avchd/limits.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <vector>

namespace nqp2::avchd {
namespace {

// Packets.
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

// Kinds of units.
constexpr unsigned kPicture = 1;
constexpr unsigned kKeyPicture = 5;
constexpr unsigned kSideInformation = 6;
constexpr unsigned kParameterSet = 7;

constexpr std::uint8_t kStartCode[] = {0, 0, 1};

// Side information: one that says by 16 bytes whose it is, and what recorders write behind that.
constexpr std::size_t kOwnedData = 5;
constexpr std::uint8_t kPackOwner[] = {0x17, 0xEE, 0x8C, 0x60, 0xF8, 0x4D, 0x11, 0xD9, 0x8C, 0xD6,
                                       0x08, 0x00, 0x20, 0x0C, 0x9A, 0x66, 'M',  'D',  'P',  'M'};

// Packs: a tag and four bytes.
constexpr std::size_t kPackSize = 4;
constexpr std::uint8_t kTimecodePack = 0x13;
constexpr std::uint8_t kYearPack = 0x18;  // zone, century, year, month
constexpr std::uint8_t kTimePack = 0x19;  // day, hour, minute, second
constexpr std::uint8_t kMakerPack = 0xE0; // maker, model

/// Takes out the byte that keeps a start code from appearing inside of a unit.
std::vector<std::uint8_t> WithoutEmulation(Bytes unit) {
    std::vector<std::uint8_t> plain;
    plain.reserve(unit.size());
    int zeros = 0;
    for (const std::uint8_t byte : unit) {
        if (zeros == 2 && byte == 3) {
            zeros = 0;
            continue;
        }
        zeros = byte == 0 ? std::min(zeros + 1, 2) : 0;
        plain.push_back(byte);
    }
    return plain;
}

void ReadPacks(ByteReader reader, StreamHead& head) {
    std::array<std::uint8_t, 7> date = {};
    std::size_t dateParts = 0;
    const std::uint8_t count = reader.U8();
    for (std::uint8_t i = 0; i < count && reader.Left() > kPackSize; ++i) {
        const std::uint8_t tag = reader.U8();
        const Bytes pack = reader.Take(kPackSize);
        if (tag == kTimecodePack) {
            head.timecode = DecodeTimecode(pack);
        } else if (tag == kYearPack) {
            head.zone = pack[0];
            std::copy(pack.begin() + 1, pack.end(), date.begin());
            ++dateParts;
        } else if (tag == kTimePack) {
            std::copy(pack.begin(), pack.end(), date.begin() + 3);
            ++dateParts;
        } else if (tag == kMakerPack) {
            ByteReader numbers(pack);
            head.recorder.maker = numbers.U16();
            head.recorder.model = numbers.U16();
        }
    }
    if (dateParts == 2) {
        head.date = DecodeDate(date);
    }
}

/// A number written as any count of 255s and a rest.
std::size_t ReadSum(ByteReader& reader) {
    constexpr std::uint8_t kGoesOn = 255;
    std::size_t sum = 0;
    std::uint8_t part = kGoesOn;
    while (part == kGoesOn && reader.Left() != 0) {
        part = reader.U8();
        sum += part;
    }
    return sum;
}

void ReadSideInformation(Bytes unit, StreamHead& head) {
    ByteReader reader(unit);
    while (reader.IsGood() && reader.Left() > 2) {
        const std::size_t kind = ReadSum(reader);
        const std::size_t size = ReadSum(reader);
        ByteReader message(reader.Take(size));
        const Bytes owner = message.Take(std::size(kPackOwner));
        if (kind == kOwnedData && message.IsGood() &&
            std::memcmp(owner.data(), kPackOwner, owner.size()) == 0) {
            ReadPacks(message, head);
        }
    }
}

/// Reads one unit, its start code taken off.
void ReadUnit(Bytes unit, StreamHead& head) {
    const unsigned kind = unit.empty() ? 0U : unit[0] & 0x1FU;
    if (kind == kPicture || kind == kKeyPicture) {
        head.complete = head.parameters.has_value();
        return;
    }
    const bool isSet = kind == kParameterSet && !head.parameters;
    if ((!isSet && kind != kSideInformation) || unit.size() > kMaxStreamUnit) {
        return;
    }
    const std::vector<std::uint8_t> plain = WithoutEmulation(unit.subspan(1));
    if (isSet) {
        head.parameters = DecodeSequenceParameters(plain);
    } else {
        ReadSideInformation(plain, head);
    }
}

/// Cuts off everything up to and with the next start code, and returns what stood before it.
Bytes TakeUnit(Bytes& video) {
    const auto found =
        std::search(video.begin(), video.end(), std::begin(kStartCode), std::end(kStartCode));
    const Bytes unit = video.first(static_cast<std::size_t>(found - video.begin()));
    video = From(video, unit.size() + std::size(kStartCode));
    return unit;
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

StreamHead DecodeVideoHead(Bytes video) {
    StreamHead head;
    TakeUnit(video); // what is before the first start code
    while (!video.empty() && !head.complete) {
        ReadUnit(TakeUnit(video), head);
    }
    return head;
}

StreamHead DecodeStreamHead(Bytes file, std::uint16_t videoPid) {
    return DecodeVideoHead(VideoBytes(file, videoPid));
}

} // namespace nqp2::avchd
