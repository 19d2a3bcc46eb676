#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Tests samples/make_card.py by running it. Called with the script's path as only argument."""

import functools
import hashlib
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from fractions import Fraction
from pathlib import Path

SCRIPT = Path(sys.argv.pop(1)) if len(sys.argv) > 1 else (
    Path(__file__).resolve().parents[2] / "samples" / "make_card.py")
SHARED = os.environ.get("NQP2_SAMPLE_CARDS")
UNREADABLE = {"0017CX.XML", "._0001AB.XML"}
NEEDS_FFMPEG = unittest.skipUnless(shutil.which("ffmpeg"), "ffmpeg is not installed")
# What is coded, by codec, class and edit unit.
RASTERS = {
    "DV25_420 1/25": (720, 576), "DV25_411 1001/30000": (720, 480),
    "DV50_422 1/25": (720, 576), "DV50_422 1001/30000": (720, 480),
    "DV100_1080/50i 1/25": (1440, 1080), "DV100_1080/59.94i 1001/30000": (1280, 1080),
    "DV100_720/59.94p 1001/24000": (960, 720), "AVC-I_1080/50i 50 1/25": (1440, 1080),
    "AVC-I_1080/59.94i 100 1001/30000": (1920, 1080), "AVC-I_720/59.94p 50 1001/60000": (960, 720),
    "AVC-I_1080/25p 200 1/50": (1920, 1080), "AVC-LongG422 50 1001/30000": (1920, 1080)}


def run(*arguments):
    command = [sys.executable, "-B", str(SCRIPT), *map(str, arguments)]
    return subprocess.run(command, capture_output=True, text=True, check=False)


def fingerprint(card):
    """Name, time and content of all that is on a card."""
    return [(str(path.relative_to(card)), path.stat().st_mtime_ns,
             hashlib.sha256(path.read_bytes()).hexdigest() if path.is_file() else "")
            for path in sorted(card.rglob("*"))]


def names_in(folder):
    return {path.name for path in folder.iterdir()}


def local_name(element):
    """An element's name without its namespace; "" for a comment."""
    return element.tag.rpartition("}")[2] if isinstance(element.tag, str) else ""


def text_at(root, path):
    """Text of the first element at a path of names, whatever their namespaces."""
    for name in path.split("/"):
        root = next(child for child in root if local_name(child) == name)
    return "".join(root.itertext())


def promises(content):
    """The media files of a clip, where the essence begins in each and how long it is, as its
    metadata tell it."""
    essence = next(child for child in content if local_name(child) == "EssenceList")
    extents = [tuple(int(text_at(each, f"{local_name(each)}Index/{field}"))
                     for field in ("StartByteOffset", "DataSize"))
               for each in essence if local_name(each) in ("Video", "Audio")]
    name = text_at(content, "ClipName")
    if text_at(essence, "Video/Codec").startswith("AVC-LongG"):
        return {f"AVCLIP/{name}.MXF": extents[0]}
    return {f"VIDEO/{name}.MXF": extents[0],
            **{f"AUDIO/{name}{number:02d}.MXF": each for number, each in enumerate(extents[1:])}}


def played(path, *options):
    """A file's streams, packets and tags, decoded to its end."""
    result = subprocess.run(
        ["ffprobe", "-v", "error", *options, "-count_frames", "-show_streams", "-show_packets",
         "-show_format", "-of", "json", path], capture_output=True, text=True, check=True)
    assert not result.stderr, f"{path}: {result.stderr}"
    found = json.loads(result.stdout)
    return found["streams"], found["packets"], found["format"].get("tags", {})


def told(content):
    """Raster, rate and number of the pictures, seconds of sound, as the metadata tell them."""
    unit, length = text_at(content, "EditUnit"), int(text_at(content, "Duration"))
    codec = next(each for each in content.iter() if local_name(each) == "Codec")
    named = " ".join(filter(None, (codec.text, codec.get("Class"), unit)))
    return (*RASTERS[named], 1 / Fraction(unit), length), length * Fraction(unit)


@functools.cache
def sample(kind):
    """A card with something to look at, made once for all tests or for these; to be read only."""
    if SHARED:
        return Path(SHARED) / kind
    card = Path(tempfile.mkdtemp(prefix="sample-card-"))
    unittest.addModuleCleanup(shutil.rmtree, card)
    result = run(card / "new/card", "--kind", kind)
    assert (result.returncode, result.stderr) == (0, ""), result.stderr
    return card / "new/card"


class MakeCardTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def make(self, name, *arguments):
        card = self.folder / name
        result = run(card, *arguments)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return card

    def assert_promises_kept(self, card):
        """Every clip's file is sound, named after it, and promises no byte that its media lack.
        Returns the clips' contents."""
        contents = card / "CONTENTS"
        sizes = {str(path.relative_to(contents)).upper(): path.stat().st_size
                 for path in contents.rglob("*.*")}
        clips = []
        for file in (contents / "CLIP").iterdir():
            if file.name in UNREADABLE:
                self.assertRaises(ElementTree.ParseError, ElementTree.parse, file)
                continue
            content = ElementTree.parse(file).getroot()[0]
            self.assertEqual(text_at(content, "ClipName"), file.name[:6].upper())
            for path, extent in promises(content).items():
                self.assertGreaterEqual(sizes[path], sum(extent), f"{path} of {file.name}")
            clips.append(content)
        identifiers = {bytes.fromhex(text_at(clip, "GlobalClipID")) for clip in clips}
        self.assertEqual((len(identifiers), {len(each) for each in identifiers}),
                         (len(clips), {32}))
        return clips

    @NEEDS_FFMPEG
    def test_the_same_call_makes_the_same_card(self):
        for kind in ("p2", "avchd"):
            self.assertEqual(fingerprint(self.make("card", "--force", "--kind", kind)),
                             fingerprint(sample(kind)))
        first = fingerprint(self.make("card", "--force", "--clips", 40))
        self.assertEqual(fingerprint(self.make("card", "--force", "--clips", 40)), first)

    @NEEDS_FFMPEG
    def test_the_demo_card_plays_what_it_promises(self):
        card = sample("p2")
        files = {str(path.relative_to(card / "CONTENTS")).upper(): path
                 for path in card.glob("CONTENTS/*/*.*")}
        clips = self.assert_promises_kept(card)
        self.assertEqual(len(clips), 16)
        for clip in clips:
            extents = promises(clip)
            for path in extents:
                if path.startswith("AUDIO") and not path.endswith("00.MXF"):
                    self.assert_another_channel(files, extents, path, clip)
                else:
                    self.assert_plays(files[path], extents[path], clip)
        self.assertEqual(len(played(card / "CONTENTS/ICON/*", "-f", "image2", "-pattern_type",
                                    "glob")[1]), 17)
        beside = [path for path in files.values() if path.parent.name in ("PROXY", "VOICE")]
        self.assertEqual(len(beside), 4 + 1)
        for path in beside:
            self.assertTrue(played(path)[1], path)

    def assert_plays(self, path, extent, clip):
        pictures, seconds = told(clip)
        streams, packets, tags = played(path)
        for stream in streams:
            if stream["codec_type"] == "video":
                found = (stream["width"], stream["height"],
                         Fraction(stream["avg_frame_rate"]), int(stream["nb_read_frames"]))
                self.assertEqual(found, pictures, path)
            else:
                self.assertEqual(int(stream["duration_ts"]), seconds * 48000, path)
        self.assertEqual(tags["material_package_umid"][2:].upper(),
                         text_at(clip, "GlobalClipID").upper(), path)
        if len(streams) == 1:
            size = sum(int(packet["size"]) for packet in packets)
            self.assertEqual((int(packets[0]["pos"]), size), extent, path)

    def assert_another_channel(self, files, extents, path, clip):
        """It is laid out as the clip's first, which plays, is the same clip's and sounds
        otherwise."""
        content, first = files[path].read_bytes(), files[f"{path[:-6]}00.MXF"].read_bytes()
        start, size = extents[path]
        self.assertEqual((extents[path], len(content)),
                         (extents[f"{path[:-6]}00.MXF"], len(first)), path)
        self.assertIn(bytes.fromhex(text_at(clip, "GlobalClipID")), content, path)
        self.assertNotEqual(content[start:start + size], first[start:start + size], path)

    def test_cards_for_measuring_have_metadata_of_4_to_8_kilobytes(self):
        # 90 clips: every format in every way of writing.
        card = self.make("card", "--clips", 90, "--essence-size", 100)
        clips = self.assert_promises_kept(card)
        self.assertEqual([sum(extent) for clip in clips for extent in promises(clip).values()],
                         [100] * sum(len(promises(clip)) for clip in clips))
        self.assertEqual(len(clips), 90)
        contents = card / "CONTENTS"
        self.assertEqual({path.stat().st_size for path in (contents / "VIDEO").iterdir()}, {100})
        for path in (contents / "CLIP").iterdir():
            self.assertTrue(4096 <= path.stat().st_size <= 8192, path.name)
        self.assertEqual(names_in(contents / "CLIP"),
                         {f"{number:04d}AA.XML" for number in range(1, 91)})

    def test_measuring_cards_share_their_clips_out_to_forty_playlists(self):
        card = self.make("card", "--kind", "avchd", "--clips", 90)
        bdmv = card / "PRIVATE" / "AVCHD" / "BDMV"
        self.assertEqual([len(names_in(bdmv / name)) for name in ("CLIPINF", "PLAYLIST")], [90, 40])
        self.assertEqual({path.stat().st_size for path in (bdmv / "STREAM").iterdir()}, {98304})
        self.make("card", "--clips", 1, "--force")
        self.assertFalse(bdmv.exists())
        self.assertTrue((card / "CONTENTS" / "CLIP" / "0001AA.XML").is_file())

    def test_what_is_refused_changes_nothing(self):
        (self.folder / "holiday.txt").write_text("keep", encoding="utf-8")
        card, new = self.make("card", "--clips", 3), self.folder / "new"
        before = fingerprint(self.folder)
        usage = (("--clips", 0), ("--size", 5000), ("--clips", 1, "--size", 100),
                 ("--kind", "camera", "--clips", 1), ("--kind", "avchd", "--clips", 100001))
        for status, words, arguments in (
                (1, "not empty", (self.folder,)), (1, "this is none", (self.folder, "--force")),
                (1, "not a folder", (self.folder / "holiday.txt",)),
                (1, "not empty", (card, "--clips", 1)),
                *((2, "usage:", (new, *options)) for options in usage)):
            result = run(*arguments)
            self.assertEqual((result.returncode, words in result.stderr), (status, True), arguments)
            self.assertNotIn("Traceback", result.stderr)
        self.assertEqual(fingerprint(self.folder), before)
        self.make("card", "--clips", 1, "--force")
        self.assertEqual(names_in(card / "CONTENTS" / "CLIP"), {"0001AA.XML"})


if __name__ == "__main__":
    unittest.main()
