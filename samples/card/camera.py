# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Folders of camera files, which another program describes."""

from fractions import Fraction

from card import scenes
from card.film import EXACT, Film, in_parallel
from card.media import FolderWriter

_H264 = ("-c:v", "libx264", "-preset", "ultrafast", "-crf", "23", "-bf", "0")
_DV = ("-c:v", "dvvideo")
_LINEAR = ("-c:a", "pcm_s16le")
_NTSC = Fraction(30000, 1001)
_FILES = (
    ("PANA_GRP/001RBQAM/P1000001.MOV",
     Film(scenes.snow_mountains, "0001", 1920, 1080, Fraction(25), 50, "yuv420p"),
     (*_H264, *_LINEAR), "10:00:00:00"),
    ("PANA_GRP/001RBQAM/P1000002.MOV",
     Film(scenes.green_hills, "0002", 1280, 720, 2 * _NTSC, 90, "yuv420p"),
     (*_H264, "-c:a", "aac", "-b:a", "128k"), "10:00:02;00"),
    ("PANA_GRP/001YDJAM/NOTREAD1.MOV",
     Film(scenes.interview, "0001", 640, 360, Fraction(25), 25, "yuv420p"),
     (*_H264, *_LINEAR), "11:00:00:00"),
    ("SONY/DVF/100DVF/DV000001.AVI",
     Film(scenes.sunset_sea, "0001", 720, 576, Fraction(25), 25, "yuv420p", "4:3",
          first_field="bff", has_field_motion=True),
     (*_DV, *_LINEAR), ""),
)


def make(folder: FolderWriter) -> None:
    """Camera files of two makers. The second folder of the first maker is not looked at."""
    in_parallel(lambda job: _record(*job), [
        (film, options, timecode, str(folder.place(path)))
        for path, film, options, timecode in _FILES])
    folder.finish()


def _record(film: Film, options: tuple[str, ...], timecode: str, path: str) -> None:
    outputs = [*film.picture_options, "-map", "[sound]", *options, *EXACT,
               "-flags:a", "+bitexact", *(["-timecode", timecode] if timecode else []),
               "-metadata", "make=Sample Camera Works", "-metadata", "model=SC-100",
               "-metadata", "creation_time=2024-05-18T10:00:00+02:00", path]
    film.encode([film.graph({}), *film.stereo()], outputs)
