# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Tests samples/make_card.py by running it. Called with the script's path as only argument."""

import hashlib
import struct
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
    entries = []
    for path in sorted(card.rglob("*")):
        content = hashlib.sha256(path.read_bytes()).hexdigest() if path.is_file() else ""
        entries.append((str(path.relative_to(card)), path.stat().st_mtime_ns, content))
    return entries


def clip_files(card):
    return {path.name: path for path in (card / "CONTENTS" / "CLIP").iterdir()}


def local_name(element):
    """An element's name without its namespace; "" for a comment."""
    return element.tag.rpartition("}")[2] if isinstance(element.tag, str) else ""


def text_at(root, path):
    """Text of the first element at a path of names, whatever their namespaces; None if none."""
    for name in path.split("/"):
        root = next((child for child in root if local_name(child) == name), None)
        if root is None:
            return None
    return "".join(root.itertext())


def promises(content):
    """The media files of a clip and how long each has to be, as its metadata tell it."""
    def end(element, index):
        return sum(int(text_at(element, f"{index}/{field}"))
                   for field in ("StartByteOffset", "DataSize"))

    essence = next(child for child in content if local_name(child) == "EssenceList")
    ends = [end(each, f"{local_name(each)}Index") for each in essence
            if local_name(each) in ("Video", "Audio")]
    name = text_at(content, "ClipName")
    if text_at(essence, "Video/Codec").startswith("AVC-LongG"):
        return {f"AVCLIP/{name}.MXF": max(ends)}
    return {f"VIDEO/{name}.MXF": ends[0],
            **{f"AUDIO/{name}{number:02d}.MXF": end for number, end in enumerate(ends[1:])}}


class TemporaryFolderTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def make(self, name, *arguments):
        card = self.folder / name
        result = run(card, *arguments)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return card


class DemoCardTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.card = Path(folder.name) / "new" / "card"
        assert run(cls.card).returncode == 0
        cls.files = clip_files(cls.card)
        cls.contents = {
            name: ElementTree.parse(path).getroot()[0]
            for name, path in cls.files.items() if name not in UNREADABLE}

    def test_holds_sixteen_sound_clips_one_cut_off_and_one_companion(self):
        self.assertEqual(len(self.contents), 16)
        for name in UNREADABLE:
            with self.subTest(name), self.assertRaises(ElementTree.ParseError):
                ElementTree.parse(self.files[name])

    def test_clips_are_named_like_their_files_and_have_identifiers_of_their_own(self):
        identifiers = set()
        for name, content in self.contents.items():
            with self.subTest(name):
                self.assertEqual(text_at(content, "ClipName"), name[:6].upper())
                identifiers.add(text_at(content, "GlobalClipID"))
        self.assertEqual(len(identifiers), 16)
        self.assertEqual({len(bytes.fromhex(text)) for text in identifiers}, {32})

    def test_takes_hang_together(self):
        by_identifier = {text_at(c, "GlobalClipID"): c for c in self.contents.values()}
        gone = []
        for name, content in self.contents.items():
            shot = text_at(content, "Relation/GlobalShotID")
            following = text_at(content, "Relation/Connection/Next/GlobalClipID")
            if following is None:
                continue
            if following not in by_identifier:
                gone.append((name, text_at(content, "Relation/Connection/Next/ClipName"),
                             text_at(content, "Relation/Connection/Next/P2SerialNo.")))
                continue
            successor = by_identifier[following]
            end = (int(text_at(content, "Relation/OffsetInShot"))
                   + int(text_at(content, "Duration")))
            with self.subTest(name):
                self.assertEqual(text_at(successor, "Relation/GlobalShotID"), shot)
                self.assertEqual(int(text_at(successor, "Relation/OffsetInShot")), end)
                self.assertEqual(text_at(successor, "Relation/Connection/Previous/GlobalClipID"),
                                 text_at(content, "GlobalClipID"))
        self.assertEqual(gone, [("0016TB.XML", "0001TC", "SMP24E0002")])

    def test_essence_says_that_it_is_none(self):
        media = [path for path in (self.card / "CONTENTS").rglob("*")
                 if path.suffix.upper() in (".MXF", ".MP4", ".MOV", ".WAV")]
        self.assertEqual({path.read_bytes()[:26] for path in media},
                         {b"sample essence placeholder"})
        names = {str(path.relative_to(self.card / "CONTENTS")) for path in media}
        self.assertLessEqual({"VIDEO/0002ab.mxf", "AUDIO/0002ab01.mxf", "AVCLIP/0010LG.MXF",
                              "PROXY/0009D1.MOV", "VOICE/0003K700.WAV"}, names)
        self.assertNotIn("PROXY/0005M2.MP4", names)

    def test_metadata_promise_the_bytes_that_are_there(self):
        sizes = {str(path.relative_to(self.card / "CONTENTS")).upper(): path.stat().st_size
                 for path in (self.card / "CONTENTS").rglob("*.*")}
        for name, content in self.contents.items():
            for path, size in promises(content).items():
                self.assertEqual(sizes[path], size, f"{path} of {name}")

    def test_two_runs_give_the_same_card(self):
        again = self.card.parent / "again"
        self.assertEqual(run(again).returncode, 0)
        self.assertEqual(fingerprint(self.card), fingerprint(again))


