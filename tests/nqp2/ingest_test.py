# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The commands that show and change what was taken in."""

import csv
import io
import json
import os
import unittest
import xml.etree.ElementTree as ElementTree

from program import CardTest, main, run


class IngestTest(CardTest):
    def setUp(self):
        super().setUp()
        self.file = self.card.path / "USERDATA" / "Ingest.xml"

    def put(self, content):
        self.file.parent.mkdir(exist_ok=True)
        self.file.write_bytes(content)

    def add(self, clip, *segments):
        return run("ingest", "add", self.card.path, clip, *segments)

    def remove(self, clip):
        return run("ingest", "remove", self.card.path, clip)

    def listed(self):
        result = run("ingest", "list", self.card.path, "--json")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return [(clip["ClipName"], clip["segments"])
                for clip in json.loads(result.stdout)["clips"]]

    def assert_done(self, result):
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def test_marks_are_added_listed_and_removed(self):
        self.assertEqual(self.listed(), [])
        self.assert_done(self.add("0002BB", "0-249", "300-424"))
        self.assert_done(self.add("0001AA", "7-7"))
        self.assert_done(self.add("0002bb", "0-249", "0-2147483647"))
        kept = ("0001AA", [[7, 7]])
        grown = ("0002BB", [[0, 249], [300, 424], [0, 249], [0, 2 ** 31 - 1]])
        self.assertEqual(self.listed(), [grown, kept])
        root = ElementTree.parse(self.file).getroot()
        self.assertEqual((root.tag, root.attrib), ("Media", {"MediaID": "P2"}))
        self.assertEqual([clip.attrib for clip in root], [{"ClipName": "0002BB"},
                                                          {"ClipName": "0001AA"}])
        self.assert_done(self.remove("0002bb"))
        self.assertEqual(self.listed(), [kept])
        self.assertEqual(os.listdir(self.file.parent), ["Ingest.xml"])

    def test_table_and_csv(self):
        self.add("0001AA", "0-249", "300-300")
        self.add("夜明け", "5-6")
        self.assert_golden("ingest.txt", run("ingest", "list", self.card.path).stdout)
        table = run("ingest", "list", self.card.path, "--csv").stdout
        rows = list(csv.DictReader(io.StringIO(table, newline="")))
        self.assertEqual([(row["ClipName"], json.loads(row["segments"])) for row in rows],
                         self.listed())

    def test_names_with_characters_that_xml_marks(self):
        name = "<a> & \"b\" 'c'"
        self.assert_done(self.add(name, "1-2"))
        self.assertEqual(self.listed(), [(name, [[1, 2]])])
        self.assert_done(self.remove(name))
        self.assertEqual(self.listed(), [])

    def test_only_the_first_listing_goes(self):
        self.put(b'<Media MediaID="P2"><Clip ClipName="A"><Segment InPoint="1" OutPoint="2"/></Clip>'
                 b'<Clip ClipName="b"/><Clip ClipName="a"/></Media>')
        self.assert_done(self.remove("a"))
        self.assertEqual(self.listed(), [("b", []), ("a", [])])

    def test_a_clip_that_is_not_listed(self):
        line = (f"nqp2: {self.card.path}: the clip is not listed "
                "(`nqp2 ingest list` shows the list)")
        self.add("0001AA", "1-2")
        before = self.file.read_bytes()
        self.assert_fails(self.remove("0001A"), 1, line)
        self.assertEqual(self.file.read_bytes(), before)
        self.file.unlink()
        self.assert_fails(self.remove("0001AA"), 1,
                          f"nqp2: {self.card.path}: there is no ingest list that can be read")

    def test_a_list_that_cannot_be_read(self):
        for content in (b"", b"<Media>", b"<!DOCTYPE Media><Media/>", b"\xff\xfe\x00"):
            self.put(content)
            line = (f"nqp2: {self.card.path}: the ingest list cannot be read "
                    "(USERDATA/Ingest.xml is no sound XML file)")
            self.assert_fails(run("ingest", "list", self.card.path), 1, line)
            self.assert_fails(self.add("0001AA", "0-1"), 1, line)
            self.assert_fails(self.remove("0001AA"), 1,
                              f"nqp2: {self.card.path}: there is no ingest list that can be read")
            self.assertEqual(self.file.read_bytes(), content)
            self.assertEqual(os.listdir(self.file.parent), ["Ingest.xml"])

    def test_wrong_usage(self):
        self.assertEqual(self.add("0001AA", "-5").returncode, 2)
        for text in ("1", "5-4", "1--2", "1-", "a-b", "1-2-3", "1-2147483648", "1- 2", ""):
            result = self.add("0001AA", "0-1", text)
            self.assert_fails(result, 2, f"nqp2: {text}: is no segment "
                                         "(expected IN-OUT, the first and last frame)")
        self.assertEqual(self.add("", "0-1").returncode, 2)
        self.assertEqual(self.add("a\tb", "0-1").returncode, 2)
        self.assertFalse(self.file.parent.exists())

    def test_what_is_no_folder(self):
        none = self.folder / "none"
        for command in (("list", none), ("add", none, "0001AA", "0-1"), ("remove", none, "0001AA")):
            self.assert_fails(run("ingest", *command), 1, f"nqp2: {none}: no such folder")
        self.assertFalse(none.exists())

    def test_a_card_that_takes_nothing(self):
        line = (f"nqp2: {self.card.path}: the ingest list was not written "
                "(the card may be write-protected or full)")
        self.file.parent.write_bytes(b"")  # a file in the folder's place
        self.assert_fails(self.add("0001AA", "0-1"), 1, line)
        self.file.parent.unlink()
        self.put(b"<Other/>")  # sound, but no ingest list
        self.assert_fails(self.add("0001AA", "0-1"), 1, line)

    @unittest.skipIf(os.geteuid() == 0, "the superuser may write everywhere")
    def test_a_card_that_is_write_protected(self):
        self.add("0001AA", "0-1")
        self.file.parent.chmod(0o500)
        self.addCleanup(self.file.parent.chmod, 0o700)
        before = self.file.read_bytes()
        self.assertEqual(self.add("0001AA", "2-3").returncode, 1)
        self.assertEqual(self.remove("0001AA").returncode, 1)
        self.assertEqual(self.file.read_bytes(), before)


if __name__ == "__main__":
    main()
