# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Help, version, wrong usage, output that cannot be written, completion."""

import os
import re
import shlex
import subprocess
import unittest
from pathlib import Path

from edl_test import edit_list
from program import PROGRAM, SOURCES, CardTest, main, run

COMPLETION = SOURCES / "programs" / "nqp2" / "completion" / "nqp2.bash"
GROUPS = {"edl": ("list", "write"), "ingest": ("list", "add", "remove"),
          "catalog": ("add", "update", "cards", "search", "show", "remove", "export")}
COMMANDS = ("clips", "clip", "info", "umid", "free-name", "space", "playlists", "import", "export",
            "delete", "icon", "serial", "probe", "record", "report", "offload",
            "seal", "verify", "timeline", "rewrap", "last-error", *GROUPS)
HAS_WORKER = (Path(PROGRAM).parent / "nqp2-worker").is_file()
LOST = "nqp2: standard output: cannot be written ({})"
LEVELS = [[], *([command] for command in COMMANDS),
          *([group, command] for group, commands in GROUPS.items() for command in commands)]


class HelpTest(unittest.TestCase):
    def test_help_at_every_level(self):
        commands = re.findall(r"^  ([a-z][a-z-]+) {2,}", run("--help").stdout, re.MULTILINE)
        self.assertEqual(set(commands), set(COMMANDS))
        for level in LEVELS:
            result = run(*level, "--help")
            self.assertEqual((result.returncode, result.stderr), (0, ""))
            self.assertIn("Usage: " + " ".join(["nqp2", *level]), result.stdout)
            self.assertIn(f"Example: nqp2 {' '.join(level)}", result.stdout)
            self.assertLessEqual(max(map(len, result.stdout.splitlines())), 80)

    def test_examples_are_understood(self):
        for level in LEVELS:
            example = re.search("Example: nqp2 (.*)", run(*level, "--help").stdout).group(1)
            result = run(*shlex.split(example.replace("/media/card", "/no/such/card")))
            self.assertNotEqual(result.returncode, 2, result.stderr)

    def test_version_is_that_of_the_project(self):
        project = re.search(r"VERSION (\d+\.\d+\.\d+)", (SOURCES / "CMakeLists.txt").read_text())
        self.assertEqual(run("--version").stdout, f"nqp2 {project.group(1)}\n")


class UsageTest(CardTest):
    def test_wrong_usage_is_one_line_and_status_2(self):
        card = self.card.path
        cases = (
            (["fly"], "nqp2: fly: is not understood (see nqp2 --help)"),
            (["clpis", card], "nqp2: clpis: is not understood (did you mean clips?)"),
            (["clpis", "--help"], "nqp2: clpis: is not understood (did you mean clips?)"),
            (["clips", card, "--jsno=1"],
             "nqp2: clips --jsno=1: is not understood (did you mean --json?)"),
            (["clips"], "nqp2: clips usage: CARD is required (see nqp2 clips --help)"),
            (["info", card, "x"], "nqp2: info x: is not understood (see nqp2 info --help)"),
            (["clips", card, "--sort", "size"], "nqp2: clips usage: "),
            (["clips", card, "--json", "--csv"], "nqp2: clips usage: "),
            (["clips", ""], "nqp2: CARD: is empty"),
            (["edl", "list", card, "x"],
             "nqp2: edl list x: is not understood (see nqp2 edl list --help)"),
            (["ingest", "add", card, "0001AA"], "nqp2: ingest add usage: IN-OUT is required"),
            (["import", card, "0001AA"], "nqp2: import usage: --to is required"),
            (["probe", ""], "nqp2: : is no path (it is empty)"),
            (["record", card, "x", "--code-type", "DV"], "nqp2: --code-type DV: is no code type"),
            (["record", card, "x", "--code-type", "1", "--bits", "8"], "nqp2: record usage: "),
        )
        self.assert_each_fails(2, [(arguments, line.removeprefix("nqp2: "))
                                   for arguments, line in cases])


    def test_without_a_command_the_short_help(self):
        for level in ([], *([group] for group in GROUPS)):
            result = run(*level)
            self.assertEqual((result.returncode, result.stdout), (2, ""))
            self.assertIn("\nCommands:\n  ", result.stderr)
            self.assertRegex(result.stderr, r"\nnqp2: COMMAND: is missing \(see nqp2[^\n]*--help\)\n$")


