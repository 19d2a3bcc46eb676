#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Shows that check_guards.py finds exported functions without guard and lets others pass."""

import unittest

from checks import tree

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
            source = ASK + FIND + (READ + body if body else "") + "int Reader::Hidden() {}\n"
            with self.subTest(body), tree({"xml/Reader.h": HEADER, "xml/reader.cpp": source}) as top:
                found = "\n".join(check_guards.faults_below(top))
                self.assertIn(complaint, found)
                self.assertEqual(found == "", complaint == "", found)


if __name__ == "__main__":
    unittest.main()