class BulkCardTest(TemporaryFolderTest):
    def test_clips_carry_4_to_8_kilobytes_of_metadata(self):
        for size in ((), ("--size", 4096), ("--size", 8192)):
            # 90 clips: every format in every way of writing.
            card = self.make(f"card{size[-1:]}", "--clips", 90, "--essence-size", 100, *size)
            self.assertEqual({path.stat().st_size for path in (card / "CONTENTS/VIDEO").iterdir()},
                             {100})
            for name, path in clip_files(card).items():
                with self.subTest(name, size=size):
                    self.assertTrue(4096 <= path.stat().st_size <= 8192, path.stat().st_size)
                    content = ElementTree.parse(path).getroot()[0]
                    self.assertEqual(set(promises(content).values()), {100})
                    elements = sum(1 for _ in ElementTree.parse(path).iter())
                    self.assertTrue(90 <= elements <= 200, elements)

    def test_every_clip_has_its_files(self):
        card = self.make("card", "--clips", 30)
        contents = card / "CONTENTS"
        names = sorted(path.stem for path in (contents / "CLIP").iterdir())
        self.assertEqual(names, [f"{number:04d}AA" for number in range(1, 31)])
        in_one_file = {path.stem for path in (contents / "AVCLIP").iterdir()}
        self.assertEqual(len(in_one_file), 2)
        for name in names:
            with self.subTest(name):
                audio = len(list((contents / "AUDIO").glob(f"{name}*")))
                self.assertEqual(audio, 0 if name in in_one_file else 4)
                self.assertEqual(len(list((contents / "PROXY").glob(f"{name}.*"))), 1)
                self.assertTrue((contents / "ICON" / f"{name}.BMP").is_file())

    def test_two_runs_give_the_same_card(self):
        first, second = (self.make(name, "--clips", 40) for name in ("first", "second"))
        self.assertEqual(fingerprint(first), fingerprint(second))


class OtherKindsTest(TemporaryFolderTest):
    def test_avchd_cards_have_whole_streams_of_their_own(self):
        card = self.make("card", "--kind", "avchd")
        bdmv = card / "PRIVATE" / "AVCHD" / "BDMV"
        streams = {path.stem: path.read_bytes() for path in (bdmv / "STREAM").iterdir()}
        self.assertEqual(sorted(streams), [f"{number:05d}" for number in range(8)])
        for name, content in streams.items():
            with self.subTest(name):
                self.assertEqual(len(content) % 6144, 0)
                self.assertEqual(set(content[4::192]), {0x47})
                packets, = struct.unpack_from(">I", (bdmv / "CLIPINF" / f"{name}.CPI").read_bytes(), 56)
                self.assertEqual(packets * 192, len(content))
        self.assertEqual(fingerprint(card), fingerprint(self.make("again", "--kind", "avchd")))

    def test_measuring_cards_share_their_clips_out_to_forty_playlists(self):
        card = self.make("card", "--kind", "avchd", "--clips", 90)
        bdmv = card / "PRIVATE" / "AVCHD" / "BDMV"
        self.assertEqual(len(list((bdmv / "CLIPINF").iterdir())), 90)
        self.assertEqual(len(list((bdmv / "PLAYLIST").iterdir())), 40)
        self.assertEqual({path.stat().st_size for path in (bdmv / "STREAM").iterdir()}, {98304})
        self.make("card", "--kind", "camera", "--force")
        self.assertFalse(bdmv.exists())
        self.assertTrue((card / "PANA_GRP" / "001RBQAM" / "P1000001.MOV").is_file())


class RefusalTest(TemporaryFolderTest):
    def assert_refused(self, target, *arguments, status=1, words):
        before = fingerprint(self.folder)
        result = run(target, *arguments)
        self.assertEqual(result.returncode, status)
        self.assertIn(words, result.stderr)
        self.assertNotIn("Traceback", result.stderr)
        self.assertEqual(fingerprint(self.folder), before)

    def test_leaves_a_folder_with_something_in_it_alone(self):
        (self.folder / "holiday.txt").write_text("keep", encoding="utf-8")
        self.assert_refused(self.folder, words="not empty")
        self.assert_refused(self.folder, "--force", words="this is none")
        self.assert_refused(self.folder / "holiday.txt", words="not a folder")

    def test_leaves_a_card_of_its_own_alone_unless_forced(self):
        card = self.make("card", "--clips", 3)
        self.assert_refused(card, "--clips", 1, words="not empty")
        self.make("card", "--clips", 1, "--force")
        self.assertEqual(list(clip_files(card)), ["0001AA.XML"])

    def test_explains_wrong_usage(self):
        for arguments in (("--clips", 0), ("--clips", "many"), ("--size", 5000),
                          ("--clips", 1, "--size", 100), ("--kind", "tape"),
                          ("--kind", "camera", "--clips", 1), ("--kind", "avchd", "--size", 5000),
                          ("--kind", "avchd", "--clips", 100001)):
            with self.subTest(arguments):
                self.assert_refused(self.folder / "card", *arguments, status=2, words="usage:")


if __name__ == "__main__":
    unittest.main()
