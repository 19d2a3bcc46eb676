// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"

#include <cstdint>
#include <optional>

/// How playlists and clip information are laid out: a head with the addresses of sections, and
/// behind those the blocks that AVCHD recorders append. Nothing in such a block is needed to read a
/// file: what is damaged in it is taken as absent.
namespace nqp2::avchd {

/// Where the sections of a file begin, in the order of its head: a playlist has three (items,
/// marks, extension), clip information five (sequences, programs, time map, marks, extension). An
/// address within the head is 0 here, which says that there is no such section.
struct FileHead {
    static constexpr std::size_t kMostSections = 5;

    std::uint32_t sections[kMostSections] = {};
};

/// Reads the first 40 bytes. Nothing when they are not of this kind ("MPLS", "HDMV") or of an
/// unknown version.
std::optional<FileHead> DecodeHead(Bytes file, const char (&kind)[5]);

/// What the length at an address counts, where a file cannot do without: nothing when there is no
/// such section or the file does not hold all of it.
std::optional<Bytes> NeededSection(Bytes file, std::uint32_t address);

/// The same where a file can do without: cut to what is there, empty when there is no such section.
Bytes OptionalSection(Bytes file, std::uint32_t address);

/// The block that begins with `tag` ("PLEX" or "CLEX"), up to the end of its data; `address` is
/// that of the extension in the file, 0 for none. Empty when there is no such block.
Bytes ExtensionBlock(Bytes file, std::uint32_t address, const char (&tag)[5]);

/// What a "PLEX" block holds beside the marks, as OptionalSection returns it.
Bytes MarksSection(Bytes block);

/// The data of the item with this tag in a block's own data of the maker whose layout is public;
/// unknown items are passed over by their length. Empty when there is none.
Bytes MakersItem(Bytes block, std::uint8_t tag);

} // namespace nqp2::avchd
