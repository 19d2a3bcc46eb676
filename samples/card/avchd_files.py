# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Writes the information files of AVCHD cards: playlists, clip information, index."""

import struct
from dataclasses import dataclass, field
from fractions import Fraction

from card.avc_stream import (AUDIO_PID, CLOCK_PID, FIRST_TICK, LINEAR, MAP_PID, VIDEO_PID,
                             Picture)

MAKER, MODEL = 0x0103, 0x0410  # the maker whose additions are public
NO_TIMECODE = b"\xff" * 4
_RATE_CODES = {Fraction(24000, 1001): 1, Fraction(24): 2, Fraction(25): 3, Fraction(30000, 1001): 4,
               Fraction(50): 6, Fraction(60000, 1001): 7}


@dataclass
class AvchdClip:
    """One clip, and how it was recorded."""

    name: str
    picture: Picture
    frames: int
    date: str  # 2024-05-10T08:00:00
    timecode: str = ""  # ";" before the frames means drop frame
    first_tick: int = FIRST_TICK
    pulldown: int = 0
    continues: bool = False  # goes on with the recording of the clip before it
    clip_id: bytes = b""
    audio: bool = True
    audio_coding: int = LINEAR
    date_in_stream: bool = True

    @property
    def end_tick(self) -> int:
        """The first tick behind the clip, cut off as recorders do."""
        return self.first_tick + int(self.frames * 45000 / self.picture.rate)

    @property
    def recorded_date(self) -> bytes:
        """Zone +02:00 and the date in binary-coded decimals."""
        return b"\x04" + bytes.fromhex(self.date.translate({ord(sign): None for sign in "-:T"}))

    @property
    def recorded_timecode(self) -> bytes:
        if not self.timecode:
            return NO_TIMECODE
        digits = bytes.fromhex(self.timecode.replace(";", ":").replace(":", ""))
        hours, minutes, seconds, frames = digits
        return bytes([frames | (0x40 if ";" in self.timecode else 0), seconds, minutes, hours])


@dataclass
class AvchdPlaylist:
    """A playlist of whole clips; `recorded` lists come from the camera and tell of their shots."""

    name: str
    clips: list[AvchdClip] = field(default_factory=list)
    recorded: bool = True


def _counted(data: bytes, width: str = "I") -> bytes:
    return struct.pack(">" + width, len(data)) + data


def _one_entry(kind: int, version: int, data: bytes) -> bytes:
    """A table with one entry behind its length, and the entry's data."""
    entry = struct.pack(">IIHHII", 24, 1, kind, version, 24, len(data))
    return _counted(entry + data)


def _video_codes(picture: Picture) -> int:
    form = 5 if picture.lines == 720 else 4 if picture.interlaced else 6
    return form << 4 | _RATE_CODES[picture.rate]


def _play_item(clip: AvchdClip) -> bytes:
    streams = b"\x09\1" + struct.pack(">H", VIDEO_PID) + bytes(6)
    streams += b"\5\x1b" + bytes([_video_codes(clip.picture)]) + bytes(3)
    if clip.audio:
        streams += b"\x09\1" + struct.pack(">H6xBB", AUDIO_PID, 5, clip.audio_coding) + b"\x31und"
    table = _counted(bytes(2) + bytes([1, 1 if clip.audio else 0]) + bytes(10) + streams, "H")
    head = clip.name.encode() + b"M2TS" + struct.pack(">HB", 6 if clip.continues else 1, 0)
    times = struct.pack(">II", clip.first_tick, clip.end_tick)
    return _counted(head + times + bytes.fromhex("000001cf40000000") + bytes(4) + table, "H")


def _shot(clip: AvchdClip) -> bytes:
    """What stands beside a mark."""
    title = f"SHOT {clip.name}".encode()
    return (struct.pack(">HH", MAKER, MODEL) + bytes(3) + bytes([clip.pulldown << 1]) + bytes(2)
            + clip.recorded_date + bytes([0x90, len(title)]) + title.ljust(24, b"\0") + bytes(16)
            + clip.recorded_timecode + bytes(2))


def _playlist_extension(playlist: AvchdPlaylist, marked: list[AvchdClip]) -> bytes:
    title = f"PLAYLIST {playlist.name}".encode()
    meta = _counted(struct.pack(">HH", MAKER, MODEL) + bytes(6) + playlist.clips[0].recorded_date
                    + bytes(1) + bytes([0x90, len(title)]) + title.ljust(259, b"\0"))
    marks = _counted(struct.pack(">H", len(marked)) + b"".join(map(_shot, marked)))
    addresses = struct.pack(">II", 40 + len(meta), 0)
    return _one_entry(0x1000, 0x0100, b"PLEX" + bytes(4) + addresses + bytes(24) + meta + marks)


