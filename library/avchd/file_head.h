// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"

#include <cstdint>
#include <optional>

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

/// A section that a file cannot do without: nothing when there is none or the file does not hold all
/// of it.
std::optional<Bytes> NeededSection(Bytes file, std::uint32_t address);

/// A section that a file can do without, cut to what is there; empty when there is none.
Bytes OptionalSection(Bytes file, std::uint32_t address);

} // namespace nqp2::avchd
