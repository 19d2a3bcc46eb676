# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Tests how bench/run_bench.py reads figures and works out ratios; measures nothing."""

import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "bench"))
import run_bench  # pylint: disable=wrong-import-position


def round_of(load, large_load, **more):
    return {"load/10": load, "read_floor/10": 2.0, "parse_floor/10": 8.0, "load/100": large_load,
            "read_floor/100": 20.0, "parse_floor/100": 80.0, **more}


def scan_lines():
    return [line for line in run_bench.ratios(10, 100)
            if line.name.startswith("scan of") and line.name.count("read")]


class RunBenchTest(unittest.TestCase):
    def rows(self, *rounds):
        return {row.name: row for row in run_bench.summarize(scan_lines(), list(rounds))}

    def test_a_ratio_is_the_median_of_the_ratios_of_each_round(self):
        slow_machine = {"load/10": 60.0, "read_floor/10": 10.0, "parse_floor/10": 40.0}
        rows = self.rows(round_of(11, 100), round_of(13, 100), round_of(0, 100) | slow_machine)
        row = rows["scan of 10 / plain read + bare parse"]
        self.assertEqual((row.lowest, row.ratio, row.highest), (1.1, 1.2, 1.3))
        self.assertEqual(row.ours, 13)

    def test_a_figure_that_nobody_measured_is_an_error(self):
        self.assertRaises(KeyError, run_bench.summarize, run_bench.ratios(10, 100),
                          [round_of(40, 260)])

    def test_a_failed_measurement_is_an_error(self):
        report = {"benchmarks": [{"name": "load/10", "error_occurred": True, "real_time": 0.0,
                                  "error_message": "not all clips were loaded"}]}
        with self.assertRaisesRegex(RuntimeError, "load/10: not all"):
            run_bench.figures_of(report)
        with self.assertRaises(RuntimeError):
            run_bench.calls_of("")


if __name__ == "__main__":
    unittest.main()
