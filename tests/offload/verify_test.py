# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""A sealed copy, what can become of it, and what verify says of that."""

import json
import os
import re
import signal
import subprocess
import sys
import time
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "nqp2"))
from json_schema_test import validator  # noqa: E402
from program import CardTest, command_line, main, run  # noqa: E402

import hash_lists  # noqa: E402

COPY = {"A/one.mxf": b"one" * 1000, "A/two.mxf": b"two" * 70_000, "B/C/three.xml": b"three",
        "B/C/void": b"", "caf\u00e9 & <b>.txt": b"x", "big.mxf": bytes(range(256)) * 12_000}
FAULTS = ("historyFaults", "changed", "unreadable", "unseen", "unproven", "missing",
          "missingFolders", "changedFolders", "renamed", "new", "newFolders", "leftOut")


def flip(path, at=-1):
    content = bytearray(path.read_bytes())
    content[at] ^= 1
    path.write_bytes(content)


def cut(path, count=1):
    path.write_bytes(path.read_bytes()[:-count])


def hostile(scope, name):
    Path(os.fsdecode(os.fsencode(scope / "A") + b"/" + name)).write_bytes(b"x")


def edit(scope, old, new, follow=True):
    """Changes the newest manifest, and lets the chain agree with it."""
    manifest = hash_lists.manifests(scope)[-1]
    text = manifest.read_text()
    assert old in text, old
    manifest.write_text(text.replace(old, new, 1))
    if follow:
        hash_lists.rewrite_chain(scope / "ascmhl")


def root_hash(scope):
    return re.search(r"<xxh128>(\w+)<", newest(scope).read_text())[1]


def newest(scope):
    return hash_lists.manifests(scope)[-1]


def chain(scope):
    return scope / "ascmhl" / "ascmhl_chain.xml"


def ignore_all(scope):
    manifest = newest(scope)
    text = re.sub("(?s)<roothash>.*?</roothash>", "", manifest.read_text())
    manifest.write_text(text.replace("<pattern>", "<pattern>*</pattern><pattern>", 1))
    hash_lists.rewrite_chain(scope / "ascmhl")


def mark(scope):
    (scope / "ascmhl" / ".nqp2-offload.json").write_text("{}")


