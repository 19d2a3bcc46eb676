// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/playlist.h"

#include "avchd/file_layout.h"
#include "avchd/limits.h"
#include "avchd/playlist_layout.h"
#include "platform/number_text.h"

#include <algorithm>
#include <cstring>

namespace nqp2::avchd {
namespace {

// Lengths without the length field in front.
constexpr std::size_t kItemFixedSize = 32;
constexpr std::size_t kAngleSize = 10;

constexpr unsigned kMultiAngle = 0x10;
constexpr unsigned kConnectionBits = 0x0F;
constexpr unsigned kContinuation = 6;
constexpr std::uint8_t kEntryMark = 1;

/// The name becomes part of a path: nothing but digits may pass.
bool ReadClipName(ByteReader& reader, PlayItem& item) {
    const Bytes name = reader.Take(item.clipName.size());
    const Bytes codec = reader.Take(4);
    if (!reader.IsGood() ||
        !std::all_of(name.begin(), name.end(), platform::IsDigit<std::uint8_t>)) {
        return false;
    }
    std::copy(name.begin(), name.end(), item.clipName.begin());
    return std::memcmp(codec.data(), "M2TS", 4) == 0 || std::memcmp(codec.data(), "FMTS", 4) == 0;
}

void SkipAngles(ByteReader& reader) {
    const std::size_t angles = reader.U8();
    reader.Skip(1);
    reader.Skip(angles > 1 ? (angles - 1) * kAngleSize : 0);
}

/// The first video stream of an item's table of streams; zeros when there is none.
VideoStream ReadStreamTable(ByteReader reader) {
    ByteReader table(reader.Take(reader.U16()));
    table.Skip(2);
    const std::uint8_t videoCount = table.U8();
    table.Skip(7 + 4); // counts of other streams, reserved
    const std::uint8_t entrySize = table.U8();
    ByteReader entry(table.Take(entrySize));
    ByteReader attributes(table.Take(table.U8()));
    const VideoStream video = ReadVideoAttributes(attributes);
    return table.IsGood() && videoCount != 0 ? video : VideoStream();
}

/// Reads one item; false when it makes the list unusable.
bool ReadItem(Bytes bytes, PlayItem& item) {
    ByteReader reader(bytes);
    if (bytes.size() < kItemFixedSize || !ReadClipName(reader, item)) {
        return false;
    }
    const std::uint16_t flags = reader.U16();
    item.joined = (flags & kConnectionBits) == kContinuation;
    reader.Skip(1);
    item.in = reader.U32();
    item.out = reader.U32();
    reader.Skip(8 + 1 + 1 + 2); // user operations, access, still mode and time
    if ((flags & kMultiAngle) != 0) {
        SkipAngles(reader);
    }
    item.video = ReadStreamTable(reader);
    return true;
}

bool ReadItems(Bytes section, std::vector<PlayItem>& items) {
    ByteReader reader(section);
    reader.Skip(2);
    const std::size_t count = reader.U16();
    reader.Skip(2); // sub paths follow the items and are not needed
    if (!reader.IsGood() || count > kMaxPlayItems || count * (kItemFixedSize + 2) > reader.Left()) {
        return false;
    }
    items.resize(count);
    for (PlayItem& item : items) {
        const std::uint16_t length = reader.U16();
        if (!ReadItem(reader.Take(length), item)) {
            return false;
        }
    }
    return true;
}

/// What the recorder added to the mark with this number.
void ReadMarkExtension(Bytes extension, Shot& shot) {
    ByteReader reader(extension);
    reader.Skip(2 + 2 + 3); // maker, model, reserved
    shot.pulldown = static_cast<std::uint8_t>(reader.U8() >> 1U & 3U);
    reader.Skip(2); // thumbnail
    shot.zone = reader.U8();
    shot.date = DecodeDate(reader.Take(7));
    reader.Skip(1 + 1 + 24 + 16); // character set, name, maker's information
    shot.timecode = DecodeTimecode(reader.Take(4));
}

/// Keeps a shot for the item that its mark is on, unless another came before it.
void AddShot(const Shot& shot, Playlist& playlist) {
    if (shot.item < playlist.items.size() && playlist.items[shot.item].shot == PlayItem::kNoShot) {
        playlist.items[shot.item].shot = static_cast<std::int32_t>(playlist.shots.size());
        playlist.shots.push_back(shot);
    }
}

void ReadShots(const PlaylistBlocks& blocks, Playlist& playlist) {
    ByteReader reader(blocks.marks);
    ByteReader extensions(MarkExtensions(blocks.extension));
    ShotList list(blocks.extension);
    const std::size_t count = std::min<std::size_t>(reader.U16(), reader.Left() / kMarkSize);
    for (std::size_t i = 0; i < count; ++i) {
        Shot shot;
        ByteReader mark(reader.Take(kMarkSize));
        mark.Skip(1);
        const bool isEntry = mark.U8() == kEntryMark;
        shot.item = mark.U16();
        shot.time = mark.U32();
        ReadMarkExtension(extensions.Take(kMarkExtensionSize), shot);
        shot.clipId = DecodeClipId(From(list.Next(), 1));
        if (isEntry) {
            AddShot(shot, playlist);
        }
    }
}

/// An item without a mark of its own that continues a recording shares that recording's shot.
void ShareShots(std::vector<PlayItem>& items) {
    for (std::size_t i = 0; i < items.size(); ++i) {
        items[i].joined = items[i].joined && i > 0;
        items[i].continues = items[i].joined && items[i].shot == PlayItem::kNoShot;
        if (items[i].continues) {
            items[i].shot = items[i - 1].shot;
        }
    }
}

} // namespace

bool Playlist::Is25p(const PlayItem& item) const {
    const bool known = item.shot != PlayItem::kNoShot;
    return avchd::Is25p(item.video, known ? shots[static_cast<std::size_t>(item.shot)].pulldown
                                          : std::uint8_t{0});
}

std::int32_t Playlist::FramesOf(const PlayItem& item) const {
    const FrameRate* rate = RateOf(item.video.rateCode, Is25p(item));
    return rate == nullptr ? 0 : FramesBetween(item.in, item.out, *rate);
}

std::optional<Playlist> DecodePlaylist(Bytes file) {
    const std::optional<FileHead> head = DecodeHead(file, "MPLS");
    const std::optional<Bytes> items =
        head ? NeededSection(file, head->sections[kItems]) : std::nullopt;
    Playlist playlist;
    if (!items || !ReadItems(*items, playlist.items)) {
        return std::nullopt;
    }
    ReadShots(BlocksOf(file), playlist);
    ShareShots(playlist.items);
    return playlist;
}

std::size_t CountPlayItems(Bytes file) {
    const std::optional<FileHead> head = DecodeHead(file, "MPLS");
    ByteReader reader(head ? OptionalSection(file, head->sections[kItems]) : Bytes());
    reader.Skip(2);
    return reader.U16();
}

} // namespace nqp2::avchd
