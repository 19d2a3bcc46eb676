# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The commands format, umid and free-name, and how a card is named and missed."""

import csv
import io
import json
import re

from program import Card, CardTest, main, run

UMID_START = "060A2B340101010501010D431300"
GUID = "6f9619ff-8b86-d011-b42d-00c04fc964ff"
NO_GUIDS = ("", "x", f"{{{GUID}}}", GUID[:-1], GUID[:-1] + "g", GUID.replace("-", "", 1))


class NamesTest(CardTest):
    def test_format_as_table_csv_and_json(self):
        self.card.add("0001AA", codec="AVC-I_1080/50i", codec_class="50")
        self.assert_golden("format.txt", run("format", self.card.path).stdout)
        self.assertEqual(self.told("format", self.card.path), {
            "CodeType": {"value": 5, "name": "CT_AVCI100_1080_50I"},
            "VideoStandard": {"value": 1, "name": "VS_50I"},
            "FrameRate": "50i", "Codec": "AVC-I_1080/50i", "EditUnit": "1/25", "Class50": 1})
        (row,) = csv.DictReader(io.StringIO(self.shown("format", self.card.path, "--csv")))
        self.assertEqual((row["CodeType.name"], row["EditUnit"]), ("CT_AVCI100_1080_50I", "1/25"))

    def test_identifiers(self):
        for guid in (GUID, GUID.replace("-", "").upper()):
            self.assertEqual(self.shown("umid", guid),
                             UMID_START + "6F9619FF8B86D011B42D00C04FC964FF2008\n")
        zero = "00000000-0000-0000-0000-000000000000"
        fresh = [self.shown("umid"), self.shown("umid"), self.shown("umid", zero)]
        self.assertEqual(len(set(fresh)), 3)
        for text in fresh:
            self.assertRegex(text, f"^{UMID_START}[0-9A-F]{{32}}2008\n$")
        self.assert_each_fails(2, [
            (("umid", text), f"{text}: is no GUID (expected 8-4-4-4-12 hexadecimal digits)\n")
            for text in NO_GUIDS])

    def test_first_name_that_no_video_file_has(self):
        self.assertEqual(self.shown("free-name", self.card.path), "0001AA\n")
        self.card.add_file("VIDEO", "0001AA.MXF")
        self.card.add_file("VIDEO", "0001ab.mxf")
        self.assertEqual(self.shown("free-name", self.card.path), "0001AC\n")


class NamedCardTest(CardTest):
    """A card is a folder or a drive that was mapped."""

    def setUp(self):
        super().setUp()
        self.card.add("0001AA")

    def test_folders_and_drives(self):
        def seen(*arguments, cwd=None):
            document = json.loads(self.shown("clips", "--json", *arguments, cwd=cwd))
            self.assertEqual(len(document["clips"]), 1)
            return document["card"]

        path = str(self.card.path)
        self.assertEqual([seen(f"{path}/"), seen("card", cwd=self.folder), seen(".", cwd=path)],
                         [path, path, path])
        drive = ("--drive", f"E={path}")
        for text in ("E", "e", "E:", "E:\\"):
            self.assertIn(seen(*drive, text), (path, f"{path}/"))
        seen("--drive", f"X={self.folder}", *drive, "X:\\card")
        self.assert_each_fails(2, [
            (("clips", path, "--drive", text), f"--drive {text}: is no drive (expected E=FOLDER)\n")
            for text in ("E", "E=", "EE=/tmp", "=/tmp", "1=/tmp")])

    COMMANDS = ("clips #", "clip # 0001AA", "format #", "free-name #", "edl list #",
                "edl write # -", "space # --json", "ingest list #", "ingest add # 0001AA 0-1",
                "ingest remove # 0001AA")

    def run_on(self, path, command):
        words = [path if word == "#" else word for word in command.split()]
        return run(*words, given='{"Events": [{}]}')

    def test_every_command_enters_the_card_that_a_folder_leads_to(self):
        card = self.card.path
        self.shown("ingest", "add", card, "0001AA", "3-4")
        for command in self.COMMANDS:
            self.run_on(card, command) # what changes the card changes it for all
            direct = self.run_on(card, command)
            for path in (card / "CONTENTS", card / "CONTENTS" / "CLIP", self.folder):
                with self.subTest((command, path)):
                    result = self.run_on(path, command)
                    shown, expected = (re.sub('("FreeBytes"|"MaxFrames"): .*', "", text)
                                       for text in (result.stdout, direct.stdout))
                    self.assertEqual((result.returncode, shown, result.stderr), (
                        direct.returncode, expected,
                        f"nqp2: {path}: took the card at {card}\n{direct.stderr}"))
        self.assertEqual(list((card / "CONTENTS").glob("USERDATA")), [])

    def test_a_folder_with_its_own_list_is_no_way_to_a_card(self):
        for name in ("EDITLIST", "userdata"):
            (self.folder / name).mkdir()
        for command in ("edl list #", "ingest list #", "ingest add # 0001AA 0-1"):
            result = self.run_on(self.folder, command)
            self.assertEqual((result.returncode, "took" in result.stderr), (0, False))
        self.assertTrue((self.folder / "userdata" / "Ingest.xml").exists())
        self.assertFalse((self.card.path / "USERDATA").exists())

    def test_every_command_says_why_there_is_no_card(self):
        card, other, two = self.card.path, self.folder / "other", self.folder / "two"
        crowd = self.folder / "crowd"
        Card(two / "a")
        Card(two / "b")
        (other / "x").mkdir(parents=True)
        (self.folder / "empty").mkdir()
        for number in range(1001):
            (crowd / str(number)).mkdir(parents=True)
        (self.folder / "file").write_text("")
        cases = (
            (self.folder / "none", "no such folder"),
            (two, "leads to 2 cards (give one of them#: " f"{two}/a, {two}/b)"),
            (self.folder / "file", "is not a folder (give the card's top folder)"),
            (other, "no CONTENTS folder (neither a P2 nor an AVCHD card)"),
            (self.folder / "empty", "is empty (no card is there)"),
            (crowd, "no CONTENTS folder (not a P2 card, and too many folders to look for one in)"),
        )
        for command in self.COMMANDS:
            # A folder of any kind can hold a list.
            for path, problem in cases[:2] if "ingest" in command else cases:
                problem = problem.replace("#", ", or all with --recursive" * (command == "clips #"))
                result = self.run_on(path, command)
                self.assert_fails(result, 1, f"nqp2: {path}: {problem}")
        self.assertFalse((self.folder / "none").exists())
        (card / "CONTENTS" / "CLIP" / "0001AA.XML").write_bytes(b"")
        self.assert_each_fails(1, [(("format", card, "--json"), f"{card}: no clip tells the card's "
                                    "format (none could be read; see `nqp2 clips --report`)\n")])


if __name__ == "__main__":
    main()
