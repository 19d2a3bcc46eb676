# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The commands that list and show clips."""

import csv
import io
import json
import os
import re
import unicodedata
import unittest
from pathlib import Path

from program import (INCLUDE, CardTest, can_trace, clip_xml, fields_of, main, run, run_on_terminal,
                     traced)

HEADER = INCLUDE / "P2Clip.h"
TOP = "060A2B340101010501010D431300000011111111222233334444555555555555"
NEXT = "060A2B340101010501010D431300000066666666222233334444555555555555"


def next_segment(name, serial):
    return (f"<Relation><OffsetInShot>0</OffsetInShot><Connection><Top><GlobalClipID>{TOP}"
            f"</GlobalClipID><ClipName>0003LT</ClipName></Top><Next><GlobalClipID>{NEXT}"
            f"</GlobalClipID><ClipName>{name}</ClipName><P2SerialNo.>{serial}</P2SerialNo.></Next>"
            "</Connection></Relation>")


def columns_of(text):
    return sum(2 if unicodedata.east_asian_width(char) in "WF" else 1 for char in text)


class ShownCardTest(CardTest):
    """A card with something of everything that a list shows."""

    def setUp(self):
        super().setUp()
        card = self.card
        card.add("0001DV", title="Zug nach Köln", start="2024-05-11T09:15:30+02:00", duration=1503,
                 memos=[(3, "Rosa", "gut, \"sehr\" gut"), (50, "", "zwei\nZeilen")])
        card.add("0002AV", title="夜明けの港", codec="AVC-I_1080/59.94i", codec_class="100",
                 rate="59.94i", duration=30 * 3600, start="2024-05-10T23:59:59+00:00", audio=4)
        card.add("0003LT", codec="AVC-LongG422", codec_class="50", rate="23.98p", duration=47,
                 identifier=TOP, relation=next_segment("0009XX", "AB12"), title=TOP,
                 start="2024-05-12T00:00:00-05:00")
        card.add("0004NO", rate="17p", audio=0, start="2024-05-13T00:00:00+00:00")
        card.add_raw("0005BR.XML", b"<P2Main>\n<ClipContent>\n  </Clip")
        card.add_file("PROXY", "0002AV.MP4")


