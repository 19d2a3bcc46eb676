// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"

#include <array>
#include <bitset>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Writes the bytes of AVCHD files for tests: small, sound, and easy to damage.
namespace nqp2::test {

inline avchd::Bytes BytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// A number's big-endian bytes.
inline std::string Be(std::uint64_t number, int width) {
    std::string bytes;
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) {
        bytes += static_cast<char>(number >> static_cast<unsigned>(shift) & 0xFFU);
    }
    return bytes;
}
inline std::string Zeros(std::size_t count) {
    return std::string(count, '\0');
}
/// Bytes with the length that a file puts in front of them.
inline std::string Counted(const std::string& bytes, int width) {
    return Be(bytes.size(), width) + bytes;
}

inline const std::string kNoTimecode = "\xFF\xFF\xFF\xFF";
/// 2011-01-28 13:45:07.
inline const std::string kDate = "\x20\x11\x01\x28\x13\x45\x07";
/// The identifier's first bytes are a label's, its last 16 the numbers 1 to 16.
inline std::string ClipIdBytes() {
    std::string id = "\x06\x0A\x2B\x34" + Zeros(12);
    for (char i = 1; i <= 16; ++i) {
        id += i;
    }
    return id;
}

struct ItemSpec {
    std::string name = "00000";
    std::uint32_t in = 38700;
    std::uint32_t out = 38700 + 18000;
    unsigned connection = 1;
    unsigned format = 4;
    unsigned rate = 3;
};

struct MarkSpec {
    std::uint32_t item = 0;
    std::uint32_t time = 38700;
    unsigned pulldown = 0;
    std::string date = kDate;
    std::string timecode = kNoTimecode;
    bool isEntry = true;
    std::string name = {};
    unsigned zone = 0;
};

inline std::string VideoAttributes(unsigned format, unsigned rate) {
    return Counted("\x1B" + Be(format << 4U | rate, 1) + Zeros(3), 1);
}

inline std::string StreamTable(const ItemSpec& item) {
    const std::string entry = Counted("\x01\x10\x11" + Zeros(6), 1);
    return Counted(Zeros(2) + "\x01" + Zeros(7) + Zeros(4) + entry +
                       VideoAttributes(item.format, item.rate),
                   2);
}

inline std::string PlayItemBytes(const ItemSpec& item) {
    return Counted(item.name + "M2TS" + Be(item.connection, 2) + Zeros(1) + Be(item.in, 4) +
                       Be(item.out, 4) + Zeros(12) + StreamTable(item),
                   2);
}

/// A table of one entry and its data, as extensions and makers' data both have it.
inline std::string OneEntryTable(unsigned kind, const std::string& data) {
    return Counted(Be(24, 4) + Zeros(3) + "\x01" + Be(kind, 2) + Be(0x0100, 2) + Be(24, 4) +
                       Be(data.size(), 4) + data,
                   4);
}

/// The block that starts with the tag, its two parts behind a body of the given length.
inline std::string TaggedBlock(const std::string& tag, const std::string& body,
                               const std::string& marks, const std::string& makersData) {
    const std::size_t marksAt = 40 + body.size();
    const std::size_t makersAt = makersData.empty() ? 0 : marksAt + marks.size();
    return tag + Zeros(4) + Be(marks.empty() ? 0 : marksAt, 4) + Be(makersAt, 4) + Zeros(24) +
           body + marks + makersData;
}

inline std::string MarkExtension(const MarkSpec& mark) {
    return Zeros(7) + Be(mark.pulldown << 1U, 1) + Zeros(2) + Be(mark.zone, 1) + mark.date +
           "\x90" + Be(mark.name.size(), 1) + mark.name + Zeros(24 - mark.name.size() + 16) +
           mark.timecode + Zeros(2);
}

/// One entry of the maker's list of shots.
inline std::string ShotEntry(const std::string& id) {
    return "\x40" + Zeros(1) + Counted("\x01" + id + Zeros(20), 2);
}

struct PlaylistSpec {
    std::vector<ItemSpec> items = {ItemSpec()};
    std::vector<MarkSpec> marks = {};
    std::vector<std::string> shotIds = {}; ///< an identifier a mark, or none at all
    std::string version = "0100";
};

