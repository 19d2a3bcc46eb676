#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Measures everything whose speed is promised and prints it as ratios to floors, which ran in turn
with it. A line tells ours, the floor, the ratio, the goal and whether that holds."""

import argparse
import json
import os
import platform
import re
import sys
import time
from pathlib import Path
from typing import Optional

from report.cards import ROOT, Cards
from report.lines import Sizes, sections
from report.neighbours import table_body
from report.output import as_json, failures, markdown, replace_block, section_markdown, table
from report.sources import Setting, measure
from report.terms import Line, Row, row_of

PAGE = ROOT / "docs" / "performance.md"


def arguments_of(command_line: Optional[list[str]]) -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("filter", nargs="?", default="", metavar="REGEX",
                        help="measure only lines whose names match, in any letter case")
    parser.add_argument("--build", type=Path, default=ROOT / "build" / "bench",
                        help="build folder of the preset 'bench' (default: build/bench)")
    parser.add_argument("--clips", type=int, nargs=2, default=[1000, 10000],
                        metavar=("SMALL", "LARGE"), help="sizes of the cards (default: 1000 10000)")
    parser.add_argument("--rounds", type=int, default=3, help="default: 3")
    parser.add_argument("--min-time", type=float, default=0.3, metavar="SECONDS",
                        help="least time of each measurement in a round (default: 0.3)")
    parser.add_argument("--copy-megabytes", type=int, default=1024, metavar="MEGABYTES",
                        help="size of the clip that is imported (default: 1024)")
    parser.add_argument("--json", type=Path, metavar="FILE", help="write the result there as well")
    parser.add_argument("--check", action="store_true", help="exit status 1 when a goal is missed")
    parser.add_argument("--write-docs", action="store_true",
                        help="write the tables of docs/performance.md; measures other programs too")
    arguments = parser.parse_args(command_line)
    if not 10 <= arguments.clips[0] < arguments.clips[1] or arguments.rounds < 1:
        parser.error("SMALL must be 10 at least and below LARGE, and a round is needed")
    if arguments.write_docs and arguments.filter:
        parser.error("--write-docs goes with all lines")
    return arguments


def chosen(arguments: argparse.Namespace, sizes: Sizes) -> dict[str, list[Line]]:
    pattern = re.compile(arguments.filter, re.IGNORECASE)
    lines = {title: [line for line in group if pattern.search(line.name)]
             for title, group in sections(sizes).items()}
    return {title: group for title, group in lines.items() if group}


def run(setting: Setting, groups: dict[str, list[Line]], rounds: int) -> dict[str, list[Row]]:
    wanted = {name for group in groups.values() for line in group for name in line.figures}
    figures = []
    for number in range(rounds):
        print(f"round {number + 1} of {rounds}", file=sys.stderr)
        figures.append(measure(setting, wanted))
    return {title: [row_of(line, figures) for line in group] for title, group in groups.items()}


def machine() -> str:
    return (f"{time.strftime('%Y-%m-%d')}, {os.cpu_count()} processors, Linux "
            f"{platform.release().split('-')[0]}, load {os.getloadavg()[0]:.1f} at the end")


def write_docs(setting: Setting, groups: dict[str, list[Row]], rounds: int) -> None:
    said = "one round" if rounds == 1 else f"{rounds} rounds"
    parts = [f"### {title}\n\n{section_markdown(rows)}" for title, rows in groups.items()]
    replace_block(PAGE, "figures", "\n\n".join([f"Last run: {machine()}, {said}.", *parts]))
    card = setting.cards.bulk(setting.sizes.small)
    head = ("program", "what it does", "wall clock", "processor", "of a clip")
    replace_block(PAGE, "neighbours", markdown(head, table_body(
        setting.programs / "run_once", setting.nqp2, card)))


def main() -> int:
    arguments = arguments_of(None)
    sizes = Sizes(*arguments.clips, arguments.copy_megabytes)
    setting = Setting(arguments.build.resolve(),
                      Cards(arguments.build.resolve() / "bench-cards"), sizes, arguments.min_time)
    groups = chosen(arguments, sizes)
    if not groups:
        print(f"run_bench.py: no line matches {arguments.filter}", file=sys.stderr)
        return 2
    groups = run(setting, groups, arguments.rounds)
    rows = [row for group in groups.values() for row in group]
    print(table(rows))
    if misses := failures(rows):
        print(f"\n{misses}")
    if arguments.json:
        arguments.json.write_text(json.dumps([as_json(row) for row in rows], indent=2) + "\n",
                                  encoding="utf-8")
    if arguments.write_docs:
        write_docs(setting, groups, arguments.rounds)
    if any(row.lacks and row.lacks.failed for row in rows):
        return 3
    return 1 if arguments.check and not all(row.holds for row in rows) else 0


if __name__ == "__main__":
    sys.exit(main())
