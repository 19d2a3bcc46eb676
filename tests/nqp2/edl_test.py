# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The commands that list and write edit lists."""

import json
import os
import re
import subprocess
import unittest
from pathlib import Path

from program import INCLUDE, PROGRAM, CardTest, command_line, fields_of, main, run

HEADER = INCLUDE / "P2EDL.h"
UMID = "060A2B340101010501010D4313"


def identifier(number, instance=0):
    return f"{UMID}{instance:06X}{number:032X}"


def edit_list(events, version="v2.0", track="ClipTrack", head=""):
    """An edit list as another program writes it."""
    namespace = f"urn:schemas-Professional-Plug-in:P2:EditMetadata:{version}"
    return (f'<?xml version="1.0" encoding="UTF-8"?>\n<P2Main xmlns="{namespace}"><EditContent>'
            f"{head}<TrackList><{track}><EventList>{events}</EventList></{track}></TrackList>"
            "</EditContent></P2Main>\n").encode()


class EdlTest(CardTest):
    def write_list(self, name, content, folder="CONTENTS/EDITLIST"):
        (self.card.path / folder).mkdir(parents=True, exist_ok=True)
        (self.card.path / folder / name).write_bytes(content)

    def listed(self):
        return self.told("edl", "list", self.card.path)["edls"]

    def write(self, edl, *options):
        return run("edl", "write", self.card.path, "-", *options, given=json.dumps(edl))


