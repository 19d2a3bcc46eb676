// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/file_layout.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

namespace nqp2::avchd {
namespace {

/// Of a file and of a block: no address leads into it.
constexpr std::uint32_t kHeadSize = 40;
constexpr std::size_t kTagSize = 4;
constexpr std::string_view kVersions[] = {"0100", "0200", "0240", "0300"};

// Addresses in the head of a block.
constexpr std::uint32_t kMarksAddress = 8;
constexpr std::uint32_t kMakersAddress = 12;

constexpr std::uint16_t kAvchdType = 0x1000; // smaller numbers are other formats' own
constexpr std::uint16_t kKnownMaker = 0x0103;
constexpr std::uint8_t kShotList = 0xF0; // has its length in 32 bits, all others in 16

bool IsTagged(Bytes bytes, std::string_view tag) {
    return bytes.size() >= kTagSize && std::memcmp(bytes.data(), tag.data(), kTagSize) == 0;
}

bool IsKnownVersion(Bytes text) {
    return std::any_of(std::begin(kVersions), std::end(kVersions),
                       [text](std::string_view known) { return IsTagged(text, known); });
}

std::uint32_t ReadAddress(ByteReader& reader) {
    const std::uint32_t address = reader.U32();
    return address < kHeadSize ? 0 : address;
}

std::uint32_t AddressIn(Bytes block, std::uint32_t place) {
    ByteReader reader(From(block, place));
    return ReadAddress(reader);
}

struct Entry {
    std::uint16_t kind = 0;
    std::uint32_t address = 0;
    std::uint32_t length = 0;
};

Entry ReadEntry(ByteReader& reader) {
    Entry entry;
    entry.kind = reader.U16();
    reader.Skip(2); // version or model
    entry.address = reader.U32();
    entry.length = reader.U32();
    return entry;
}

/// The data of the entry of one kind in the table of entries at an address, 0 for none. Both
/// tables, that of extensions and that of makers, have the same form; addresses in them count from
/// the length in front of the table.
Bytes EntryData(Bytes bytes, std::uint32_t address, std::uint16_t kind) {
    const Bytes table = address == 0 ? Bytes() : From(bytes, address);
    ByteReader reader(table);
    reader.Skip(4 + 4 + 3); // length, address of the first data, reserved
    const std::uint8_t count = reader.U8();
    for (std::uint8_t i = 0; i < count && reader.IsGood(); ++i) {
        const Entry entry = ReadEntry(reader);
        if (reader.IsGood() && entry.kind == kind) {
            const Bytes data = From(table, entry.address);
            return data.first(std::min<std::size_t>(data.size(), entry.length));
        }
    }
    return {};
}

} // namespace

std::optional<FileHead> DecodeHead(Bytes file, const char (&kind)[5]) {
    ByteReader reader(file);
    if (file.size() < kHeadSize || !IsTagged(reader.Take(kTagSize), kind) ||
        !IsKnownVersion(reader.Take(kTagSize))) {
        return std::nullopt;
    }
    FileHead head;
    std::generate(std::begin(head.sections), std::end(head.sections),
                  [&reader] { return ReadAddress(reader); });
    return head;
}

std::optional<Bytes> NeededSection(Bytes file, std::uint32_t address) {
    ByteReader reader(address == 0 ? Bytes() : From(file, address));
    const Bytes section = reader.Take(reader.U32());
    return reader.IsGood() ? std::optional(section) : std::nullopt;
}

Bytes OptionalSection(Bytes file, std::uint32_t address) {
    ByteReader reader(address == 0 ? Bytes() : From(file, address));
    const std::size_t length = reader.U32();
    return reader.Take(std::min(length, reader.Left()));
}

Bytes ExtensionBlock(Bytes file, std::uint32_t address, const char (&tag)[5]) {
    const Bytes block = EntryData(file, address, kAvchdType);
    return IsTagged(block, tag) ? block : Bytes();
}

Bytes MarksSection(Bytes block) {
    return OptionalSection(block, AddressIn(block, kMarksAddress));
}

Bytes MakersItem(Bytes block, std::uint8_t tag) {
    ByteReader reader(EntryData(block, AddressIn(block, kMakersAddress), kKnownMaker));
    const std::uint16_t count = reader.U16();
    reader.Skip(2);
    for (std::uint16_t i = 0; i < count && reader.IsGood(); ++i) {
        const std::uint8_t itemTag = reader.U8();
        reader.Skip(1); // version
        const std::uint16_t shortLength = reader.U16();
        const std::uint32_t length = itemTag == kShotList ? reader.U32() : shortLength;
        const Bytes data = reader.Take(std::min<std::size_t>(length, reader.Left()));
        if (itemTag == tag) {
            return data;
        }
    }
    return {};
}

} // namespace nqp2::avchd
