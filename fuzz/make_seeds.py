#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Writes the seeds of the fuzz targets of AVCHD and of whole cards into fuzz/corpus, with the sample
cards' own writers and the seeds of single files."""

import struct
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
    folder = HERE / "corpus" / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / f"{name}.bin").write_bytes(content)


def seed(target: str, name: str) -> bytes:
    return (HERE / "corpus" / target / name).read_bytes()


def text(content: str) -> bytes:
    """As ByteSource::Text takes one that is no choice from a table."""
    content_bytes = content.encode()
    return bytes([0x80 | len(content_bytes)]) + content_bytes


def card(files: dict) -> bytes:
    """As MemoryFiles::AddFrom takes a card."""
    return b"".join(text(path) + struct.pack("<H", len(content)) + content
                    for path, content in files.items())


def write_avchd_cards(bdmv: str, clips: list, last: str) -> None:
    upper = last == "MPL"
    information, video = ("CPI", "MTS") if upper else ("clpi", "m2ts")
    files = {f"{bdmv}/CLIPINF/{clip.name}.{information}": clip_information(clip, 64)
             for clip in clips}
    files[f"{bdmv}/STREAM/{clips[0].name}.{video}"] = b""
    files[f"{bdmv}/PLAYLIST/00000.{last}"] = playlist(AvchdPlaylist("00000", clips))
    write("card_scan", f"avchd_{last}", card(files))


def write_p2_cards() -> None:
    write("card_scan", "p2", card({
        "CONTENTS/CLIP/0001AA.XML": seed("clip_readers", "dv25.xml"),
        "contents/clip/0002bb.xml": seed("clip_readers", "spanned.xml"),
        "CONTENTS/CLIP/0003CC.XML/": b"", "CONTENTS/CLIP/._0001AA.XML": b"Mac",
        "CONTENTS/VIDEO/0001AA.MXF": b"", "CONTENTS/AUDIO/0001AA00.MXF": b"",
        "CONTENTS/ICON/0001AA.BMP": b"", "EDITLIST/P001ED.XML": seed("edl_reader", "v2.xml"),
        "USERDATA/Ingest.xml": seed("ingest_reader", "two_clips.xml")}))


def main() -> None:
    interlaced = Picture(1920, 1080, True, Fraction(25))
    fast = Picture(1280, 720, False, Fraction(60000, 1001))
    start = AvchdClip("00000", interlaced, 50, "2024-05-10T08:00:00", "10:00:00:00",
                      clip_id=bytes(range(32)))
    rest = AvchdClip("00001", interlaced, 20, "2024-05-10T08:00:02", first_tick=start.end_tick,
                     continues=True)
    other = AvchdClip("00002", fast, 9, "2024-05-10T08:01:00", "01:00:00;00", audio=False)
    write("avchd_playlist", "split", playlist(AvchdPlaylist("00000", [start, rest, other])))
    write("avchd_playlist", "bare", playlist(AvchdPlaylist("00001", [other], recorded=False)))
    write("avchd_playlist", "empty", playlist(AvchdPlaylist("00002", [], recorded=False)))
    write("avchd_clip", "identified", clip_information(start, 64))
    write("avchd_clip", "silent", clip_information(other, 64))
    dated = stream(interlaced, 1, date=bytes.fromhex("0420240510080000"),
                   timecode=bytes.fromhex("50000210"))
    write("avchd_stream", "dated", dated[:192 * 8])
    write("avchd_stream", "narrow", stream(Picture(1440, 1080, True, Fraction(25)), 1)[:192 * 6])
    write("avchd_stream", "fast", stream(fast, 1, audio=False)[:192 * 6])
    write_avchd_cards("AVCHD/BDMV", [start, rest, other], "MPL")
    write_avchd_cards("BDMV", [start, rest], "mpls")
    write_p2_cards()


if __name__ == "__main__":
    main()
