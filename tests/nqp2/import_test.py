# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Runs over several clips and cards: what import takes of them, what it tells, how it is ended;
what delete asks."""

import json
import os
import re
import signal
import subprocess

from cards_test import SHOT, segment
from dv_stream import dv_frame
from json_schema_test import validator
from program import Card, command_line, main, read_until_end, run, terminal
from worker_test import LARGE, WorkerTest, files_below, wait_for


class ImportTest(WorkerTest):
    def setUp(self):
        super().setUp()
        self.a, self.b, self.c = (self.folder / name for name in "ABC")
        self.cards = [Card(path) for path in (self.a, self.b, self.c)]
        for number, card in enumerate(self.cards):
            self.add_clip(SHOT[number], card=card, **segment(number))
        self.add_clip("0009ZZ", card=self.cards[0])

    def ask(self, *arguments):
        """Status, document, clips and messages of an import; the clips are those that are there."""
        result = run("import", *arguments, "--to", self.target, "--json")
        document = json.loads(result.stdout)
        validator("import").validate(document)
        names = sorted(each["ClipName"].upper() for each in document["clips"])
        clips = {name[-10:-4] for name in files_below(self.target) if "VIDEO" in name}
        self.assertEqual(sorted(clips), names)
        return result.returncode, document, names, result.stderr.replace(f"{self.folder}/", "")

    def test_takes_are_told_or_taken_over_all_cards(self):
        a, b, c = self.a, self.b, self.c
        left_b, none_c = "0002BB on B left out", "0003CC on card SN2 on none of the cards"
        for number, (arguments, status, names, told) in enumerate((
                ((a, "0009zz"), 0, ["0009ZZ"], ""),
                ((a, "0001AA"), 0, ["0001AA"], "take of 0001AA: 0002BB on card SN1 on none"),
                ((a, "0001AA", "--take"), 1, ["0001AA"], "nqp2: 1 of 1 clips imported"),
                ((a, b, "--clip", "0001aa"), 1, ["0001AA", "0002BB"],
                 f"take of 0001AA on SN0, 0002BB on B: {none_c}\n"),
                ((a, b, "--clip", "0001AA", "--no-take"), 0, ["0001AA"],
                 f"take of 0001AA on SN0: {left_b}, {none_c} (--take takes it whole)\n"),
                ((c, a, b, "--clip", "0003CC"), 0, ["0001AA", "0002BB", "0003CC"],
                 "nqp2: 3 of 3 clips imported, "),
                ((a, b, "--all"), 0, ["0001AA", "0002BB", "0009ZZ"], none_c),
                ((a, b, c, a / "CONTENTS", "--all"), 0, ["0001AA", "0002BB", "0003CC", "0009ZZ"],
                 "nqp2: 4 of 4 clips imported, "))):
            with self.subTest(arguments):
                self.target = self.folder / f"target{number}"
                shown = self.ask(*arguments)
                self.assertEqual(shown[0], status, shown[3])
                self.assertEqual(shown[2], names)
                self.assertIn(told, shown[3])
                lines = [line for line in shown[3].splitlines() if "take of" in line]
                self.assertEqual(
                    [each["ClipName"] for key in ("otherSegments", "missingSegments")
                     for each in shown[1][key]], re.findall("000[23]..", "".join(line.split(": ")[2] for line in lines)))

    def test_what_cannot_be_meant_is_refused_before_anything_is_copied(self):
        self.add_clip("0009ZZ", card=self.cards[1], identifier=f"{9:064X}")
        to = ("--to", self.target)
        self.assert_each_fails(2, [
            (["import", self.a, *to], "import usage: CLIP, --clip or --all is required"),
            (["import", self.a, "--all", "--take", *to], "import usage: "),
            (["import", self.a, "0009ZZ", "--no-take", *to], "import usage: "),
            (["export", self.a, "0009ZZ"], "export usage: --to is required"),
            (["export", self.a, "0009ZZ", "--to", self.b, "--from", self.c], "export usage: ")])
        self.assert_each_fails(1, [
            (["import", self.a, self.b, "--clip", "0001AA", "--clip", "NONE", *to],
             "NONE: is a clip of none of the cards"),
            (["import", self.a, self.b, "--clip", "0009ZZ", *to],
             f"0009ZZ: names 2 clips (give one of the cards: {self.a}, {self.b})")])
        self.assertFalse(self.target.exists())

    def test_what_may_have_been_meant_and_where_metadata_are_broken(self):
        (self.cards[0].clips / "0005XX.XML").write_bytes(b"<x>\n<y></x>")
        to = ("--to", self.target)
        meant, broken = "did you mean 0009ZZ?)", f"{self.cards[0].clips}/0005XX.XML:2:"
        for arguments, told in (
                (["import", self.a, self.b, "--clip", "0009XZ", *to], meant),
                (["import", self.a, "0009XZ", *to], meant),
                (["export", self.a, "0001AA", "009ZZ", "--to", self.c], meant),
                (["delete", self.a, "0009Z", "--yes"], meant),
                (["delete", self.a, "0009Z", "--dry-run"], meant[:-1]),
                (["icon", self.a, "0009ZX"], meant),
                (["import", self.a, "0005XX", *to], broken),
                (["icon", self.a, "0005XX"], broken)):
            with self.subTest(arguments):
                result = run(*arguments)
                self.assertEqual((result.returncode, result.stderr.count("\n")), (1, 1))
                self.assertIn(told, result.stderr)

    def test_a_run_goes_on_after_clips_that_fail(self):
        card = self.cards[0]
        os.truncate(self.a / "CONTENTS" / "VIDEO" / "0001AA.MXF", 0)
        (card.clips / "0005XX.XML").write_bytes(b"<x")
        (card.clips / "0006YY.XML").mkdir()
        status, document, names, told = self.ask(self.a, "--all")
        failed = {each["ClipName"]: each["failure"] for each in document["failed"]}
        self.assertEqual((status, names), (1, ["0009ZZ"]))
        self.assertEqual(list(failed), ["0001AA", "0005XX", "0006YY"])
        for name, sentence in failed.items():
            self.assertIn(f"nqp2: {name}: not imported ({sentence})\n".replace(f"{self.folder}/", ""),
                          told)
        self.assertIn("; failed: 0001AA, 0005XX, 0006YY\n", told)
        (card.clips / "0006YY.XML").rmdir()
        self.target = self.folder / "second"
        result = run("import", self.a, "--all", "--incomplete", "--to", self.target)
        self.assertEqual((result.returncode, len(result.stdout.splitlines())), (0, 3), result.stderr)

    def test_a_signal_ends_a_run_and_is_told(self):
        self.add_clip("0003LL", LARGE, self.cards[1])
        self.add_clip("0004MM", card=self.cards[1])
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            self.target = self.folder / f"target{number}"
            process = subprocess.Popen(
                command_line("import", self.b, "--all", "--json", "--to", self.target),
                stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
            self.addCleanup(process.kill)
            wait_for((self.target / "CONTENTS" / "CLIP" / "0002BB.XML").exists)
            wait_for(lambda: list(self.target.rglob("VIDEO/.nqp2-*")))
            process.send_signal(number)
            shown, told = process.communicate(timeout=60)
            document = json.loads(shown)
            self.assertEqual([[each["ClipName"] for each in document[key]]
                              for key in ("clips", "failed", "left")],
                             [["0002BB"], ["0003LL"], ["0004MM"]])
            self.assertIn("; failed: 0003LL; not begun: 0004MM\n", told.decode())
            self.assertEqual(process.returncode, 1)
            self.assertEqual([name for name in files_below(self.target) if "0002BB" not in name], [])

    def test_one_progress_for_the_whole_run(self):
        told = run("import", self.a, self.b, "--all", "--progress", "json", "--to", self.target).stderr
        lines = [json.loads(line) for line in told.splitlines()]
        for line in lines:
            validator("progress-line").validate(line)
        steps = [line for line in lines if "bytes" in line]
        size = sum(map(len, files_below(self.target).values()))
        self.assertEqual({(line["phase"], line["totalFiles"], line["totalBytes"]) for line in steps},
                         {("import", 9, size)})
        self.assertEqual((steps[-1]["files"], steps[-1]["bytes"]), (9, size))
        self.assertEqual([line["bytes"] for line in steps], sorted(line["bytes"] for line in steps))
        told = run("import", self.a, "0009ZZ", "--progress", "lines", "--to", self.target).stderr
        self.assertRegex(told, r"^import: 100 % of 3 files, [^\n]*\n$")


class ExportTest(WorkerTest):
    def test_the_folder_comes_first_and_the_card_by_option_or_the_other_way(self):
        for arguments in ((self.card.path, "0001AB", "--to", self.target),
                          (self.target, "0001AB", "--from", self.card.path)):
            self.target.mkdir()
            self.assertEqual(self.told("export", *arguments),
                             {"card": str(self.target), "clips": [{"ClipName": "0001AB"}]})
            self.assertEqual(len(files_below(self.target)), 3)
            self.target.rename(self.folder / arguments[-2])

    def test_a_signal_leaves_nothing_on_the_card(self):
        self.add_clip("0009ZZ", LARGE)
        self.target.mkdir()
        live = self.folder / "live"
        os.mkfifo(live)
        for arguments, told in (
                (("export", self.card.path, "0009ZZ", "--to", self.target), "exported (Cancelled.)"),
                (("rt-export", self.target, live, "-f", "CT_DV25_50I"), "recorded (cancelled)")):
            (self.target / "CONTENTS").mkdir(exist_ok=True)
            process = subprocess.Popen(command_line(*arguments), stderr=subprocess.PIPE)
            self.addCleanup(process.kill)
            stream = open(live, "wb", buffering=0) if live in arguments else None
            if stream:
                stream.write(dv_frame(0))
            wait_for(lambda: list(self.target.rglob("VIDEO/.nqp2-*")))
            process.send_signal(signal.SIGTERM)
            if stream:
                stream.close()
            _, line = process.communicate(timeout=60)
            self.assertTrue(line.decode().endswith(f": not {told}\n"), line)
            self.assertEqual((process.returncode, files_below(self.target)), (1, {}))


class DeleteTest(WorkerTest):
    def test_it_shows_what_goes_and_goes_only_when_told(self):
        self.add_clip("0002CD")
        (self.card.clips / "0001AB.XML").write_bytes(b"<x")
        for folder, name in (("ICON", "0001ab.bmp"), ("PROXY", "0001AB.MP4"), ("VIDEO", "0001AB.TXT"),
                             ("VOICE", "0001AB00.WAV"), ("AUDIO", "0001ABCD.MXF")):
            self.card.add_file(folder, name)
        before = files_below(self.card.path)
        ask = ("delete", self.card.path, "0001AB")
        first, *listed = self.shown(*ask, "--dry-run").splitlines()
        going = [line.strip().removeprefix(f"{self.card.path}/") for line in listed]
        size = sum(len(before[name]) for name in going)
        self.assertEqual(first, f"0001AB: {len(going)} files, {size} bytes")
        self.assertEqual(run("delete", self.card.path, "NONE", "--dry-run").returncode, 1)
        self.assert_each_fails(2, [(ask, "delete: asks on a terminal, and there is none (nothing "),
                                   ((*ask, "--yes", "--dry-run"), "delete usage: ")])
        for answer, status, left in ((b"n\n", 1, sorted(before)), (b"\n", 1, sorted(before)),
                                     (b"y\n", 0, sorted(set(before) - set(going)))):
            with terminal(80) as (master, slave):
                process = subprocess.Popen(command_line(*ask), stdin=slave, stderr=slave,
                                           stdout=subprocess.PIPE)
                os.write(master, answer)
                shown = read_until_end(master, process).decode()
                process.stdout.close()
            self.assertIn(f"Remove {len(going)} files, ", shown)
            self.assertEqual((process.returncode, sorted(files_below(self.card.path))), (status, left))
        self.assertEqual(run("delete", self.card.path, "0002CD", "--yes").returncode, 0)
        self.assertEqual(sorted(files_below(self.card.path)),
                         ["CONTENTS/AUDIO/0001ABCD.MXF", "CONTENTS/VIDEO/0001AB.TXT"])


if __name__ == "__main__":
    main()
