# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The recording formats that the sample clips use."""

from dataclasses import dataclass


@dataclass(frozen=True)
class Format:
    """One recording format as clip metadata names it."""

    codec: str
    frame_rate: str
    edit_unit: str
    aspect: str = "16:9"
    codec_class: str | None = None
    audio_bits: int = 16
    # Long-GOP and Intra families: raster in the metadata, video and audio in one AVCLIP file.
    raster: tuple[int, int] | None = None

    @property
    def one_file(self) -> bool:
        return self.raster is not None

    @property
    def frames_per_second(self) -> float:
        numerator, denominator = self.edit_unit.split("/")
        return int(denominator) / int(numerator)


_50I = ("50i", "1/25")
_5994I = ("59.94i", "1001/30000")
_5994P = ("59.94p", "1001/60000")

FORMATS = {
    "dv25-50i": Format("DV25_420", *_50I, aspect="4:3"),
    "dv25-5994i": Format("DV25_411", *_5994I, aspect="4:3"),
    "dv50-2997p": Format("DV50_422", "29.97p", "1001/30000"),
    "dv50-50i": Format("DV50_422", *_50I),
    "dv100-1080-50i": Format("DV100_1080/50i", *_50I),
    "dv100-1080-25p": Format("DV100_1080/50i", "25p", "1/25"),
    "dv100-1080-5994i": Format("DV100_1080/59.94i", *_5994I),
    "dv100-720-2398p": Format("DV100_720/59.94p", "23.98p", "1001/24000"),
    "dv100-720-5994p": Format("DV100_720/59.94p", *_5994P),
    "avci50-1080-50i": Format("AVC-I_1080/50i", *_50I, codec_class="50"),
    "avci100-1080-50i": Format("AVC-I_1080/50i", *_50I, codec_class="100"),
    "avci100-1080-5994i": Format(
        "AVC-I_1080/59.94i", *_5994I, codec_class="100", audio_bits=24
    ),
    "avci50-720-5994p": Format(
        "AVC-I_720/59.94p", *_5994P, codec_class="50", audio_bits=24
    ),
    "avci200-1080-50p": Format(
        "AVC-I_1080/25p", "50p", "1/50", codec_class="200", audio_bits=24
    ),
    "longg50-1080-5994i": Format(
        "AVC-LongG422", *_5994I, codec_class="50", audio_bits=24,
        raster=(1920, 1080),
    ),
}
