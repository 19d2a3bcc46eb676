#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Shows that check_layers.py finds what it is there for and lets good trees pass."""

import unittest

from checks import run, tree

import check_layers  # noqa: E402

# The headers of the small tree, and the rooms that list public ones.
HEADERS = ("library/platform/unicode.h", "library/media/timecode.h", "library/xml/dom/node.h",
           "library/edl/event.h", "library/clips/scan.h", "library/channel/table.h",
           "programs/nqp2/table.h", "programs/console/value.h", "programs/copy/copier.h",
           "programs/worker/session.h", "programs/worker/base/file.h")
PUBLIC = {"platform": "CString.h", "media": "P2Clip.h", "xml": "Markup.h", "parser": "Parser.h"}

# File, its include, and a piece of the complaint.
BAD = (
    ("library/platform/a.cpp", '"media/timecode.h"', "platform/ may not include from media/"),
    ("library/xml/dom/a.cpp", '"NQP2ParserU/Markup.h"', "xml/dom/ may not include from xml/"),
    ("library/edl/a.cpp", '"clips/scan.h"', "edl/ may not include from clips/"),
    ("library/edl/parser_edl.cpp", '"NQP2ParserU/Parser.h"', "edl/ may not include from parser/"),
    ("library/parser/a.cpp", '"nqp2/table.h"', "parser/ may not include from nqp2/"),
    ("programs/copy/a.cpp", '"media/timecode.h"', "copy/ may not include from media/"),
    ("programs/nqp2/a.cpp", '"platform/unicode.h"', "public headers only"),
    ("examples/a.cpp", '"worker/session.h"', "public headers only"),
    ("programs/console/a.cpp", '"platform/unicode.h"', "public headers only"),
    ("examples/a.cpp", '"console/value.h"', "public headers only"),
    ("programs/offload/mhl/a.cpp", '"copy/copier.h"', "offload/mhl/ may not include from copy/"),
    ("programs/worker/av/a.cpp", '"worker/session.h"', "worker/av/ may not include from worker/"),
    ("library/parser/a.cpp", "<libxml/tree.h>", "libxml2 belongs to xml/dom/"),
    ("programs/worker/a.cpp", "<libavformat/avformat.h>", "libavformat belongs to worker/av/"),
    ("programs/catalogue/a.cpp", "<sqlite3.h>", "SQLite belongs to catalogue/sqlite/"),
    ("programs/nqp2/a.cpp", "<libpq-fe.h>", "client library belongs to catalogue/postgresql/"),
    ("library/xml/dom/a.cpp", "<unistd.h>", "operating system belongs to platform/"),
    ("include/NQP2ParserU/Markup.h", '"xml/dom/node.h"', "public header shows an internal one"),
    ("include/NQP2ParserU/P2Clip.h", '"NQP2ParserU/Markup.h"', "media/ may not include from xml/"),
    ("include/NQP2ParserU/Other.h", "<string>", "has no place among the rooms"),
    ("library/media/a.cpp", '"timecode.h"', "no such file below"),
)

GOOD = (
    ("library/media/a.cpp", '"platform/unicode.h"'),
    ("library/xml/dom/a.cpp", "<libxml/tree.h>"),
    ("library/parser/parser_edl.cpp", '"edl/event.h"'),
    ("programs/nqp2/a.cpp", '"NQP2ParserU/Parser.h"'),
    ("programs/nqp2/a.cpp", '"console/value.h"'),
    ("programs/worker/av/a.cpp", '"worker/base/file.h"'),
    ("programs/offload/a.cpp", '"console/value.h"'),
    ("programs/catalogue/sqlite/a.cpp", "<sqlite3.h>"),
    ("examples/a.cpp", "<NQP2ParserU/Parser.h>"),
    ("tests/platform/a_test.cpp", "<sys/resource.h>"),
)


def files_with(file, include):
    """A small tree in which `file` has one include."""
    headers = [*HEADERS, *(f"include/NQP2ParserU/{header}" for header in PUBLIC.values())]
    lists = {f"library/{room}/CMakeLists.txt":
             f"nqp2_add_component(\n    {room}\n    EXPORTED {header}\n    DEPENDS platform)\n"
             for room, header in PUBLIC.items()}
    return {**dict.fromkeys(headers, "#pragma once\n"), **lists,
            file: f"// a comment\n#include {include}\n"}


class CheckLayers(unittest.TestCase):
    def test_names_file_line_and_fault(self):
        for file, include, complaint in (*BAD, *((*good, "") for good in GOOD)):
            with self.subTest(file=file, include=include), tree(files_with(file, include)) as root:
                found = "\n".join(check_layers.faults_below(root))
                self.assertIn(complaint, found)
                self.assertRegex(found, rf"^{file}:[12]: " if complaint else "^$")

    def test_exit_status_tells_good_from_bad_and_from_nothing_to_check(self):
        for files, status in ((files_with(*GOOD[0]), 0), (files_with(*BAD[0][:2]), 1), ({}, 2)):
            with tree(files) as root:
                result = run("check_layers.py", root)
                self.assertEqual((result.returncode, BAD[0][2] in result.stdout),
                                 (status, status == 1))


if __name__ == "__main__":
    unittest.main()
