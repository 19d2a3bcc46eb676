#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Shows that check_exports.py tells marked symbols from others, on libraries made for it.
   check_exports_test.py COMPILER"""

import subprocess
import sys
import unittest

from checks import run, tree

COMPILER = "c++"

HEADER = """
#define NQP2_API __attribute__((visibility("default")))
struct Text {};
class NQP2_API Reader {
public:
    virtual ~Reader();
    operator const char*() const;
};
namespace nqp2 { NQP2_API bool Open(const char* path); }
NQP2_API Text operator+(const Text&, const Text&);
"""
SOURCE = """
#include "Reader.h"
Reader::~Reader() = default;
Reader::operator const char*() const { return ""; }
bool nqp2::Open(const char*) { return true; }
Text operator+(const Text&, const Text&) { return {}; }
"""


def check(more_source: str = "", *flags: str) -> subprocess.CompletedProcess:
    """Builds the library above with `more_source` and checks it."""
    with tree({"Reader.h": HEADER, "reader.cpp": SOURCE + more_source}) as root:
        subprocess.run([COMPILER, "-shared", "-fPIC", "-fvisibility=hidden", "-o", root / "lib.so",
                        root / "reader.cpp", *flags], check=True)
        return run("check_exports.py", root / "lib.so", root)


class CheckExports(unittest.TestCase):
    def test_lets_marked_symbols_and_what_belongs_to_them_pass(self):
        result = check()
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)

    def test_names_what_is_exported_without_a_mark(self):
        show = '__attribute__((visibility("default"))) '
        for source, name in ((f"{show} void Leak() {{}}", "Leak()"),
                             (f'extern "C" {show} void xmlLeak() {{}}', "xmlLeak"),
                             (f"namespace nqp2::dom {{ {show} bool Open() {{ return 1; }} }}",
                              "nqp2::dom::Open()"),
                             (f"struct {show} Open {{ virtual ~Open(); }}; Open::~Open() {{}}",
                              "vtable for Open")):
            with self.subTest(name=name):
                result = check(source)
                self.assertEqual(result.returncode, 1)
                self.assertIn(f"exported without a mark: {name}\n", result.stdout)

    def test_names_a_library_that_was_not_promised(self):
        result = check("", "-Wl,--no-as-needed", "-lresolv")
        self.assertEqual(result.returncode, 1)
        self.assertIn("needs libresolv", result.stdout)


if __name__ == "__main__":
    COMPILER = sys.argv.pop(1) if len(sys.argv) > 1 else COMPILER
    unittest.main()