class ManualTest(CardTest):
    def test_each_command_has_a_page_that_tells_what_its_help_tells(self):
        self.assertEqual(run("manual", "--to", self.folder).returncode, 0)
        names = {path.name for path in self.folder.glob("*.1")}
        self.assertEqual(names, {"-".join(["nqp2", *level]) + ".1" for level in LEVELS})
        for level in LEVELS:
            page = (self.folder / ("-".join(["nqp2", *level]) + ".1")).read_text()
            text = run(*level, "--help").stdout
            self.assertEqual(run("help", *level).stdout, text)
            for option in re.findall(r"(--[a-z0-9-]+)", text):
                self.assertIn(option.replace("-", "\\-"), page, level)
        missing = run("manual", "--to", self.folder / "none")
        self.assert_fails(missing, 1, f"nqp2: {self.folder}/none/nqp2.1: cannot be written "
                                      "(No such file or directory)")


class OutputTest(CardTest):
    def setUp(self):
        super().setUp()
        self.card.add("0001AA")
        (self.folder / "BDMV" / "PLAYLIST").mkdir(parents=True)

    def commands(self):
        card = self.card.path
        return (["--help"], ["--version"], ["clips", card], ["clips", card, "--json"],
                ["clips", card, "--csv"], ["clip", card, "0001AA"], ["info", card], ["umid"],
                ["free-name", card], ["space", card, "--json"], ["edl", "list", card, "--json"],
                ["ingest", "list", card, "--json"], ["playlists", self.folder, "--json"])

    def test_full_device_and_closed_pipe(self):
        for arguments in self.commands():
            with open("/dev/full", "wb") as full:
                result = run(*arguments, stdout=full)
            self.assert_fails(result, 1, LOST.format("No space left on device"))
            # Who reads has had enough: nothing to tell.
            with subprocess.Popen(["true"], stdin=subprocess.PIPE) as reader:
                reader.wait()
                result = run(*arguments, stdout=reader.stdin)
                reader.stdin.close()
            self.assertEqual((result.returncode, result.stderr), (1, ""), arguments)

    def test_closed_streams_are_no_files_of_the_program(self):
        for folder, name in (("VIDEO", "0001AA"), ("AUDIO", "0001AA00"), ("AUDIO", "0001AA01")):
            self.card.add_file(folder, f"{name}.MXF")
        streams = {0: "<&-", 1: ">&-", 2: "2>&-"}
        silent = (["import", self.card.path, "0001AA", "--to", self.folder / "taken"],
                  ["last-error"], ["ingest", "add", self.card.path, "0001AA", "0-9"])
        for arguments in (*self.commands(), *(silent if HAS_WORKER else silent[2:])):
            words = shlex.join(map(str, [PROGRAM, *arguments]))
            open_ones = run(*arguments)
            for mask in range(1, 8):
                closed = [number for number in streams if mask >> number & 1]
                result = subprocess.run(
                    ["sh", "-c", " ".join([words, *(streams[each] for each in closed)])],
                    capture_output=True, text=True, check=False)
                lost = 1 in closed and open_ones.stdout != ""
                self.assertEqual(result.returncode, 1 if lost else 0, (arguments, closed))
                if lost and 2 not in closed:
                    self.assertEqual(result.stderr, LOST.format("Bad file descriptor") + "\n")
                elif 1 not in closed:
                    self.assertEqual(result.stdout[:6], open_ones.stdout[:6])

    def test_a_limit_of_file_sizes_is_told(self):
        with open(self.folder / "result", "wb") as small:
            result = subprocess.run(["bash", "-c", 'ulimit -f 1; exec "$@"', "-", PROGRAM, "clips",
                                     self.card.path, "--json"], stdout=small, text=True,
                                    stderr=subprocess.PIPE, check=False)
        self.assert_fails(result, 1, LOST.format("File too large"))

    def test_names_what_is_meant_when_the_working_folder_is_gone(self):
        gone = self.folder / "gone"
        for arguments, name in ((["probe", "x.mov"], "x.mov"), (["clips", "card"], "card"),
                                (["import", self.card.path, "0001AA", "--to", "there"], "there")):
            gone.mkdir()
            result = subprocess.run(["sh", "-c", 'rmdir "$PWD"; exec "$@"', "-",
                                     Path(PROGRAM).absolute(), *arguments],
                                    cwd=gone, capture_output=True, text=True, check=False)
            self.assertEqual(result.returncode, 1)
            self.assertRegex(result.stderr, f"^nqp2: {name}: [^\n]*(reached|no such folder)[^\n]*\n$")


