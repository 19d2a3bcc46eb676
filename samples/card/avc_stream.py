# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Streams as AVCHD cameras write them: coded pictures and sound in a transport stream (ISO/IEC
13818-1) whose packets carry their arrival time in front. Encodes the simplest by itself: one flat
picture in H.264 (ITU-T H.264) that lasts for all frames, and silence."""

import itertools
import re
import struct
from dataclasses import dataclass
from fractions import Fraction
from typing import Iterable, Iterator

VIDEO_PID, AUDIO_PID, CLOCK_PID, MAP_PID = 0x1011, 0x1100, 0x1001, 0x100
FIRST_TICK = 38700  # of the first picture, 45 kHz
_PACKETS_A_UNIT = 32  # files hold whole units of 6144 bytes


class Bits:
    """Bits in the order in which they are written."""

    def __init__(self):
        self._bits: list[str] = []
        self._count = 0

    def put(self, value: int, count: int) -> "Bits":
        return self.text(f"{value:0{count}b}")

    def text(self, bits: str) -> "Bits":
        self._bits.append(bits)
        self._count += len(bits)
        return self

    def number(self, value: int) -> "Bits":
        """A number of variable length (9.1)."""
        bits = f"{value + 1:b}"
        return self.text("0" * (len(bits) - 1) + bits)

    def align(self) -> "Bits":
        return self.text("0" * (-self._count % 8))

    def data(self) -> bytes:
        bits = "".join(self._bits)
        assert len(bits) % 8 == 0
        return int(bits, 2).to_bytes(len(bits) // 8, "big")

    def ended(self) -> bytes:
        """The bytes with the bit that ends a unit."""
        return self.text("1").align().data()


@dataclass(frozen=True)
class Picture:
    """What all frames of a clip look like."""

    pixels: int
    lines: int
    interlaced: bool
    rate: Fraction  # frames a second
    colour: tuple[int, int, int] = (120, 128, 128)  # luma and chroma

    @property
    def columns(self) -> int:
        return (self.pixels + 15) // 16

    @property
    def rows(self) -> int:
        unit = 32 if self.interlaced else 16
        return (self.lines + unit - 1) // unit * unit // 16

    @property
    def shape(self) -> int:
        """Index of the shape of a picture element: square, or 4:3 in a narrow raster."""
        return 14 if self.pixels == 1440 else 1


def _unit(header: int, payload: bytes) -> bytes:
    """A unit behind its start code, with the bytes that keep start codes out of it."""
    out = bytearray(b"\0\0\0\1" + bytes([header]))
    zeros = 0
    for byte in payload:
        if zeros == 2 and byte <= 3:
            out.append(3)
            zeros = 0
        zeros = zeros + 1 if byte == 0 else 0
        out.append(byte)
    return bytes(out)


def _sequence_parameters(picture: Picture) -> bytes:
    bits = Bits().put(100, 8).put(0, 8).put(40, 8).number(0)
    bits.number(1).number(0).number(0).put(0, 1).put(0, 1)  # 4:2:0, 8 bits
    bits.number(0).number(2).number(1).put(0, 1)  # shown in the order of coding, one reference
    field = 2 if picture.interlaced else 1
    bits.number(picture.columns - 1).number(picture.rows // field - 1)
    bits.put(0 if picture.interlaced else 1, 1)
    if picture.interlaced:
        bits.put(0, 1)
    bits.put(1, 1)
    cut = (picture.rows * 16 - picture.lines) // (2 * field)
    bits.put(1 if cut else 0, 1)
    if cut:
        bits.number(0).number(0).number(0).number(cut)
    bits.put(1, 1).put(1, 1).put(picture.shape, 8).put(0, 3)
    bits.put(1, 1).put(picture.rate.denominator, 32).put(2 * picture.rate.numerator, 32).put(1, 1)
    return _unit(0x67, bits.put(0, 4).ended())


def _picture_parameters() -> bytes:
    bits = Bits().number(0).number(0).put(0, 2).number(0).number(0).number(0).put(0, 3)
    return _unit(0x68, bits.number(0).number(0).number(0).put(4, 3).ended())


def _slice_head(picture: Picture, kind: int, frame: int) -> Bits:
    bits = Bits().number(0).number(kind).number(0).put(frame % 16, 4)
    return bits.put(0, 1) if picture.interlaced else bits


def _key_picture(picture: Picture) -> bytes:
    """The first macroblock holds its samples as they are, all others are predicted from it."""
    bits = _slice_head(picture, 7, 0).number(0).put(0, 2).number(0).number(1)
    bits.number(25).align()
    luma, blue, red = picture.colour
    for byte in [luma] * 256 + [blue] * 64 + [red] * 64:
        bits.put(byte, 8)
    plain = "00100" + "1" + "1"  # mean of the neighbours, nothing added
    beside_samples, none = "000011", "1"
    for index in range(1, picture.columns * picture.rows):
        touches = index in (1, picture.columns)
        bits.text(plain + (beside_samples if touches else none))
    return _unit(0x65, bits.ended())


def _repeated_picture(picture: Picture, frame: int) -> bytes:
    bits = _slice_head(picture, 5, frame).put(0, 3).number(0).number(1)
    return _unit(0x41, bits.number(picture.columns * picture.rows).ended())


def _packs(date: bytes, timecode: bytes) -> bytes:
    """Side information with the recording date (zone and seven bytes) and the timecode."""
    owner = bytes.fromhex("17ee8c60f84d11d98cd60800200c9a66") + b"MDPM"
    message = owner + b"\3\x13" + timecode + b"\x18" + date[:4] + b"\x19" + date[4:]
    return _unit(0x06, bytes([5, len(message)]) + message + b"\x80")


def _elementary(picture: Picture, frames: int, packs: bytes) -> Iterator[bytes]:
    """The coded frames."""
    yield (_unit(9, b"\x10") + _sequence_parameters(picture) + _picture_parameters() + packs
           + _key_picture(picture))
    for frame in range(1, frames):
        yield _unit(9, b"\x30") + _repeated_picture(picture, frame)


def _time_stamp(ticks: int) -> bytes:
    return struct.pack(">BHH", 0x21 | ticks >> 29 & 0xE, ticks >> 14 & 0xFFFE | 1,
                       ticks << 1 & 0xFFFE | 1)


def _packetised(stream_id: int, ticks: int, payload: bytes) -> bytes:
    """One unit of the packetised stream; ticks of 90 kHz."""
    length = len(payload) + 8 if stream_id == 0xBD else 0
    return (b"\0\0\1" + struct.pack(">BHBBB", stream_id, length, 0x84, 0x80, 5)
            + _time_stamp(ticks) + payload)


def _check_sum(data: bytes) -> bytes:
    value = 0xFFFFFFFF
    for byte in data:
        value ^= byte << 24
        for _ in range(8):
            value = (value << 1 ^ (0x04C11DB7 if value & 0x80000000 else 0)) & 0xFFFFFFFF
    return struct.pack(">I", value)


def _table(kind: int, number: int, body: bytes) -> bytes:
    head = struct.pack(">BHHBBB", kind, 0xB000 | len(body) + 9, number, 0xC1, 0, 0)
    return b"\0" + head + body + _check_sum(head + body)


def _tables(sound: "Sound | None") -> tuple[bytes, bytes]:
    streams = struct.pack(">BHH", 0x1B, 0xE000 | VIDEO_PID, 0xF000)
    if sound:
        streams += struct.pack(">BHH", sound.coding, 0xE000 | AUDIO_PID, 0xF000)
    registered = b"\x05\x04HDMV"
    program = struct.pack(">HH", 0xE000 | CLOCK_PID, 0xF000 | len(registered))
    return (_table(0, 1, struct.pack(">HH", 1, 0xE000 | MAP_PID)),
            _table(2, 1, program + registered + streams))


class _Multiplex:
    """Packets of 192 bytes, one after another."""

    def __init__(self):
        self._out = bytearray()
        self._counters: dict[int, int] = {}
        self._packets = 0

    def add(self, pid: int, unit: bytes) -> None:
        start = 0x4000
        while unit:
            part, unit = unit[:184], unit[184:]
            self._packet(pid, start, part)
            start = 0

    def add_clock(self, ticks: int) -> None:
        """The program clock, 90 kHz."""
        field = b"\x10" + struct.pack(">IH", ticks >> 1 & 0xFFFFFFFF, ticks << 15 & 0x8000 | 0x7E00)
        stuffing = b"\xff" * (183 - len(field))
        self._raw(CLOCK_PID, 0, 0x20, bytes([183]) + field + stuffing)

    def finished(self) -> bytes:
        """What was added since the last time, in whole units."""
        while self._packets % _PACKETS_A_UNIT:
            self._raw(0x1FFF, 0, 0x10, b"\xff" * 184)
        out, self._out = bytes(self._out), bytearray()
        return out

    def _packet(self, pid: int, start: int, part: bytes) -> None:
        counter = self._counters.get(pid, 0)
        self._counters[pid] = (counter + 1) % 16
        room = 184 - len(part)
        if room == 0:
            self._raw(pid, start, 0x10 | counter, part)
        else:
            stuffing = bytes([room - 1]) + (b"\0" + b"\xff" * (room - 2) if room > 1 else b"")
            self._raw(pid, start, 0x30 | counter, stuffing + part)

    def _raw(self, pid: int, start: int, control: int, rest: bytes) -> None:
        arrival = self._packets * 2000 & 0x3FFFFFFF  # of a 27 MHz clock
        self._out += struct.pack(">IBHB", arrival, 0x47, start | pid, control) + rest
        self._packets += 1


LINEAR, AC3 = 0x80, 0x81


@dataclass(frozen=True)
class Sound:
    """Sound beside the pictures: units that each last as many ticks of 90 kHz."""

    coding: int
    ticks: int
    units: Iterable[bytes]


_LINEAR_SAMPLES = 240  # 5 ms


def linear(samples: bytes) -> Sound:
    """Two channels of 16 bits, most significant byte first."""
    size = _LINEAR_SAMPLES * 4
    head = struct.pack(">HBB", size, 0x31, 0x40)
    return Sound(LINEAR, 450, [head + samples[start:start + size].ljust(size, b"\0")
                               for start in range(0, len(samples), size)])


def with_packs(unit: bytes, date: bytes, timecode: bytes) -> bytes:
    """A coded key picture that carries date (zone, date, time: eight bytes) and timecode."""
    head, picture = re.fullmatch(rb"(.*?)(\x00\x00\x00?\x01\x65.*)", unit, re.DOTALL).groups()
    return head + _packs(date, timecode) + picture


def stream(picture: Picture, frames: int, first_tick: int = FIRST_TICK, audio: bool = True,
           date: bytes = b"", timecode: bytes = b"\xff" * 4) -> bytes:
    """The stream of a clip of one flat picture and silence. `first_tick` is the time of its first
    picture in 45 kHz; `date` goes into it with the timecode, none when empty."""
    packs = _packs(date, timecode) if date else b""
    silence = itertools.repeat(linear(bytes(_LINEAR_SAMPLES * 4)).units[0])
    return multiplexed([_elementary(picture, frames, packs)], picture.rate, first_tick,
                       Sound(LINEAR, 450, silence) if audio else None)[0]


def multiplexed(parts: list[Iterable[bytes]], rate: Fraction, first_tick: int,
                sound: Sound | None) -> list[bytes]:
    """The files of one recording that the camera split: coded pictures, shown in their order, and
    the sound of all parts."""
    multiplex = _Multiplex()
    tables = [table.ljust(184, b"\xff") for table in _tables(sound)]
    frame, heard, units, files = 0, 0, iter(sound.units if sound else ()), []
    for pictures in parts:
        for number, coded in enumerate(pictures):
            ticks = 2 * first_tick + int(frame * 90000 / rate)
            if number % 3 == 0:
                multiplex.add(0, tables[0])
                multiplex.add(MAP_PID, tables[1])
            multiplex.add_clock(ticks - 30000)
            multiplex.add(VIDEO_PID, _packetised(0xE0, ticks, coded))
            frame += 1
            while sound and heard < frame * 90000 / rate and (unit := next(units, b"")):
                multiplex.add(AUDIO_PID, _packetised(0xBD, 2 * first_tick + heard, unit))
                heard += sound.ticks
        files.append(multiplex.finished())
    return files
