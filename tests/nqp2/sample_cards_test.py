# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Whole cards: our own sample cards, and the same through other readers of the formats (ffmpeg and,
where it is installed, libbluray-bin)."""

import json
import re
import shutil
import subprocess
import sys
import unittest
from datetime import datetime, timedelta
from fractions import Fraction
from pathlib import Path

from program import CardTest, PROGRAM, SOURCES, main, run, sample

RATES = {"50i": Fraction(25), "25p": Fraction(25), "50p": Fraction(50),
         "29.97p": Fraction(30000, 1001), "59.94p": Fraction(60000, 1001),
         "23.98p": Fraction(24000, 1001)}
# Name, codec, rate, width, length, start, first timecode in frames, drop frame of each AVCHD clip.
AVCHD_CLIPS = (
    ("00000", "AVCHD_1920_1080_50i", "50i", 1920, 50, "2024-05-10T08:00:00", 900000, 0),
    ("00001", "AVCHD_1440_1080_50i", "50i", 1440, 50, "2024-05-10T08:05:30", 900050, 0),
    ("00002", "AVCHD_1440_1080_25p", "25p", 1440, 40, "2024-05-10T21:14:09", 900100, 0),
    ("00003", "AVCHD_1280_720_50p", "50p", 1280, 50, "2024-05-11T11:30:00", 30048, 0),
    ("00004", "AVCHD_1920_1080_50i", "29.97p", 1920, 60, "2024-05-11T16:20:00", 107842, 1),
    ("00005", "AVCHD_1920_1080_50i", "29.97p", 1920, 45, "2024-05-11T16:20:02", 107902, 1),
    ("00006", "AVCHD_1920_1080_25p", "23.98p", 1920, 24, "2024-05-12T19:00:00", 0, 0),
)
# What examples/card_totals.py makes of the P2 card: day, time and clips.
DAYS = [("2024-05-10", "0:00:03", 2), ("2024-05-11", "0:00:02", 2), ("2024-05-12", "0:00:01", 2),
        ("2024-05-13", "0:00:02", 2), ("2024-05-14", "0:00:01", 1), ("2024-05-15", "0:00:01", 1),
        ("2024-05-16", "0:00:00", 1), ("2024-05-17", "0:00:02", 5)]
PLAYLISTS = (("00000", 190, [1, 25], "50i", "AVCHD_1280_720_50p"),
             ("00001", 105, [1001, 30000], "29.97p", "AVCHD_1920_1080_50i"),
             ("00002", 109, [1001, 60000], "59.94p", "AVCHD_1920_1080_25p"))


def fields(record, *names):
    return tuple(record[name] for name in names)


class P2Test(CardTest):
    def setUp(self):
        super().setUp()
        self.sample = sample()

    def test_every_sound_clip_is_listed_and_the_rest_reported(self):
        result = run("clips", self.sample, "--json", "--report", "--strict")
        document = json.loads(result.stdout)
        files = {path.stem for path in (self.sample / "CONTENTS" / "CLIP").iterdir()}
        skipped = {Path(file["path"]).stem for file in document["skipped"]}
        self.assertEqual((result.returncode, skipped), (4, {"0017CX", "._0001AB"}))
        self.assertEqual({clip["ClipName"] for clip in document["clips"]}, files - skipped)
        self.assertEqual(sorted((len(take["segments"]), take["complete"], take["missing"])
                                for take in document["takes"]),
                         [(2, False, [{"ClipName": "0001TC", "P2SerialNo": "SMP24E0002"}]),
                          (3, True, [])])
        for clip in document["clips"]:
            # In the letters in which they are on the disk.
            self.assertTrue(Path(clip["XmlPath"]).is_file() and Path(clip["IconPath"]).is_file())

    def test_edit_lists_and_ingest_list(self):
        clips = {clip["ClipName"]: clip for clip in self.told("clips", self.sample)["clips"]}
        edls = self.told("edl", "list", self.sample)["edls"]
        self.assertEqual([(edl["Name"], len(edl["Events"])) for edl in edls],
                         [("P001AB", 4), ("P002AB", 2)])
        self.assertEqual(edls[0]["IconPath"], f"{self.sample}/CONTENTS/EDITLIST/P001AB/ICON.BMP")
        for event in edls[0]["Events"] + edls[1]["Events"]:
            clip = clips[event["ClipName"]]
            self.assertEqual(event["GlobalClipGuid"], clip["GlobalClipGuid"])
            self.assertLess(event["SourceOut"], clip["Duration"])
        marks = self.told("ingest", "list", self.sample)["clips"]
        self.assertEqual([mark["ClipName"] for mark in marks], ["0012SA", "0013SB", "0007H4"])
        self.assertEqual(marks[0]["segments"], [[1, 4], [7, 9]])

    def test_the_example_adds_up_each_day(self):
        example = [sys.executable, "-B", SOURCES / "examples" / "card_totals.py", "--nqp2", PROGRAM]
        result = subprocess.run([*example, self.sample], capture_output=True, text=True, check=True)
        days = [line.split() for line in result.stdout.splitlines()]
        self.assertEqual([(day, time, int(clips)) for day, time, clips, *_ in days], DAYS)
        self.assertEqual({card for *_, card in days}, {str(self.sample)})
        result = subprocess.run([*example, self.folder / "none"], capture_output=True, text=True,
                                check=False)
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        for program in ("no-such-program", "true", "echo"):
            result = subprocess.run([*example[:-1], program, self.sample], capture_output=True,
                                    text=True, check=False)
            self.assertEqual((result.returncode, result.stderr.count("\n")), (1, 1), result.stderr)


class AvchdTest(CardTest):
    def setUp(self):
        super().setUp()
        self.sample = sample("avchd")
        self.private = self.sample / "PRIVATE"

    def test_every_clip_is_what_the_sample_maker_recorded(self):
        document = self.told("clips", self.private, "--report")
        self.assertEqual(document["kind"], "avchd")
        found = [fields(clip, "ClipName", "CodecName", "FrameRate", "ActivePixel", "Duration",
                        "StartDate", "StartTimecode", "DropFrame") for clip in document["clips"]]
        self.assertEqual(tuple(found[:-1]), AVCHD_CLIPS)
        self.assertEqual(found[-1][:5], ("00007", "AVCHD_1280_720_50p", "59.94p", 1280, 60))
        for clip, row in zip(document["clips"], AVCHD_CLIPS):
            self.assertEqual(clip["start"], row[5] + "+02:00")
            self.assertEqual(datetime.fromisoformat(clip["end"]) -
                             datetime.fromisoformat(clip["start"]),
                             timedelta(seconds=int(row[4] / RATES[row[2]])))
        self.assertEqual([[name in clip for name in ("start", "end", "timecode")]
                          for clip in document["clips"][-2:]], [[True, True, False], [False] * 3],
                         "what the card does not tell is not made up")
        identifiers = {clip["GlobalClipID"] for clip in document["clips"]}
        self.assertEqual(len(identifiers), 3, "two with, six without")
        self.assertTrue(all(Path(clip["VideoPath"]).is_file() for clip in document["clips"]))
        self.assertEqual([Path(file["path"]).name for file in document["skipped"]], ["00008.CPI"])
        self.assertEqual([take["segments"] for take in document["takes"] if take["complete"]],
                         [["00004", "00005"]], "the recording that the camera split")
        self.assertEqual(run("clips", self.private, "--strict").returncode, 4)

    def test_playlists_carry_their_clips(self):
        edls = self.told("playlists", self.private)["edls"]
        self.assertEqual(tuple(fields(edl, "Name", "Duration", "EditUnit", "FrameRate", "Codec")
                               for edl in edls), PLAYLISTS)
        events = [event for edl in edls for event in edl["Events"]]
        for event in events:
            if "Clip" in event:
                self.assertEqual(event["Clip"]["ClipName"], event["ClipName"])
                self.assertEqual(event["SourceOut"], event["Clip"]["Duration"])
        self.assertEqual([(event["ClipName"], event["Duration"]) for event in events
                          if "Clip" not in event], [("00099", 25)])
        table = run("playlists", self.private, "--strict")
        self.assertIn("00001       2  0:00:03:15  AVCHD_1920_1080_50i  29.97p  00004 00005\n",
                      table.stdout)
        self.assertIn("00007 00099 (missing) 00006\n", table.stdout)
        self.assertRegex(table.stderr, "^3 edit lists\nnqp2: .*/00002.MPL: clips that are missing or "
                         "cannot be read: 00099\n$")
        self.assertEqual(table.returncode, 4)
        otio = json.loads(run("timeline", self.private, "00002", "-o", "-").stdout)
        picture = otio["tracks"]["children"][0]["children"]
        self.assertEqual([(each["name"], each["source_range"]["duration"]["value"])
                          for each in picture], [("00007", 60), ("00099", 25), ("00006", 24)])
        self.assertIn("MissingReference", json.dumps(picture[1]["media_references"]))
        self.assertIn("00002: 00099 is not on this card: kept as missing (event 2)",
                      run("timeline", self.private, "-o", "-", "00002").stderr)
        page = run("report", self.private, "-o", "-").stdout
        self.assertIn("00099, from its frame 0, 25 frames", page)
        self.assertIn("1 playlist with clips missing", page)

    def test_enters_the_card_from_any_folder_that_leads_to_it(self):
        private = self.private
        avchd = private / "AVCHD"
        for command in ("clips", "playlists"):
            clips = run(command, private).stdout
            for path, card in ((self.sample, private), (avchd / "BDMV", avchd),
                               (avchd / "BDMV" / "STREAM", avchd)):
                result = run(command, path)
                self.assertEqual((result.returncode, result.stdout), (0, clips))
                self.assertIn(f"nqp2: {path}: took the card at {card}\n", result.stderr)
            self.assertNotIn("took", run(command, avchd).stderr)
        self.assertIn("AVCHD_1280_720_50p", self.shown("info", private))
        self.assertGreater(self.told("space", private)["FreeBytes"], 0)
        self.assertEqual(self.told("clip", self.sample, "00004")["Duration"], 60)
        self.assert_fails(run("clip", private, "0004"), 1,
                          f"nqp2: {private}: no clip 0004 (did you mean 00004?)")
        kind = "an AVCHD card or camera folder"
        readers = "nqp2 clips and nqp2 playlists read it"
        self.assert_each_fails(1, [
            ((command, path), f"{path}: {problem}\n") for command, path, problem in (
                ("free-name", private, f"no CONTENTS folder ({kind}: {readers})"),
                ("free-name", self.sample, f"no CONTENTS folder ({kind} is at {private}: {readers})"),
                ("playlists", self.card.path, "no folder of playlists (not an AVCHD card)"))])

    @unittest.skipUnless(shutil.which("bd_list_titles"), "libbluray-bin is not installed")
    def test_playlists_as_libbluray_reads_them(self):
        result = subprocess.run(["bd_list_titles", self.private / "AVCHD", "-a"],
                                capture_output=True, text=True, check=True)
        theirs = {name: (int(clips), 60 * int(minutes) + int(seconds))
                  for minutes, seconds, clips, name in re.findall(
                      r"duration: 00:(\d+):(\d+) .*clips: +(\d+) \(playlist: (\d+)\.mpls\)",
                      result.stdout)}
        ours = {edl["Name"]: (len(edl["Events"]), int(sum(
            event["Duration"] / RATES[event.get("Clip", {"FrameRate": "50i"})["FrameRate"]]
            for event in edl["Events"]))) for edl in self.told("playlists", self.private)["edls"]}
        self.assertEqual(ours, theirs)

    def test_the_worker_describes_streams_as_the_card_does(self):
        for clip in self.told("clips", self.private)["clips"]:
            told = self.told("probe", clip["VideoPath"])
            same = ("Duration", "ActivePixel", "ActiveLine", "AspectRatio")
            self.assertEqual(fields(told, *same), fields(clip, *same), clip["ClipName"])
            self.assertAlmostEqual(told["FramesPerSecond"], float(RATES[clip["FrameRate"]]), delta=0.001)

    def test_streams_as_ffprobe_decodes_them(self):
        for clip in self.told("clips", self.private)["clips"]:
            result = subprocess.run(
                ["ffprobe", "-v", "error", "-count_frames", "-of", "json", "-show_streams",
                 clip["VideoPath"]], capture_output=True, text=True, check=True)
            streams = {each["codec_type"]: each for each in json.loads(result.stdout)["streams"]}
            video = streams["video"]
            theirs = (result.stderr, video["width"], video["height"], video["display_aspect_ratio"],
                      int(video["nb_read_frames"]), Fraction(video["avg_frame_rate"]),
                      streams.get("audio", {"channels": 0})["channels"])
            self.assertEqual(theirs, ("", *fields(clip, "ActivePixel", "ActiveLine", "AspectRatio",
                                                  "Duration"), RATES[clip["FrameRate"]],
                                      bin(clip["EssenceMask"]).count("1") - 1), clip["ClipName"])


if __name__ == "__main__":
    main()