class CompletionTest(CardTest):
    def complete(self, *words):
        """What bash offers for the last of these words, of which "=" and ":" are its own."""
        line = [str(Path(PROGRAM).absolute()), *words[1:]]
        typed = " ".join(line).replace(" = ", "=").replace(" : ", ": ")
        script = (f"source {shlex.quote(str(COMPLETION))}; COMP_WORDS=({shlex.join(line)}); "
                  f"COMP_LINE={shlex.quote(typed)}; "
                  f"COMP_CWORD={len(words) - 1}; _nqp2; printf '%s\\n' \"${{COMPREPLY[@]}}\"")
        result = subprocess.run(["bash", "--norc", "-c", script], capture_output=True, text=True,
                                cwd=self.folder, check=False,
                                env={**os.environ, "HOME": str(self.folder)})
        self.assertEqual(result.stderr, "")
        return sorted(filter(None, result.stdout.splitlines()))

    def options_in_help(self, *level):
        return re.findall(r"^  (?:-\w, )?(--[a-z0-9-]+)", run(*level, "--help").stdout, re.MULTILINE)

    def test_commands(self):
        self.assertEqual(self.complete("nqp2", ""), sorted(COMMANDS))
        self.assertEqual(self.complete("nqp2", "cl"), ["clip", "clips"])
        for group, commands in GROUPS.items():
            self.assertEqual(self.complete("nqp2", group, ""), sorted(commands))

    def test_options_are_those_of_the_help(self):
        everywhere = set(self.options_in_help()) - {"--version"}
        self.assertEqual(self.complete("nqp2", "--"), sorted(everywhere | {"--version"}))
        for level in LEVELS[1:]:
            expected = everywhere | set(self.options_in_help(*level))
            self.assertEqual(self.complete("nqp2", *level, "--"), sorted(expected))

    def test_folders_clip_names_and_values(self):
        (self.folder / "card two").mkdir()
        self.card.add("0001AA")
        self.card.add_raw("0002bb.xml", b"")
        self.card.add_raw("._0001AA.XML", b"")
        for name in ("P001AB.XML", "p002.xml"):
            (self.card.path / "CONTENTS" / "EDITLIST").mkdir(exist_ok=True)
            (self.card.path / "CONTENTS" / "EDITLIST" / name).write_bytes(edit_list(""))
        folders, clips = ["card", "card two"], ["0001AA", "0002bb"]
        for words, offered in (
                (("clips", "ca"), folders), (("clip", "card", ""), clips),
                (("clip", "--drive", "E", "=", "/", "card", "0002"), clips[1:]),
                (("clip", '"card"', "0002"), clips[1:]), (("clip", "c\\ard", "0002"), clips[1:]),
                (("clip", "~/card", "0002"), clips[1:]), (("clip", "'~/card'", "0002"), []),
                (("clip", '"$HOME/card"', "0002"), clips[1:]),
                (("--drive", "E", "=", "card", "clip", "E", ":", "0002"), clips[1:]),
                (("ingest", "add", "card", "0001"), clips[:1]),
                (("clips", "card", "--columns", "Fi"), ["File\\ Name"]),
                (("record", "-f", "CT_AVCHD"), []), (("space", "-f", "CT_AVCHD_128"), [
                    "CT_AVCHD_1280_720_25P", "CT_AVCHD_1280_720_50P"]),
                (("space", "--standard", "VS_50"), ["VS_50I", "VS_50P"]),
                (("clips", "card", "--sort", "n"), ["name", "none"]),
                (("--drive", "E", "=", "card"), folders), (("import", "card", "0001AA", ""), clips),
                (("import", "card", "--all", "ca"), folders),
                (("import", "card", "--clip", "0002"), clips[1:]), (("export", "card", ""), clips),
                (("timeline", "card", "P001AB", ""), ["P001AB", "p002"]),
                (("timeline", "card", "-f", "e"), ["edl"]),
                (("rewrap", "card", "--edl", "p"), ["P001AB", "p002"]),
                (("rewrap", "card", "--edl", "P001AB", "ca"), folders),
                (("rewrap", "card", "-f", "mk"), ["mkv"]),
                (("export", "card", "--from", "card", "0002"), clips[1:])):
            self.assertEqual(self.complete("nqp2", *words), offered, words)


if __name__ == "__main__":
    main()