class ListTest(EdlTest):
    def setUp(self):
        super().setUp()
        full = ("<Event><Offset>5</Offset><Duration>50</Duration><Source>"
                f"<P2SerialNo.>AB1</P2SerialNo.><ClipName>0001AA</ClipName><GlobalClipID>"
                f"{identifier(1)}</GlobalClipID><Offset>100</Offset><Channel>3 2</Channel></Source>"
                "<AudioInOffset>7</AudioInOffset><AudioLevel>0.5</AudioLevel>"
                "<Note>größer, \"lauter\"</Note></Event>")
        head = ("<Duration>90</Duration><EditUnit>1001/30000</EditUnit><FrameRate>59.94i</FrameRate>"
                "<StartTimecode>01:00:00:02</StartTimecode><Codec Class=\"50\">AVC-I_720/50p</Codec>"
                "<Thumbnail><FrameOffset>12</FrameOffset></Thumbnail>")
        short = "<Event><Duration>40</Duration><Source><ClipName>0002AA</ClipName></Source></Event>"
        self.write_list("P002XY.XML", edit_list(full + short, head=head))
        self.write_list("p001ab.xml", edit_list(short, "v3.0", "VideoTrack"), "EDITLIST")
        self.write_list("broken.xml", b"<P2Main>")
        (self.card.path / "CONTENTS/EDITLIST/P002XY").mkdir()
        (self.card.path / "CONTENTS/EDITLIST/P002XY/ICON.BMP").write_bytes(b"BM")

    def test_table(self):
        result = run("edl", "list", self.card.path)
        self.assert_golden("edl.txt", result.stdout)
        self.assertEqual(result.returncode, 0)
        summary, loss = result.stderr.splitlines()
        self.assertEqual(summary, "2 edit lists")
        self.assertRegex(loss, rf"^nqp2: {self.card.path}/CONTENTS/EDITLIST/broken.xml:1:\d+: "
                               r"skipped \(not well-formed XML: .+\)$")

    def test_losses_decide_the_status(self):
        many = edit_list("<Event/>" * 65537)
        for name, content in (("other.xml", b"<a/>"), ("._P001.XML", b"mac"), ("many.xml", many)):
            self.write_list(name, content, "EDITLIST")
        result = run("edl", "list", self.card.path, "--strict", "--csv")
        self.assertEqual(result.returncode, 4)
        self.assertEqual([line.split(": ")[1:3] for line in sorted(result.stderr.splitlines())],
                         [[f"{self.card.path}/CONTENTS/EDITLIST/broken.xml:1:9",
                           "skipped (not well-formed XML"],
                          [f"{self.card.path}/EDITLIST/many.xml", "skipped (too large"],
                          [f"{self.card.path}/EDITLIST/other.xml", "skipped (no edit list"]])

    @unittest.skipIf(b"__asan_init" in Path(PROGRAM).read_bytes(), "a sanitizer keeps freed memory")
    def test_json_is_written_as_it_is_made(self):
        def peak(*options):
            with subprocess.Popen(command_line("edl", "list", self.card.path, *options),
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
                usage = os.wait4(process.pid, 0)[2]
                process.returncode = 0
            return usage.ru_maxrss
        self.write_list("many.xml", edit_list("<Event/>" * 30000))
        self.assertLess(peak("--json"), peak() * 1.2 + 8192)

    def test_json_tells_both_folders_and_all_fields_in_declaration_order(self):
        first, second = self.listed()
        self.assertEqual((first["Name"], second["Name"]), ("p001ab", "P002XY"))
        for record, shown in (("tag_P2EDL", second), ("tag_P2EDLClipTrackEvent",
                                                      second["Events"][0])):
            declared = fields_of(HEADER, record)
            self.assertEqual(list(shown), [name for name in declared if name in shown])
        self.assertEqual(
            {key: value for key, value in second.items()
             if key not in ("Date", "Identity", "Events")},
            {"LeadingText": "", "Name": "P002XY", "Duration": 90, "EditUnit": [1001, 30000],
             "StartTimecode": 3600 * 29 + 2, "FrameRate": "59.94i", "Codec": "AVC-I_720/50p",
             "Class50": 1, "ThumbnailFrame": 12,
             "IconPath": f"{self.card.path}/CONTENTS/EDITLIST/P002XY/ICON.BMP"})
        self.assertEqual(second["Events"][0], {
            "Offset": 5, "Duration": 50, "P2SerialNo": "AB1", "ClipName": "0001AA",
            "GlobalClipID": identifier(1),
            "GlobalClipGuid": "00000000-0000-0000-0000-000000000001", "SourceOffset": 100,
            "SourceIn": 100, "SourceOut": 149, "AudioInOffset": 7, "AudioOutOffset": -1,
            "Channels": [3, 2, 2, 3], "AudioLevels": [0.5, 1, 1, 1],
            "Note": "größer, \"lauter\""})
        self.assertEqual(first["Events"][0]["ClipName"], "0002AA")


class WriteTest(EdlTest):
    def setUp(self):
        super().setUp()
        self.card.add("0001AA", identifier=identifier(0xA1), codec="AVC-I_1080/50i",
                      codec_class="50", duration=500)
        self.card.add("0002AA", identifier=identifier(0xB2, 2), duration=200)

    def event(self, **fields):
        return {"ClipName": "0001AA", "GlobalClipID": identifier(0xA1), "Duration": 10, **fields}

    def test_a_selection_of_clips_is_written_and_read_back(self):
        clips = json.loads(run("clips", self.card.path, "--json").stdout)["clips"]
        events, at = [], 0
        for clip in clips:
            events.append({"Offset": at, "Duration": clip["Duration"] // 2, "SourceOffset": 25,
                           "ClipName": clip["ClipName"], "GlobalClipID": clip["GlobalClipID"],
                           "P2SerialNo": "AB&<1>"})
            at += clip["Duration"] // 2
        # A clip of the card needs no more than its name.
        given = [dict(event) for event in events]
        del given[0]["GlobalClipID"]
        file = self.folder / "cut.json"
        file.write_text(json.dumps({"Duration": at, "Events": given}))
        result = run("edl", "write", self.card.path, file)
        written = self.card.path / "EDITLIST" / "P001AB.XML"
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, f"{written}\n", ""))
        (edl,) = self.listed()
        self.assertEqual((edl["Name"], edl["Duration"], edl["Codec"], edl["FrameRate"],
                          edl["EditUnit"]), ("P001AB", 350, "AVC-I_1080/50i", "50i", [1, 25]))
        self.assertEqual([{key: event[key] for key in events[0]} for event in edl["Events"]],
                         events)
        self.assertEqual([event["GlobalClipGuid"] for event in edl["Events"]],
                         [clip["GlobalClipGuid"] for clip in clips])
        # What was listed can be written as it stands.
        self.assertEqual(self.write(edl, "--name", "AGAIN").returncode, 0)
        again, first = self.listed()
        self.assertEqual((again["Name"], again["Events"]), ("AGAIN", first["Events"]))

    def test_names(self):
        edl = {"Events": [self.event()]}
        folder = self.card.path / "EDITLIST"
        self.write_list("P002XY.XML", b"", "CONTENTS/EDITLIST")
        self.assertEqual(self.write(edl).stdout,  # where the card keeps its lists
                         f"{self.card.path}/CONTENTS/EDITLIST/P003AB.XML\n")
        folder.mkdir()
        for options, name in (((), "P004AB.XML"), (("--name", "MYEDIT"), "MYEDIT.xml"),
                              (("--name", "Übersicht.xml"), "Übersicht.xml"),
                              (("--name", "MYEDIT"), "MYEDIT.xml"), ((), "P005AB.XML")):
            self.assertEqual(self.write(edl, *options).stdout, f"{folder / name}\n")
        self.assertEqual(len(list(folder.iterdir())), 4)
        for name in ("", "a/b", "..\\x", "C:x", "what?", "tab\t", "dot.", "x" * 252, "\udcff"):
            result = self.write(edl, "--name", name)
            self.assertEqual(result.returncode, 2, name)
            self.assertIn(": is no file name (", result.stderr)
        self.assertEqual(self.write(edl, "--name", "x" * 251).returncode, 0)

    def test_writers_at_once_take_different_numbers(self):
        file = self.folder / "cut.json"
        file.write_text(json.dumps({"Events": [self.event()]}))
        writers = [subprocess.Popen(command_line("edl", "write", self.card.path, file),
                                    stdout=subprocess.PIPE) for _ in range(12)]
        paths = {writer.communicate(timeout=60)[0] for writer in writers}
        self.assertEqual(len(paths), 12)
        self.assertEqual(len(os.listdir(self.card.path / "EDITLIST")), 12)

    def test_a_clip_that_is_not_on_the_card(self):
        for event in (self.event(GlobalClipID=identifier(7)), self.event(ClipName="x" * 70000)):
            self.assert_fails(self.write({"Events": [event]}), 1,
                              f"nqp2: {self.card.path}: the edit list was not written (no event's "
                              "ClipName and GlobalClipID are those of a clip on the card)")
        self.assertEqual(self.listed(), [])

    def test_clips_named_without_identifier_are_the_cards(self):
        other = {"ClipName": "0001aa", "GlobalClipID": identifier(7), "Duration": 1}
        self.card.add_raw("0003AA.XML", b"<P2Main>\n<")
        path, fails = self.card.path, f"nqp2: {self.card.path}: no clip "
        for event, problem in (
                ({"ClipName": "0001AC"}, f"{fails}0001AC of Events[2] (did you mean 0001AA?)"),
                ({"ClipName": "0003AA"}, f"{fails}0003AA of Events[2] ({path}/CONTENTS/CLIP/"
                                         "0003AA.XML:2:"),
                ({"ClipName": "../CLIP/0001AA"}, f"{fails}../CLIP/0001AA of Events[2] (clips of "
                                                 "other cards need their GlobalClipID)"),
                ({"Duration": 3}, "nqp2: Events[2]: names no clip")):
            result = self.write({"Events": [self.event(), other, event]})
            self.assertNotEqual(result.returncode, 0)
            self.assertIn(problem, result.stderr)
        self.assertEqual(self.listed(), [])
        self.write({"Events": [{"ClipName": "0002aa"}, self.event(ClipName="0001aa"), other]})
        self.assertEqual([(event["ClipName"], event["GlobalClipID"])
                          for event in self.listed()[0]["Events"]],
                         [("0002AA", identifier(0xB2, 2)), ("0001AA", identifier(0xA1)),
                          ("0001aa", identifier(7))])

    def test_times_follow_from_each_other_or_are_refused(self):
        most = 2 ** 31 - 1
        for told, expected in (
                ({"SourceIn": 0, "SourceOut": 9}, (0, 10)),
                ({"SourceOffset": 5, "SourceOut": 9}, (5, 5)),
                ({"Duration": 4, "SourceOut": 9}, (6, 4)), ({"SourceOut": 9}, (0, 10)),
                ({"SourceIn": 3, "Duration": 4}, (3, 4)), ({"SourceIn": 4, "SourceOut": 3}, (4, 0)),
                ({"SourceIn": 3, "SourceOffset": 3, "SourceOut": 6, "Duration": 4}, (3, 4)),
                ({"SourceOut": 5, "Duration": 5, "Clip": {}}, (0, 5)),  # as playlists count
                ({"SourceIn": 5, "SourceOut": 3}, "frames 5 to 3 are -1"),
                ({"SourceIn": 0, "SourceOut": 9, "Duration": 4}, "frames 0 to 9 are 10, not 4"),
                ({"SourceIn": 0, "SourceOffset": 1}, "SourceOffset is 1, SourceIn 0"),
                ({"Duration": 11, "SourceOut": 9}, "begin before the clip"),
                ({"Duration": -1}, "are -1"), ({"SourceOut": most}, "frames 0 to 2147483647")):
            with self.subTest(told):
                result = self.write({"Events": [self.event(), {"ClipName": "0001AA", **told}]},
                                    "--name", "T")
                if isinstance(expected, str):
                    self.assertEqual(result.returncode, 2)
                    self.assertIn("standard input: Events[1] contradicts itself", result.stderr)
                    self.assertIn(expected, result.stderr)
                    continue
                (edl,), (first, length) = self.listed(), expected
                self.assertEqual([edl["Events"][1][key] for key in (
                    "SourceOffset", "Duration", "Offset")], [first, length, 10])
                self.assertEqual(edl["Duration"], 10 + length)
        far = {"Events": [self.event(Offset=most)] * 2}
        self.assertIn("ends too late", self.write(far).stderr)

    def test_what_is_listed_is_taken_as_a_whole(self):
        self.write({"Duration": 7, "Events": [self.event()]}, "--name", "ONE")
        listing = run("edl", "list", self.card.path, "--json").stdout
        written = run("edl", "write", self.card.path, "-", "--name", "TWO", given=listing)
        self.assertEqual(written.returncode, 0, written.stderr)
        one, two = self.listed()
        self.assertEqual((one["Duration"], one["Events"]), (7, two["Events"]))
        self.assertEqual(two["Duration"], 7)
        listing = run("edl", "list", self.card.path, "--json").stdout
        self.assert_fails(run("edl", "write", self.card.path, "-", given=listing), 2,
                          "nqp2: standard input: holds 2 edit lists (give one of them: ONE, TWO)")

    def test_hostile_input(self):
        number = "is no 32-bit whole number"
        cases = (
            ("", "is no JSON"), ("null", "is no object"), ('{"Events": [{}]} x', "is no JSON"),
            ('{"Events": []}', "holds no events"), ('{"edls": []}', "holds 0 edit lists"),
            ('{"Events": {}}', "Events is no list"), ('{"Events": [7]}', "Events[0] is no object"),
            ('{"Events": [{"Ofset": 1}]}', "Events[0].Ofset is no field"),
            *((f'{{"Duration": {value}}}', f"Duration {number}")
              for value in ('"7"', "1.0", "true", 2 ** 31, -2 ** 31 - 1)),
            ('{"Name": null}', "Name is no text"), ('{"Name": "\\ud800"}', "is no JSON"),
            ('{"Name": "\\uffff"}', "Name holds what XML cannot hold"),
            ('{"EditUnit": [1]}', "EditUnit is no list of 2"),
            ('{"Identity": "x"}', "Identity is no GUID"),
            ('{"Events": [{}, {"AudioLevels": [1, 1, 1, "1"]}]}',
             "Events[1].AudioLevels[3] is no number"),
            ("[" * 100000, "is nested too deeply"), ('{"Name": "\udcff"}', "is no JSON"),
            ('{"Events": [{"Offset": 1, "Offset": 1}]}', "names a member twice (Offset)"),
            ('{"a\\u0000b": 1}', "a\\x00b is no field"), ('{"' + "k" * 10 ** 6 + '": 1}', "kkk"),
            ("[" + "{}," * 10 ** 6, "is too large"), ('{"Name": "\x1b[31m"}', "is no JSON"))
        for text, problem in cases:
            result = run("edl", "write", self.card.path, "-", given=text)
            self.assertEqual((result.returncode, result.stdout), (2, ""), text[:60])
            self.assertRegex(result.stderr, f"^nqp2: standard input: {re.escape(problem)}.*\n$")
            self.assertNotIn("\x1b", result.stderr)
            self.assertLess(len(result.stderr), 6000)
        self.assertFalse((self.card.path / "EDITLIST").exists())

    def test_a_card_that_takes_nothing(self):
        (self.card.path / "EDITLIST").write_bytes(b"")  # a file in the folder's place
        self.assert_fails(self.write({"Events": [self.event()]}), 1,
                          f"nqp2: {self.card.path}: the edit list was not written (the folder "
                          "of edit lists: it is not a folder)")


if __name__ == "__main__":
    main()
