# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The cards that are measured, made once and kept."""

import hashlib
import math
import os
import random
import shutil
import struct
import subprocess
import sys
from pathlib import Path
from typing import Callable
from xml.dom import minidom

ROOT = Path(__file__).resolve().parents[2]
MAKE_CARD = ROOT / "samples" / "make_card.py"
FRAME_MAKER = ROOT / "tests" / "nqp2"
MODIFIED = 1715400000  # long ago, as a card's folders are
MEGABYTE = 1 << 20
OTHER_NAME = str.maketrans("0123456789", "QRSTUVWXYZ")


class Cards:
    """Cards below one folder; each is made anew when what makes it has changed."""

    def __init__(self, folder: Path):
        self.folder = folder
        self._digest = hashlib.sha256()
        for source in (Path(__file__), *sorted(MAKE_CARD.parent.rglob("*.py"))):
            self._digest.update(source.read_bytes())

    def bulk(self, clips: int, kind: str = "p2", *options: str) -> Path:
        name = "-".join((str(clips), *([] if kind == "p2" else [kind]), *options)).replace("--", "")
        return self._made(name, lambda card: subprocess.run(
            [sys.executable, MAKE_CARD, card, "--kind", kind, "--clips", str(clips), *options],
            check=True))

    def clips_only(self, clips: int) -> Path:
        """A card without the folders of media."""
        source = self.bulk(clips)
        return self._made(f"{clips}-clips-only",
                          lambda card: shutil.copytree(source / "CONTENTS" / "CLIP",
                                                       card / "CONTENTS" / "CLIP"))

    def missing(self, clips: int) -> Path:
        """A card with full folders in which no sound, icon or proxy belongs to a clip."""
        source = self.bulk(clips) / "CONTENTS"

        def make(card: Path) -> None:
            for folder in sorted(source.iterdir()):
                target = card / "CONTENTS" / folder.name
                target.mkdir(parents=True)
                kept = folder.name in ("CLIP", "VIDEO", "AVCLIP")
                for file in folder.iterdir():
                    os.link(file, target / (file.name if kept else file.name.translate(OTHER_NAME)))
                os.utime(target, (MODIFIED, MODIFIED))

        return self._made(f"{clips}-missing", make)

    def pictured(self, clips: int) -> Path:
        """A card each of whose clips has an icon of its own."""
        source = self.bulk(clips)

        def make(card: Path) -> None:
            shutil.copytree(source, card, copy_function=os.link)
            for number, clip in enumerate(sorted((card / "CONTENTS" / "CLIP").iterdir())):
                icon = card / "CONTENTS" / "ICON" / f"{clip.stem}.BMP"
                icon.unlink(missing_ok=True)
                icon.write_bytes(_icon(number))

        return self._made(f"{clips}-pictured", make)

    def shelf(self, cards: int, clips: int) -> Path:
        """A folder of so many cards."""
        source = self.bulk(clips)

        def make(shelf: Path) -> None:
            for number in range(cards):
                shutil.copytree(source, shelf / f"day {number % 5}" / f"card {number}",
                                copy_function=os.link)

        return self._made(f"{cards}-cards-of-{clips}", make)

    def odd(self, clips: int) -> Path:
        """A card each of whose metadata files has other elements, in another order."""
        source = self.bulk(clips)

        def make(card: Path) -> None:
            shutil.copytree(source, card, copy_function=os.link)
            chance = random.Random(7)
            for file in sorted((card / "CONTENTS" / "CLIP").iterdir()):
                content = _shuffled(file.read_bytes(), chance)
                file.unlink()
                file.write_bytes(content)

        return self._made(f"{clips}-odd", make)

    def real(self, megabytes: int) -> Path:
        """A card of one clip whose media are random bytes, none of them holes."""
        files = 5  # one of picture and four of sound, all of one size

        def make(card: Path) -> None:
            size = megabytes * MEGABYTE // files
            subprocess.run([sys.executable, MAKE_CARD, card, "--clips", "1", "--essence-size",
                            str(size)], check=True)
            for file in media_of(card):
                _fill(file)

        return self._made(f"real-{megabytes}", make)

    def small_files(self, files: int) -> Path:
        """Folders of a thousand files of 4 KB each."""
        def make(folder: Path) -> None:
            for number in range(files):
                if number % 1000 == 0:
                    below = folder / f"{number // 1000:03}"
                    below.mkdir(parents=True)
                (below / f"{number % 1000:04}.XML").write_bytes(os.urandom(4096))

        return self._made(f"small-files-{files}", make)

    def tape(self, frames: int) -> Path:
        """A stream of that many DV frames with noise for a picture."""
        def make(folder: Path) -> None:
            folder.mkdir()
            noisy = [_noisy_frame(number) for number in range(25)]
            with open(folder / "tape.dv", "wb") as file:
                for number in range(frames):
                    file.write(noisy[number % len(noisy)])

        return self._made(f"tape-{frames}", make) / "tape.dv"

    def recorded(self, nqp2: Path, frames: int) -> Path:
        """The video file of a clip that was recorded from such a stream."""
        tape = self.tape(frames)

        def make(card: Path) -> None:
            (card / "CONTENTS").mkdir(parents=True)
            subprocess.run([nqp2, "rt-export", card, tape, "--code-type", "CT_DV25_50I",
                            "--quiet"], check=True)

        card = self._made(f"recorded-{frames}", make)
        return next((card / "CONTENTS" / "VIDEO").glob("*.MXF"))

    def avc_intra(self, frames: int) -> Path:
        """A file of that many frames of AVC-Intra 100 as a card has them, with noise in the
        picture."""
        different = 12

        def make(folder: Path) -> None:
            folder.mkdir()
            ffmpeg, few = ["ffmpeg", "-v", "error", "-nostdin"], folder / "few.mxf"
            subprocess.run([*ffmpeg, "-f", "lavfi", "-i",
                            "testsrc2=s=1920x1080:r=25,noise=alls=30:allf=t",
                            "-frames:v", str(different), "-pix_fmt", "yuv422p10le",
                            "-c:v", "libx264", "-avcintra-class", "100", "-flags", "+ildct+ilme",
                            "-preset", "ultrafast", "-f", "mxf_opatom", few], check=True)
            subprocess.run([*ffmpeg, "-stream_loop", str(frames // different), "-i", few,
                            "-c", "copy", "-frames:v", str(frames), "-f", "mxf_opatom",
                            folder / "0001AA.MXF"], check=True)

        return self._made(f"avc-intra-{frames}", make) / "0001AA.MXF"

    def camera_file(self) -> Path:
        def make(folder: Path) -> None:
            folder.mkdir()
            (folder / "DV000001.AVI").write_bytes(_dv_stream().avi([_noisy_frame(0)] * 25))

        return self._made("camera-file", make) / "DV000001.AVI"

    def _made(self, name: str, make: Callable[[Path], object]) -> Path:
        card, stamp = self.folder / name, self.folder / f"{name}.made-by"
        if not stamp.is_file() or stamp.read_text(encoding="ascii") != self._digest.hexdigest():
            print(f"making {name}", file=sys.stderr)
            stamp.unlink(missing_ok=True)
            shutil.rmtree(card, ignore_errors=True)
            self.folder.mkdir(parents=True, exist_ok=True)
            make(card)
            stamp.write_text(self._digest.hexdigest(), encoding="ascii")
        return card


def media_of(card: Path) -> list[Path]:
    """The clips' files, the metadata last."""
    files = [file for file in sorted(card.glob("CONTENTS/*/*")) if file.stat().st_size]
    return sorted(files, key=lambda file: file.suffix == ".XML")


def _fill(file: Path) -> None:
    size = file.stat().st_size
    if file.suffix == ".XML":
        return
    with open(file, "wb") as out:
        for start in range(0, size, MEGABYTE):
            out.write(os.urandom(min(MEGABYTE, size - start)))


def _icon(number: int) -> bytes:
    """A bitmap as of a camera: broad shapes of light and the noise of its sensor."""
    wide, high = 80, 60
    chance = random.Random(number)
    shapes = [(chance.uniform(-12, 12), chance.uniform(-12, 12), chance.uniform(0, math.tau))
              for _ in range(3)]
    rows = bytearray(struct.pack("<2s4I2i2H6I", b"BM", 54 + wide * high * 3, 0, 54, 40, wide, high,
                                 1, 24, 0, 0, 0, 0, 0, 0))
    for y in range(high):
        for x in range(wide):
            light = 128 + 40 * sum(math.sin(across * x / wide + down * y / high + start)
                                   for across, down, start in shapes[:2])
            tint = 20 * math.sin(shapes[2][0] * x / wide + shapes[2][2])
            grain = chance.random() * 8
            rows += bytes(min(max(int(light + shift * tint + grain), 0), 255)
                          for shift in (-1, 0, 1))
    return bytes(rows)


def _dv_stream():
    sys.path.insert(0, str(FRAME_MAKER))
    import dv_stream  # pylint: disable=import-outside-toplevel

    return dv_stream


def _noisy_frame(number: int) -> bytes:
    frame = bytearray(_dv_stream().dv_frame(number))
    for block in range(0, len(frame), 80):
        if frame[block] >> 5 == 4:  # picture
            frame[block + 4:block + 80] = os.urandom(76)
    return bytes(frame)


def _shuffled(document: bytes, chance: random.Random) -> bytes:
    """Leaves out some of what a clip need not have, and gives the rest another order."""
    tree = minidom.parseString(document)
    for parent in tree.getElementsByTagName("ClipMetadata"):
        parts = [part for part in parent.childNodes if part.nodeType == part.ELEMENT_NODE]
        for part in parts:
            parent.removeChild(part)
            if chance.random() < 0.2:
                part.setAttribute(f"note{chance.randrange(1000)}", "x")
        chance.shuffle(parts)
        for part in parts[:-len(parts) // 4]:
            parent.appendChild(part)
    return tree.toxml(encoding="UTF-8")
