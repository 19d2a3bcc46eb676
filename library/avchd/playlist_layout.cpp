// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/playlist_layout.h"

#include "avchd/file_layout.h"

#include <optional>

namespace nqp2::avchd {
namespace {

// Tags of a maker's list of shots.
constexpr std::uint8_t kShotListTag = 0xF0;
constexpr std::uint8_t kShotTag = 0x40;

} // namespace

PlaylistBlocks BlocksOf(Bytes file) {
    const std::optional<FileHead> head = DecodeHead(file, "MPLS");
    return head ? PlaylistBlocks{OptionalSection(file, head->sections[kMarks]),
                                 ExtensionBlock(file, head->sections[kExtension], "PLEX")}
                : PlaylistBlocks();
}

Bytes MarkExtensions(Bytes block) {
    // Their count, in front, is that of the marks.
    return From(MarksSection(block), 2);
}

ShotList::ShotList(Bytes block)
    : m_reader(MakersItem(block, kShotListTag)), m_left(m_reader.U16()) {
    m_reader.Skip(2);
}

Bytes ShotList::Next() {
    if (m_left == 0) {
        return {};
    }
    --m_left;
    const std::uint8_t tag = m_reader.U8();
    m_reader.Skip(1);
    const Bytes data = m_reader.Take(m_reader.U16());
    return tag == kShotTag ? data : Bytes();
}

} // namespace nqp2::avchd
