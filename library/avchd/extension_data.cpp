// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/extension_data.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace nqp2::avchd {
namespace {

constexpr std::uint16_t kAvchdType = 0x1000; // smaller numbers are other formats' own
constexpr std::uint32_t kBlockHeadSize = 40;
constexpr std::uint16_t kKnownMaker = 0x0103;
constexpr std::uint8_t kShotList = 0xF0; // has its length in 32 bits, all others in 16

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

/// The data of the entry of one kind in a table of entries. Both tables, that of extensions and
/// that of makers, have the same form; addresses count from the length in front of the table.
Bytes EntryData(Bytes bytes, std::uint16_t kind) {
    ByteReader reader(bytes);
    reader.Skip(4 + 4 + 3); // length, address of the first data, reserved
    const std::uint8_t count = reader.U8();
    for (std::uint8_t i = 0; i < count && reader.IsGood(); ++i) {
        const Entry entry = ReadEntry(reader);
        if (reader.IsGood() && entry.kind == kind) {
            const Bytes data = From(bytes, entry.address);
            return data.first(std::min<std::size_t>(data.size(), entry.length));
        }
    }
    return {};
}

} // namespace

Bytes ExtensionBlock(Bytes file, std::uint32_t address, const char (&tag)[5]) {
    constexpr std::size_t kTagLength = 4;
    const Bytes block = address == 0 ? Bytes() : EntryData(From(file, address), kAvchdType);
    const bool tagged =
        block.size() >= kTagLength && std::memcmp(block.data(), tag, kTagLength) == 0;
    return tagged ? block : Bytes();
}

std::uint32_t AddressOf(Bytes block, BlockPart part) {
    const std::uint32_t address = ByteReader(From(block, static_cast<std::uint32_t>(part))).U32();
    return address < kBlockHeadSize ? 0 : address;
}

Bytes KnownMakersData(Bytes block) {
    const std::uint32_t address = AddressOf(block, BlockPart::MakersData);
    return address == 0 ? Bytes() : EntryData(From(block, address), kKnownMaker);
}

Bytes FindItem(Bytes makersData, std::uint8_t tag) {
    ByteReader reader(makersData);
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

std::optional<GlobalClipId> DecodeClipId(Bytes data) {
    GlobalClipId id = {};
    if (data.size() < id.size()) {
        return std::nullopt;
    }
    std::copy_n(data.begin(), id.size(), id.begin());
    const bool isSet =
        std::any_of(id.begin(), id.end(), [](std::uint8_t byte) { return byte != 0; });
    return isSet ? std::optional(id) : std::nullopt;
}

} // namespace nqp2::avchd
