# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Lists whole cards: our own sample card, and cards of other writers where they are at hand."""

import json
import subprocess
import sys
from pathlib import Path

from program import CardTest, main, run

SOURCES = Path(__file__).resolve().parents[2]
MAKE_CARD = SOURCES / "samples" / "make_card.py"


def listed(card, *options):
    result = run("clips", card, "--json", *options)
    return result, json.loads(result.stdout)


class OwnCardTest(CardTest):
    def setUp(self):
        super().setUp()
        subprocess.run([sys.executable, "-B", MAKE_CARD, self.folder / "demo"], check=True)

    def test_every_sound_clip_is_listed_and_the_rest_reported(self):
        card = self.folder / "demo"
        result, document = listed(card, "--report", "--strict")
        files = {path.stem for path in (card / "CONTENTS" / "CLIP").iterdir()}
        skipped = {Path(file["path"]).stem for file in document["skipped"]}
        shown = {clip["ClipName"] for clip in document["clips"]}
        self.assertEqual(result.returncode, 4)
        self.assertTrue(skipped)
        self.assertEqual(shown, files - skipped)
        self.assertEqual({len(take["segments"]) for take in document["takes"]}, {2, 3})
        for clip in document["clips"]:
            for path in (clip["VideoPath"], clip["IconPath"]):
                self.assertIn(clip["ClipName"].upper(), path.upper())
            # In the letters in which they stand on the disk.
            self.assertTrue(Path(clip["XmlPath"]).is_file() and Path(clip["IconPath"]).is_file())

    def test_edit_lists_and_ingest_list(self):
        card = self.folder / "demo"
        clips = {clip["ClipName"]: clip for clip in listed(card)[1]["clips"]}
        edls = json.loads(run("edl", "list", card, "--json").stdout)["edls"]
        self.assertEqual([(edl["Name"], len(edl["Events"])) for edl in edls],
                         [("P001AB", 4), ("P002AB", 2)])
        self.assertEqual(edls[0]["IconPath"], f"{card}/CONTENTS/EDITLIST/P001AB/ICON.BMP")
        self.assertEqual(edls[0]["Events"][0]["Channels"], [2, 3, 2, 3])
        for edl in edls:
            for event in edl["Events"]:
                clip = clips[event["ClipName"]]
                self.assertEqual(event["GlobalClipGuid"], clip["GlobalClipGuid"])
                self.assertLess(event["SourceOut"], clip["Duration"])
        marks = json.loads(run("ingest", "list", card, "--json").stdout)["clips"]
        self.assertEqual([mark["ClipName"] for mark in marks], ["0012SA", "0013SB", "0007H4"])
        self.assertEqual(marks[0]["segments"], [[500, 624], [2000, 2074]])


if __name__ == "__main__":
    main()