def playlist(wanted: AvchdPlaylist) -> bytes:
    """A .MPL file."""
    items = b"".join(map(_play_item, wanted.clips))
    items = _counted(struct.pack(">HHH", 0, len(wanted.clips), 0) + items)
    marked = [clip for clip in wanted.clips if not clip.continues]
    marks = struct.pack(">H", len(marked))
    for clip in marked:
        marks += struct.pack(">BBHIHI", 0, 1, wanted.clips.index(clip), clip.first_tick, 0xFFFF, 0)
    marks = _counted(marks)
    application = _counted(bytes.fromhex("00010000000001cf400000000000"))
    marks_at = 40 + len(application) + len(items)
    extension_at = marks_at + len(marks) if wanted.recorded else 0
    head = b"MPLS0100" + struct.pack(">III", 58, marks_at, extension_at) + bytes(20)
    extension = _playlist_extension(wanted, marked) if wanted.recorded else b""
    return head + application + items + marks + extension


def _time_map(clip: AvchdClip) -> bytes:
    """One entry point: the first picture, in the fourth packet."""
    ticks, packet = 2 * clip.first_tick, 3
    coarse = struct.pack(">II", ticks >> 19 & 0x3FFF, packet)
    fine = struct.pack(">I", 1 << 28 | (ticks >> 9 & 0x7FF) << 17 | packet)
    counts = (1 << 34 | 1 << 18 | 1).to_bytes(6, "big")
    return _counted(struct.pack(">HBBH", 1, 0, 1, VIDEO_PID) + counts
                    + struct.pack(">II", 14, 12) + coarse + fine)


def _clip_extension(clip: AvchdClip) -> bytes:
    makers = b""
    if clip.clip_id:
        recorded = clip.clip_id + clip.recorded_timecode + bytes(4)
        items = struct.pack(">HH", 1, 0) + b"\xe2\1" + _counted(recorded, "H")
        makers = _one_entry(MAKER, MODEL, items)
    information = _counted(struct.pack(">HH", MAKER, MODEL) + bytes(36))
    addresses = struct.pack(">II", 0, 40 + len(information) if makers else 0)
    return _one_entry(0x1000, 0x0100,
                      b"CLEX" + bytes(4) + addresses + bytes(24) + information + makers)


def clip_information(clip: AvchdClip, packets: int) -> bytes:
    """A .CPI file for a stream of that many packets."""
    kind = _counted(b"\x80HDMV" + bytes(25), "H")
    sections = [_counted(bytes(2) + b"\1\1" + bytes(4) + struct.pack(">II", 3_000_000, packets)
                         + bytes(128) + kind)]
    times = struct.pack(">II", clip.first_tick, clip.end_tick)
    sections.append(_counted(b"\0\1" + bytes(4) + b"\1\0" + struct.pack(">HI", CLOCK_PID, 0) + times))
    streams = struct.pack(">HBBBB", VIDEO_PID, 21, 0x1B, _video_codes(clip.picture), 0x30)
    streams += bytes(18)
    if clip.audio:
        streams += struct.pack(">HBB", AUDIO_PID, 21, clip.audio_coding) + b"\x31und" + bytes(16)
    program = struct.pack(">IHBB", 0, MAP_PID, 2 if clip.audio else 1, 0)
    sections.append(_counted(b"\0\1" + program + streams))
    sections.append(_time_map(clip))
    sections.append(bytes(4))  # no marks
    addresses = [40]
    for section in sections:
        addresses.append(addresses[-1] + len(section))
    head = b"HDMV0100" + struct.pack(">5I", *addresses[1:]) + bytes(12)
    return head + b"".join(sections) + _clip_extension(clip)


def index() -> bytes:
    """INDEX.BDM: nothing to play by itself, one title for the first movie object."""
    no_object = b"\x40" + bytes(11)
    title = b"\x40" + bytes(11)
    titles = _counted(no_object + no_object + struct.pack(">H", 1) + title)
    return b"INDX0100" + struct.pack(">II", 78, 0) + bytes(24) + _counted(bytes(34)) + titles


def movie_object() -> bytes:
    """MOVIEOBJ.BDM: one object that plays the first playlist."""
    play = bytes.fromhex("228000000000000000000000")
    return (b"MOBJ0100" + bytes(32)
            + _counted(bytes(4) + struct.pack(">HHH", 1, 0x8000, 1) + play))
