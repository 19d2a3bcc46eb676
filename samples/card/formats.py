# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The recording formats that the sample clips use."""

from dataclasses import dataclass
from fractions import Fraction


@dataclass(frozen=True)
class Coding:
    """How ffmpeg encodes the pictures of a format."""

    width: int
    height: int
    pixels: str
    options: tuple[str, ...]
    first_field: str = ""  # "tff", "bff"; empty: whole frames


@dataclass(frozen=True)
class Format:
    """One recording format as clip metadata names it."""

    codec: str
    frame_rate: str
    edit_unit: str
    coding: Coding
    aspect: str = "16:9"
    codec_class: str | None = None
    audio_bits: int = 16
    # Long-GOP and Intra families: raster in the metadata, video and audio in one AVCLIP file.
    raster: tuple[int, int] | None = None

    @property
    def one_file(self) -> bool:
        return self.raster is not None

    @property
    def frames_per_second(self) -> Fraction:
        return 1 / Fraction(self.edit_unit)

    @property
    def has_field_motion(self) -> bool:
        return self.frame_rate.endswith("i")


def _dv(width: int, height: int, pixels: str, first_field: str = "tff") -> Coding:
    return Coding(width, height, pixels, ("-c:v", "dvvideo"), first_field)


def _avc_intra(video_class: int, width: int, height: int, first_field: str = "") -> Coding:
    pixels = "yuv420p10" if video_class == 50 else "yuv422p10"
    return Coding(width, height, pixels, ("-c:v", "libx264", "-preset", "ultrafast",
                                          "-avcintra-class", str(video_class)), first_field)


_LONG_GOP = Coding(1920, 1080, "yuv422p10", (
    "-c:v", "libx264", "-preset", "ultrafast", "-profile:v", "high422", "-g", "15", "-bf", "0",
    "-b:v", "50M"), "tff")
_SD_50, _SD_5994 = (720, 576), (720, 480)
_50I = ("50i", "1/25")
_5994I = ("59.94i", "1001/30000")
_5994P = ("59.94p", "1001/60000")

FORMATS = {
    "dv25-50i": Format("DV25_420", *_50I, _dv(*_SD_50, "yuv420p", "bff"), aspect="4:3"),
    "dv25-5994i": Format("DV25_411", *_5994I, _dv(*_SD_5994, "yuv411p", "bff"), aspect="4:3"),
    "dv50-2997p": Format("DV50_422", "29.97p", "1001/30000", _dv(*_SD_5994, "yuv422p", "bff")),
    "dv50-50i": Format("DV50_422", *_50I, _dv(*_SD_50, "yuv422p", "bff")),
    "dv100-1080-50i": Format("DV100_1080/50i", *_50I, _dv(1440, 1080, "yuv422p")),
    "dv100-1080-25p": Format("DV100_1080/50i", "25p", "1/25", _dv(1440, 1080, "yuv422p")),
    "dv100-1080-5994i": Format("DV100_1080/59.94i", *_5994I, _dv(1280, 1080, "yuv422p")),
    "dv100-720-2398p": Format("DV100_720/59.94p", "23.98p", "1001/24000",
                              _dv(960, 720, "yuv422p", "")),
    "dv100-720-5994p": Format("DV100_720/59.94p", *_5994P, _dv(960, 720, "yuv422p", "")),
    "avci50-1080-50i": Format("AVC-I_1080/50i", *_50I, _avc_intra(50, 1440, 1080, "tff"),
                              codec_class="50"),
    "avci100-1080-50i": Format("AVC-I_1080/50i", *_50I, _avc_intra(100, 1920, 1080, "tff"),
                               codec_class="100"),
    "avci100-1080-5994i": Format("AVC-I_1080/59.94i", *_5994I, _avc_intra(100, 1920, 1080, "tff"),
                                 codec_class="100", audio_bits=24),
    "avci50-720-5994p": Format("AVC-I_720/59.94p", *_5994P, _avc_intra(50, 960, 720),
                               codec_class="50", audio_bits=24),
    "avci200-1080-50p": Format("AVC-I_1080/25p", "50p", "1/50", _avc_intra(200, 1920, 1080),
                               codec_class="200", audio_bits=24),
    "longg50-1080-5994i": Format("AVC-LongG422", *_5994I, _LONG_GOP, codec_class="50",
                                 audio_bits=24, raster=(1920, 1080)),
}
