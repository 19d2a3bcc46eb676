# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""AVCHD cards: a small one with every kind of clip that a reader has to cope with, and large ones
for measuring."""

import hashlib
from fractions import Fraction

from card import scenes
from card.avc_stream import AC3, LINEAR, Picture, stream
from card.avchd_files import (AvchdClip, AvchdPlaylist, clip_information, index, movie_object,
                              playlist)
from card.avchd_recording import record_streams
from card.media import FolderWriter

MAX_CLIPS = 100000  # names have five digits
BULK_PLAYLISTS = 40
BULK_STREAM_SIZE = 96 * 1024
NTSC = Fraction(30000, 1001)
BDMV = "PRIVATE/AVCHD/BDMV"


def _clip_id(text: str) -> bytes:
    """An identifier (SMPTE ST 330) made of a text."""
    label = bytes.fromhex("060a2b340101010501010d4313000000")
    return label + hashlib.md5(text.encode()).digest()


def _demo_clips() -> list[tuple[AvchdClip, object]]:
    """Clips with their scenes."""
    full, narrow = (1920, 1080, True), (1440, 1080, True)
    split = AvchdClip("00004", Picture(*full, NTSC), 60, "2024-05-11T16:20:00", "00:59:58;10")
    return [
        (AvchdClip("00000", Picture(*full, Fraction(25)), 50, "2024-05-10T08:00:00",
                   "10:00:00:00", clip_id=_clip_id("market")), scenes.night_market),
        (AvchdClip("00001", Picture(*narrow, Fraction(25)), 50, "2024-05-10T08:05:30",
                   "10:00:02:00", clip_id=_clip_id("harbour")), scenes.harbour),
        (AvchdClip("00002", Picture(*narrow, Fraction(25)), 40, "2024-05-10T21:14:09",
                   "10:00:04:00", pulldown=1), scenes.night_city),
        (AvchdClip("00003", Picture(1280, 720, False, Fraction(50)), 50, "2024-05-11T11:30:00",
                   "00:10:00:24"), scenes.running_track),
        (split, scenes.balloon(0)),
        (AvchdClip("00005", Picture(*full, NTSC), 45, "2024-05-11T16:20:02", "01:00:00;10",
                   first_tick=split.end_tick, continues=True), scenes.balloon(1)),
        (AvchdClip("00006", Picture(1920, 1080, False, Fraction(24000, 1001)), 24,
                   "2024-05-12T19:00:00", audio=False), scenes.forest),
        (AvchdClip("00007", Picture(1280, 720, False, Fraction(60000, 1001)), 60,
                   "2024-05-12T07:45:00", "05:00:00;00", date_in_stream=False), scenes.dunes),
    ]


def make_demo(card: FolderWriter) -> None:
    """Eight clips, one whose information is cut off, three playlists."""
    shots = _demo_clips()
    clips = [clip for clip, _ in shots]
    for clip in clips:
        clip.audio_coding = LINEAR if clip.name == "00003" else AC3
    for clip, content in zip(clips, record_streams(shots)):
        card.write_file(f"{BDMV}/STREAM/{clip.name}.MTS", content)
        card.write_file(f"{BDMV}/CLIPINF/{clip.name}.CPI",
                        clip_information(clip, len(content) // 192))
    card.write_file(f"{BDMV}/CLIPINF/00008.CPI", clip_information(clips[0], 32)[:200])
    missing = AvchdClip("00099", clips[0].picture, 25, "2024-05-12T12:00:00")
    for wanted in (AvchdPlaylist("00000", clips[:4]), AvchdPlaylist("00001", clips[4:6]),
                   AvchdPlaylist("00002", [clips[7], missing, clips[6]], recorded=False)):
        card.write_file(f"{BDMV}/PLAYLIST/{wanted.name}.MPL", playlist(wanted))
    card.write_file(f"{BDMV}/INDEX.BDM", index())
    card.write_file(f"{BDMV}/MOVIEOBJ.BDM", movie_object())


def make_bulk(card: FolderWriter, count: int) -> None:
    """Clips of one format; their streams begin like real ones and go on with nothing."""
    picture = Picture(1920, 1080, True, Fraction(25))
    start = stream(picture, 2, date=bytes.fromhex("0420240510080000"))
    clips = []
    for number in range(count):
        name = f"{number:05d}"
        clip = AvchdClip(name, picture, 250 + number % 1000, "2024-05-10T08:00:00",
                         "10:00:00:00", clip_id=_clip_id(name))
        card.write_file(f"{BDMV}/CLIPINF/{name}.CPI", clip_information(clip, 512))
        card.write_file(f"{BDMV}/STREAM/{name}.MTS", start, BULK_STREAM_SIZE)
        clips.append(clip)
    for number in range(min(BULK_PLAYLISTS, count)):
        wanted = AvchdPlaylist(f"{number:05d}", clips[number::BULK_PLAYLISTS])
        card.write_file(f"{BDMV}/PLAYLIST/{wanted.name}.MPL", playlist(wanted))
