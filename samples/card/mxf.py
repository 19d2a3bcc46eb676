# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Finds the essence in an MXF file (SMPTE ST 377-1)."""

import os
from pathlib import Path

from card.clip_xml import Extent
from card.media import CardError

_KEY_SIZE = 16
_ESSENCE = bytes.fromhex("060e2b34010201010d010301")  # and four bytes for the element


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
