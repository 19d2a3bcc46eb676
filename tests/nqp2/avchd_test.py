# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""AVCHD cards and camera folders on the command line, our own sample card beside other readers of
the same formats where these are installed (libbluray-bin, ffmpeg)."""

import json
import re
import shutil
import subprocess
import sys
import unittest
from fractions import Fraction
from pathlib import Path

from program import CardTest, main, run

MAKE_CARD = Path(__file__).resolve().parents[2] / "samples" / "make_card.py"
RATES = {"50i": Fraction(25), "25p": Fraction(25), "50p": Fraction(50),
         "29.97p": Fraction(30000, 1001), "59.94p": Fraction(60000, 1001),
         "23.98p": Fraction(24000, 1001)}


class SampleTest(CardTest):
    def make(self, kind):
        folder = self.folder / kind
        subprocess.run([sys.executable, "-B", MAKE_CARD, folder, "--kind", kind], check=True)
        return folder

    def listed(self, *arguments):
        result = run(*arguments, "--json")
        self.assertEqual(result.returncode, 0, result.stderr)
        return json.loads(result.stdout)


class AvchdTest(SampleTest):
    def test_every_clip_is_what_the_sample_maker_recorded(self):
        card = self.make("avchd") / "PRIVATE"
        document = self.listed("clips", card, "--report")
        self.assertEqual(document["kind"], "avchd")
        shown = [(clip["ClipName"], clip["CodecName"], clip["FrameRate"], clip["ActivePixel"],
                  clip["Duration"], clip["StartDate"], clip["StartTimecode"], clip["DropFrame"])
                 for clip in document["clips"]]
        second = 10 * 3600
        self.assertEqual(shown[:-1], [
            ("00000", "AVCHD_1920_1080_50i", "50i", 1920, 50, "2024-05-10T08:00:00",
             second * 25, 0),
            ("00001", "AVCHD_1440_1080_50i", "50i", 1440, 75, "2024-05-10T08:05:30",
             (second + 2) * 25, 0),
            ("00002", "AVCHD_1440_1080_25p", "25p", 1440, 40, "2024-05-10T21:14:09",
             (second + 5) * 25, 0),
            ("00003", "AVCHD_1280_720_50p", "50p", 1280, 100, "2024-05-11T11:30:00",
             600 * 50 + 2 * 24, 0),
            ("00004", "AVCHD_1920_1080_50i", "29.97p", 1920, 60, "2024-05-11T16:20:00",
             (3598 * 30 + 10) - 2 * (59 - 5), 1),
            ("00005", "AVCHD_1920_1080_50i", "29.97p", 1920, 45, "2024-05-11T16:20:02",
             (3600 * 30 + 12) - 2 * (60 - 6), 1),
            ("00006", "AVCHD_1920_1080_25p", "23.98p", 1920, 48, "2024-05-12T19:00:00", 0, 0),
        ])
        self.assertEqual(shown[-1][:5], ("00007", "AVCHD_1280_720_50p", "59.94p", 1280, 120))
        identifiers = [clip["GlobalClipID"] for clip in document["clips"]]
        self.assertEqual(len(set(identifiers)), 3, "two with, six without")
        for clip in document["clips"]:
            self.assertTrue(Path(clip["VideoPath"]).is_file())
        self.assertEqual([Path(file["path"]).name for file in document["skipped"]], ["00008.CPI"])
        self.assertEqual([take["segments"] for take in document["takes"] if take["complete"]],
                         [["00004", "00005"]], "the recording that the camera split")
        self.assertEqual(run("clips", card, "--strict").returncode, 4)

    def test_playlists_carry_their_clips(self):
        card = self.make("avchd") / "PRIVATE"
        edls = self.listed("playlists", card)["edls"]
        self.assertEqual([(edl["Name"], edl["Duration"], edl["EditUnit"], edl["FrameRate"],
                           edl["Codec"]) for edl in edls], [
            ("00000", 265, [1, 25], "50i", "AVCHD_1280_720_50p"),
            ("00001", 105, [1001, 30000], "29.97p", "AVCHD_1920_1080_50i"),
            ("00002", 193, [1001, 60000], "59.94p", "AVCHD_1920_1080_25p")])
        for edl in edls:
            for event in edl["Events"]:
                self.assertEqual(event["Clip"]["ClipName"], event["ClipName"])
                self.assertEqual(event["SourceOut"], event["Clip"]["Duration"])
        self.assertEqual([event["ClipName"] for event in edls[2]["Events"]], ["00007", "00006"])
        table = run("playlists", card)
        self.assertIn("00001       2  0:00:03:15  AVCHD_1920_1080_50i  29.97p  00004 00005\n",
                      table.stdout)
        self.assertEqual(table.stderr, "3 edit lists\n")
        folder = card / "AVCHD" / "BDMV" / "PLAYLIST"
        (folder / "00000.MPL").rename(folder / "00000.mpls")
        many = bytearray((folder / "00001.MPL").read_bytes())
        items = int.from_bytes(many[8:12], "big")
        many[items + 6:items + 8] = (16001).to_bytes(2, "big")
        (folder / "00003.MPL").write_bytes(many)
        (folder / "00001.MPL").write_bytes(b"MPLS")
        self.assertEqual([edl["Name"] for edl in self.listed("playlists", card)["edls"]],
                         ["00000", "00002"])
        result = run("playlists", card, "--strict")
        self.assertEqual(result.returncode, 4)
        self.assertIn("00001.MPL: skipped (no sound playlist", result.stderr)
        self.assertIn("00003.MPL: skipped (too large: it has more than 16000 items)", result.stderr)

    def test_camera_files_that_the_worker_cannot_read_are_no_clips(self):
        folder = self.make("camera")
        document = self.listed("clips", folder, "--report")
        self.assertEqual(document["clips"], [])
        self.assertEqual({Path(file["path"]).name for file in document["skipped"]},
                         {"DV000001.AVI", "P1000001.MOV", "P1000002.MOV"})

    def test_says_where_the_card_is(self):
        sample = self.make("avchd")
        private = sample / "PRIVATE"
        here = "an AVCHD card or camera folder: nqp2 clips and nqp2 playlists read it"
        cases = (
            (["clips", sample], f"no CONTENTS folder (the AVCHD card is one folder below: {private})"),
            (["playlists", sample],
             f"no folder of playlists (the AVCHD card is one folder below: {private})"),
            (["clips", private / "AVCHD" / "BDMV"],
             f"no CONTENTS folder (the AVCHD card is the folder above: {private / 'AVCHD'})"),
            (["format", private], f"no CONTENTS folder ({here})"),
            (["playlists", self.card.path], "no folder of playlists (not an AVCHD card)"),
        )
        for arguments, problem in cases:
            with self.subTest(arguments):
                self.assert_fails(run(*arguments), 1, f"nqp2: {arguments[1]}: {problem}")


class AgreementTest(SampleTest):
    """The same card through independent readers."""

    @unittest.skipUnless(shutil.which("bd_list_titles"), "libbluray-bin is not installed")
    def test_playlists_as_libbluray_reads_them(self):
        card = self.make("avchd") / "PRIVATE"
        result = subprocess.run(["bd_list_titles", card / "AVCHD", "-a"], capture_output=True,
                                text=True, check=True)
        theirs = {name: (int(clips), 60 * int(minutes) + int(seconds))
                  for minutes, seconds, clips, name in re.findall(
                      r"duration: 00:(\d+):(\d+) .*clips: +(\d+) \(playlist: (\d+)\.mpls\)",
                      result.stdout)}
        ours = {}
        for edl in self.listed("playlists", card)["edls"]:
            seconds = sum(event["Duration"] / RATES[event["Clip"]["FrameRate"]]
                          for event in edl["Events"])
            ours[edl["Name"]] = (len(edl["Events"]), int(seconds))
        # The clip that is missing counts a second there and is left out here.
        clips, seconds = theirs["00002"]
        theirs["00002"] = (clips - 1, seconds - 1)
        self.assertEqual(ours, theirs)

    @unittest.skipUnless(shutil.which("ffprobe"), "ffmpeg is not installed")
    def test_streams_as_ffprobe_decodes_them(self):
        clips = self.listed("clips", self.make("avchd") / "PRIVATE")["clips"]
        for clip in clips:
            result = subprocess.run(
                ["ffprobe", "-v", "error", "-count_frames", "-of", "json", "-show_streams",
                 clip["VideoPath"]], capture_output=True, text=True, check=True)
            self.assertEqual(result.stderr, "", "decodes without complaint")
            streams = {each["codec_type"]: each for each in json.loads(result.stdout)["streams"]}
            video = streams["video"]
            with self.subTest(clip["ClipName"]):
                rate = Fraction(video["avg_frame_rate"])
                self.assertEqual((video["width"], video["height"]),
                                 (clip["ActivePixel"], clip["ActiveLine"]))
                self.assertEqual(video["display_aspect_ratio"], clip["AspectRatio"])
                self.assertEqual(int(video["nb_read_frames"]), clip["Duration"])
                self.assertEqual(rate, RATES[clip["FrameRate"]])
                self.assertEqual(bin(clip["EssenceMask"]).count("1") - 1,
                                 streams.get("audio", {"channels": 0})["channels"])


if __name__ == "__main__":
    main()