inline std::string PlaylistExtension(const PlaylistSpec& spec) {
    std::string marks = Be(spec.marks.size(), 2);
    std::string shots = Be(spec.shotIds.size(), 2) + Zeros(2);
    for (const MarkSpec& mark : spec.marks) {
        marks += MarkExtension(mark);
    }
    for (const std::string& id : spec.shotIds) {
        shots += ShotEntry(id);
    }
    // An unknown item stands before the list that counts.
    const std::string makersData = Be(2, 2) + Zeros(2) + "\x77\x01" + Counted("\xF0\x01??", 2) +
                                   "\xF0\x01" + Zeros(2) + Counted(shots, 4);
    return OneEntryTable(
        0x1000, TaggedBlock("PLEX", Counted(Zeros(280), 4), Counted(marks, 4),
                            spec.shotIds.empty() ? "" : OneEntryTable(0x0103, makersData)));
}

inline std::string PlaylistBytes(const PlaylistSpec& spec) {
    std::string items = Zeros(2) + Be(spec.items.size(), 2) + Zeros(2);
    for (const ItemSpec& item : spec.items) {
        items += PlayItemBytes(item);
    }
    std::string marks = Be(spec.marks.size(), 2);
    for (const MarkSpec& mark : spec.marks) {
        marks += Zeros(1) + Be(mark.isEntry ? 1 : 2, 1) + Be(mark.item, 2) + Be(mark.time, 4) +
                 Be(0xFFFF, 2) + Zeros(4);
    }
    const std::size_t marksAt = 58 + 4 + items.size();
    const std::size_t extensionAt = marksAt + 4 + marks.size();
    return "MPLS" + spec.version + Be(58, 4) + Be(marksAt, 4) + Be(extensionAt, 4) + Zeros(20) +
           Counted(Zeros(14), 4) + Counted(items, 4) + Counted(marks, 4) + PlaylistExtension(spec);
}

struct ClipSpec {
    std::vector<std::array<std::uint32_t, 2>> stretches = {{38700, 38700 + 18000}};
    unsigned coding = 0x1B;
    unsigned format = 4;
    unsigned rate = 3;
    unsigned aspect = 3;
    std::vector<unsigned> audio = {3}; ///< presentation of each sound stream
    std::string clipId = {};
    std::string timecode = kNoTimecode;
    std::uint32_t packets = 0;
    unsigned maker = 0x0108;
};

inline std::string ProgramBytes(const ClipSpec& spec) {
    std::string streams =
        Be(0x1011, 2) + Counted(Be(spec.coding, 1) + Be(spec.format << 4U | spec.rate, 1) +
                                    Be(spec.aspect << 4U, 1) + Zeros(18),
                                1);
    for (const unsigned presentation : spec.audio) {
        streams +=
            Be(0x1100, 2) + Counted("\x80" + Be(presentation << 4U | 1U, 1) + "und" + Zeros(16), 1);
    }
    return Zeros(1) + "\x01" + Zeros(4) + Be(0x100, 2) + Be(1 + spec.audio.size(), 1) + Zeros(1) +
           streams;
}

inline std::string ClipExtension(const ClipSpec& spec) {
    const std::string data = Be(2, 2) + Zeros(2) + "\xE0\x01" + Counted(Zeros(16), 2) + "\xE2\x01" +
                             Counted(spec.clipId + spec.timecode + Zeros(4), 2);
    return OneEntryTable(
        0x1000, TaggedBlock("CLEX", Counted(Be(spec.maker, 2) + Be(0x3001, 2) + Zeros(36), 4), "",
                            OneEntryTable(0x0103, data)));
}

inline std::string ClipBytes(const ClipSpec& spec) {
    std::string sequences = Zeros(1) + "\x01" + Zeros(4) + Be(spec.stretches.size(), 1) + Zeros(1);
    for (const auto& [start, end] : spec.stretches) {
        sequences += Be(0x1001, 2) + Zeros(4) + Be(start, 4) + Be(end, 4);
    }
    const std::string programs = ProgramBytes(spec);
    const std::size_t programsAt = 60 + 4 + sequences.size();
    const std::size_t extensionAt = programsAt + 4 + programs.size();
    const bool extended = !spec.clipId.empty();
    return "HDMV0100" + Be(60, 4) + Be(programsAt, 4) + Zeros(8) +
           Be(extended ? extensionAt : 0, 4) + Zeros(12) +
           Counted(Zeros(12) + Be(spec.packets, 4), 4) + Counted(sequences, 4) +
           Counted(programs, 4) + (extended ? ClipExtension(spec) : "");
}

