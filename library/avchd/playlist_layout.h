// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"

#include <cstddef>
#include <cstdint>

/// How a playlist keeps its marks, and what recorders add to each.
namespace nqp2::avchd {

enum PlaylistSection { kItems, kMarks, kExtension };

inline constexpr std::size_t kMarkSize = 14;
inline constexpr std::size_t kMarkExtensionSize = 66;

/// The list of marks and the recorder's block of a playlist; empty where there is none.
struct PlaylistBlocks {
    Bytes marks;
    Bytes extension;
};
PlaylistBlocks BlocksOf(Bytes file);

/// The extensions of the marks, one after another; the block is the recorder's.
Bytes MarkExtensions(Bytes block);

/// A maker's list of shots, which has one entry for each mark.
class ShotList {
public:
    explicit ShotList(Bytes block);

    /// The data of the next entry; empty when there is none or it is of another kind.
    Bytes Next();

private:
    ByteReader m_reader;
    std::uint16_t m_left; ///< entries that have not been read
};

} // namespace nqp2::avchd
