# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""One playable file of what a camera has recorded: what it is made of, and whether it holds just
that."""

import functools
import json
import os
import re
import shutil
import signal
import subprocess
import unittest
from fractions import Fraction
from pathlib import Path

from cards_test import SHOT, segment
from json_schema_test import validator
from program import (Card, CardTest, ListCardTest, clip_xml, command_line, main, run, sample)
from usage_test import HAS_WORKER
from worker_test import wait_for, workers_of


def copied(source, target, *clips):
    """A card with some of another's clips."""
    for path in source.rglob("*"):
        if path.is_file() and path.name.startswith(clips):
            copy = target / path.relative_to(source)
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(path, copy)
    return target


class PlanTest(ListCardTest):
    def planned(self, *arguments, status=0, to=None):
        """The files that would be made, and what is said."""
        target = ("--to", to) if to else ("-o", self.folder / "new.mov")
        result = run("rewrap", *arguments, *target, "--dry-run", "--json")
        self.assertEqual(result.returncode, status, result.stderr)
        document = json.loads(result.stdout)
        validator("rewrap").validate(document)
        for file in document["files"]:
            self.assertFalse(Path(file.get("target", "/none")).exists())
        self.lost = [(Path(each["name"]).name, each["reason"]) for each in document["lost"]]
        return document["files"], result.stderr.replace(f"{self.folder}/", "")

    def plan(self, *arguments):
        (file,), told = self.planned(*arguments)
        self.assertEqual(told, "")
        return file

    def names(self, files):
        return [[part["ClipName"] for part in file.get("parts", [])] for file in files]

    def cards_of_a_take(self):
        """One segment of a take on each of three cards."""
        cards = [self.folder / name for name in "ABC"]
        for number, path in enumerate(cards):
            self.card = Card(path)
            self.add_clip(SHOT[number], **segment(number))
        return cards

    def test_sample_clips(self):
        ntsc, fast = (30000, 1001), (60000, 1001)
        for kind, clip, parts, join, rate, fields, timecode, sounds, chapters in (
                ("p2", "0001AB", 1, "frames", (25, 1), True, "00:00:00:00", 4, []),
                ("p2", "0002ab", 1, "frames", ntsc, True, "01:00:00;00", 2, [0]),
                ("p2", "0003K7", 1, "frames", ntsc, True, "10:15:30:12", 4, [0, 6, 6, 18, 18, 40]),
                ("p2", "0005M2", 1, "frames", (25, 1), True, "00:20:11:05", 4, []),
                ("p2", "0006ZT", 1, "frames", (24000, 1001), False, "02:00:00:23", 4, []),
                ("p2", "0008RR", 1, "frames", ntsc, True, "12:59:59;28", 4, [0, 3]),
                ("p2", "0009D1", 1, "frames", fast, False, "00:59:58;58", 4, []),
                ("p2", "0010lg", 1, "frames", ntsc, True, "03:10:00;00", 4, []),
                ("p2", "0011C2", 1, "frames", (50, 1), False, "18:09:30:48", 4, []),
                ("p2", "0013SB", 3, "frames", (25, 1), True, "06:00:00:00", 4, []),
                ("avchd", "00003", 1, "bytes", (50, 1), False, "00:10:00:48", 1, [0]),
                ("avchd", "00005", 2, "bytes", ntsc, True, "00:59:58;10", 1, [0]),
                ("avchd", "00006", 1, "bytes", (24000, 1001), False, "", 0, [0])):
            with self.subTest(clip):
                card = sample(kind) / ("PRIVATE" if kind == "avchd" else "")
                file = self.plan(card, "--clip", clip)
                self.assertEqual((len(file["parts"]), file["join"], tuple(file["rate"].values()),
                                  file["interlaced"], file["timecode"], len(file["sound"]),
                                  [each["frame"] for each in file["chapters"]]),
                                 (parts, join, rate, fields, timecode, sounds, chapters))
                there = {str(path) for part in file["parts"] for folder in ("AUDIO", "VIDEO", "AVCLIP")
                         for path in card.glob(f"CONTENTS/{folder}/{part['ClipName']}*.*")}
                named = {path for part in file["parts"] for path in (part["video"], *part["sounds"])}
                self.assertEqual(named, there or named)
                lengths = [clip["length"]["frames"] for clip in self.told("clips", card)["clips"]
                           if clip["ClipName"] in self.names([file])[0]]
                self.assertEqual([part["promised"] for part in file["parts"]], lengths)
        memos = self.plan(sample("p2"), "--clip", "0003K7")["chapters"]
        self.assertEqual(memos[0]["text"], "Interview Ms Ångström, 1st half")
        self.assertEqual(memos[2]["text"], "Tove: Same place: lower third from here.")
        told = self.plan(sample("p2"), "--clip", "0001AB", "--title", "T", "--reel", "R", "--timecode",
                         "10:00:00:24", "--one-track")
        self.assertEqual([told[name] for name in ("title", "reel", "timecode", "oneTrack", "date")],
                         ["T", "R", "10:00:00:24", True, "2024-05-10T08:00:00+02:00"])

    def test_pictures_that_are_carried_at_another_rate(self):
        self.add_clip("0001AA", rate="25p", codec="AVC-I_720/50p", memos=[(30, "", "m")])
        xml = clip_xml("0001AA", rate="25p", codec="AVC-I_720/50p",
                       timecode="01:00:00:12").replace("1/25", "1/50")
        self.card.add_raw("0001AA.XML", xml.encode())
        file = self.plan(self.card.path, "--clip", "0001AA")
        self.assertEqual((file["rate"]["num"], file["timecode"], file["interlaced"]),
                         (50, "01:00:00:24", False))

    def test_all_and_playlists(self):
        avchd = sample("avchd") / "PRIVATE"
        files, told = self.planned(sample("p2"), avchd, "--all", status=1, to=self.folder / "out")
        names = self.names(files)
        self.assertEqual(names[11:], [["0012SA", "0013SB", "0014SC"], [], ["00000"], ["00001"],
                                      ["00002"], ["00003"], ["00004", "00005"], ["00006"], ["00007"]])
        lacking = files[12]
        self.assertEqual((lacking["name"], lacking["failure"].split(" (")[0]),
                         ("0015TA", "0015TA: lacks 0001TC on card SMP24E0002"))
        self.assertIn("nqp2: 0015TA: not written (0015TA: lacks 0001TC on card SMP24E0002", told)
        self.assertEqual([name for name, _ in self.lost], ["0017CX.XML:41:8", "00008.CPI"])
        self.assertEqual(len({file["target"] for file in files if "target" in file}), 19)
        self.assertEqual(len(self.planned(sample("p2"), "--all", "--no-take", "-f", "mkv", status=1,
                                          to=self.folder / "out")[0]), 16)
        for name, status, parts, lost in (
                ("00001", 0, [["00004", "00005"]], []),
                ("00002", 1, [["00007"], ["00006"]],
                 [("00002", "25 of its frames are of clips that are not on the card")])):
            files, _ = self.planned(sample("p2"), avchd, "--playlist", name, to=self.folder / "out",
                                    status=status)
            self.assertEqual((self.names(files), self.lost), (parts, lost))

    def test_a_take_is_one_over_all_cards(self):
        a, b, c = self.cards_of_a_take()
        shutil.copytree(b, self.folder / "copy")
        for cards in ((a, b, c), (c, self.folder / "copy", b, a)):
            for clip in SHOT:
                file = self.plan(*cards, "--clip", clip.lower())
                self.assertEqual(self.names([file]), [list(SHOT)])
        self.assertEqual(self.names(self.planned(a, b, self.folder / "copy", c, "--all",
                                                 to=self.folder / "out")[0]), [list(SHOT)])
        self.assertEqual(self.names([self.plan(a, b, "--clip", "0002BB", "--no-take")]), [["0002BB"]])
        to = ("-o", self.folder / "x.mov")
        self.assert_each_fails(1, [
            (("rewrap", a, b, "--clip", "0001AA", *to), "0001AA: lacks 0003CC on card SN2 (give"),
            (("rewrap", c, a, "--clip", "0001AA", *to), "0001AA: lacks 0002BB on card SN1 (give"),
            (("rewrap", a, b, "--clip", "0009ZZ", *to), "0009ZZ: is a clip of none of the cards"),
            (("rewrap", a, "--clip", "0009ZZ", *to), f"0009ZZ: is no clip of {a}")])
        self.add_clip("0003CC", **segment(2), audio=3)
        self.assert_each_fails(1, [
            (("rewrap", a, b, c, "--clip", "0001AA", *to),
             "0003CC: has another number of sound tracks than 0001AA (3 and 2)")])

    def test_essence_that_is_not_whole_is_named(self):
        self.add_clip("0001AA", duration=10)
        contents = self.card.path / "CONTENTS"
        video, sound = contents / "VIDEO" / "0001AA.MXF", contents / "AUDIO" / "0001AA01.MXF"
        xml = clip_xml("0001AA").replace("</AspectRatio>", "</AspectRatio><VideoIndex>"
                                         "<StartByteOffset>0</StartByteOffset><DataSize>900"
                                         "</DataSize></VideoIndex>")
        arguments = ("rewrap", self.card.path, "--clip", "0001AA", "-o", self.folder / "x.mov")
        for path, spoil, line in (
                (video, lambda: self.card.add_raw("0001AA.XML", xml.encode()),
                 "is cut off (1 of 900 bytes)"), (video, video.unlink, "is missing"),
                (sound, lambda: (self.add_clip("0001AA"), os.truncate(sound, 0)), "is empty"),
                (sound, sound.unlink, "is missing"),
                (video, lambda: os.truncate(video, 0), "is empty")):
            spoil()
            self.assert_each_fails(1, [(arguments, f"{path}: {line}\n")])
        self.add_clip("0001AA", audio=0)
        shutil.copy(contents / "AUDIO" / "0001AA00.MXF", contents / "AUDIO" / "0001AA02.MXF")
        self.assert_each_fails(1, [(arguments, "0001AA: has sound for channel 3 (and none for ")])

    def test_cuts_of_edit_lists(self):
        a, b = self.card.path, self.folder / "other"
        self.add_clip("0001AA", duration=100, codec="AVC-I_1080/50i", memos=[(12, "P", "m")])
        self.add_clip("0004LL", duration=50, codec="AVC-LongG422")
        self.card.add_file("AVCLIP", "0004LL.MXF")
        (self.card.path / "CONTENTS" / "VIDEO" / "0004LL.MXF").unlink()
        self.add_clip("0005RR")
        self.card.add_raw("0005RR.XML", clip_xml("0005RR").replace("1/25", "1001/30000").encode())
        self.card = Card(b)
        self.add_clip("0002BB", duration=80, codec="AVC-I_1080/50i")
        self.card = Card(self.folder / "third")
        self.card.path, self.card.clips = a, a / "CONTENTS" / "CLIP"
        event, most = self.event, 2**31 - 1
        said = {}
        for case, (events, options, outcome) in enumerate((
                ((event(0, 5, 10), event(5, 8, 0, "0002BB")), (), [("0001AA", 10, 5), ("0002BB", 0, 8)]),
                ((event(5, 8), event(0, 5, 92)), (), [("0001AA", 92, 5), ("0001AA", 0, 8)]),
                ((event(0, 100),), (), [("0001AA", 0, 100)]),
                ((event(3, 5), event(9, 5)), ("--close-gaps",), [("0001AA", 0, 5), ("0001AA", 0, 5)]),
                ((event(0, 50, 0, "0004LL"),), (), [("0004LL", 0, 50)]),
                ((event(0, 5), event(6, 5)), (), "event 2: begins 1 frame behind the one before it"),
                ((event(1, 5),), (), "event 1: begins 1 frame behind"),
                ((event(4, 5), event(0, 5)), ("--close-gaps",), "event 1: begins before the one"),
                ((event(-1, 5),), (), "event 1: begins before the list does"),
                ((event(0, 5), event(5, 0)), (), "event 2: has a length of 0 frames"),
                ((event(0, -5),), (), "event 1: has a length of -5 frames"),
                ((event(0, 11, 90),), (), "event 1: takes frames 90 to 100 of 0001AA (which has 100)"),
                ((event(0, 5, -1),), (), "event 1: takes frames -1 to 3 of 0001AA"),
                ((event(0, most, most),), (), "event 1: takes frames 2147483647 to 4294967293 of "),
                ((event(0, 9, 0, "0004LL"),), (), "event 1: cuts 0004LL, whose pictures need others"),
                ((event(0, 9, 0, "0005RR"),), (), "event 1: 0005RR has another rate than the list"),
                ((event(0, 9, 0, "0009ZZ"),), (), "event 1: 0009ZZ of card AB1 is on none of the"),
                ((event(0, 9, 0, "Z" * 10000),), (), "event 1: ZZZZZZZZZ"),
                ((event(0, 9, channels="1 0"),), (), [("0001AA", 0, 9)]),
                ((event(0, 9, channels="7"),), (), "event 1: wants channel 8 of 0001AA on output 1"),
                ((event(0, 9, channels="0 1 0"),), (), [("0001AA", 0, 9)]),
                ((event(0, 9, channels="0 1 0"), event(9, 5)), (),
                 "event 2: has another number of sound tracks than 0001AA (2 and 3)"),
                ((event(0, 9, more="<AudioInOffset>2</AudioInOffset>"),), (),
                 "event 1: has sound that begins or ends elsewhere"),
                ((event(0, 9, more="<AudioLevel>1 0.25</AudioLevel>"),), (),
                 "event 1: has sound at a level of 0.25"),
                ((event(0, 9, channels="1"),), (), [("0001AA", 0, 9)]),
                ((event(0, 9, channels="0 2"),), (), "event 1: wants channel 3 of 0001AA on output 2"),
                ((event(0, 9, channels="one"),), (), 'event 1: is not understood (Source/Channel "one")'),
                ((event(0, 9, channels="0 1 0 1 0"),), (), "event 1: is not understood (Source/Channel"),
                ((event(0, 5), event(5, 9, more="<AudioLevel>x</AudioLevel>")), (),
                 'event 2: is not understood (AudioLevel "x")'),
                ((event(0, 9, more="<AudioLevel> 1.0 +1 1e0 </AudioLevel>"),), (), [("0001AA", 0, 9)]),
                ((event("x", 9),), (), 'event 1: is not understood (Offset "x")'))):
            with self.subTest(case):
                self.add_list("P001AB", *events, start="01:00:00:00")
                arguments = (a, b, "--edl", "p001ab", *options)
                if isinstance(outcome, str):
                    self.assert_each_fails(1, [
                        (("rewrap", *arguments, "-o", self.folder / "x.mov"), f"P001AB: {outcome}")])
                    continue
                file = self.plan(*arguments)
                self.assertEqual([(part["ClipName"], part["first"], part["frames"])
                                  for part in file["parts"]], outcome)
                said[case] = file
        self.assertEqual((said[0]["timecode"], said[0]["title"]), ("01:00:00:00", "P001AB"))
        self.assertEqual(said[0]["chapters"], [{"frame": 0, "text": "P001AB"},
                                               {"frame": 2, "text": "P: m"}])
        self.assertEqual([Path(path).name for path in said[18]["parts"][0]["sounds"]],
                         ["0001AA01.MXF", "0001AA00.MXF"])
        self.assertEqual(len(said[20]["sound"]), 3)
        self.add_list("P001AB", event(0, 5), unit="1/7")
        to = ("-o", self.folder / "x.mov")
        self.assert_each_fails(1, [
            (("rewrap", a, "--edl", "P001AB", *to), "P001AB: has a rate that no camera has"),
            (("rewrap", a, "--edl", "P009", *to), "P009: is no edit list of the card"),
            (("rewrap", a, "--playlist", "P001AB", "--to", b), "P001AB: is no playlist of the card")])
        shutil.copytree(a / "CONTENTS" / "EDITLIST", b / "CONTENTS" / "EDITLIST")
        self.assert_each_fails(1, [(("rewrap", a, b, "--edl", "P001AB", *to),
                                    "P001AB: is the edit list of several cards")])

    def test_what_strangers_write_is_bounded_and_told(self):
        evil = "\x7f</x>\t\n\u202e" + "z" * 10000
        self.add_clip("0001AA", duration=5000, title=evil,
                      memos=[(i, "P" * 2000, evil) for i in range(500)] + [
                          (i % 5000, "", "m") for i in range(10000)] + [(-1, "", ""), (9999, "", "")])
        (file,), told = self.planned(self.card.path, "--clip", "0001AA", "--reel", "R" * 5000)
        self.assertEqual(told.splitlines(), [
            "nqp2: 0001AA: a memo is cut to 1000 bytes",
            "nqp2: 0001AA: has more than 9999 memos: the others are left out",
            "nqp2: 0001AA: a title is cut to 1000 bytes", "nqp2: 0001AA: a reel is cut to 1000 bytes"])
        texts = [file["title"], file["reel"], *(each["text"] for each in file["chapters"])]
        self.assertEqual(len(texts), 10001)
        self.assertLess(max(map(len, texts)), 1010)
        self.assertFalse(any("\n" in text for text in texts))
        self.add_list("MANY", *(self.event(i, 1, i % 5000) for i in range(10000)))
        self.assertEqual(len(self.planned(self.card.path, "--edl", "MANY")[0][0]["parts"]), 10000)
        self.add_list("MANY", *(self.event(i, 1, i % 5000) for i in range(10001)))
        self.assert_each_fails(1, [(("rewrap", self.card.path, "--edl", "MANY", "-o", "x.mov"),
                                    "MANY: has more parts than a file is made of (10000 at most)")])
        self.add_list("MANY", *(self.event(i, 1) for i in range(70000)))
        result = run("rewrap", self.card.path, "--edl", "MANY", "-o", self.folder / "x.mov")
        self.assertEqual((result.returncode, result.stderr.count("\n")), (1, 2))
        self.assertRegex(result.stderr, r"MANY.XML: skipped \(.*\nnqp2: MANY: is no edit list")

    def test_refusals_are_in_the_document_too(self):
        self.add_clip("0001AA", duration=10)
        self.add_clip("0002DV", duration=10, codec="DV25_420")
        self.add_list("P001AB", self.event(0, 9, more="<AudioLevel>0.25</AudioLevel>"))
        card = self.card.path
        for arguments, name, failure in (
                (("--clip", "0009ZZ"), "0009ZZ", "0009ZZ: is no clip of "),
                (("--edl", "P001AB"), "P001AB", "P001AB: event 1: has sound at a level of 0.25"),
                (("--clip", "0002DV", "-f", "mp4"), "0002DV", "DV is not put into MP4 files; this "
                 "recording can be put into MOV, MXF and MKV.")):
            (file,), told = self.planned(card, *arguments, status=1)
            self.assertEqual((file["name"], file["state"]), (name, "failed"))
            self.assertTrue(file["failure"].startswith(failure), file["failure"])
            self.assertIn(failure, told)
        self.assertEqual(self.planned(card, "--playlist", "P9", status=1, to=card / "x")[0], [])
        self.assertEqual([name for name, _ in self.lost], ["P9"])
        (self.folder / "file").touch()
        result = run("rewrap", card, "--all", "--to", self.folder / "file" / "x", "--json")
        self.assertEqual((result.returncode, [file["state"] for file in
                                              json.loads(result.stdout)["files"]]), (1, ["left"] * 2))

    def test_targets(self):
        self.add_clip("0001AA")
        card = self.card.path
        clip = ("rewrap", card, "--clip", "0001AA")
        (self.folder / "new").mkdir()
        (self.folder / "dangling.mov").symlink_to("nowhere")
        (self.folder / "new" / "0001AA.mxf").touch()
        self.assert_each_fails(1, [
            ((*clip, "-f", "mov", "-o", self.folder / "new"), f"{self.folder}/new: is there already"),
            ((*clip, "-o", "a:\\b.mov"), "a:\\b.mov: is no name for a file on every system"),
            ((*clip, "-o", self.folder / "dangling.mov"), f"{self.folder}/dangling.mov: is there"),
            (("rewrap", card, "--all", "--to", self.folder / "new", "-f", "mxf"),
             f"{self.folder}/new/0001AA.mxf: is there already")])
        usage = "rewrap usage: "
        self.assert_each_fails(2, [
            ((*clip, "-o", "x.avi"), "x.avi: its suffix names no form (give -f mov, mxf, mkv, mp4)"),
            ((*clip, "-o", "x"), "x: its suffix names no form"), (clip, usage + "-o is required"),
            ((*clip, "--to", "x"), usage + "-o is required"),
            ((*clip, "--all", "-o", "x.mov"), usage + "one of --clip, --edl"),
            (("rewrap", card, "--all", "-o", "x.mov"), usage + "--to is required"),
            (("rewrap", card, "--all", "--to", "x", "--title", "T"), usage + "--title and"),
            ((*clip, "-o", "x.mov", "--timecode", "25:00:00:00"), "--timecode 25:00:00:00: is no"),
            ((*clip, "-o", "x.mov", "--timecode", "01:00:00;00"), "--timecode 01:00:00;00: is no")])
        other = Card(self.folder / "other")
        self.card = other
        for name in ("0001aa", "a;b'*", "-x"):
            self.add_clip(name)
        files, _ = self.planned(card, other.path, "--all", to=self.folder / "out")
        self.assertEqual([Path(file["target"]).name for file in files],
                         ["0001AA.mov", "_-x.mov", "0001aa-2.mov", "a;b'_.mov"])


