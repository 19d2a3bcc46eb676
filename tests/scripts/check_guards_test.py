#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Shows that check_guards.py finds exported functions without guard and lets others pass."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))

import check_guards  # noqa: E402

HEADER = """
/// Throws _com_error for a bad path.
NQP2_API int Ask(int value);
class NQP2_API Reader {
public:
    Reader() noexcept = default;
    int Inline() const noexcept { return 1; }
    /// Reads.
    int Read(
        int value);
    /// Throws _com_error.
    int Find(int value);
private:
    int Hidden();
};
"""
ASK = "int Ask(int v) {\n    return nqp2::ComGuarded(0, [&] { return v; });\n}\n"
FIND = "int Reader::Find(int v) {\n    return Guarded(0, [&] { return v; });\n}\n"
READ = "int Reader::Read(int v)"

# The definition of Read, and what is found.
CASES = (
    (" {\n    return Guarded(0, [&] { return v; });\n}\n", ""),
    (" noexcept {\n    return v;\n}\n", ""),
    (" {\n    return OneWhenDone(\n        AskProxy(m, [&] { return v; }));\n}\n", ""),
    (" {\n    return v; // Guarded(\n}\n", "Reader::Read is neither"),
    (" {\n    Make(v);\n    return Guarded(0, [&] { return v; });\n}\n", "Reader::Read is neither"),
    (" {\n    return Guarded(0, [&] { return v; }) + Make(v);\n}\n", "Reader::Read is neither"),
    (" {\n    return ComGuarded(0, [&] { return v; });\n}\n", "its header does not say"),
    (None, "Reader::Read is exported, and its definition is not found"),
)


class CheckGuards(unittest.TestCase):
    def test_finds_what_is_not_guarded(self):
        for body, complaint in CASES:
            with self.subTest(body=body), tempfile.TemporaryDirectory() as top:
                Path(top, "xml").mkdir()
                Path(top, "xml", "Reader.h").write_text(HEADER, encoding="utf-8")
                source = ASK + FIND + (READ + body if body else "") + "int Reader::Hidden() {}\n"
                Path(top, "xml", "reader.cpp").write_text(source, encoding="utf-8")
                found = "\n".join(check_guards.faults_below(Path(top)))
                self.assertIn(complaint, found)
                self.assertEqual(found == "", complaint == "", found)


if __name__ == "__main__":
    unittest.main()
