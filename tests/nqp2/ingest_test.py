# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The commands that show and change what was taken in."""

import csv
import fcntl
import io
import json
import os
import subprocess
import xml.etree.ElementTree as ElementTree

from program import CardTest, command_line, main, run


class IngestTest(CardTest):
    def setUp(self):
        super().setUp()
        self.file = self.card.path / "USERDATA" / "Ingest.xml"
        for name in ("0002BB", "夜明け", *(f"{number:04}AA" for number in range(14))):
            self.card.add(name)

    def put(self, content):
        self.file.parent.mkdir(exist_ok=True)
        self.file.write_bytes(content)

    def add(self, clip, *segments):
        return run("ingest", "add", self.card.path, clip, *segments)

    def remove(self, clip):
        return run("ingest", "remove", self.card.path, clip)

    def listed(self):
        return [(clip["ClipName"], clip["segments"])
                for clip in self.told("ingest", "list", self.card.path)["clips"]]

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

    def test_notes_clips_of_the_card_in_its_letters(self):
        self.card.add_raw("0077XY.XML", b"<P2Main")  # it cannot be read, but is there
        self.card.add_file("VIDEO", "0088XY.MXF")
        for clip, noted in (("0001aa", "0001AA"), ("0077XY", "0077XY"), ("0088XY", "0088XY")):
            self.assert_done(self.add(clip, "0-3"))
            self.assertEqual(self.listed()[-1], (noted, [[0, 3]]))
        listed, card = self.listed(), self.card.path
        for clip, advice in (("0002B", "did you mean 0002BB?"),
                             ("MOVED", "--elsewhere notes it all the same"),
                             ("../CLIP/0002BB", "--elsewhere notes it all the same")):
            self.assert_fails(self.add(clip, "0-3"), 1, f"nqp2: {card}: no clip {clip} ({advice})")
        self.assertEqual(self.listed(), listed)
        self.assert_done(self.add("MOVED", "0-3", "--elsewhere"))
        self.assertEqual(self.listed(), [*listed, ("MOVED", [[0, 3]])])

    def test_what_is_not_there_to_be_removed(self):
        self.assert_fails(self.remove("0001AA"), 1, f"nqp2: {self.file}: there is no ingest list")
        self.put(b'<Media><Clip ClipName="A"/><Clip ClipName="b"/><Clip ClipName="a"/></Media>')
        self.assert_done(self.remove("a"))
        self.assertEqual(self.listed(), [("b", []), ("a", [])])
        before = self.file.read_bytes()
        self.assert_fails(self.remove("0001A"), 1, f"nqp2: {self.file}: the clip is not listed "
                                                   "(`nqp2 ingest list` shows the list)")
        self.assertEqual(self.file.read_bytes(), before)

    def test_what_is_no_list_stays_and_is_told(self):
        for content, problem in (
                (b"", ""), (b"<Media>\n<", ":2:"), (b"<!DOCTYPE Media><Media/>", ":1:"),
                (b"<Other/>", ": is no ingest list (its root element is not Media)\n")):
            self.put(content)
            line = f"{self.file}{problem}"
            self.assert_each_fails(1, [(("ingest", *command), line) for command in (
                ("list", self.card.path), ("add", self.card.path, "0001AA", "0-1"),
                ("remove", self.card.path, "0001AA"))])
            self.assertEqual(self.file.read_bytes(), content)
            self.assertEqual(os.listdir(self.file.parent), ["Ingest.xml"])

    def test_who_adds_at_once_or_to_a_locked_list_loses_nothing(self):
        names = [f"{number:04}AA" for number in range(12)]
        writers = [subprocess.Popen(command_line("ingest", "add", self.card.path, name, "1-2"))
                   for name in names]
        self.assertEqual({writer.wait(timeout=60) for writer in writers}, {0})
        folder = os.open(self.file.parent, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        fcntl.flock(folder, fcntl.LOCK_EX)
        self.assert_fails(self.add("0013AA", "0-1"), 1, f"nqp2: {self.file}: the ingest list was "
                          "not changed (another program keeps it locked)")
        self.assertEqual(sorted(name for name, _ in self.listed()), names)

    def test_wrong_usage(self):
        self.assertEqual(self.add("0001AA", "-5").returncode, 2)
        card = self.card.path
        self.assert_each_fails(2, [
            (("ingest", "add", card, "0001AA", "0-1", text),
             f"{text}: is no segment (expected IN-OUT, the first and last frame)\n")
            for text in ("1", "5-4", "1--2", "a-b", "1-2-3", "1-2147483648", "")])
        for name in ("", "a\tb", "\uffff", "\udcff"):
            for result in (self.add(name, "0-1"), self.remove(name)):
                self.assertEqual(result.returncode, 2)
                self.assertIn("is no clip name", result.stderr)
        self.assertFalse(self.file.parent.exists())

    def test_a_card_that_takes_nothing(self):
        self.file.parent.write_bytes(b"")  # a file in the folder's place
        self.assert_fails(self.add("0001AA", "0-1"), 1,
                          f"nqp2: {self.file}: the ingest list was not changed "
                          "(its folder cannot be opened: it is not a folder)")


if __name__ == "__main__":
    main()