@unittest.skipUnless(HAS_WORKER and shutil.which("ffmpeg") and shutil.which("ffprobe"),
                     "the worker is not built, or ffmpeg is not installed")
class OutputTest(CardTest):
    """Files as other programs read them."""

    def read(self, file, is_h264, tracks):
        """Digests of the picture's units, of H.264 without what containers keep elsewhere, and the
        samples of each track of sound. Everything is decoded, which has to go without an error."""
        filters = ["-bsf:v", "h264_mp4toannexb,filter_units=remove_types=6-9"] if is_h264 else []
        units, *sounds = (self.folder / f"read{number}" for number in range(tracks + 1))
        has_picture = is_h264 is not None
        picture = ["-map", "0:v:0", "-c", "copy", *filters, "-f", "framemd5", units, "-map", "0:v:0",
                   "-f", "null", "-"] if has_picture else []
        for track, path in enumerate(sounds):
            picture += ["-map", f"0:a:{track}", "-c:a", "pcm_s32le", "-f", "s32le", path]
        subprocess.run(["ffmpeg", "-v", "error", "-xerror", "-y", "-i", file, *picture], timeout=60,
                       check=True)
        return ([line.split(",")[5] for line in units.read_text().splitlines() if line[0] != "#"]
                if has_picture else [], [path.read_bytes() for path in sounds])

    @functools.cache
    def read_part(self, video, is_h264, tracks, *sounds):
        units, samples = self.read(video, is_h264, tracks)
        return units, samples or [self.read(path, None, 1)[1][0] for path in sounds]

    def facts(self, file):
        return json.loads(subprocess.run(
            ["ffprobe", "-v", "error", "-of", "json", "-show_format", "-show_streams",
             "-show_chapters", file], capture_output=True, timeout=60, check=True).stdout)

    def assert_holds(self, file, planned):
        """The units and samples of the parts, in their order, and nothing else."""
        is_h264, tracks = not planned["codec"].startswith("DV"), len(planned["sound"])
        units, sounds = [], [b""] * tracks
        size = Fraction(48000 * planned["rate"]["den"], planned["rate"]["num"])
        for part in self.parts_of(planned):
            first, end = part["first"], part["first"] + part["frames"]
            own, samples = self.read_part(part["video"], is_h264, 0 if part["sounds"] else tracks,
                                          *part["sounds"])
            is_whole = part["frames"] == part["promised"]
            units += own if is_whole else own[first:end]
            for track, each in enumerate(samples):
                sounds[track] += each if is_whole else each[4 * round(first * size):
                                                           4 * round(end * size)]
        found, samples = self.read(file, is_h264, tracks)
        self.assertEqual(found, units)
        for track, (own, wanted) in enumerate(zip(samples, sounds, strict=True)):
            self.assertTrue(own.startswith(wanted) or wanted.startswith(own), track)
            more = len(own) - len(wanted)
            self.assertTrue(more == 0 or file.suffix == ".mxf" and abs(more) <= 4 * size, more)

    def parts_of(self, planned):
        if planned["join"] == "frames":
            return planned["parts"]
        whole = self.folder / f"{planned['name']}.mts"
        whole.write_bytes(b"".join(Path(part["video"]).read_bytes() for part in planned["parts"]))
        return [{**planned["parts"][0], "video": str(whole)}]

    def written(self, *arguments, status=0):
        result = run("rewrap", *arguments, "--json")
        self.assertEqual(result.returncode, status, result.stderr)
        document = json.loads(result.stdout)
        validator("rewrap").validate(document)
        return [file for file in document["files"] if file["state"] == "written"]

    def test_a_take_over_two_cards(self):
        a = copied(sample("p2"), self.folder / "a", "0012SA", "0014SC")
        b = copied(sample("p2"), self.folder / "b", "0013SB")
        for form, tag in (("mov", "ai55"), ("mxf", None), ("mkv", None)):
            target = self.folder / f"take.{form}"
            file, = self.written(b, a, "--clip", "0013SB", "-o", target)
            self.assertEqual(file["written"], {"bytes": target.stat().st_size, "frames": 30,
                                               "samples": 57600, "soundTracks": 4})
            self.assert_holds(target, file)
            facts = self.facts(target)
            picture = facts["streams"][0]
            texts = facts["format"]["tags"] | picture.get("tags", {})
            self.assertEqual({key.lower(): value for key, value in texts.items()}["timecode"],
                             "06:00:00:00")
            self.assertIn("Ballonfahrt", texts.values())
            self.assertEqual(picture["codec_tag_string"], tag or picture["codec_tag_string"])
            self.assertEqual((picture["r_frame_rate"], float(facts["format"]["duration"])),
                             ("25/1", 1.2))
        before = target.read_bytes()
        self.assert_each_fails(1, [(("rewrap", a, b, "--clip", "0012SA", "-o", target),
                                    f"{target}: is there already")])
        self.assertEqual(target.read_bytes(), before)

    def test_every_recording_of_the_sample_cards(self):
        p2, avchd = sample("p2"), sample("avchd") / "PRIVATE"
        for form, cards, count in (("mov", (p2, avchd), 19), ("mxf", (p2,), 11),
                                   ("mkv", (avchd,), 7), ("mp4", (avchd,), 6)):
            files = self.written(*cards, "--all", "-f", form, "--to", self.folder / form, status=1)
            self.assertEqual(len(files), count)
            self.assertEqual(sorted(path.name for path in (self.folder / form).iterdir()),
                             sorted(Path(file["target"]).name for file in files))
            for file in files:
                with self.subTest(file["target"]):
                    self.assert_holds(Path(file["target"]), file)

    def test_cuts(self):
        target = self.folder / "cut.mov"
        file, = self.written(sample("p2"), "--edl", "P002AB", "-o", target)
        self.assertEqual(file["written"]["frames"], 9)
        self.assert_holds(target, file)
        self.assertEqual(self.facts(target)["streams"][0]["codec_tag_string"], "dvh6")

    def test_memos_and_tracks(self):
        target = self.folder / "x.mov"
        self.written(sample("p2"), "--clip", "0003K7", "--one-track", "--reel", "R7", "-o", target)
        facts = self.facts(target)
        self.assertEqual([(chapter["tags"]["title"], round(float(chapter["start_time"]) * 29.97))
                          for chapter in facts["chapters"]][:2],
                         [("Interview Ms Ångström, 1st half", 0),
                          ("Rosa: Names her teacher here: good opening.; "
                           "Tove: Same place: lower third from here.", 6)])
        self.assertEqual([each["channels"] for each in facts["streams"]
                          if each["codec_type"] == "audio"], [4])
        self.assertIn("R7", [each["tags"].get("reel_name") for each in facts["streams"]])

    def test_essence_that_is_cut_off_leaves_no_file(self):
        card = copied(sample("p2"), self.folder / "a", "0001AB", "0002ab", "0004QX")
        video = card / "CONTENTS" / "VIDEO" / "0001AB.MXF"
        text = card / "CONTENTS" / "CLIP" / "0001AB.XML"  # which promises no bytes any more
        text.write_bytes(re.sub(b"<DataSize>.*?</DataSize>", b"", text.read_bytes()))
        os.truncate(video, video.stat().st_size * 2 // 3)
        to = self.folder / "out"
        result = run("rewrap", card, "--all", "--to", to)
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stderr, "nqp2: 0001AB: not written \\(.*0001AB.*\n"
                                        "(.*\n)*nqp2: 2 of 3 files written; failed: 0001AB\n")
        self.assertEqual(sorted(path.name for path in to.iterdir()), ["0002ab.mov", "0004QX.mov"])

    def test_a_signal_or_a_lost_worker_ends_the_run(self):
        card = copied(sample("p2"), self.folder / "a", "0001AB", "0003K7", "0011C2")
        for number, status in ((signal.SIGINT, 1), (signal.SIGTERM, 1), (None, 3)):
            to = self.folder / f"out{number}"
            process = subprocess.Popen(
                command_line("rewrap", card, "--all", "--json", "--to", to),
                stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
            self.addCleanup(process.kill)
            wait_for(lambda: process.poll() is not None or list(to.glob("*")))
            if number:
                process.send_signal(number)
            else:
                os.kill(workers_of(process)[0], signal.SIGKILL)
            shown, told = process.communicate(timeout=60)
            self.assertEqual(process.returncode, status, told)
            document = json.loads(shown)
            validator("rewrap").validate(document)
            names = {file["name"] for file in document["files"] if file["state"] == "written"}
            self.assertLess(len(names), 3)
            self.assertIn("not begun: ", told.decode())
            self.assertEqual({path.stem for path in to.iterdir()}, names)

    def test_progress(self):
        told = run("rewrap", sample("avchd") / "PRIVATE", "--playlist", "00001", "--to",
                   self.folder / "out", "--progress", "json").stderr
        lines = [json.loads(line) for line in told.splitlines()]
        for line in lines:
            validator("progress-line").validate(line)
        steps = [line for line in lines if "bytes" in line]
        self.assertEqual({line["phase"] for line in steps}, {"rewrap"})
        self.assertEqual(steps[-1]["bytes"], steps[-1]["totalBytes"])
        self.assertEqual([line["bytes"] for line in steps], sorted(line["bytes"] for line in steps))


if __name__ == "__main__":
    main()
