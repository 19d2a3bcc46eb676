#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Tests samples/make_card.py by running it. Called with the script's path as only argument."""

import hashlib
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

SCRIPT = Path(sys.argv.pop(1)) if len(sys.argv) > 1 else (
    Path(__file__).resolve().parents[2] / "samples" / "make_card.py")
UNREADABLE = {"0017CX.XML", "._0001AB.XML"}


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
    """The media files of a clip and how long each has to be, as its metadata tell it."""
    essence = next(child for child in content if local_name(child) == "EssenceList")
    ends = [sum(int(text_at(each, f"{local_name(each)}Index/{field}"))
                for field in ("StartByteOffset", "DataSize"))
            for each in essence if local_name(each) in ("Video", "Audio")]
    name = text_at(content, "ClipName")
    if text_at(essence, "Video/Codec").startswith("AVC-LongG"):
        return {f"AVCLIP/{name}.MXF": max(ends)}
    return {f"VIDEO/{name}.MXF": ends[0],
            **{f"AUDIO/{name}{number:02d}.MXF": end for number, end in enumerate(ends[1:])}}


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
        """Every clip's file is sound, named after it, and tells the sizes of its media. Returns the
        clips' identifiers."""
        contents = card / "CONTENTS"
        sizes = {str(path.relative_to(contents)).upper(): path.stat().st_size
                 for path in contents.rglob("*.*")}
        identifiers = []
        for file in (contents / "CLIP").iterdir():
            if file.name in UNREADABLE:
                self.assertRaises(ElementTree.ParseError, ElementTree.parse, file)
                continue
            content = ElementTree.parse(file).getroot()[0]
            self.assertEqual(text_at(content, "ClipName"), file.name[:6].upper())
            for path, size in promises(content).items():
                self.assertEqual(sizes[path], size, f"{path} of {file.name}")
            identifiers.append(text_at(content, "GlobalClipID"))
        self.assertEqual({len(bytes.fromhex(text)) for text in identifiers}, {32})
        return identifiers

    def test_the_same_call_makes_the_same_card(self):
        for arguments in ((), ("--clips", 40), ("--kind", "avchd")):
            first, second = (self.make(f"{name}{len(arguments)}{arguments[-1:]}", *arguments)
                             for name in ("first", "second"))
            self.assertEqual(fingerprint(first), fingerprint(second))

    def test_the_demo_card_promises_what_it_holds(self):
        card = self.make("new/card")
        self.assertEqual(len(set(self.assert_promises_kept(card))), 16)
        contents = card / "CONTENTS"
        media = [path for path in contents.rglob("*")
                 if path.suffix.upper() in (".MXF", ".MP4", ".MOV", ".WAV")]
        self.assertEqual({path.read_bytes()[:26] for path in media},
                         {b"sample essence placeholder"})

    def test_cards_for_measuring_have_metadata_of_4_to_8_kilobytes(self):
        # 90 clips: every format in every way of writing.
        card = self.make("card", "--clips", 90, "--essence-size", 100)
        self.assertEqual(len(self.assert_promises_kept(card)), 90)
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
        self.make("card", "--kind", "camera", "--force")
        self.assertFalse(bdmv.exists())
        self.assertTrue((card / "PANA_GRP" / "001RBQAM" / "P1000001.MOV").is_file())

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