# What was done to a copy, what verify counts, and a path or word that it names.
DAMAGE = (
    ("one bit of a file", lambda at: flip(at / "A/two.mxf"), {"changed": 1}, "changed: A/two.mxf"),
    ("one bit in the middle", lambda at: flip(at / "big.mxf", 2_000_000), {"changed": 1},
     "changed: big.mxf"),
    ("a file cut short", lambda at: cut(at / "B/C/three.xml"), {"changed": 1}, "B/C/three.xml"),
    ("a byte in an empty file", lambda at: (at / "B/C/void").write_bytes(b"x"), {"changed": 1},
     "changed: B/C/void"),
    ("one name", lambda at: (at / "A/one.mxf").rename(at / "A/One.mxf"), {"renamed": 1},
     "renamed: A/One.mxf (was A/one.mxf)"),
    ("a file in another folder", lambda at: (at / "A/one.mxf").rename(at / "B/one.mxf"),
     {"renamed": 1}, "renamed: B/one.mxf (was A/one.mxf)"),
    ("one file missing", lambda at: (at / "A/two.mxf").unlink(), {"missing": 1},
     "missing: A/two.mxf"),
    ("one new file", lambda at: (at / "B/new").write_bytes(b"new"), {"new": 1}, "new: B/new"),
    ("a file in the place of a folder",
     lambda at: [(at / "B/C/void").unlink(), (at / "B/C/three.xml").unlink(), (at / "B/C").rmdir(),
                 (at / "B/C").write_bytes(b"C")],
     {"missing": 2, "missingFolders": 1, "new": 1}, "folder missing: B/C"),
    ("a link in the place of a file",
     lambda at: [(at / "A/one.mxf").rename(at.parent / "away"),
                 (at / "A/one.mxf").symlink_to(at.parent / "away")],
     {"missing": 1, "leftOut": 1}, "not in the list: A/one.mxf (is a link)"),
    ("a new link to nowhere", lambda at: (at / "A/l").symlink_to("nowhere"), {"leftOut": 1},
     "not in the list: A/l"),
    ("a pipe", lambda at: os.mkfifo(at / "A/pipe"), {"leftOut": 1}, "not in the list: A/pipe"),
    ("a name that is no text", lambda at: hostile(at, b"\xff\xfe"), {"leftOut": 1},
     "not in the list: A/"),
    ("a name with a control character", lambda at: hostile(at, b"a\x1b[2Jb"), {"leftOut": 1},
     r"not in the list: A/a\x1b[2Jb"),
    ("a desktop's litter", lambda at: (at / "A/.DS_Store").write_bytes(b"x"), {}, "all well"),
    ("a new time", lambda at: os.utime(at / "A/one.mxf", (1, 1)), {}, "all well"),
    ("a manifest cut off", lambda at: cut(newest(at)), {"historyFaults": None}, "history: ascmhl/"),
    ("one bit of a manifest", lambda at: flip(newest(at), 400), {"historyFaults": None},
     "history: ascmhl/"),
    ("a manifest with another hash", lambda at: edit(at, 'size="5"', 'size="6"', follow=False),
     {"historyFaults": None}, "history: ascmhl/"),
    ("a manifest and the chain with another size", lambda at: edit(at, 'size="5"', 'size="6"'),
     {"changed": 1}, "changed: B/C/three.xml"),
    ("a manifest and the chain with another root hash",
     lambda at: edit(at, root_hash(at), 4 * "01234567"),
     {"changedFolders": 1}, "folder changed: ."),
    ("an empty folder more", lambda at: (at / "A/void").mkdir(), {"newFolders": 1},
     "folder new: A/void"),
    ("an empty folder's name", lambda at: (at / "empty").rename(at / "void"), {"renamed": 1},
     "renamed: void (was empty)"),
    ("an empty folder in another", lambda at: (at / "empty").rename(at / "A/empty"),
     {"renamed": 1}, "renamed: A/empty (was empty)"),
    ("two folders for an empty one",
     lambda at: [(at / "empty").rmdir(), (at / "x").mkdir(), (at / "y").mkdir()],
     {"missingFolders": 1, "newFolders": 2}, "folder new: x"),
    ("a folder with a new file",
     lambda at: [(at / "A/C").mkdir(), (at / "A/C/new").write_bytes(b"new")],
     {"new": 1, "newFolders": 1}, "folder new: A/C"),
    ("a path that leads out", lambda at: edit(at, ">A/one.mxf<", ">../one.mxf<"),
     {"historyFaults": None, "new": 1}, "history: ascmhl/"),
    ("a size beyond all numbers", lambda at: edit(at, 'size="5"', 'size="' + "9" * 40 + '"'),
     {"historyFaults": None}, "history: ascmhl/"),
    ("a document type", lambda at: edit(at, "<hashlist", "<!DOCTYPE x [<!ENTITY a 'b'>]><hashlist"),
     {"historyFaults": None}, "history: ascmhl/"),
    ("no manifest", lambda at: newest(at).unlink(), {"historyFaults": None}, "history: ascmhl/"),
    ("no chain", lambda at: chain(at).unlink(), {"historyFaults": None}, "history: ascmhl/"),
    ("a chain cut off", lambda at: cut(chain(at), 9), {"historyFaults": None}, "history: ascmhl/"),
    ("a wrong number in the chain",
     lambda at: chain(at).write_text(chain(at).read_text().replace('nr="1"', 'nr="2"')),
     {"historyFaults": None}, "history: ascmhl/"),
    ("a manifest that the chain does not know",
     lambda at: (at / "ascmhl" / "0002_x.mhl").write_bytes(newest(at).read_bytes()),
     {"historyFaults": None}, "history: ascmhl/0002_x.mhl"),
    ("a pattern that fits all", ignore_all, {"historyFaults": 1},
     "history: ascmhl: ignores all files that it records"),
    ("a run that was not finished", mark, {"historyFaults": 1},
     "history: ascmhl/.nqp2-offload.json: a run into this copy was not finished"),
)