class ClipsTest(ShownCardTest):
    def test_table_shows_a_line_for_each_clip(self):
        result = run("clips", self.card.path)
        self.assert_golden("clips.txt", result.stdout)
        self.assert_golden("clips_messages.txt", result.stderr)
        self.assertEqual(result.returncode, 0)

    def test_report_follows_the_table(self):
        result = run("clips", self.card.path, "--report")
        table = run("clips", self.card.path).stdout
        self.assertTrue(result.stdout.startswith(table))
        skipped, take, *broken = result.stdout[len(table):].splitlines()
        self.assertRegex(skipped, r"^skipped .*/CLIP/0005BR\.XML:3:\d+: not well-formed XML: .+")
        self.assertEqual(take, "take 0003LT: incomplete, missing 0009XX on card AB12")
        # The card has no picture and no sound.
        for clip, files in (("0001DV", 3), ("0002AV", 5), ("0003LT", 1), ("0004NO", 1)):
            lines = [line for line in broken if line.startswith(f"clip {clip} is not whole: ")]
            self.assertEqual(len(lines), files, lines)
            self.assertTrue(all(line.endswith(" is missing") for line in lines), lines)

    def test_csv_gives_every_field_and_the_report_aside(self):
        result = run("clips", self.card.path, "--csv", "--columns", "all", "--report")
        self.assert_golden("clips.csv", result.stdout)
        self.assertEqual(len(result.stderr.splitlines()), 2 + 10)

    def test_columns_of_csv_and_table(self):
        self.assert_golden("clips_bin.csv", run("clips", self.card.path, "--csv").stdout)

        def cells(names, *options):
            rows = run("clips", self.card.path, "--columns", names, "--csv", *options).stdout
            return list(csv.reader(io.StringIO(rows)))

        names = "ClipName,Duration,length.frames,metadata.shoot.startDate,AudioPath.0,Memos"
        head, row, *others = cells(names)
        self.assertEqual(head, names.split(","))
        self.assertEqual(row[:4], ["0001DV", "00:01:00:03", "1503", "2024-05-11T09:15:30+02:00"])
        self.assertEqual([json.loads(row[5])[1]["Text"], Path(row[4]).name, len(others)],
                         ["zwei\nZeilen", "0001DV00.MXF", 3])
        table = run("clips", self.card.path, "--columns", "FPS,Name").stdout.splitlines()
        self.assertEqual([line.split() for line in table[:2]],
                         [["FPS", "Name"], ["25", "Zug", "nach", "Köln"]])
        self.assert_each_fails(2, [
            (("clips", self.card.path, *options), line) for options, line in (
                (("--columns", "Nme"), "--columns Nme: is no column"),
                (("--columns", "Name,"), "--columns : is no column"),
                (("--columns", ""), "clips usage: --columns: it is empty"),
                (("--columns", "Name", "--json"), "--columns: is for tables"),
                (("--jsonl", "--json"), "--jsonl: is a form of its own"),
                (("--metadata", "--csv"), "--metadata: is for --json"))])

    @unittest.skipUnless(can_trace(), "strace cannot trace here")
    def test_plain_lists_leave_the_files_alone(self):
        (self.card.path / "CONTENTS" / "VOICE").mkdir()
        for options, looks in (([], False), (["--json"], False), (["--jsonl"], False),
                               (["--csv", "--columns", "Name,Start,Path"], False),
                               (["--report"], True), (["--json", "--files"], True)):
            trace = traced(["-e", "trace=file"], ["clips", self.card.path, *options]).stderr
            self.assertEqual(b"CONTENTS/VOICE" in trace, looks, options)

    def test_folders_that_are_not_looked_into_are_told(self):
        (self.card.path / Path(*["deep"] * 70)).mkdir(parents=True)
        result = run("clips", self.card.path, "--files", "--jsonl", "--strict")
        self.assertEqual(result.returncode, 4)
        self.assertIn("not all folders were looked into for other files", result.stderr)

    def test_json_gives_every_field_in_declaration_order(self):
        shown = run("clips", self.card.path, "--json").stdout
        self.assert_golden("clips.json", shown)
        document = json.loads(shown)
        self.assertEqual(document["clips"][2]["ClipIdDigit"], -1)
        kept = self.told("clips", self.card.path, "--keep-digit")
        self.assertEqual(kept["clips"][2]["ClipIdDigit"], 0)
        self.assertEqual((document["card"], document["kind"]), (str(self.card.path), "p2"))
        names = fields_of(HEADER, "_tag_P2Clip")
        self.assertGreater(len(names), 40)
        names[1:1] = ["ShootStartTimeStatus"]
        for clip in document["clips"]:
            record = names + ["CodeType", "VideoStandard"]
            self.assertEqual(list(clip)[:len(record)], record)
            # Nobody takes one name for another.
            self.assertEqual(len({name.lower() for name in clip}), len(clip))
            self.assertEqual(list(clip["Proxy"]), fields_of(HEADER, "P2Proxy"))
            self.assertEqual(len(clip["AudioPath"]), 8)
            for memo in clip["Memos"]:
                self.assertEqual(list(memo), fields_of(HEADER, "_tag_P2Memo"))

    def test_values_that_cannot_be_are_told(self):
        sound = {"place.latitude": "N53.5511", "place.longitude": "+009.99", "place.altitude": "-3.5 m",
                 "shoot.startDate": "2024-05-11T09:15:30.250+02:00"}
        faulty = {"Latitude": "abc", "Longitude": "E181.5", "StartDate": "2024-02-30T00:00:00+00:00",
                  "CreationDate": "gestern", "DataSize": "viel"}
        def around(name, text):
            return f"<{name}>{text}</{name}>"
        for card, values in (("0006OK", {name.split(".")[1][:1].upper() + name.split(".")[1][1:]: text
                                         for name, text in sound.items()}), ("0007NO", faulty)):
            parts = {name: around(name, text) for name, text in values.items()}
            access, shoot = parts.pop("CreationDate", ""), parts.pop("StartDate")
            size = parts.pop("DataSize", "")
            self.card.add_raw(f"{card}.XML", clip_xml(card).replace("</MemoList>", (
                f"</MemoList><Access>{access}</Access><Shoot>{shoot}<Location>"
                f"{''.join(parts.values())}</Location></Shoot>")).replace("</Video>", (
                    f"<VideoIndex>{size}</VideoIndex></Video>")).encode())
        *_, good, bad = self.told("clips", self.card.path, "--metadata")["clips"]
        self.assertEqual((good["start"], "remarks" in good), ("2024-05-11T09:15:30+02:00", False))
        self.assertEqual([(good["metadata"][part][name]) for part, name in
                          (each.split(".") for each in sound)], list(sound.values()))
        told = sorted(re.search('"(.+)"$', remark)[1] for remark in bad["remarks"])
        self.assertEqual((told, "start" in bad), (sorted(faulty.values()), False))
        report = run("clips", self.card.path, "--report", "--columns", "Scene").stdout
        self.assertEqual(report.count("\nclip 0007NO: its "), 5)
        self.assertIn("nqp2: 1 clip tells what cannot be", run("clips", self.card.path, "--csv").stderr)
        page = run("report", self.card.path, "-o", "-").stdout
        for remark in bad["remarks"]:
            self.assertIn(f"0007NO: {remark}".replace('"', "&quot;"), page)

    def test_sort_orders(self):
        def names(*options):
            return [clip["ClipName"]
                    for clip in self.told("clips", self.card.path, *options)["clips"]]

        self.card.add("0000UN")
        by_name = ["0000UN", "0001DV", "0002AV", "0003LT", "0004NO"]
        in_folder = [name[:6] for name in os.listdir(self.card.clips) if name != "0005BR.XML"]
        # A clip without a date comes last.
        by_date = ["0002AV", "0001DV", "0003LT", "0004NO", "0000UN"]
        for options, expected in (((), by_name), (("--sort", "name"), by_name),
                                  (("--sort", "date"), by_date), (("--sort", "none"), in_folder)):
            self.assertEqual(names(*options), expected)

    def test_paths_are_spelled_as_on_the_disk(self):
        made = []
        for number in range(24):
            clip = f"10{number:02}LC"
            self.card.add(clip, audio=4)
            made += [("VIDEO", f"{clip}.MXF"), *(("AUDIO", f"{clip}0{i}.MXF") for i in range(3))]
        for number, (folder, name) in enumerate(made):
            self.card.add_file(folder, name if number % 3 else name.lower())
        shown = {path for clip in self.told("clips", self.card.path)["clips"]
                 for path in [clip["VideoPath"], *clip["AudioPath"]] if "/10" in path}
        self.assertEqual(shown, set(map(str, self.card.path.glob("CONTENTS/[AV]*/10*"))))

    def test_strict_tells_by_status_that_something_was_skipped(self):
        for status in (4, 0):
            self.assertEqual(run("clips", self.card.path, "--strict").returncode, status)
            (self.card.clips / "0005BR.XML").unlink(missing_ok=True)


