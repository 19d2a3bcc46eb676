#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Shows that check_layers.py finds what it is there for and lets good trees pass."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPTS = Path(__file__).resolve().parents[2] / "scripts"
sys.path.insert(0, str(SCRIPTS))

import check_layers  # noqa: E402

HEADERS = ("platform/CString.h", "platform/unicode.h", "media/P2Clip.h", "media/timecode.h",
           "xml/MarkupMSXML.h", "xml/dom/node.h", "edl/event.h", "parser/NQP2Parser.h",
           "parser/clip_scan.h", "channel/table.h", "tools/nqp2/table.h")

# File, its include, and a piece of the complaint.
BAD = (
    ("platform/a.cpp", '"media/timecode.h"', "platform/ may not include from media/"),
    ("media/a.cpp", '"xml/dom/node.h"', "media/ may not include from xml/dom/"),
    ("xml/dom/a.cpp", '"xml/MarkupMSXML.h"', "xml/dom/ may not include from xml/"),
    ("xml/a.cpp", '"edl/event.h"', "xml/ may not include from edl/"),
    ("edl/events.cpp", '"parser/NQP2Parser.h"', "edl/ may not include from parser/"),
    ("edl/parser_edl.h", '"parser/NQP2Parser.h"', "edl/ may not include from parser/"),
    ("parser/a.cpp", '"tools/nqp2/table.h"', "parser/ may not include from tools/"),
    ("tools/nqp2/a.cpp", '"platform/unicode.h"', "exported headers only"),
    ("parser/a.cpp", "<libxml/tree.h>", "libxml2 belongs to xml/dom/"),
    ("tests/xml/a_test.cpp", "  <libxml/tree.h>", "libxml2 belongs to xml/dom/"),
    ("worker/a.cpp", "<libavformat/avformat.h>", "libavformat belongs to worker/av/"),
    ("xml/dom/a.cpp", "<unistd.h>", "operating system belongs to platform/"),
    ("xml/dom/Node.h", "<libxml/tree.h>", "an exported header shows libxml/tree.h"),
    ("media/Thing.h", '"platform/unicode.h"', "exported header shows an internal one"),
    ("media/a.cpp", '"timecode.h"', "no such file from the top"),
    ("xml/other/a.cpp", "<string>", "has no place among the layers"),
)

GOOD = (
    ("media/a.cpp", '"platform/unicode.h"'),
    ("xml/dom/a.cpp", "<libxml/tree.h>"),
    ("platform/a.cpp", "<sys/stat.h>"),
    ("edl/parser_edl.cpp", '"parser/NQP2Parser.h"'),
    ("tools/nqp2/a.cpp", '"parser/NQP2Parser.h"'),
    ("bench/a.cpp", "<libxml/tree.h>"),
    ("tests/platform/a_test.cpp", "<sys/resource.h>"),
)


def make_tree(root: Path, file: str, include: str) -> None:
    """A small tree in which `file` has one include."""
    for header in HEADERS:
        (root / header).parent.mkdir(parents=True, exist_ok=True)
        (root / header).write_text("#pragma once\n", encoding="utf-8")
    path = root / file
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(f"// a comment\n#include {include}\n", encoding="utf-8")


def faults(file: str, include: str) -> str:
    with tempfile.TemporaryDirectory() as folder:
        make_tree(Path(folder), file, include)
        return "\n".join(check_layers.faults_below(Path(folder)))


def run(root: str) -> subprocess.CompletedProcess:
    return subprocess.run([sys.executable, "-B", SCRIPTS / "check_layers.py", root],
                          capture_output=True, text=True, check=False)


class CheckLayers(unittest.TestCase):
    def test_names_file_line_and_fault(self):
        for file, include, complaint in BAD:
            with self.subTest(file=file, include=include):
                found = faults(file, include)
                self.assertIn(complaint, found)
                self.assertRegex(found, rf"^{file}:[12]: ")

    def test_lets_downward_includes_pass(self):
        for file, include in GOOD:
            with self.subTest(file=file, include=include):
                self.assertEqual(faults(file, include), "")

    def test_exit_status_tells_good_from_bad_and_from_nothing_to_check(self):
        with tempfile.TemporaryDirectory() as root:
            self.assertEqual(run(root).returncode, 2)
            make_tree(Path(root), *GOOD[0])
            self.assertEqual(run(root).returncode, 0)
            make_tree(Path(root), *BAD[0][:2])
            bad = run(root)
            self.assertEqual(bad.returncode, 1)
            self.assertIn(BAD[0][2], bad.stdout)


if __name__ == "__main__":
    unittest.main()