/// A number of variable length, as digits.
inline std::string Digits(std::uint32_t value) {
    const std::string bits = std::bitset<33>(std::uint64_t{value} + 1).to_string();
    const std::size_t first = bits.find('1');
    return std::string(bits.size() - 1 - first, '0') + bits.substr(first);
}
/// The bytes of binary digits, filled up as parameter sets are.
inline std::string Packed(std::string digits) {
    digits += '1';
    digits.resize((digits.size() + 7) / 8 * 8, '0');
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 8) {
        bytes += static_cast<char>(std::bitset<8>(digits, i, 8).to_ulong());
    }
    return bytes;
}

struct SetSpec {
    unsigned profile = 100;
    std::uint32_t across = 120; ///< macroblocks
    std::uint32_t down = 34;    ///< macroblocks of a field when interlaced
    bool interlaced = true;
    std::uint32_t cutBottom = 2;
    unsigned shape = 1;
    std::uint32_t extraDepth = 0;
    bool scaled = false; ///< with scaling lists
    unsigned order = 0;  ///< how pictures are put in order
};

/// A sequence parameter set without its header byte.
inline std::string ParameterSet(const SetSpec& spec) {
    std::string bits = std::bitset<24>(spec.profile << 16U | 40U).to_string() + '1';
    if (spec.profile >= 100) {
        bits += "010" + Digits(spec.extraDepth) + (spec.scaled ? "101" : "100");
    }
    if (spec.scaled) { // the first list ends at once, the second runs to its end
        bits += '1' + Digits(16) + '1';
        for (int i = 0; i < 16; ++i) {
            bits += Digits(1);
        }
        bits += "000000";
    }
    const char* const orders[] = {"1", "0110101", ""}; // the second with a cycle of one
    bits += '1' + Digits(spec.order) + orders[spec.order] + "0100" + Digits(spec.across - 1) +
            Digits(spec.down - 1) + (spec.interlaced ? "000" : "10") + "1111" +
            Digits(spec.cutBottom) + "11" + std::bitset<8>(spec.shape).to_string() +
            (spec.shape == 255 ? std::bitset<32>(0x40003).to_string() : "") + "0000";
    return Packed(bits);
}

/// Side information with date and timecode packs.
inline std::string DatePacks(const std::string& timecode) {
    const std::string message = std::string("\x17\xEE\x8C\x60\xF8\x4D\x11\xD9\x8C\xD6\x08") + '\0' +
                                "\x20\x0C\x9A\x66MDPM\x04\x13" + timecode +
                                "\x18\x12\x20\x11\x01\x19\x28\x13\x45\x07\xE0\x01\x08\x20\x01";
    return "\x06\x05" + Be(message.size(), 1) + message + "\x80";
}

inline std::string Unit(const std::string& bytes) {
    return Zeros(3) + "\x01" + bytes;
}

/// The packets of one packetised unit of the video stream 0x1011, the last filled up in front.
inline std::string Packets(const std::string& elementary) {
    constexpr std::size_t kRoom = 184;
    std::string rest =
        Zeros(2) + "\x01\xE0" + Zeros(2) + "\x84\x80\x05" + std::string(5, '\x21') + elementary;
    std::string packets;
    for (unsigned flags = 0x4000; !rest.empty(); flags = 0) {
        const std::string payload = rest.substr(0, kRoom);
        std::string filling(kRoom - payload.size(), '\xFF');
        filling.replace(0, 2, (Be(filling.size() - 1, 1) + Zeros(1)).substr(0, filling.size()));
        packets += Zeros(4) + "\x47" + Be(flags | 0x1011U, 2) + (filling.empty() ? "\x10" : "\x30");
        packets += filling + payload;
        rest.erase(0, payload.size());
    }
    return packets;
}

/// The beginning of a stream up to and into its first picture.
inline std::string StreamBytes(const SetSpec& set, const std::string& sideInformation = {}) {
    const std::string side = sideInformation.empty() ? "" : Unit(sideInformation);
    return Packets(Unit("\x09\x10") + Unit("\x67" + ParameterSet(set)) + side +
                   Unit("\x65" + std::string(400, '\x55')) + Unit("\x09\x10"));
}

} // namespace nqp2::test
