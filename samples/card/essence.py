# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Records the media files of a P2 clip: MXF with one track a file, or picture and sound in one;
proxies, voice memos and the icon, which is the clip's first picture."""

from pathlib import Path

from card.clip_xml import Clip, Proxy, umid
from card.film import EXACT, ONE_THREAD, Film, in_parallel
from card.icons import HEIGHT, WIDTH
from card.media import CardWriter, clip_files
from card.mxf import essence_extent, name_packages

_PROXY_RASTERS = {"SIF_PAL": "352x288"}  # the others tell their numbers
_PROXY_RATES = {"25p": "25", "29.97p": "30000/1001", "50p": "50"}
_PROXY_CODECS = {"AVC": ["libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p"],
                 "MPEG-4": ["mpeg4", "-pix_fmt", "yuv420p"], "AAC": ["aac"], "LPCM": ["pcm_s16le"]}
_VOICE_RATE = 12000


class _Recording:
    """The sources and outputs of one run of ffmpeg."""

    def __init__(self, clip: Clip, scene, card: CardWriter):
        form, coding = clip.format, clip.format.coding
        self._clip = clip
        self._film = Film(scene, clip.name[:4], coding.width, coding.height,
                          form.frames_per_second, clip.duration, coding.pixels, form.aspect,
                          clip.first_frame, coding.first_field, form.has_field_motion)
        self._scaled: dict[str, str] = {"icon": f"trim=end_frame=1,scale={WIDTH}:{HEIGHT}"}
        self._sources: list[str] = []
        self._outputs: list[str] = []
        self._media: list[Path] = []
        for folder, name in clip_files(clip):
            self._add(folder, card.place(f"CONTENTS/{folder}/{clip.file_name(name)}"))

    def _add(self, folder: str, path: Path) -> None:
        if folder in ("VIDEO", "AUDIO", "AVCLIP"):
            self._media.append(path)
        options = {"VIDEO": self._video, "AUDIO": self._audio, "AVCLIP": self._one_file,
                   "PROXY": self._proxy, "VOICE": self._voice, "ICON": self._icon}[folder]()
        self._outputs += [*EXACT, *options, "-flags:a", "+bitexact", str(path)]

    def run(self) -> None:
        self._film.encode((self._film.graph(self._scaled), *self._sources), self._outputs)
        for path in self._media:
            name_packages(path, self._clip.identifier, umid(f"content of {path.stem}"))
        extents = [essence_extent(path) for path in self._media]
        if self._clip.format.one_file:
            extents *= 1 + self._clip.audio_channels
        self._clip.extents = extents

    def _source(self, channel: int, filters: str = "anull") -> list[str]:
        name = f"[sound{len(self._sources)}]"
        self._sources.append(f"{self._film.tone(channel)},{filters}{name}")
        return ["-map", name]

    def _picture(self) -> list[str]:
        return [*self._film.picture_options, *self._clip.format.coding.options, *self._timecode()]

    def _timecode(self) -> list[str]:
        return ["-timecode", _every_frame_counted(self._clip)]

    def _sample_codec(self) -> list[str]:
        return ["-c:a", f"pcm_s{self._clip.format.audio_bits}le"]

    def _video(self) -> list[str]:
        return [*self._picture(), "-f", "mxf_opatom"]

    def _audio(self) -> list[str]:
        channel = len(self._sources)
        return [*self._source(channel), *self._sample_codec(), *self._timecode(),
                "-mxf_audio_edit_rate", str(self._clip.format.frames_per_second), "-f",
                "mxf_opatom"]

    def _one_file(self) -> list[str]:
        sound = [option for channel in range(self._clip.audio_channels)
                 for option in self._source(channel)]
        return [*self._picture(), *sound, *self._sample_codec(), "-f", "mxf"]

    def _proxy(self) -> list[str]:
        proxy: Proxy = self._clip.proxy
        raster = _PROXY_RASTERS.get(proxy.resolution, proxy.resolution)
        self._scaled["proxy"] = (f"fps={_PROXY_RATES[proxy.frame_rate]},"
                                 f"scale={raster.replace('x', ':')},setdar="
                                 + self._clip.format.aspect.replace(":", "/"))
        sound = [option for channel in range(proxy.audio_count)
                 for option in self._source(channel)]
        return ["-map", "[proxy]", *ONE_THREAD, "-c:v", *_PROXY_CODECS[proxy.codec], "-b:v",
                str(proxy.bit_rate), "-flags:v", "+bitexact", *sound, "-c:a",
                *_PROXY_CODECS[proxy.audio_codec], "-b:a", str(proxy.audio_bit_rate)]

    def _voice(self) -> list[str]:
        return [*self._source(3, f"aresample={_VOICE_RATE}"), "-c:a", "pcm_s16le"]

    def _icon(self) -> list[str]:
        return ["-map", "[icon]", "-c:v", "bmp", "-pix_fmt", "bgr24", "-frames:v", "1", "-update",
                "1", "-f", "image2"]


def _every_frame_counted(clip: Clip) -> str:
    """The clip's timecode as the file counts: above 30 frames a second cards count pairs."""
    rest, sign, frames = clip.timecode[:-3], clip.timecode[-3], int(clip.timecode[-2:])
    number = frames * 2 if clip.format.frames_per_second > 30 else frames
    return f"{rest}{';' if clip.drop else sign}{number:02d}"


def record_all(clips: list[tuple[Clip, object]], card: CardWriter) -> None:
    """Records clips with their scenes, as many at a time as there are processors: all files but the
    metadata. The clips then know where the essence is in them."""
    recordings = [_Recording(clip, scene, card) for clip, scene in clips]
    in_parallel(_Recording.run, recordings)
