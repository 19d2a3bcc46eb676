# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Records the streams of AVCHD clips: pictures in H.264, sound in AC-3 or linear."""

import re
import tempfile
from pathlib import Path

from card.avc_stream import AC3, Sound, linear, multiplexed, with_packs
from card.avchd_files import AvchdClip
from card.film import EXACT, Film, in_parallel

_AC3_FRAME = 768  # bytes of 1536 samples, 192,000 bits a second
_UNIT = re.compile(rb"(?=\x00\x00\x00\x01\x09)")  # each begins with a delimiter
_SOUND_OPTIONS = {True: ["-c:a", "ac3", "-b:a", "192k", "-f", "ac3"],
                  False: ["-c:a", "pcm_s16be", "-f", "s16be"]}


def record_streams(shots: list[tuple[AvchdClip, object]]) -> list[bytes]:
    """The streams of clips with their scenes. A clip that continues shows the same recording."""
    jobs, first_frame = [], 0
    for clip, scene in shots:
        first_frame = first_frame if clip.continues else 0
        jobs.append((clip, _film(clip, scene, first_frame)))
        first_frame += clip.frames
    return in_parallel(lambda job: _stream(*job), jobs)


def _film(clip: AvchdClip, scene, first_frame: int) -> Film:
    picture = clip.picture
    return Film(scene, clip.name[1:], picture.pixels, picture.lines, picture.rate, clip.frames,
                "yuv420p", first_frame=first_frame, first_field="tff" if picture.interlaced else "",
                has_field_motion=picture.interlaced and not clip.pulldown)


def _stream(clip: AvchdClip, film: Film) -> bytes:
    graph = [film.graph({})]
    outputs = [*film.picture_options, "-c:v", "libx264", "-preset", "ultrafast",
               "-profile:v", "high", "-level", "4.1" if film.rate > 50 else "4", "-crf", "23",
               "-g", "12", "-bf", "0", "-x264-params", "aud=1:cabac=1:8x8dct=1", "-f", "h264",
               "pipe:1"]
    with tempfile.TemporaryDirectory() as folder:
        heard = Path(folder) / "sound"
        if clip.audio:
            graph += film.stereo()
            outputs += ["-map", "[sound]", *EXACT, "-flags:a", "+bitexact",
                        *_SOUND_OPTIONS[clip.audio_coding == AC3], str(heard)]
        pictures = _UNIT.split(film.encode(graph, outputs))[1:]
        sound = _sound(clip.audio_coding, heard.read_bytes()) if clip.audio else None
    if clip.date_in_stream:
        pictures[0] = with_packs(pictures[0], clip.recorded_date, clip.recorded_timecode)
    return multiplexed(pictures, film.rate, clip.first_tick, sound)


def _sound(coding: int, data: bytes) -> Sound:
    if coding != AC3:
        return linear(data)
    return Sound(AC3, 1536 * 90000 // 48000,
                 [data[at:at + _AC3_FRAME] for at in range(0, len(data), _AC3_FRAME)])
