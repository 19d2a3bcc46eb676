# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The command that writes edit lists, playlists and clips for editing systems. Each document is
checked as strictly as the strictest program that reads it."""

import json
import os
import re
import subprocess
import unittest
from fractions import Fraction
from pathlib import Path
from urllib.parse import unquote
from xml.etree import ElementTree

from program import PROGRAM, CardTest, ListCardTest, clip_xml, command_line, main, run, sample

FORMS = ("ale", "edl", "xml", "otio")
NEEDED = {  # of each kind of object in an OpenTimelineIO document
    "Timeline.1": {"tracks", "name", "metadata", "global_start_time"},
    "Stack.1": {"children", "source_range", "markers"},
    "Track.1": {"children", "kind", "source_range", "markers"},
    "Clip.2": {"media_references", "active_media_reference_key", "source_range", "markers"},
    "Gap.1": {"source_range", "name"},
    "Marker.2": {"marked_range", "color", "comment", "name"},
    "ExternalReference.1": {"target_url", "available_range"},
    "MissingReference.1": {"available_range", "name"},
    "TimeRange.1": {"start_time", "duration"},
    "RationalTime.1": {"rate", "value"},
}
RATES = {25.0: 25, 24.0: 24, 50.0: 50, 30000 / 1001: Fraction(30000, 1001),
         24000 / 1001: Fraction(24000, 1001), 60000 / 1001: Fraction(60000, 1001)}


def seconds(time):
    return Fraction(time["value"]) / RATES[time["rate"]]


def frames(timecode, nominal):
    """Counted by the numbers that drop frame leaves out."""
    hours, minutes, secs, number = map(int, re.split("[:;]", timecode))
    dropped = nominal // 15 if ";" in timecode else 0
    minutes += hours * 60
    return (minutes * 60 + secs) * nominal + number - dropped * (minutes - minutes // 10)


class Checked(CardTest):
    """Checks documents; what it returns is what a test wants to compare."""

    def check_otio(self, text):
        document = json.loads(text)
        self.assertEqual(document["OTIO_SCHEMA"], "Timeline.1")
        self.walk(document)
        tracks = document["tracks"]["children"]
        self.assertEqual([track["kind"] for track in tracks],
                         ["Video"] + ["Audio"] * (len(tracks) - 1))
        lengths = [sum(seconds(child["source_range"]["duration"]) for child in track["children"])
                   for track in tracks]
        self.assertEqual(max(lengths), lengths[0])
        return document

    def walk(self, value):
        if isinstance(value, list):
            for each in value:
                self.walk(each)
        elif isinstance(value, dict):
            if "OTIO_SCHEMA" in value:
                self.assertEqual(next(iter(value)), "OTIO_SCHEMA")
                self.assertLessEqual(NEEDED[value["OTIO_SCHEMA"]], value.keys())
            if value.get("OTIO_SCHEMA") == "ExternalReference.1":
                self.assertTrue(Path(unquote(value["target_url"].removeprefix("file://"),
                                             errors="surrogateescape")).is_file())
            for each in value.values():
                self.walk(each)

    def check_xml(self, text):
        root = ElementTree.fromstring(text)
        ids = [each.get("id") for each in root.iter() if each.get("id") and
               not (each.tag == "file" and len(each) == 0)]
        self.assertEqual(len(ids), len(set(ids)))
        told = set()
        for each in root.iter("file"):
            self.assertEqual(each.get("id") in told, len(each) == 0)
            told.add(each.get("id"))
        for url in root.iter("pathurl"):
            self.assertTrue(Path(unquote(url.text.removeprefix("file://localhost"))).is_file())
        for holder in [*root.iter("sequence"), *root.iter("clip")]:
            self.check_tracks(holder)
        return root

    def check_tracks(self, holder):
        places = {}
        for kind in ("video", "audio"):
            for number, track in enumerate(holder.findall(f"media/{kind}/track"), 1):
                end = 0
                for place, item in enumerate(track.findall("clipitem"), 1):
                    at = {name: int(item.findtext(name)) for name in
                          ("start", "end", "in", "out")}
                    self.assertEqual(at["end"] - at["start"], at["out"] - at["in"])
                    self.assertGreaterEqual(at["start"], end)
                    end = at["end"]
                    places[item.get("id")] = (kind, str(number), str(place))
                self.assertLessEqual(end, int(holder.findtext("duration")))
        for link in holder.iter("link"):
            self.assertEqual(places[link.findtext("linkclipref")],
                             tuple(link.findtext(name)
                                   for name in ("mediatype", "trackindex", "clipindex")))

    def check_edl(self, text, nominal=25):
        """The events' reels, channels, sources' first frames, records' first and last."""
        self.assertTrue(text.isascii() and text.endswith("\r\n") and
                        "\n" not in text.replace("\r\n", ""))
        title, mode, empty, *lines = text.split("\r\n")[:-1]
        self.assertRegex(title, r"^TITLE: .{0,70}$")
        self.assertRegex(mode, r"^FCM: (NON-)?DROP FRAME$")
        self.assertEqual(empty, "")
        events, end = [], 0
        for line in lines:
            if re.match(r"\* [A-Z]|AUD  3(  4)?$", line):
                continue
            found = re.fullmatch(r"(\d{3})  ([A-Z0-9 ]{8}) (V|B|AA/V) +C {8}(\S{11}) (\S{11}) "
                                 r"(\S{11}) (\S{11})", line)
            self.assertEqual(int(found[1]), len(events) + 1)
            first, last, start, stop = (frames(found[i], nominal) for i in range(4, 8))
            self.assertEqual(last - first, stop - start)
            self.assertGreaterEqual(start, end)
            end = stop
            events.append((found[2].strip(), found[3], first, start, stop))
        return events

    def check_ale(self, text):
        heading, column, data = text.split("\r\n\r\n")
        self.assertTrue(heading.startswith("Heading\r\nFIELD_DELIM\tTABS\r\nVIDEO_FORMAT\t"))
        rate = float(heading.split("FPS\t")[1])
        names = column.split("\r\n")[1].split("\t")
        rows = [dict(zip(names, line.split("\t"), strict=True))
                for line in data.split("\r\n")[1:-1]]
        for row in rows:
            start, end, length = (frames(row[name], round(rate))
                                  for name in ("Start", "End", "Duration"))
            self.assertEqual(end - start, length)
        return rows

    def written(self, *arguments, status=0):
        """The checked documents that a call makes in a folder, by name, and what it says."""
        out = self.folder / "out"
        for old in out.glob("*"):
            old.unlink()
        result = run("timeline", *arguments, "-o", f"{out}/")
        self.assertEqual(result.returncode, status, result.stderr)
        self.assertEqual([each for each in out.iterdir() if each.name.startswith(".")], [])
        return {each.name: each.read_bytes().decode() for each in out.iterdir()}, result.stderr

    def document(self, *arguments, form="otio"):
        file = self.folder / f"document.{form}"
        file.unlink(missing_ok=True)
        run("timeline", *arguments, "-o", file)
        return file.read_bytes().decode()


