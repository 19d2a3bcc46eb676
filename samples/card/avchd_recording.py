# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Records the streams of AVCHD clips: pictures in H.264, sound in AC-3 or linear."""

import re
import tempfile
from dataclasses import replace
from pathlib import Path

from card.avc_stream import AC3, Sound, linear, multiplexed, with_packs
from card.avchd_files import AvchdClip
from card.film import EXACT, Film, in_parallel

_AC3_FRAME = 768  # bytes of 1536 samples, 192,000 bits a second
_UNIT = re.compile(rb"(?=\x00\x00\x00\x01\x09)")  # each begins with a delimiter
_SOUND_OPTIONS = {True: ["-c:a", "ac3", "-b:a", "192k", "-f", "ac3"],
                  False: ["-c:a", "pcm_s16be", "-f", "s16be"]}


def record_streams(shots: list[tuple[AvchdClip, object]]) -> list[bytes]:
    """The streams of clips with their scenes. A clip that continues goes on with the pictures and
    the sound of the one before it."""
    recordings: list[list[tuple[AvchdClip, Film]]] = []
    for clip, scene in shots:
        if not clip.continues:
            recordings.append([])
        first_frame = sum(film.frames for _, film in recordings[-1])
        recordings[-1].append((clip, _film(clip, scene, first_frame)))
    return [file for files in in_parallel(_record, recordings) for file in files]


def _film(clip: AvchdClip, scene, first_frame: int) -> Film:
    picture = clip.picture
    return Film(scene, clip.name[1:], picture.pixels, picture.lines, picture.rate, clip.frames,
                "yuv420p", first_frame=first_frame, first_field="tff" if picture.interlaced else "",
                has_field_motion=picture.interlaced and not clip.pulldown)


def _record(recording: list[tuple[AvchdClip, Film]]) -> list[bytes]:
    first, film = recording[0]
    whole = replace(film, frames=sum(film.frames for _, film in recording))
    with tempfile.TemporaryDirectory() as folder:
        heard = Path(folder) / "sound"
        graph, outputs = [], []
        if first.audio:
            graph = whole.stereo()
            outputs = ["-map", "[sound]", *EXACT, "-flags:a", "+bitexact",
                       *_SOUND_OPTIONS[first.audio_coding == AC3], str(heard)]
        parts = [_pictures(first, film, graph, outputs),
                 *(_pictures(clip, film, [], []) for clip, film in recording[1:])]
        sound = _sound(first.audio_coding, heard.read_bytes()) if first.audio else None
    return multiplexed(parts, film.rate, first.first_tick, sound)


def _pictures(clip: AvchdClip, film: Film, graph: list[str], outputs: list[str]) -> list[bytes]:
    """The coded pictures; other outputs are written beside them."""
    coded = film.encode([film.graph({}), *graph], [
        *film.picture_options, "-c:v", "libx264", "-preset", "ultrafast", "-profile:v", "high",
        "-level", "4.1" if film.rate > 50 else "4", "-crf", "23", "-g", "12", "-bf", "0",
        "-x264-params", "aud=1:cabac=1:8x8dct=1", "-f", "h264", "pipe:1", *outputs])
    pictures = _UNIT.split(coded)[1:]
    if clip.date_in_stream:
        pictures[0] = with_packs(pictures[0], clip.recorded_date, clip.recorded_timecode)
    return pictures


def _sound(coding: int, data: bytes) -> Sound:
    if coding != AC3:
        return linear(data)
    return Sound(AC3, 1536 * 90000 // 48000,
                 [data[at:at + _AC3_FRAME] for at in range(0, len(data), _AC3_FRAME)])
