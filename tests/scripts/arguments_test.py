#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Shows that scripts answer what they are asked and keep what is not theirs, in a tree of their own."""

import os
import shutil
import subprocess
import unittest
from contextlib import contextmanager

from checks import SCRIPTS, tree

MARK = ".made-by-NQP2ParserU"
INTO_FOLDERS = ("docs", "package", "release", "check-long", "check_install")
ALL = (*INTO_FOLDERS, "demo", "test", "bench", "lint", "check_packages", "install-deps")
# Programs that stand for the system's.
DOXYGEN = '#!/bin/sh\ncd "$(sed -n \'s/^OUTPUT_DIRECTORY = "\\(.*\\)"/\\1/p\')" && echo >index.html\n'
PACKAGER = "#!/bin/sh\necho '[1/10] c++ -o a.o'; echo '[10/10] c++ -o b.o'; find . >../made.deb\n"
NOTHING = "#!/bin/sh\n"
FAILS = "#!/bin/sh\nexit 1\n"


@contextmanager
def clone(with_git=True, **programs):
    """A copy of the scripts with what they look at, and these programs first in the search path."""
    files = {"top/CMakeLists.txt": "project(\n    VERSION 1.2.3\n)\n", "top/docs/Doxyfile": "",
             "top/packaging/debian/rules": "", "other/own.txt": "mine", "file": "",
             **{f"bin/{name.replace('_', '-')}": text for name, text in programs.items()}}
    with tree({**files, "top/.git/HEAD": ""} if with_git else files) as root:
        for folder in ("scripts", "bench", "tests/catalogue"):
            shutil.copytree(SCRIPTS.parent / folder, root / "top" / folder)
        if "apt_get" not in programs:
            (root / "top/scripts/install-deps").write_text(
                (SCRIPTS / "install-deps").read_text("utf-8").replace("\ndemo=(", "\nexit\ndemo=("),
                encoding="utf-8")
        for program in (root / "bin").glob("*"):
            program.chmod(0o755)
        yield root


def call(root, script, *arguments):
    """From beside the tree: what is named is what the caller sees there."""
    return subprocess.run([root / "top/scripts" / script, *arguments], cwd=root, text=True,
                          capture_output=True, check=False,
                          env={**os.environ, "PATH": f"{root}/bin:{os.environ['PATH']}"})


class Arguments(unittest.TestCase):
    def refused(self, result, script):
        self.assertEqual((result.returncode, len(result.stderr.splitlines())), (2, 1), result.stderr)
        self.assertTrue(result.stderr.startswith(f"{script}: "), result.stderr)

    def test_help_is_the_head_and_what_is_unknown_is_refused(self):
        with clone() as root:
            for script in ALL:
                for option in ("-h", "--help"):
                    with self.subTest(script, option=option):
                        result = call(root, script, option)
                        self.assertEqual((result.returncode, result.stderr), (0, ""))
                        head = [f"# {line}".rstrip() for line in result.stdout.splitlines()]
                        text = (SCRIPTS / script).read_text("utf-8")
                        self.assertIn("\n#\n" + "\n".join(head) + "\nset -e", text)
                with self.subTest(script, option="--nonsense"):
                    self.refused(call(root, script, "--nonsense"), script)

    def test_what_a_script_has_not_made_is_kept(self):
        for script in INTO_FOLDERS:
            for named in ("top", ".", "other", "top/scripts", "file", "/"):
                with self.subTest(script, named=named), clone() as root:
                    (root / MARK).touch()  # once made by a script, and the tree cloned into it
                    before = sorted(root.rglob("*"))
                    self.refused(call(root, script, named), script)
                    self.assertEqual(sorted(root.rglob("*")), before)

    def test_what_a_script_has_made_is_made_anew(self):
        for named in ("new", "top/build/docs", ""):
            with self.subTest(named), clone(doxygen=DOXYGEN) as root:
                made = root / (named or "top/build/docs")
                # A folder of an earlier version, at the script's own place, has no mark.
                old = [] if named == "new" else [made / "old.html"]
                for file in old:
                    made.mkdir(parents=True)
                    file.touch()
                for _ in range(2):
                    result = call(root, "docs", named)
                    self.assertEqual((result.returncode, result.stderr), (0, ""))
                    self.assertEqual({each.name for each in made.iterdir()}, {MARK, "index.html"})
                    (made / "left.html").touch()
                    (made / "index.html").write_text("<a href='gone'>", encoding="utf-8")


class Packages(unittest.TestCase):
    def test_an_unpacked_archive_is_packaged_as_it_is(self):
        with clone(with_git=False, dpkg_buildpackage=PACKAGER, lintian=NOTHING) as root:
            for output in ("", "top/out"):
                result = call(root, "package", output)
                self.assertEqual((result.returncode, result.stderr), (0, ""))
                made = root / (output or "top/build/packages")
                packed = (made / "made.deb").read_text("utf-8").splitlines()
                self.assertTrue({"./scripts/package", "./debian/changelog"} <= set(packed))
                self.assertEqual([each for each in packed if each.startswith(("./build", "./out"))
                                  or MARK in each], [])
                self.assertIn("[10/10]", result.stdout.splitlines())
                self.assertIn("[1/10]", (made / "build.log").read_text("utf-8"))
            self.assertEqual(call(root, "package", "", "v1").returncode, 2)
            self.assertIn("needs a clone", call(root, "release").stderr)

    def test_who_may_not_install_gets_the_line_for_who_may(self):
        with clone(dpkg_query=NOTHING, apt_get=FAILS, sudo=FAILS) as root:
            result = call(root, "install-deps", "docs")
            self.assertEqual(result.returncode, 1)
            self.assertRegex(result.stderr, r"apt-get update && apt-get install .*\bdoxygen\n")


if __name__ == "__main__":
    unittest.main()
