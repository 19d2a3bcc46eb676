# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The commands format, umid and free-name, and how a card is named and missed."""

import csv
import io
import json
import unittest

from program import Card, CardTest, main, run

UMID_START = "060A2B340101010501010D431300"


class FormatTest(CardTest):
    def test_table_csv_and_json(self):
        self.card.add("0001AA", codec="AVC-I_1080/50i", codec_class="50")
        self.assert_golden("format.txt", run("format", self.card.path).stdout)
        self.assertEqual(json.loads(run("format", self.card.path, "--json").stdout), {
            "CodeType": {"value": 5, "name": "CT_AVCI100_1080_50I"},
            "VideoStandard": {"value": 1, "name": "VS_50I"},
            "FrameRate": "50i", "Codec": "AVC-I_1080/50i", "EditUnit": "1/25", "Class50": 1})
        (row,) = csv.DictReader(io.StringIO(run("format", self.card.path, "--csv").stdout))
        self.assertEqual((row["CodeType.name"], row["EditUnit"]), ("CT_AVCI100_1080_50I", "1/25"))

    def test_card_without_a_readable_clip(self):
        self.card.add_raw("0001AA.XML", b"")
        self.assert_fails(run("format", self.card.path, "--json"), 1,
                          f"nqp2: {self.card.path}: no clip tells the card's format "
                          "(none could be read; see `nqp2 clips --report`)")


class UmidTest(unittest.TestCase):
    def test_identifier_of_a_guid(self):
        expected = UMID_START + "6F9619FF8B86D011B42D00C04FC964FF2008\n"
        for guid in ("6f9619ff-8b86-d011-b42d-00c04fc964ff", "6F9619FF8B86D011B42D00C04FC964FF"):
            result = run("umid", guid)
            self.assertEqual((result.returncode, result.stdout, result.stderr), (0, expected, ""))

    def test_fresh_identifiers_differ(self):
        zero = "00000000-0000-0000-0000-000000000000"
        texts = [run("umid").stdout, run("umid").stdout, run("umid", zero).stdout]
        self.assertEqual(len(set(texts)), 3)
        for text in texts:
            self.assertRegex(text, f"^{UMID_START}[0-9A-F]{{32}}2008\n$")

    def test_what_is_no_guid(self):
        for text in ("", "x", "6f9619ff8b86-d011-b42d-00c04fc964ff", "6f9619ff-8b86-d011-b42d-00c04fc964f",
                     "6f9619ff-8b86-d011-b42d-00c04fc964fg", "{6f9619ff-8b86-d011-b42d-00c04fc964ff}"):
            result = run("umid", text)
            self.assertEqual((result.returncode, result.stdout), (2, ""))
            self.assertEqual(result.stderr, f"nqp2: {text}: is no GUID "
                                            "(expected 8-4-4-4-12 hexadecimal digits)\n")


class FreeNameTest(CardTest):
    def test_first_name_that_no_video_file_has(self):
        self.assertEqual(run("free-name", self.card.path).stdout, "0001AA\n")
        self.card.add_file("VIDEO", "0001AA.MXF")
        self.card.add_file("VIDEO", "0001ab.mxf")
        self.assertEqual(run("free-name", self.card.path).stdout, "0001AC\n")


class NamedCardTest(CardTest):
    """A card is a folder or a drive that was mapped."""

    def setUp(self):
        super().setUp()
        self.card.add("0001AA")

    def card_seen(self, *arguments, cwd=None):
        result = run("clips", "--json", *arguments, cwd=cwd)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        document = json.loads(result.stdout)
        self.assertEqual(len(document["clips"]), 1)
        return document["card"]

    def test_folders(self):
        self.assertEqual(self.card_seen(f"{self.card.path}/"), str(self.card.path))
        self.assertEqual(self.card_seen("card", cwd=self.folder), "card")
        self.assertEqual(self.card_seen(".", cwd=self.card.path), ".")

    def test_drives(self):
        drive = ("--drive", f"E={self.card.path}")
        for text in ("E", "e", "E:", "E:\\"):
            self.assertIn(self.card_seen(*drive, text), (str(self.card.path), f"{self.card.path}/"))
            self.card_seen(text, *drive)
        self.card_seen("--drive", f"X={self.folder}", *drive, "X:\\card")

    def test_what_is_no_drive(self):
        for text in ("E", "E=", "EE=/tmp", "=/tmp", "1=/tmp"):
            result = run("clips", self.card.path, "--drive", text)
            self.assert_fails(result, 2, f"nqp2: --drive {text}: is no drive (expected E=FOLDER)")

    def test_every_command_says_why_there_is_no_card(self):
        card, other = self.card.path, self.folder / "other"
        two = self.folder / "two"
        Card(two / "a")
        Card(two / "b")
        other.mkdir()
        (self.folder / "file").write_text("")
        cases = (
            (self.folder / "none", "no such folder"),
            (self.folder / "file", "is not a folder (give the card's top folder)"),
            (other, "no CONTENTS folder (not a P2 card)"),
            (card / "CONTENTS",
             f"no CONTENTS folder (the card is the folder above: {card})"),
            (card / "CONTENTS" / "CLIP",
             f"no CONTENTS folder (the card is the folder above: {card})"),
            (self.folder, f"no CONTENTS folder (the card is one folder below: {card})"),
            (two, f"no CONTENTS folder (2 cards lie one folder below, the first is {two}/a)"),
        )
        for command in (["clips"], ["clip", "0001AA"], ["format"], ["free-name"]):
            for path, problem in cases:
                result = run(command[0], path, *command[1:])
                self.assertEqual(result.stdout, "")
                self.assert_fails(result, 1, f"nqp2: {path}: {problem}")


if __name__ == "__main__":
    main()