class TerminalTest(ShownCardTest):
    def test_lines_fit_the_terminal(self):
        piped = run("clips", self.card.path).stdout.splitlines()
        for columns in (20, 80, 120):
            lines = run_on_terminal(columns, "clips", self.card.path)
            self.assertEqual(len(lines), len(piped))
            self.assertLessEqual(max(map(columns_of, lines)), columns)
        self.assertEqual(run_on_terminal(400, "clips", self.card.path), piped)


class ClipTest(ShownCardTest):
    def test_every_field_stands_on_a_line(self):
        self.assert_golden("clip.txt", self.shown("clip", self.card.path, "0001DV"))

    def test_what_is_no_clip(self):
        self.assert_each_fails(1, [(("clip", self.card.path, "0009ZZ"), f"{self.card.path}: no clip "
                                    "0009ZZ (`nqp2 clips` lists the clips)\n")])
        result = run("clip", self.card.path, "0005br")
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stderr, r"^nqp2: .*/CLIP/0005BR\.XML:3:\d+: cannot be read "
                                        r"\(not well-formed XML: .+\)\n$")
        self.assert_each_fails(2, [(("clip", self.card.path, name), f"{name}: is no clip name")
                                   for name in ("../CLIP/0001DV", "..\\CLIP\\0001DV", "")])


class StrangeNamesTest(CardTest):
    """What a card's names hold reaches neither the terminal nor a JSON reader unescaped."""

    STRANGE = "\u009b31mred \u202egnp.exe \u007f\t\"a,b\"\n=1"

    def setUp(self):
        super().setUp()
        self.card.add("0001AA", title=self.STRANGE, memos=[(1, self.STRANGE, "")])
        self.card.add_raw("\x1b[31mRED.XML", b"<x")
        self.card.add_raw(b"\xff\xfe.XML", b"<x")

    def assert_harmless(self, text, allowed="\n"):
        bad = [char for char in text
               if char not in allowed and unicodedata.category(char) in ("Cc", "Cf", "Cs")]
        self.assertEqual(bad, [])

    def test_tables_reports_and_messages(self):
        for options in ([], ["--report"], ["--csv", "--report"]):
            result = run("clips", self.card.path, *options)
            self.assert_harmless(result.stdout, "\n\r\t")
            self.assert_harmless(result.stderr)
        self.assertIn("\\x1b[31mRED.XML", run("clips", self.card.path, "--report").stdout)

    def test_json_keeps_the_text(self):
        result = run("clips", self.card.path, "--json", "--report")
        self.assertNotRegex(result.stdout, "[\u0000-\u0009\u000b-\u001f\u007f-\u009f]")
        document = json.loads(result.stdout)
        self.assertEqual(document["clips"][0]["UserClipName"], self.STRANGE)
        paths = {os.path.basename(file["path"]) for file in document["skipped"]}
        self.assertEqual(paths, {"\x1b[31mRED.XML", "\ufffd\ufffd.XML"})
        self.assertEqual({tuple(file) for file in document["skipped"]},
                         {("path", "reason", "line", "column")})

    def test_arguments_come_back_harmless(self):
        for arguments in (["clips", "/no\x1b[31m\nwhere"], ["\x1b[31m"],
                          ["clips", self.card.path, "--sort", "\x1b[31m"]):
            result = run(*arguments)
            self.assertNotEqual(result.returncode, 0)
            self.assertEqual(result.stderr.count("\n"), 1)
            self.assert_harmless(result.stderr)


if __name__ == "__main__":
    main()