class CopyTest(CardTest):
    def setUp(self):
        super().setUp()
        self.copy = self.make("copy")

    def make(self, name):
        folder = self.folder / name
        for path, content in COPY.items():
            (folder / path).parent.mkdir(parents=True, exist_ok=True)
            (folder / path).write_bytes(content)
        (folder / "empty").mkdir()
        return folder

    def told_of(self, command, folder, *options):
        """The document of a command, which agrees with its schema and its exit status."""
        result = run(command, folder, "--json", "--quiet", *options)
        self.assertIn(result.returncode, (0, 1), result.stderr)
        document = json.loads(result.stdout)
        self.assertEqual(list(validator(command).iter_errors(document)), [])
        self.assertEqual(document["well"], result.returncode == 0, result.stdout)
        return document

    def assert_counts(self, document, expected):
        """Only these faults, in these numbers; None is any but 0."""
        for name in FAULTS:
            value = document["counts"][name]
            if name in expected and expected[name] is None:
                self.assertGreater(value, 0, name)
            elif None not in expected.values() or name in expected:
                self.assertEqual(value, expected.get(name, 0), (name, document))


class SealTest(CopyTest):
    def test_hashes_are_those_that_another_program_computes(self):
        formats = tuple(hash_lists.MAKERS)
        options = [word for name in formats for word in ("--hash", name)]
        document = self.told_of("seal", self.copy, *options)
        recorded = hash_lists.read_manifest(newest(self.copy))
        expected = {path: (len(content), {
            name: (hash_lists.text_of(name, hash_lists.digest_of(name, content)), "original")
            for name in formats}) for path, content in COPY.items()}
        for folder in ("", "A", "B", "B/C", "empty"):
            texts = {name: hash_lists.folder_texts(name, self.copy / folder) for name in formats}
            expected[folder] = tuple({name: texts[name][which] for name in formats}
                                     for which in (0, 1))
        self.assertEqual(recorded, expected)
        self.assertEqual({each["format"]: each["content"] for each in document["root"]},
                         expected[""][0])
        self.assertEqual(self.told_of("verify", self.copy)["counts"]["verified"], len(COPY))

    def test_generations_follow_each_other_and_keep_their_formats(self):
        self.told_of("seal", self.copy)
        (self.copy / "B/new").write_bytes(b"new")
        for number, (command, options) in enumerate((("seal", ["--hash", "md5"]), ("seal", []),
                                                     ("verify", ["--append"])), start=2):
            document = self.told_of(command, self.copy, *options)
            self.assertEqual(document["counts"]["verified"], len(COPY) + (number > 2))
            self.assertEqual(document["added"][-1]["number"], number)
        actions = {path: {name: action for name, (_, action) in value[1].items()}
                   for path, value in hash_lists.read_manifest(newest(self.copy)).items()
                   if isinstance(value[0], int)}
        self.assertEqual(set(actions), {*COPY, "B/new"})
        for path, by_format in actions.items():
            self.assertEqual(by_format, {"md5": "verified", "xxh128": "verified"}, path)

    def test_damage_stays_in_the_list_until_it_is_healed(self):
        self.told_of("seal", self.copy)
        flip(self.copy / "A/one.mxf")
        for _ in range(2):
            self.assert_counts(self.told_of("verify", self.copy, "--append"), {"changed": 1})
        flip(self.copy / "A/one.mxf")
        self.assertTrue(self.told_of("verify", self.copy, "--append")["well"])
        self.assertEqual(len(hash_lists.manifests(self.copy)), 4)

    def test_a_renamed_file_is_expected_under_its_new_name_after_that(self):
        self.told_of("seal", self.copy)
        (self.copy / "A/one.mxf").rename(self.copy / "A/1.mxf")
        (self.copy / "empty").rename(self.copy / "void")
        self.assert_counts(self.told_of("seal", self.copy), {"renamed": 2})
        self.assertTrue(self.told_of("verify", self.copy)["well"])

    def test_a_sealed_copy_is_sealed_again_when_a_run_into_it_was_not_finished(self):
        (self.copy / "ascmhl").mkdir()
        mark(self.copy)
        for command in ("verify", "seal"):
            self.assertIn("was not finished", run(command, self.copy, "--quiet").stderr)
        (self.copy / "ascmhl/.nqp2-offload.json").unlink()
        self.told_of("seal", self.copy)
        mark(self.copy)
        self.assertTrue(self.told_of("seal", self.copy)["well"])
        self.assertTrue(self.told_of("verify", self.copy)["well"])

    def test_names_of_all_bytes_are_recorded_as_they_are_or_told(self):
        names = [b"<" + bytes([byte]) + b"&" for byte in range(1, 256) if byte != ord("/")]
        for name in names:
            hostile(self.copy, name)
        document = self.told_of("seal", self.copy)
        recorded = {path[2:].encode() for path in hash_lists.read_manifest(newest(self.copy))
                    if path.startswith("A/<")}
        self.assertLessEqual({name for name in names if 32 <= name[1] < 127}, recorded)
        self.assertEqual(len(recorded) + document["counts"]["leftOut"], len(names))
        self.assertLessEqual(recorded, set(names))
        document = self.told_of("verify", self.copy)
        self.assert_counts(document, {"leftOut": len(names) - len(recorded)})
        self.assertEqual(document["counts"]["verified"], len(COPY) + len(recorded))

    def test_an_interrupted_run_leaves_no_list(self):
        with open(self.copy / "huge", "wb") as huge:
            huge.truncate(1 << 36)
        with subprocess.Popen(command_line("seal", self.copy, "--progress", "json"),
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            process.stderr.readline()
            process.send_signal(signal.SIGINT)
            begin = time.monotonic()
            _, told = process.communicate(timeout=30)
        self.assertLess(time.monotonic() - begin, 4)
        self.assertEqual(process.returncode, 1)
        self.assertIn("not read to the end (cancelled after", told.decode().splitlines()[-1])
        self.assertFalse((self.copy / "ascmhl").exists())


class VerifyTest(CopyTest):
    def test_each_damage_is_named_and_counted(self):
        for number, (what, damage, counts, named) in enumerate(DAMAGE):
            with self.subTest(what):
                folder = self.make(f"copy{number}")
                self.told_of("seal", folder)
                damage(folder)
                self.assert_counts(self.told_of("verify", folder), counts)
                result = run("verify", folder, "--quiet")
                self.assertIn(named, result.stdout)
                self.assertEqual(result.returncode, 1 if counts else 0)

    def test_the_same_of_a_history_that_another_program_made(self):
        hash_lists.write_history(self.copy)
        self.assertTrue(self.told_of("verify", self.copy)["well"])
        self.told_of("verify", self.copy, "--append")
        self.assertEqual(self.told_of("verify", self.copy)["counts"]["verified"], len(COPY))
        flip(self.copy / "A/one.mxf")
        (changed,) = self.told_of("verify", self.copy)["changed"]
        for key, content in (("hashes", (self.copy / "A/one.mxf").read_bytes()),
                             ("recordedHashes", COPY["A/one.mxf"])):
            self.assertEqual({each["format"]: each["text"] for each in changed[key]},
                             {name: hash_lists.text_of(name, hash_lists.digest_of(name, content))
                              for name in ("md5", "sha1")})

    def test_histories_below_have_their_own_files(self):
        self.told_of("seal", self.copy / "B")
        added = self.told_of("seal", self.copy)["added"]
        self.assertEqual([each["number"] for each in added], [2, 1])
        self.assertNotIn("B/C/void", hash_lists.read_manifest(newest(self.copy)))
        self.assertTrue(self.told_of("verify", self.copy)["well"])
        flip(self.copy / "B/C/three.xml")
        for folder in (self.copy, self.copy / "B"):
            self.assert_counts(self.told_of("verify", folder), {"changed": 1})
        flip(self.copy / "B/C/three.xml")
        # A history in one below, and another format: the outermost root hash holds for all.
        self.told_of("seal", self.copy / "B/C", "--hash", "md5")
        self.assertTrue(self.told_of("verify", self.copy)["well"])
        self.told_of("seal", self.copy)
        edit(self.copy, root_hash(self.copy), 4 * "01234567")
        self.assert_counts(self.told_of("verify", self.copy), {"changedFolders": 1})
        flip(newest(self.copy / "B"), 300)
        self.assert_counts(self.told_of("verify", self.copy), {"historyFaults": None})

    def test_what_cannot_be_looked_at_is_not_missing(self):
        many = [self.copy / "many" / str(number) for number in range(1100)]
        for folder in many:
            folder.mkdir(parents=True)
            (folder / "file").write_bytes(b"x")
        self.told_of("seal", self.copy)
        self.folder.chmod(0o755)
        for folder in (self.copy / "B", *many):
            folder.chmod(0)
        (self.copy / "A/one.mxf").chmod(0)
        # Root may read everything.
        somebody = {"user": 65534} if os.geteuid() == 0 else {}
        try:
            result = subprocess.run(command_line("verify", self.copy, "--append", "--json"),
                                    capture_output=True, check=False, **somebody)
        except PermissionError as error:
            self.skipTest(f"the program is not for everybody: {error}")
        for folder in (self.copy / "B", *many):
            folder.chmod(0o755)
        document = json.loads(result.stdout)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(document["counts"]["unreadable"], 2 + len(many))
        self.assertEqual(document["counts"]["unseen"], 3 + len(many))
        self.assertEqual(document["counts"]["missing"], 0)
        self.assertEqual(document["notAdded"], "not all could be read")

    def test_what_cannot_be_written_is_not_sealed(self):
        self.folder.chmod(0o755)
        self.copy.chmod(0o555)
        somebody = {"user": 65534} if os.geteuid() == 0 else {}
        try:
            result = subprocess.run(command_line("seal", self.copy, "--quiet"), encoding="utf-8",
                                    capture_output=True, check=False, **somebody)
        except PermissionError as error:
            self.skipTest(f"the program is not for everybody: {error}")
        self.copy.chmod(0o755)
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stdout.splitlines()[-1], "^NOT sealed: ")

    def test_a_file_that_changes_while_it_is_read_is_told(self):
        with open(self.copy / "huge", "wb") as huge:
            huge.truncate(1 << 32)
            with subprocess.Popen(command_line("seal", self.copy, "--progress", "json"),
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
                while json.loads(process.stderr.readline())["bytes"] < 12_000_000:
                    pass
                huge.write(b"x")
                huge.flush()
                shown, _ = process.communicate(timeout=60)
        self.assertRegex(shown.decode(), "unreadable: huge .*changed while it was being read")
        self.assertEqual(process.returncode, 1)
        self.assertFalse((self.copy / "ascmhl").exists())

    def test_without_a_history_nothing_is_proven(self):
        self.assert_fails(run("verify", self.copy), 1,
                          f"nqp2: {self.copy}: has no list of hashes (nqp2 seal makes one; what "
                          "was copied before is not proven by it)")
        result = run("verify", self.folder / "nowhere")
        self.assertEqual((result.returncode, result.stderr.count("\n")), (1, 1))


class ProgressTest(CopyTest):
    def test_lines_and_objects_tell_the_same_sums(self):
        size = sum(map(len, COPY.values()))
        objects = run("seal", self.copy, "--progress", "json").stderr.splitlines()
        schema = validator("progress-line")
        for line in objects:
            schema.validate(json.loads(line))
        last = json.loads(objects[-1])
        self.assertEqual((last["phase"], last["files"], last["totalFiles"], last["bytes"],
                          last["totalBytes"]), ("read", len(COPY), len(COPY), size, size))
        lines = run("verify", self.copy).stderr.splitlines()
        self.assertRegex(lines[-1], rf"^read: 100 % of {len(COPY)} files, 3\.1 MiB in ")


if __name__ == "__main__":
    main()