class SampleTest(Checked):
    def test_every_list_and_card_in_every_form(self):
        cards = ((sample(), ["P001AB", "P002AB"]), (sample("avchd"), ["00000", "00001", "00002"]))
        variants = ((), ("--media", "proxy", "--drop-frame"), ("--audio", "card", "--no-memos"),
                    ("--audio", "none"))
        for card, lists in cards:
            for options in (*variants, *(("--bin", *each) for each in variants)):
                rates = {}  # of parts, which EDL files do not tell
                for form in FORMS:
                    with self.subTest(card=card.name, options=options, form=form):
                        documents, _ = self.written(card, *options, "-f", form)
                        names = {re.sub(r"(-\d)?\.\w+$", "", name) for name in documents}
                        self.assertEqual(sorted(names), lists if "--bin" not in options else
                                         [card.name if card.name == "p2" else "PRIVATE"])
                        for name, text in documents.items():
                            if form == "edl":
                                self.check_edl(text, rates[Path(name).stem])
                                continue
                            getattr(self, f"check_{form}")(text)
                            if form == "ale":
                                rates[Path(name).stem] = round(float(
                                    re.search(r"FPS\t(.+)\r", text)[1]))

    def test_an_edit_is_told_alike_by_all_forms(self):
        card = sample()
        otio = self.check_otio(self.document(card, "P001AB"))
        picture, *sound = (track["children"] for track in otio["tracks"]["children"])
        self.assertEqual([(each["name"], each["source_range"]["start_time"]["value"],
                           each["source_range"]["duration"]["value"]) for each in picture],
                         [("0012SA", 540001, 4), ("0013SB", 540010, 8), ("0012SA", 540007, 3),
                          ("0014SC", 540022, 6)])
        files = [[Path(each["media_references"]["DEFAULT_MEDIA"]["target_url"]).name
                  for each in track[:2]] for track in sound]
        self.assertEqual(files, [["0012SA02.MXF", "0013SB00.MXF"], ["0012SA03.MXF", "0013SB01.MXF"],
                                 ["0012SA02.MXF", "0013SB02.MXF"], ["0012SA03.MXF", "0013SB03.MXF"]])
        self.assertEqual([each["metadata"]["nqp2"]["recording"]["number"] for each in picture],
                         [1, 2, 1, 3])
        self.assertEqual({each["metadata"]["Resolve_OTIO"]["Link Group ID"]
                          for track in (picture, *sound) for each in track[1:2]}, {2})
        xml = self.check_xml(self.document(card, "P001AB", form="xml"))
        items = xml.findall("sequence/media/video/track/clipitem")
        self.assertEqual([[int(each.findtext(name)) for name in ("start", "end", "in")]
                          for each in items], [[0, 4, 1], [4, 12, 0], [12, 15, 7], [15, 21, 2]])
        self.assertEqual(items[0].findtext("file/timecode/frame"), "540000")
        levels = [each.text for each in xml.iter("value")]
        self.assertEqual(levels, ["0.5", "0.5"])
        expected = [("0012SA", "V", 540001, 0, 4), ("0013SB", "V", 540010, 4, 12),
                    ("0012SA", "V", 540007, 12, 15), ("0014SC", "V", 540022, 15, 21)]
        self.assertEqual(self.check_edl(self.document(card, "P001AB", form="edl")), expected)
        rows = self.check_ale(self.document(card, "p001ab", form="ale"))
        self.assertEqual([(row["Tape"], frames(row["Start"], 25)) for row in rows],
                         [(reel, first) for reel, _, first, _, _ in expected])

    def test_clips_of_other_rates_keep_theirs(self):
        documents, _ = self.written(sample("avchd"), "00000", "-f", "edl")
        self.assertEqual(self.check_edl(documents["00000-2.edl"], 50),
                         [("00003", "AA/V", 0, 280, 330)])
        picture = self.check_otio(self.document(sample("avchd"), "00000"))["tracks"]["children"][0]
        last = picture["children"][3]["source_range"]
        self.assertEqual((last["duration"]["rate"], last["duration"]["value"]), (50, 50))
        self.assertEqual({each["source_range"]["start_time"]["value"]
                          for each in picture["children"]}, {0})  # no timecode in such files


