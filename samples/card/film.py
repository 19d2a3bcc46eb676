# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""What is to be seen and heard on the sample clips: a scene with the clip's number and colour bars
below it, a box that crosses the picture once a second, a tone of its own on each channel. Encoded
by ffmpeg."""

import os
import shutil
import subprocess
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from fractions import Fraction
from typing import Callable, Iterable

from card.icons import HEIGHT, WIDTH, bmp
from card.media import CardError
from card.scenes import BAR_COLOURS, BLACK, WHITE

SAMPLES_A_SECOND = 48000
EXACT = ["-fflags", "+bitexact"]  # no dates, no version
ONE_THREAD = ["-threads", "1"]  # what is coded depends on their number
# What the MXF writer says of the mark that the DV encoder sets in pictures of 720 lines too.
_HARMLESS = "source marked as interlaced but codec profile is progressive"
# What boxes are laid over without a conversion of each picture, and the filter's name for it.
_OVERLAYS = {"yuv420p": "yuv420", "yuv422p": "yuv422", "yuv420p10": "yuv420p10",
             "yuv422p10": "yuv422p10"}
_BAND = 15  # height of number and bars, in pixels of the drawing
_CELL = 2
# Three columns and five rows a digit.
_DIGITS = ("111 101 101 101 111", "010 110 010 010 111", "111 001 111 100 111",
           "111 001 111 001 111", "101 101 111 001 001", "111 100 111 001 111",
           "111 100 111 101 111", "111 001 001 010 010", "111 101 111 101 111",
           "111 101 111 001 111")


@dataclass(frozen=True)
class Film:
    """The pictures of one clip, as they are recorded."""

    scene: Callable
    number: str  # four digits
    width: int
    height: int
    rate: Fraction  # frames a second
    frames: int
    pixels: str  # ffmpeg's name of the samples' arrangement
    aspect: str = "16:9"
    first_frame: int = 0  # of the take: tone and box go on from there
    first_field: str = ""  # "tff", "bff"; empty: whole frames
    has_field_motion: bool = False

    @property
    def _drawn_rate(self) -> Fraction:
        return self.rate * (2 if self.has_field_motion else 1)

    def _drawing(self) -> bytes:
        """The still part."""

        def paint(x, y):
            return self.scene(x, y) if y < HEIGHT else self._band(x, y - HEIGHT)

        return bmp(paint, HEIGHT + _BAND)

    def graph(self, scaled: dict[str, str]) -> str:
        """A filter graph that gives [video] and each of the other pictures, made by filters of the
        progressive ones."""
        rate = self._drawn_rate
        fields = rate // self.rate
        pixels = self.pixels if self.pixels in _OVERLAYS else "yuv422p"
        top = self.height * 4 // 5 & ~1
        matrix = "bt709" if self.height >= 720 else "bt470bg" if self.height == 576 else "smpte170m"
        box_width, box_height = self.width // 16 & ~1, self.height // 12 & ~1
        step = f"mod((n+{self.first_frame * fields})*{round(self.width / rate)}\\,{self.width})"
        copies = "".join(f"[to_{name}]" for name in scaled)
        scan = f"interlace=scan={self.first_field}:lowpass=0," if self.has_field_motion else (
            f"setfield={self.first_field or 'prog'},")
        return ";".join((
            "[0]split[upper][lower]",
            f"[upper]crop={WIDTH}:{HEIGHT}:0:0,scale={self.width}:{top}[picture]",
            f"[lower]crop={WIDTH}:{_BAND}:0:{HEIGHT},"
            f"scale={self.width}:{self.height - top}:flags=neighbor[band]",
            f"[picture][band]vstack,scale=out_color_matrix={matrix},format={pixels},"
            f"setparams=colorspace={matrix},loop=-1:1[still]",
            f"color=white:s={box_width}x{box_height}:r={rate},format={pixels}[box]",
            f"[still][box]overlay=format={_OVERLAYS[pixels]}:x={step}:y={top - box_height},"
            f"trim=end_frame={self.frames * fields},setdar={self.aspect.replace(':', '/')},"
            f"split={1 + len(scaled)}[film]{copies}",
            f"[film]{scan}null[video]",
            *(f"[to_{name}]{filters}[{name}]" for name, filters in scaled.items())))

    def tone(self, channel: int) -> str:
        """A source of sound as long as the pictures, a fifth higher for each channel."""
        first, last = (round(frame * SAMPLES_A_SECOND / self.rate)
                       for frame in (self.first_frame, self.first_frame + self.frames))
        pitch = round(400 * 1.5 ** channel)
        return (f"sine=frequency={pitch}:sample_rate={SAMPLES_A_SECOND},"
                f"atrim=start_sample={first}:end_sample={last},asetpts=N/SR/TB")

    def stereo(self) -> list[str]:
        """Filters that give two channels as [sound]."""
        return [f"{self.tone(0)}[left]", f"{self.tone(1)}[right]",
                "[left][right]join=inputs=2:channel_layout=stereo[sound]"]

    @property
    def picture_options(self) -> list[str]:
        scan = "+ildct+ilme" if self.first_field else ""
        return ["-map", "[video]", *ONE_THREAD, "-pix_fmt", self.pixels, "-flags:v",
                f"+bitexact{scan}"]

    def _band(self, x, y):
        if x >= WIDTH / 2:
            return BAR_COLOURS[int((x - WIDTH / 2) * len(BAR_COLOURS) / (WIDTH / 2))]
        column, row = int(x / _CELL) - 1, int((y - 2) // _CELL)
        place, inside = divmod(column, 4)
        if not 0 <= place < len(self.number) or inside == 3 or not 0 <= row < 5:
            return BLACK
        return WHITE if _DIGITS[int(self.number[place])].split()[row][inside] == "1" else BLACK

    def encode(self, graph: Iterable[str], outputs: list[str]) -> bytes:
        """Runs ffmpeg with parts of a filter graph; returns what it wrote to standard output."""
        program = shutil.which("ffmpeg")
        if program is None:
            raise CardError("ffmpeg is needed for pictures and sound (scripts/install-deps demo)")
        command = [program, "-v", "error", "-y", "-f", "bmp_pipe", "-framerate",
                   str(self._drawn_rate), "-i", "pipe:0", "-filter_complex_threads", "1",
                   "-filter_complex", ";".join(graph), *outputs]
        result = subprocess.run(command, input=self._drawing(), capture_output=True, check=False)
        told = [line for line in result.stderr.decode(errors="replace").splitlines()
                if _HARMLESS not in line]
        if result.returncode != 0 or told:
            raise CardError(f"ffmpeg: {' '.join(told) or result.returncode}")
        return result.stdout


def in_parallel(work: Callable, jobs: list) -> list:
    """The results of the jobs, as many at a time as there are processors."""
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        return list(pool.map(work, jobs))
