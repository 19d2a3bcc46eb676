// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"

#include <array>
#include <cstdint>
#include <optional>

/// The extension blocks that AVCHD recorders append to playlists and clip information. Nothing in
/// them is needed to read a file: what is damaged is taken as absent.
namespace nqp2::avchd {

/// The clip identifier that some makers record (SMPTE ST 330), as it stands.
using GlobalClipId = std::array<std::uint8_t, 32>;

/// The block that begins with `tag` ("PLEX" or "CLEX"), up to the end of its data; `address` is
/// that of the extension in the file, 0 for none. Empty when there is no such block.
Bytes ExtensionBlock(Bytes file, std::uint32_t address, const char (&tag)[5]);

/// The address that a block's head gives for one of its parts: 0 when there is none, and for an
/// address within that head.
enum class BlockPart : std::uint32_t { Marks = 8, MakersData = 12 };
std::uint32_t AddressOf(Bytes block, BlockPart part);

/// The maker's own data of a block, where the maker is the one whose layout is public. Empty
/// otherwise.
Bytes KnownMakersData(Bytes block);

/// The data of the item with this tag in a maker's data; unknown items are passed over by their
/// length. Empty when there is none.
Bytes FindItem(Bytes makersData, std::uint8_t tag);

/// The first bytes of `data` as an identifier; nothing when they are fewer or all zero.
std::optional<GlobalClipId> DecodeClipId(Bytes data);

} // namespace nqp2::avchd
