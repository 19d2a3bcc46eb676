# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Makes small DV streams, camera files and sound files."""

import struct

FRAME_SIZE = 144000  # 625 lines, 25 Mbit/s


def _block_id(index):
    """Section and number of a block in its sequence of 150 (SMPTE ST 314)."""
    if index == 0:
        return 0, 0
    if index < 6:
        return (1, index - 1) if index < 3 else (2, index - 3)
    group, place = divmod(index - 6, 16)
    return (3, group) if place == 0 else (4, index - 7 - group)


def dv_frame(number):
    """A frame without a picture: block identifiers, header and video packs."""
    frame = bytearray()
    for sequence in range(12):
        for index in range(150):
            section, block_number = _block_id(index)
            block = bytearray(b"\xff" * 80)
            block[:3] = bytes([section << 5 | 0x1F, sequence << 4 | 7, block_number])
            if section == 0:
                block[3:8] = b"\xbf\x78\x78\x78\x78"
            elif section == 2:
                block[48:58] = b"\x60\xff\xff\x20\xff\x61\x33\xc8\xfc\xff"
            elif section == 4:
                block[3] = number & 0xF
            frame += block
    return bytes(frame)


def _chunk(name, data):
    return name + struct.pack("<I", len(data)) + data + b"\0" * (len(data) % 2)


def avi(frames):
    """A camera file of DV frames, 25 a second."""
    main = struct.pack("<14I", 40000, 3600000, 0, 0x10, len(frames), 0, 1, FRAME_SIZE, 720, 576,
                       0, 0, 0, 0)
    stream = struct.pack("<4s4sIHHIIIIIIIIHHHH", b"vids", b"dvsd", 0, 0, 0, 0, 1, 25, 0,
                         len(frames), FRAME_SIZE, 0, 0, 0, 0, 720, 576)
    picture = struct.pack("<IiiHH4sIiiII", 40, 720, 576, 1, 24, b"dvsd", FRAME_SIZE, 0, 0, 0, 0)
    head = b"hdrl" + _chunk(b"avih", main) + _chunk(
        b"LIST", b"strl" + _chunk(b"strh", stream) + _chunk(b"strf", picture))
    movie = b"movi" + b"".join(_chunk(b"00dc", frame) for frame in frames)
    return _chunk(b"RIFF", b"AVI " + _chunk(b"LIST", head) + _chunk(b"LIST", movie))


def wav(samples, channels=2):
    """That many samples of each channel, 16 bits at 48 kHz; a chunk that nobody knows comes first."""
    form = struct.pack("<HHIIHH", 1, channels, 48000, 96000 * channels, 2 * channels, 16)
    return _chunk(b"RIFF", b"WAVE" + _chunk(b"odd ", b"x") + _chunk(b"fmt ", form)
                  + _chunk(b"data", bytes(range(1, 2 * channels + 1)) * samples))
