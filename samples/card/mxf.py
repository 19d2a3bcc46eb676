# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Finds the essence in an MXF file (SMPTE ST 377-1), and tells the file which clip's it is."""

import mmap
import os
from pathlib import Path

from card.clip_xml import Extent
from card.media import CardError

_KEY_SIZE = 16
_ESSENCE = bytes.fromhex("060e2b34010201010d010301")  # and four bytes for the element
# What ffmpeg writes, when it is to write the same each time, for a clip and for what a file holds.
_NAMELESS = [bytes.fromhex(f"060a2b340101010501010d0013{number:038x}") for number in (0, 1)]


def name_packages(path: Path, clip: str, content: str) -> None:
    """Gives a new file the identifiers of its clip and of its content."""
    with open(path, "r+b") as file, mmap.mmap(file.fileno(), 0) as data:
        for nameless, identifier in zip(_NAMELESS, map(bytes.fromhex, (clip, content))):
            at = data.find(nameless)
            while at >= 0:
                data[at:at + len(identifier)] = identifier
                at = data.find(nameless, at)


def essence_extent(path: Path) -> Extent:
    """From the first byte of the first essence element's value to the last one's end."""
    start = end = 0
    with open(path, "rb") as file:
        while len(key := file.read(_KEY_SIZE)) == _KEY_SIZE:
            length = _length(file.read(1)[0], file)
            value = file.tell()
            if key.startswith(_ESSENCE):
                start, end = start or value, value + length
            file.seek(length, os.SEEK_CUR)
    if start == 0:
        raise CardError(f"{path}: no essence in it")
    return Extent(start, end - start)


def _length(first: int, file) -> int:
    return first if first < 0x80 else int.from_bytes(file.read(first & 0x7F), "big")
