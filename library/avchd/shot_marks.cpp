// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/shot_marks.h"

#include "avchd/file_layout.h"
#include "avchd/playlist_layout.h"
#include "avchd/recorder_data.h"
#include "media/dates.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace nqp2::avchd {
namespace {

constexpr std::uint8_t kUtf16Set = 0x02; ///< other sets are UTF-8 or a part of it
constexpr std::size_t kNameSize = 24;
constexpr std::size_t kShooterSize = 32;
constexpr std::size_t kDateSize = 7;

// Within a maker's entry for a shot.
constexpr std::size_t kShotFixedSize = 1 + 32 + 4 + 1 + 4 + 1 + kDateSize + 2;
constexpr std::uint8_t kCreatorTag = 0x21;
constexpr std::uint8_t kDeviceTag = 0x22;
constexpr std::uint8_t kShootTag = 0x23;

constexpr std::uint32_t kPlaylistMetaAddress = 40; ///< in the recorder's block

/// A text in so many bytes of room: its character set and its length stand in front.
CString ReadText(ByteReader& reader, std::size_t room) {
    const std::uint8_t set = reader.U8();
    const std::size_t length = std::min<std::size_t>(reader.U8(), room);
    const Bytes all = reader.Take(room);
    const Bytes bytes = all.first(std::min(length, all.size()));
    if (set != kUtf16Set) {
        const std::string text(bytes.begin(), bytes.end());
        return platform::TextFromUtf8(text.substr(0, text.find('\0')));
    }
    std::u16string text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        text += static_cast<char16_t>(static_cast<unsigned>(bytes[i]) << 8U | bytes[i + 1]);
    }
    return platform::TextFromUtf16(std::u16string_view(text).substr(0, text.find(u'\0')));
}

CString ReadMoment(ByteReader& reader) {
    const unsigned zone = reader.U8();
    const std::optional<media::CalendarTime> date = DecodeDate(reader.Take(kDateSize));
    return date ? media::DateText(*date) + ZoneText(zone) : CString();
}

void ReadExtension(ByteReader reader, ShotMark& mark) {
    mark.maker = reader.U16();
    mark.model = reader.U16();
    reader.Skip(3 + 1 + 2); // reserved, flags, thumbnail
    mark.date = ReadMoment(reader);
    mark.name = ReadText(reader, kNameSize);
}

void ReadShotItem(std::uint8_t tag, ByteReader reader, ShotMark& mark) {
    switch (tag) {
    case kCreatorTag:
        mark.creator = ReadText(reader, reader.Left() - std::min<std::size_t>(reader.Left(), 2));
        break;
    case kDeviceTag:
        reader.Skip(2 + 2); // maker, model
        mark.serialNo = ReadText(reader, kNameSize);
        break;
    case kShootTag:
        mark.shooter = ReadText(reader, kShooterSize);
        mark.start = ReadMoment(reader);
        mark.end = ReadMoment(reader);
        break;
    default:
        break;
    }
}

void ReadShot(Bytes shot, ShotMark& mark) {
    ByteReader reader(From(shot, kShotFixedSize));
    while (reader.Left() > 0) {
        const std::uint8_t tag = reader.U8();
        reader.Skip(1);
        ReadShotItem(tag, ByteReader(reader.Take(reader.U16())), mark);
    }
}

} // namespace

std::vector<ShotMark> DecodeMarks(Bytes file) {
    const PlaylistBlocks blocks = BlocksOf(file);
    ByteReader reader(blocks.marks);
    ByteReader extensions(MarkExtensions(blocks.extension));
    ShotList shots(blocks.extension);
    const std::size_t count = std::min<std::size_t>(reader.U16(), reader.Left() / kMarkSize);
    std::vector<ShotMark> marks(count);
    for (ShotMark& mark : marks) {
        ByteReader head(reader.Take(kMarkSize));
        head.Skip(1 + 1); // reserved, kind
        mark.item = head.U16();
        mark.time = head.U32();
        ReadExtension(ByteReader(extensions.Take(kMarkExtensionSize)), mark);
        ReadShot(shots.Next(), mark);
    }
    return marks;
}

CString PlaylistName(Bytes file) {
    ByteReader reader(OptionalSection(BlocksOf(file).extension, kPlaylistMetaAddress));
    reader.Skip(2 + 2 + 4 + 2 + 1 + kDateSize + 1); // maker to date, reserved
    return ReadText(reader, reader.Left() - std::min<std::size_t>(reader.Left(), 2));
}

} // namespace nqp2::avchd
