#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Writes the seeds of the AVCHD fuzz targets into fuzz/corpus, with the sample cards' own writers."""

import sys
from fractions import Fraction
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(HERE.parent / "samples"))

from card.avc_stream import Picture, stream  # noqa: E402
from card.avchd_files import (AvchdClip, AvchdPlaylist, clip_information,  # noqa: E402
                              playlist)


def write(target: str, name: str, content: bytes) -> None:
    folder = HERE / "corpus" / f"avchd_{target}"
    folder.mkdir(parents=True, exist_ok=True)
    (folder / f"{name}.bin").write_bytes(content)


def main() -> None:
    interlaced = Picture(1920, 1080, True, Fraction(25))
    fast = Picture(1280, 720, False, Fraction(60000, 1001))
    start = AvchdClip("00000", interlaced, 50, "2024-05-10T08:00:00", "10:00:00:00",
                      clip_id=bytes(range(32)))
    rest = AvchdClip("00001", interlaced, 20, "2024-05-10T08:00:02", first_tick=start.end_tick,
                     continues=True)
    other = AvchdClip("00002", fast, 9, "2024-05-10T08:01:00", "01:00:00;00", audio=False)
    write("playlist", "split", playlist(AvchdPlaylist("00000", [start, rest, other])))
    write("playlist", "bare", playlist(AvchdPlaylist("00001", [other], recorded=False)))
    write("playlist", "empty", playlist(AvchdPlaylist("00002", [], recorded=False)))
    write("clip", "identified", clip_information(start, 64))
    write("clip", "silent", clip_information(other, 64))
    dated = stream(interlaced, 1, date=bytes.fromhex("0420240510080000"),
                   timecode=bytes.fromhex("50000210"))
    write("stream", "dated", dated[:192 * 8])
    write("stream", "narrow", stream(Picture(1440, 1080, True, Fraction(25)), 1)[:192 * 6])
    write("stream", "fast", stream(fast, 1, audio=False)[:192 * 6])


if __name__ == "__main__":
    main()
