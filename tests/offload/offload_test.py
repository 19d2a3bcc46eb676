# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Whole cards offloaded by the real program: what arrives, what is refused, what a killed run
leaves and a second one makes of it."""

import collections
import hashlib
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import time
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "nqp2"))
from json_schema_test import validator  # noqa: E402
from program import CardTest, can_trace, command_line, main, run, sample, traced  # noqa: E402

import hash_lists  # noqa: E402

KILLED = (-signal.SIGKILL, 128 + signal.SIGKILL)
MARK = "ascmhl/.nqp2-offload.json"
CHAIN = "ascmhl/ascmhl_chain.xml"
# How many system calls of each kind a test kills the program at.
KILLS = int(os.environ.get("NQP2_KILLS", "2"))
CALLS = ("mkdirat", "openat", "pwrite64", "fsync", "fdatasync", "syncfs", "linkat", "renameat2",
         "unlinkat", "utimensat")
IDENTIFIER = "060A2B340101010501010D4313000000{:032X}"


def tree_of(folder):
    """All that is in a folder but for lists of hashes: content of files, None for folders."""
    return {path.relative_to(folder).as_posix(): None if path.is_dir() else path.read_bytes()
            for path in Path(folder).rglob("*") if "ascmhl" not in path.relative_to(folder).parts}


def times_of(folder):
    return {path.relative_to(folder).as_posix(): path.stat().st_mtime_ns
            for path in Path(folder).rglob("*") if "ascmhl" not in path.relative_to(folder).parts}


class OffloadTest(CardTest):
    def setUp(self):
        super().setUp()
        for number, name in enumerate(("0001AB", "0002AB"), start=1):
            self.card.add(name, identifier=IDENTIFIER.format(number), audio=1,
                          start=f"2024-05-0{number}T08:00:00+02:00")
            for folder, file in (("VIDEO", f"{name}.MXF"), ("AUDIO", f"{name}00.MXF")):
                self.card.add_file(folder, file)
        self.write("card/CONTENTS/VIDEO/0001AB.MXF", b"picture" * 200_000)
        self.write("card/LASTCLIP.TXT", b"0002AB\n")
        self.write("card/odd & <names>/caf\u00e9 \n\t\\ %s.bin", b"odd")
        self.write("card/CONTENTS/empty", b"")
        (self.card.path / "CONTENTS" / "VOICE").mkdir()
        os.utime(self.card.path / "CONTENTS" / "VOICE", ns=(0, 1_234_567_890_000_000_000))
        for name in ("one", "two"):
            (self.folder / name).mkdir()

    def write(self, name, content):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
        return path

    def offload(self, *options, card="card", to=("one", "two")):
        targets = (each for name in to for each in ("--to", self.folder / name))
        return run("offload", self.folder / card, *targets, "--name", "A001", "--quiet", *options)

    def outcome(self, *options, status=0, **places):
        result = self.offload("--json", *options, **places)
        self.assertEqual(result.returncode, status, result.stdout + result.stderr)
        document = json.loads(result.stdout)
        validator("offload").validate(document)
        return document

    def assert_copied(self, name="one", card="card"):
        """A whole copy, finished, and verified by its own list."""
        copy = self.folder / name / "A001"
        self.assertEqual(tree_of(copy), tree_of(self.folder / card))
        self.assertEqual(times_of(copy), times_of(self.folder / card))
        self.assertTrue((copy / CHAIN).is_file() and not (copy / MARK).exists())
        result = run("verify", copy, "--quiet")
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        left = [path for path in copy.parent.rglob(".nqp2*")]
        self.assertEqual(left, [])


class CopyTest(OffloadTest):
    def test_everything_arrives_and_is_listed(self):
        document = self.outcome("--hash", "md5", "--hash", "c4", "--sums", "md5")
        self.assertEqual((document["card"]["kind"], document["card"]["files"]), ("P2 card", 9))
        for name, target in zip(("one", "two"), document["targets"]):
            self.assert_copied(name)
            copy = self.folder / name / "A001"
            self.assertTrue(target["proven"])
            root = {each["format"]: (each["content"], each["structure"]) for each in target["root"]}
            records = hash_lists.read_manifest(hash_lists.manifests(copy)[0])
            for form in ("md5", "c4"):
                self.assertEqual(root[form], hash_lists.folder_texts(form, copy))
            for path, content in tree_of(self.card.path).items():
                expected = {"md5": (hashlib.md5(content).hexdigest(), "original"),
                            "c4": (hash_lists.text_of("c4", hashlib.sha512(content).digest()),
                                   "original")} if content is not None else None
                self.assertEqual(records[path][1] if expected else None, expected)
            check = subprocess.run(["md5sum", "--check", "--strict", "--quiet", "A001.md5"],
                                   cwd=copy.parent, capture_output=True, check=False)
            self.assertEqual((check.returncode, check.stdout), (0, b""))
        # Both targets are on the test's own disk, as the card is.
        self.assertFalse(document["verdict"]["safeToFormat"])

    def test_lists_are_bounded_and_their_counts_are_not(self):
        for number in range(1005):
            self.write(f"card/LITTER/{number}/.DS_Store", b"")
        document = self.outcome("--dry-run")
        self.assertEqual((len(document["ignored"]), document["counts"]["ignored"]), (1000, 1005))

    def test_sample_cards(self):
        for kind, clips, lists in (("p2", 16, 2), ("avchd", 8, 3)):
            card = sample(kind)
            with self.subTest(kind):
                result = run("offload", card, "--to", self.folder / "one", "--name", kind, "--json",
                             "--quiet")
                self.assertEqual(result.returncode, 0, result.stderr)
                told = json.loads(result.stdout)["completeness"]
                self.assertEqual((told["clips"], told["editLists"]), (clips, lists))
                gaps = {(gap["of"], gap["problem"]) for gap in told["gaps"]}
                wanted = ({("take", "segment 0001TC is missing (it is on the card SMP24E0002)")}
                          if kind == "p2" else set())
                self.assertLessEqual(wanted, gaps)
                self.assertIn("unread", {of for of, _ in gaps})
                self.assertEqual(tree_of(card), tree_of(self.folder / "one" / kind))

    def test_a_card_with_a_list_is_held_against_it_and_the_list_goes_on(self):
        self.outcome(to=("one",))
        second = self.outcome(card="one/A001", to=("two",))
        self.assertEqual([each["number"] for each in second["targets"][0]["lists"]], [2])
        self.assert_copied("two")
        records = hash_lists.read_manifest(hash_lists.manifests(self.folder / "two" / "A001")[1])
        self.assertEqual({action for _, hashes in
                          (each for each in records.values() if isinstance(each[0], int))
                          for _, action in hashes.values()}, {"verified"})
        self.write("one/A001/LASTCLIP.TXT", b"0009AB\n")
        (self.folder / "three").mkdir()
        third = self.outcome(card="one/A001", to=("three",), status=1)
        self.assertEqual(third["againstList"], ["LASTCLIP.TXT is not what its list says"])

    def test_litter_is_left_out_and_told(self):
        self.write("card/.DS_Store", b"x")
        self.write("card/.Trashes/x", b"x")
        document = self.outcome(to=("one",))
        self.assertEqual({each["path"] for each in document["ignored"]}, {".DS_Store", ".Trashes"})
        self.assertFalse((self.folder / "one/A001/.DS_Store").exists())

    def test_names_of_every_byte(self):
        """A list holds names of UTF-8 without control characters; the others are told."""
        taken = set()
        for byte in range(1, 256):
            name = b"x" + bytes([byte])
            if byte != ord("/"):
                Path(os.fsdecode(os.fsencode(self.card.path) + b"/" + name)).write_bytes(name)
                taken.update({name} if byte in b"\t\n\r" or 32 <= byte < 127 else ())
        document = self.outcome(to=("one",), status=1)
        copied = {os.fsencode(path.name) for path in (self.folder / "one/A001").glob("x*")}
        self.assertLessEqual(taken, copied)
        self.assertEqual(len(copied) + len(document["leftOut"]), 254)
        left = {bytes.fromhex(each["pathBytes"]) if "pathBytes" in each else each["path"].encode()
                for each in document["leftOut"]}
        self.assertEqual(len(left), len(document["leftOut"]))
        self.assertFalse(left & copied)
        self.assertRegex(document["verdict"]["text"], r"\d+ entries of the card were left out")

    def test_names_with_tokens(self):
        self.write("card/CONTENTS/CLIP/0003AB.XML", (self.card.clips / "0001AB.XML").read_bytes()
                   .replace(b"<ClipMetadata>", b"<ClipMetadata><Scenario><ProgramName>Late: show/2"
                                               b"</ProgramName></Scenario>"))
        (self.folder / "one/card-001").mkdir()
        (self.folder / "one/card-001/x").mkdir()
        for name, expected in (("{card}", "card"), ("{date}_{card}", "2024-05-01_card"),
                               ("{project}", "Late_ show_2"), ("{card}-{counter}", "card-002"),
                               ("{}", 2), ("{serial}", 2), ("{reel}", 2), ("a/b", 2), ("..", 2),
                               ("ascmhl", 2), ("x" * 256, 2), ("{", 2), ("a{date", 2), ("a}", "a}"),
                               ("a\nb", 2), ("a\\b", 2), ("E:", 2), (".DS_Store", 2),
                               (".Trash-1000", 2), ("con", 2), ("LPT1.x", 2), ("COM", "COM"),
                               ("CONTENTS", "CONTENTS"), ("a.", 2), ("a ", 2), (" a.b", " a.b")):
            with self.subTest(name):
                result = run("offload", self.card.path, "--to", self.folder / "one", "--name", name,
                             "--dry-run", "--json", "--quiet")
                found = json.loads(result.stdout)["name"] if not result.returncode else 2
                self.assertEqual(found, expected, result.stderr)
        self.assertEqual([path.name for path in (self.folder / "one").iterdir()], ["card-001"])


class RefusalTest(OffloadTest):
    def test_what_cannot_be_done_is_refused_before_anything_is_written(self):
        card, one, two = self.card.path, self.folder / "one", self.folder / "two"
        self.write("two/file", b"")
        self.write("two/taken/file", b"")
        (two / "link").symlink_to(one)
        (self.folder / "empty").mkdir()
        (self.folder / "NO NAME").mkdir()
        self.write("NO NAME/x", b"x")
        for arguments, status, words in (
                ((card, "--to", card / "CONTENTS"), 2, "lies in the card"),
                ((card, "--to", card), 2, "lies in the card"),
                ((card, "--to", self.folder, "--name", "card"), 2, "is the card itself"),
                ((card, "--to", one), 2, "says nothing"),
                ((card / "CONTENTS", "--to", self.folder, "--name", "card"), 2, "holds the card"),
                ((card, "--to", one, "--to", one / "../one"), 2, "same place"),
                ((card, "--to", one, "--to", two / "link"), 2, "same place"),
                ((card, "--to", two / "file"), 1, "no folder"),
                ((card, "--to", self.folder / "missing"), 1, "no folder"),
                ((self.folder / "missing", "--to", one), 1, "no folder"),
                ((self.folder / "empty", "--to", one), 1, "is empty"),
                ((self.folder / "NO NAME", "--to", one), 2, "--name"),
                ((card, "--to", two, "--name", "taken"), 1, "another --name"),
                ((card, "--to", two, "--name", "file"), 1, "another --name"),
                ((card, "--to", two, "--name", "link"), 1, "another --name"),
                ((card, "--to", one, "--hash", "crc"), 2, "--hash")):
            with self.subTest(arguments):
                result = run("offload", *arguments, "--quiet")
                self.assertEqual((result.returncode, result.stdout), (status, ""))
                self.assertIn(words, result.stderr)
                self.assertEqual(result.stderr.count("\n"), 1)
                told = run("offload", *arguments, "--progress", "json").stderr
                validator("progress-line").validate(json.loads(told))
                self.assertEqual("nqp2: " + json.loads(told)["failure"] + "\n", result.stderr)
        self.assertEqual(list(one.iterdir()), [])

    def test_two_cards_never_merge(self):
        self.outcome(to=("one",))
        os.rename(self.card.path, self.folder / "first")
        self.setUpOtherCard()
        before = tree_of(self.folder / "one")
        for change, words in ((lambda: None, "another card"),
                              (lambda: shutil.rmtree(self.folder / "one/A001/ascmhl"), "no copy")):
            change()
            result = self.offload(to=("one",))
            self.assertEqual(result.returncode, 1)
            self.assertIn(words, result.stderr)
        self.assertEqual(tree_of(self.folder / "one"), before)

    def setUpOtherCard(self):
        """Of the same names, sizes and times."""
        for path in sorted((self.folder / "first").rglob("*")):
            copy = self.card.path / path.relative_to(self.folder / "first")
            if path.is_dir():
                copy.mkdir(parents=True, exist_ok=True)
            else:
                copy.parent.mkdir(parents=True, exist_ok=True)
                copy.write_bytes(path.read_bytes().replace(b"0000000000000001<", b"0000000000000009<"))
                os.utime(copy, ns=(0, path.stat().st_mtime_ns))


class SecondRunTest(OffloadTest):
    def test_what_is_wrong_is_set_aside_and_copied_anew(self):
        self.outcome()
        damaged = self.write("one/A001/CONTENTS/VIDEO/0002AB.MXF", b"y")
        (self.folder / "one/A001/LASTCLIP.TXT").unlink()
        self.write("one/A001/mine.txt", b"mine")
        os.utime(damaged, ns=(0, (self.card.path / "CONTENTS/VIDEO/0002AB.MXF").stat().st_mtime_ns))
        first = self.outcome()["targets"][0]
        self.assertEqual((first["copied"], first["copiedAnew"], first["wereThere"]), (1, 1, 7))
        self.assertEqual([each["path"] for each in first["strange"]], ["mine.txt"])
        aside = self.folder / "one/A001/CONTENTS/VIDEO/0002AB.MXF.differs-1"
        self.assertEqual(aside.read_bytes(), b"y")
        (self.folder / "one/A001/mine.txt").unlink()
        # The list knows what was set aside, and that it is none of the card's.
        self.assertEqual(run("verify", self.folder / "one/A001", "--quiet").returncode, 0)
        aside.unlink()
        self.assertEqual(tree_of(self.folder / "one/A001"), tree_of(self.card.path))

    def test_what_the_copy_s_list_vouches_for_stays(self):
        self.outcome()
        card, copy = (folder / "CONTENTS/VIDEO/0002AB.MXF"
                      for folder in (self.card.path, self.folder / "one/A001"))
        bytes_before, times = card.read_bytes(), card.stat()
        card.write_bytes(bytes_before[:-1] + bytes([bytes_before[-1] ^ 1]))
        os.utime(card, ns=(times.st_atime_ns, times.st_mtime_ns))
        document = self.outcome(status=1)
        self.assertFalse(document["verdict"]["safeToFormat"])
        for target in document["targets"]:
            self.assertFalse(target["setAside"])
            self.assertIn("the card's file is not", target["failures"][0]["reason"])
        self.assertEqual(copy.read_bytes(), bytes_before)
        card.write_bytes(bytes_before)
        os.utime(card, ns=(times.st_atime_ns, times.st_mtime_ns))
        self.outcome()
        self.assertEqual(run("verify", self.folder / "one/A001", "--quiet").returncode, 0)

    def test_each_sentence_is_true(self):
        for to in (("one",), ("one", "two")):
            self.outcome(to=to)
        self.assertIn("one/A001: would be gone on with, it is finished\n",
                      self.offload("--dry-run", to=("one",)).stdout)
        for name in ("one", "two"):
            (self.folder / name / "A001/LASTCLIP.TXT").unlink()
            (self.folder / name / "A001/LASTCLIP.TXT").mkdir()
        shown = self.offload().stdout
        self.assertRegex(shown, r"one/A001: NOT finished, 8 of 9 .*\(1 entries are not as they")
        folder = self.folder / "one/A001/CONTENTS/VOICE"
        folder.rmdir()
        folder.write_bytes(b"")
        (target,) = self.outcome(to=("one",), status=1)["targets"]
        self.assertEqual([each["path"] for each in target["failures"]],
                         ["CONTENTS/VOICE", "LASTCLIP.TXT"])
        self.assertNotIn("did not agree", shown)
        alone = subprocess.run([Path(command_line()[0]).with_name("nqp2-offload")],
                               capture_output=True, encoding="utf-8", check=False)
        self.assertEqual(alone.stderr,
                         "nqp2: nqp2-offload: has nothing to do (nqp2 runs this program)\n")

    def test_copies_asked_for(self):
        for copies, status in ((1, 4), (2, 4)):
            self.outcome("--copies", str(copies), status=status)

    def test_a_log_tells_the_same(self):
        log = self.folder / "log.json"
        document = self.outcome("--log", log)
        self.assertEqual(json.loads(log.read_text()), document)
        (self.folder / "link.json").symlink_to(self.card.path / "LASTCLIP.TXT")
        (self.folder / "dangling.json").symlink_to(self.card.path / "x.json")
        before = [times_of(self.folder / name) for name in ("card", "one")]
        for name, status, words in (("missing/log.json", 1, "cannot be written"),
                                    ("card", 1, "cannot be written"),
                                    ("card/CONTENTS/log.json", 2, "lies in the card"),
                                    ("link.json", 2, "lies in the card"),
                                    ("dangling.json", 1, "cannot be written"),
                                    ("one/A001/CONTENTS/log.json", 2, "lies in a copy"),
                                    ("three/A001", 2, "lies in a copy")):
            (self.folder / "three").mkdir(exist_ok=True)
            result = self.offload("--log", self.folder / name, to=("one", "three"))
            self.assertEqual((result.returncode, result.stdout), (status, ""), name)
            self.assertIn(words, result.stderr)
            self.assertEqual(result.stderr.count("\n"), 1)
        (self.folder / "three").rmdir()
        self.assertEqual([times_of(self.folder / name) for name in ("card", "one")], before)

    @unittest.skipUnless(can_trace(), "strace cannot be used here")
    def test_a_killed_run_is_gone_on_with(self):
        arguments = ("offload", self.card.path, "--to", self.folder / "one", "--name", "A001")
        kills = 0
        for name, number in self.calls(arguments):
            with self.subTest(name, number=number):
                self.clear()
                result = traced(["-o", "/dev/null", "-e", f"trace={name}", "-e",
                                 f"inject={name}:signal=KILL:when={number}"], arguments)
                kills += result.returncode in KILLED
                copy = self.folder / "one" / "A001"
                for path, content in (tree_of(copy) if copy.is_dir() else {}).items():
                    if not Path(path).name.startswith(".nqp2-"):
                        self.assertEqual(content, tree_of(self.card.path)[path], path)
                self.outcome(to=("one",))
                self.assert_copied()
        self.assertGreater(kills, 5)

    def clear(self):
        shutil.rmtree(self.folder / "one")
        (self.folder / "one").mkdir()

    def calls(self, arguments):
        """Kinds and numbers of system calls, some of each."""
        log = self.folder / "calls"
        traced(["-o", str(log), "-e", "trace=" + ",".join(CALLS)], arguments)
        counts = collections.Counter(re.findall(r"(\w+)\(", log.read_text(errors="replace")))
        for name in CALLS:
            step = max(1, counts[name] // KILLS)
            yield from ((name, number) for number in range(1, counts[name] + 1, step))

    def test_an_interrupted_run_says_what_is_left(self):
        for number in range(40):
            self.write(f"card/CONTENTS/VIDEO/big{number}.MXF", os.urandom(4_000_000))
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with self.subTest(number):
                self.clear()
                with subprocess.Popen(
                        command_line("offload", self.card.path, "--to", self.folder / "one",
                                     "--name", "A001", "--progress", "json"),
                        stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
                    deadline = time.monotonic() + 30
                    while not list((self.folder / "one").rglob("*.part")):
                        self.assertLess(time.monotonic(), deadline)
                    process.send_signal(number)
                    shown, _ = process.communicate(timeout=30)
                self.assertEqual(process.returncode, 1)
                self.assertRegex(shown.decode(), r"NOT finished, \d+ of 49 files, .*\(cancelled\)")
                self.assertNotIn("own list", shown.decode())
                copy = self.folder / "one" / "A001"
                self.assertTrue((copy / MARK).exists() and not (copy / CHAIN).exists())
                self.assertEqual(list(copy.rglob("*.part")), [])
                self.assertEqual(run("verify", copy, "--quiet").returncode, 1)
                self.outcome(to=("one",))
                self.assert_copied()


if __name__ == "__main__":
    main()
