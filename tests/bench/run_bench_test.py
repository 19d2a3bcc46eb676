# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Tests how bench/run_bench.py works out and shows its lines. With a build folder as argument it
also measures each line once on tiny cards, to see that every figure is to be had."""

import json
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

BENCH = Path(__file__).resolve().parents[2] / "bench"
sys.path.insert(0, str(BENCH))
# pylint: disable=wrong-import-position
from report.commands import calls_of
from report.output import failures, replace_block, section_markdown, table
from report.sources import figures_of
from report.terms import Line, figure, fixed, row_of

BUILD = None
LINE = Line("scan / read", "ms", figure("scan/load") / 2, figure("scan/read") - fixed(1, "ms"), 6)


def round_of(load, read):
    return {"scan/load": load * 1e6, "scan/read": read * 1e6}


class RunBenchTest(unittest.TestCase):
    def test_a_ratio_is_the_median_of_the_ratios_of_each_round(self):
        row = row_of(LINE, [round_of(22, 2), round_of(26, 2), round_of(120, 6)])
        self.assertEqual((row.lowest, row.ratio, row.highest), (11, 12, 13))
        self.assertEqual((row.ours, row.floor), (13e6, 1e6))
        with self.assertRaises(KeyError):
            row_of(LINE, [{"scan/load": 1.0}])

    def test_a_line_tells_whether_its_goal_holds_and_why_there_is_none(self):
        report = {"error": {"name": "load", "error": "not all clips"},
                  "absent": {"name": "load", "absent": "no caches"}}
        lacking = {what: row_of(LINE, [round_of(1, 2) | figures_of("scan", [entry])])
                   for what, entry in report.items()}
        cases = ((row_of(LINE, [round_of(12, 2)]), "holds", "", True),
                 (row_of(LINE, [round_of(14, 2)]), "OVER", "does not hold: scan / read: 7.0", False),
                 (lacking["error"], "FAILED", "FAILED: scan / read: not all clips", False),
                 (lacking["absent"], "not measured", "not measured: scan / read: no caches", True))
        for row, state, told, holds in cases:
            with self.subTest(state):
                self.assertEqual((row.state, row.holds), (state, holds))
                self.assertIn(state, table([row]))
                self.assertTrue(failures([row]).startswith(told))
                self.assertIn("| scan / read |", section_markdown([row]))

    def test_a_page_without_the_place_for_a_table_is_an_error(self):
        with tempfile.TemporaryDirectory() as folder:
            page = Path(folder) / "page.md"
            page.write_text("a\n<!-- x: written by scripts/bench -->\nold\n<!-- end of x -->\nb\n",
                            encoding="utf-8")
            replace_block(page, "x", r"new \1")
            text = page.read_text(encoding="utf-8")
            self.assertTrue("old" not in text and "\nnew \\1\n" in text and text.endswith("b\n"))
            self.assertRaises(RuntimeError, replace_block, page, "y", "new")

    def test_a_trace_without_a_summary_is_an_error(self):
        self.assertRaises(RuntimeError, calls_of, "")

    def test_every_line_is_measured(self):
        if BUILD is None:
            self.skipTest("needs a build folder")
        with tempfile.TemporaryDirectory() as folder:
            report = Path(folder) / "report.json"
            result = subprocess.run(
                [sys.executable, "-B", BENCH / "run_bench.py", "^(?!cold)", "--build", BUILD,
                 "--clips", "20", "60", "--rounds", "1", "--min-time", "0.001",
                 "--copy-megabytes", "5", "--json", report],
                check=False, capture_output=True, text=True)
            self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
            for line in json.loads(report.read_text(encoding="utf-8")):
                self.assertTrue(line["reason"] or line["floor"] > 0, line)


if __name__ == "__main__":
    if len(sys.argv) == 2:
        BUILD = sys.argv.pop()
    unittest.main()
