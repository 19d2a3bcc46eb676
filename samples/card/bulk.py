# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Cards of any number of clips for measuring: rich metadata, hollow essence."""

import random
from datetime import datetime, timedelta

from card.clip_xml import Clip, Memo, Proxy, Style, document, render
from card.formats import FORMATS
from card.media import CardWriter

SIZE_MIN, SIZE_MAX = 4096, 8192
_MARGIN = 400  # a file's size is met within this many bytes
MAX_CLIPS = 1000000
_NAME_SIGNS = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
_FORMAT_KEYS = tuple(FORMATS)
_STYLES = (
    Style(),
    Style(namespace="v3.0"),
    Style(namespace=None, newline="\r\n", indent=" "),
    Style(namespace="v3.2", camera_block=True),
    Style(namespace=None),
    Style(indent=None),
)
_PEOPLE = ("A. Brandt", "C. Duarte", "E. Fjeld", "H. Itō", "K. Lemaire", "M. Nowak")
_PLACES = ("Market square, north side", "Ferry landing", "Old town hall", "Stadium, gate 4",
           "Café Größenwahn", "River bridge")
_SETTINGS = ("Iris", "MasterGain", "ShutterAngle", "ColourTemperature", "FocusDistance",
             "ZoomPosition", "MatrixPreset", "DetailLevel", "PedestalLevel", "KneePoint")
_PHRASES = (
    "wide shot holds until the tram has left the frame",
    "sound of the bells covers the answer, take the second try",
    "good reaction of the audience on the left",
    "focus slips for a moment and comes back",
    "start here for the short version",
    "the guest repeats the figure more slowly",
    "clean background sound without voices",
    "sponsor's sign in the picture, blur it or cut away",
    "pan from the tower down to the street",
    "best of the three attempts, light is steady",
)


def clip_name(index: int) -> str:
    """The name of clip `index`: 0001AA to 9999AA, then 0001AB and so on."""
    pair, number = divmod(index, 9999)
    first, second = divmod(pair, len(_NAME_SIGNS))
    return f"{number + 1:04d}{_NAME_SIGNS[first]}{_NAME_SIGNS[second]}"


class _Generator:
    """Makes clip after clip; the size that the bare clip of a kind has is found once."""

    def __init__(self, size: int | None, essence_size: int):
        self._random = random.Random(2024)
        self._size = size
        self._essence_size = essence_size
        self._bare_sizes: dict[tuple[str, int], int] = {}

    def make(self, index: int) -> tuple[Clip, bytes]:
        format_key = _FORMAT_KEYS[index % len(_FORMAT_KEYS)]
        style_number = index // 3 % len(_STYLES)
        clip = self._describe(index, format_key, _STYLES[style_number])
        kind = (format_key, style_number)
        if kind not in self._bare_sizes:
            self._bare_sizes[kind] = len(render(document(clip), clip.style))
        low, high = SIZE_MIN + _MARGIN, SIZE_MAX - _MARGIN
        wanted = self._size or self._random.randint(low, high)
        target = min(max(wanted, low), high)
        room = target - self._bare_sizes[kind]
        clip.memos = self._memos(clip, index % 3)
        room -= sum(self._memo_frame_size(clip.style) + len(memo.text) for memo in clip.memos)
        clip.settings = self._settings(clip, room)
        return clip, render(document(clip), clip.style)

    def _describe(self, index: int, format_key: str, style: Style) -> Clip:
        form = FORMATS[format_key]
        pick = self._random.choice
        duration = self._random.randint(1000, 9999)
        start = datetime(2024, 1, 1, 6) + timedelta(minutes=7 * index)
        person, stamp = pick(_PEOPLE), f"{start.isoformat()}+01:00"
        return Clip(
            clip_name(index), form, duration, start.strftime("%H:%M:%S:10"), stamp,
            drop=form.frame_rate.startswith("59.94") and index % 2 == 0,
            user_name=f"Street report {index + 1:07d}", unused_offset=0, style=style,
            access={"Creator": person, "CreationDate": stamp, "LastUpdatePerson": pick(_PEOPLE),
                    "LastUpdateDate": stamp},
            device={"Manufacturer": "Sample Camera Works", "SerialNo.": "B7DEMO042",
                    "ModelName": "SC-2000"},
            shooter=person,
            location={"Altitude": f"{self._random.randint(100, 999)}", "Longitude": "E009.9937",
                      "Latitude": "N53.5511", "Source": "GPS", "PlaceName": pick(_PLACES)},
            scenario={"ProgramName": "Evening magazine", "SceneNo.": f"{index % 90 + 10}",
                      "TakeNo.": f"{index % 9 + 1}"},
            news={"Reporter": pick(_PEOPLE), "Purpose": "Daily news", "Object": pick(_PLACES)},
            proxy=Proxy("MOV" if index % 3 == 0 else "MP4", audio_count=4),
            essence_size=self._essence_size)

    def _memos(self, clip: Clip, count: int) -> list[Memo]:
        return [Memo(self._random.randrange(100, clip.duration), self._random.choice(_PEOPLE),
                     ", ".join(self._random.sample(_PHRASES, 2)))
                for _ in range(count)]

    def _settings(self, clip: Clip, room: int) -> list[tuple[str, str]]:
        """Camera settings that fill the room."""
        settings = []
        white_space = 0 if clip.style.indent is None else 1 + 3 * len(clip.style.indent)
        while room > 0:
            name = _SETTINGS[len(settings) % len(_SETTINGS)]
            value = (f"{self._random.uniform(0, 9999):.2f} from frame "
                     f"{self._random.randrange(clip.duration)}")
            settings.append((name, value))
            room -= 2 * len(name) + 5 + len(value) + white_space
        return settings

    @staticmethod
    def _memo_frame_size(style: Style) -> int:
        """About what a memo costs beside its text: its tags, and its white space if any."""
        return 105 if style.indent is None else 105 + 5 + 28 * len(style.indent)


def make(card: CardWriter, count: int, size: int | None, essence_size: int) -> None:
    """Writes a card of `count` clips whose metadata takes about `size` bytes each, or, without a
    size, anything from 4 to 8 KB. The media files have `essence_size` bytes without content."""
    generator = _Generator(size, essence_size)
    for index in range(count):
        clip, metadata = generator.make(index)
        card.add_hollow_clip(clip, metadata)
    card.add_last_clip(clip_name(count - 1))
    card.finish()