class ListTest(Checked, ListCardTest):
    """Lists of a card that a test fills."""

    def test_what_cannot_be_placed_is_said(self):
        self.add_clip("0001AA")
        most = 2**31 - 1
        cases = (
            ((10, 5), [(10, 15)], 0), ((0, 0), [], 1), ((0, -5), [], 1), ((-3, 5), [], 1),
            ((0, 5, -1), [], 1), ((0, 50, 90), [(0, 50)], 1), ((0, most, most), [(0, most)], 1),
            ((most, most), [(most, 2 * most)], 1), ((0, 5, 0, "GONE"), [(0, 5)], 1),
            ((0, 5, 0, "0001AA", "", "7 0"), [(0, 5)], 1),
            ((0, 5, 0, "0001AA", "<AudioInOffset>3</AudioInOffset>"), [(0, 5)], 1))
        for case, places, remarks in cases:
            with self.subTest(case):
                self.add_list("P001AB", self.event(*case))
                result = run("timeline", self.card.path, "-f", "xml", "-o", "-", "--strict")
                self.assertEqual((result.returncode, result.stderr.count("\n")),
                                 (4 if remarks else 0, remarks), result.stderr)
                items = self.check_xml(result.stdout).findall("sequence/media/video/track/clipitem")
                self.assertEqual([(int(each.findtext("start")), int(each.findtext("end")))
                                  for each in items], places)
                self.check_otio(self.document(self.card.path))
        self.add_list("P001AB", self.event(0, 10), self.event(6, 10, 20), self.event(7, 3))
        self.assertEqual([event[2:] for event in
                          self.check_edl(self.document(self.card.path, form="edl"))],
                         [(0, 0, 10), (24, 10, 16)])

    def test_a_clip_that_is_not_there_keeps_its_place(self):
        self.add_clip("0001AA", identifier="0" * 63 + "1")
        gone = self.event(8, 12, 30, "0009ZZ")
        other = self.event(20, 4).replace("<ClipName>", f"<GlobalClipID>{2:064}</GlobalClipID><ClipName>")
        self.add_list("P001AB", self.event(0, 8), gone, other)
        result = run("timeline", self.card.path, "-f", "otio", "-o", "-")
        self.assertEqual(result.stderr.splitlines(),
                         ["nqp2: P001AB: 0009ZZ of AB1 is not on this card: kept as missing (event 2)",
                          "nqp2: P001AB: 0001AA of AB1 is not on this card: kept as missing (event 3)"])
        clips = self.check_otio(result.stdout)["tracks"]["children"][0]["children"]
        media = [each["media_references"]["DEFAULT_MEDIA"] for each in clips]
        self.assertEqual([each["OTIO_SCHEMA"][:8] for each in media],
                         ["External", "MissingR", "MissingR"])
        self.assertEqual((media[1]["name"], media[1]["available_range"]["duration"]["value"]),
                         ("0009ZZ", 42))

    def test_texts_of_strangers_are_texts(self):
        evil = "</comment><x>&amp;\"\\ ]]>\t\r\n\u202e größer \U0001F600 " + "z" * 10000
        card = self.folder / "a b#c%3Fd?é\"'&"
        self.card.path.rename(card)
        self.card.path, self.card.clips = card, card / "CONTENTS" / "CLIP"
        self.add_clip("0001AA", title=evil, memos=[(3, "P\"<", evil), (50, "beyond the cut", "x")])
        self.add_list("<P&\"'", self.event(10, 9, note=evil), self.event(30, 5, name=evil))
        kept = evil.replace("\r\n", "\n")  # as XML itself reads it
        otio = self.check_otio(self.document(card))
        marker, = otio["tracks"]["markers"]
        self.assertEqual((marker["comment"], marker["marked_range"]["start_time"]["value"]),
                         ("P\"<: " + kept, 13))
        self.assertEqual(otio["name"], "<P&\"'")
        xml = self.check_xml(self.document(card, form="xml"))
        self.assertIn("P\"<: " + kept, [each.text for each in xml.iter("comment")])
        self.assertIn(kept, [each.text for each in xml.iter("name")])
        edl = self.document(card, form="edl")
        self.assertLess(max(map(len, edl.split("\r\n"))), 300)
        self.assertEqual([event[0] for event in self.check_edl(edl)], ["0001AA", "COMMENTX"])
        self.assertEqual([row["Name"][:10] for row in self.check_ale(self.document(card, form="ale"))],
                         ["0001AA", "</comment>"])

    def test_timecode_of_lists_and_clips(self):
        self.add_clip("0001AA", rate="59.94p")
        with_code = clip_xml("0001AA", rate="59.94p", duration=100).replace(
            "</FrameRate>", "</FrameRate><StartTimecode>01:00:00:12</StartTimecode>")
        self.card.add_raw("0001AA.XML", with_code.encode())
        self.add_list("P001AB", self.event(0, 8), unit="1001/60000", start="01:00:00:20")
        source = 216000 + 24 - 216  # drop frame, of which such metadata number every second
        for options, record in (((), 216040), (("--start-timecode", "02:00:00;00"), 431568),
                                (("--start-timecode", "10:00:00:59"), 2160059)):
            with self.subTest(options):
                otio = self.check_otio(self.document(self.card.path, *options))
                self.assertEqual(otio["global_start_time"]["value"], record)
                events = self.check_edl(self.document(self.card.path, *options, form="edl"), 60)
                self.assertEqual(events, [("0001AA", "AA/V", source, record, record + 8)])
        self.assert_each_fails(2, [
            (("timeline", self.card.path, "-o", "-", "--start-timecode", code),
             f"--start-timecode {code}: is no timecode") for code in
            ("1:0:0:0", "24:00:00:00", "00:00:00:60", "00:01:00;03", "x")])
        self.add_list("P001AB", self.event(0, 8), unit="1/7")
        self.assertRegex(run("timeline", self.card.path, "-o", "-").stderr, "unit is 1/7, which no")

    def test_many_events(self):
        self.add_clip("0001AA")
        self.add_list("MANY", *(self.event(i * 3, 2, i % 50) for i in range(2500)))
        documents, said = self.written(self.card.path, "-f", "edl")
        self.assertEqual(sorted(documents), ["MANY-2.edl", "MANY-3.edl", "MANY.edl"])
        self.assertIn("has 2500 events: 999 in a file", said)
        starts = [event[3] for name in ("MANY.edl", "MANY-2.edl", "MANY-3.edl")
                  for event in self.check_edl(documents[name])]
        self.assertEqual(starts, [i * 3 for i in range(2500)])
        self.assert_each_fails(1, [(("timeline", self.card.path, "-f", "edl", "-o", "-"),
                                    "MANY: takes 3 files (standard output is one")])
        self.assertEqual(len(self.check_xml(self.document(self.card.path, form="xml"))
                             .findall("sequence/media/audio/track")), 2)
        self.add_clip("0001AA", memos=[(i % 100, "", "m" * 99) for i in range(500)])
        result = run("timeline", self.card.path, "-o", self.folder / "x.otio", "--strict")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.add_list("MANY", *(self.event(i * 99, 99) for i in range(2500)))
        result = run("timeline", self.card.path, "-o", self.folder / "y.otio", "--strict")
        self.assertEqual((result.returncode, result.stderr.count("\n")), (4, 1))
        self.assertIn("too many memos", result.stderr)
        self.add_list("MANY", *(self.event(0, 2) for _ in range(70000)))
        result = run("timeline", self.card.path, "-o", "-")
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stderr, r"MANY.XML: skipped \(.*65536 events\)?.*\n.*has no edit lists")

    @unittest.skipIf(b"__asan_init" in Path(PROGRAM).read_bytes(), "a sanitizer keeps freed memory")
    def test_documents_are_written_as_they_are_made(self):
        def peak(form):
            with subprocess.Popen(command_line("timeline", self.card.path, "-f", form, "-o",
                                               self.folder / "out"),
                                  stderr=subprocess.DEVNULL) as process:
                usage = os.wait4(process.pid, 0)[2]
                process.returncode = 0
            return usage.ru_maxrss
        self.add_clip("0001AA")
        self.add_list("MANY", *(self.event(i * 3, 2) for i in range(20000)))
        least = peak("ale")
        for form in ("otio", "xml"):  # of tens of megabytes
            self.assertLess(peak(form), least * 1.1 + 8192)

    def test_files_come_whole_or_not_at_all(self):
        self.add_clip("0001AA")
        self.add_list("P001AB", self.event(0, 8))
        self.add_list("P002AB", self.event(0, 8))
        out = self.folder / "a" / "new.edl"
        self.shown("timeline", self.card.path, "P001AB", "-o", out)
        self.assertEqual(len(self.check_edl(out.read_bytes().decode())), 1)
        self.shown("timeline", self.card.path, "P002AB", "-o", self.folder / "x.xml", "--relative")
        url, *_ = (each.text for each in ElementTree.parse(self.folder / "x.xml").iter("pathurl"))
        self.assertEqual(url, "card/CONTENTS/VIDEO/0001AA.MXF")
        out.write_text("old")
        (self.folder / "link.edl").symlink_to("nowhere")
        (self.folder / "MANY-2.edl").write_text("old")
        self.add_list("MANY", *(self.event(i, 1) for i in range(1000)))
        card = self.card.path
        self.assert_each_fails(2, [
            (("timeline", card, "-o", out), f"{out}: is one file for several lists"),
            (("timeline", card, "P001AB", "-o", "a.txt"), "a.txt: its suffix names no form"),
            (("timeline", card, "P001AB", "--bin", "-o", "-"), "--bin: takes the clips"),
            (("timeline", card, "P001AB", "--relative", "-o", "-"), "--relative: needs a file")])
        self.assert_each_fails(1, [
            (("timeline", card, "P009", "-o", "-"), "P009: is no edit list or playlist of"),
            (("timeline", card, "P001AB", "-o", "/dev/full", "-f", "edl"), "/dev/full: is there"),
            (("timeline", card, "P001AB", "-o", out), f"{out}: is there already"),
            (("timeline", card, "P001AB", "-o", self.folder / "link.edl"), f"{self.folder}/link.edl"),
            (("timeline", card, "MANY", "-o", self.folder / "MANY.edl"),
             f"{self.folder}/MANY-2.edl: is there already"),
            (("timeline", card, "P001AB", "-o", out / "x.edl"), f"{out}: cannot be made")])
        self.assertEqual({path.read_text() for path in (out, self.folder / "MANY-2.edl")}, {"old"})
        self.assertFalse((self.folder / "MANY.edl").exists())


if __name__ == "__main__":
    main()
