#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Measures everything whose speed is promised and prints it as ratios to floors of the same run,
such as the plain reading and bare parsing of the same files. Each round measures everything once, so that a busy machine slows
the scan and its floor alike; what is printed are medians over the rounds."""

import argparse
import hashlib
import json
import shutil
import subprocess
import sys
from pathlib import Path
from statistics import median
from typing import Callable, NamedTuple, Optional

ROOT = Path(__file__).resolve().parent.parent
AVCHD_CLIPS = (100, 1000, 5000)
CALLS = "system calls per clip / five"
MAKE_CARD = ROOT / "samples" / "make_card.py"

Figures = dict[str, float]  # one round: "load/1000" in ms, "memory/1000:held_bytes" and so on


class Ratio(NamedTuple):
    """One line of the result: what is measured, what it is compared with, where it should stay."""

    name: str
    unit: str
    ours: Callable[[Figures], float]
    floor: Callable[[Figures], float]
    target: Optional[float]  # None: for information only


class Row(NamedTuple):
    name: str
    unit: str
    ours: float
    floor: float
    ratio: float
    lowest: float
    highest: float
    target: Optional[float]

    @property
    def over(self) -> bool:
        return self.target is not None and self.ratio > self.target


def ratios(small: int, large: int) -> list[Ratio]:
    """The lines for a small and a large card."""

    def figure(name: str) -> Callable[[Figures], float]:
        return lambda figures: figures[name]

    def per_clip(clips: int) -> Callable[[Figures], float]:
        return lambda figures: figures[f"load/{clips}"] / clips * 1000

    def read_and_parse(clips: int) -> Callable[[Figures], float]:
        return lambda figures: figures[f"read_floor/{clips}"] + figures[f"parse_floor/{clips}"]

    def fixed(value: float) -> Callable[[Figures], float]:
        return lambda figures: value

    lines = []
    for clips in (small, large):
        load = figure(f"load/{clips}")
        lines += [
            Ratio(f"scan of {clips} / plain read", "ms", load, figure(f"read_floor/{clips}"), 13),
            Ratio(f"scan of {clips} / plain read + bare parse", "ms", load, read_and_parse(clips),
                  None),
            Ratio(f"memory held by a clip of {clips} / 6 KB", "bytes",
                  figure(f"memory/{clips}:held_bytes"), fixed(6 * 1024), 1.0),
        ]
    lines += [
        Ratio(f"time per clip, {large} / {small}", "us", per_clip(large), per_clip(small), 1.15),
        Ratio(f"slow medium, scan of {small} / one read after another", "ms",
              figure(f"slow_load/{small}"), figure(f"slow_read_floor/{small}"), 0.6),
        Ratio(CALLS, "calls", figure("calls:load"), fixed(5), 1.0),
    ]
    return (lines + list_ratios(figure, fixed) + channel_ratios(figure, fixed)
            + worker_ratios(figure, fixed) + avchd_ratios(figure))


def list_ratios(figure: Callable, fixed: Callable) -> list[Ratio]:
    """The lines for edit lists, ingest lists and capacity."""

    def each(name: str, count: int) -> Callable[[Figures], float]:
        return lambda figures: figures[f"{name}/{count}"] / count * 1000

    return [
        Ratio("1000 edit lists / plain read", "ms", figure("load_lists/1000"),
              figure("list_floor/1000"), 13),
        Ratio("time per edit list, 1000 / 100", "us", each("load_lists", 1000),
              each("load_lists", 100), 1.15),
        Ratio("time per edit list, 10000 / 1000", "us", each("load_lists", 10000),
              each("load_lists", 1000), 1.15),
        Ratio("saving 10000 events / libxml2 alone", "ms", figure("save_list"),
              figure("save_floor"), 3),
        Ratio("ingest mark per clip, 10000 / 1000 listed", "us", each("ingest", 10000),
              each("ingest", 1000), 1.2),
        Ratio("capacity figure / 10 ns", "ns", lambda figures: figures["capacity"] * 1e6,
              fixed(10), 1.0),
    ]


def channel_ratios(figure: Callable, fixed: Callable) -> list[Ratio]:
    """The lines for the channel to the worker process."""
    return [
        Ratio("request and reply / futex ping-pong", "ms", figure("channel/request"),
              figure("channel/futex_floor"), 3),
        Ratio("576,000 bytes to the worker / copy and read", "ms", figure("channel/small"),
              figure("channel/copy_floor_small"), 2.2),
        Ratio("45,360,000 bytes to the worker / copy and read", "ms", figure("channel/large"),
              figure("channel/copy_floor_large"), 1.15),
        Ratio("processor time of a second's wait / 2 ms", "ms", figure("channel/idle"), fixed(2),
              1.0),
    ]


def worker_ratios(figure: Callable, fixed: Callable) -> list[Ratio]:
    """The lines for what a host sees of the worker through a parser."""
    return [
        Ratio("smallest request of a parser / futex ping-pong", "ms", figure("worker/request"),
              figure("channel/futex_floor"), 3),
        Ratio("AddRTExportAVData of 576,000 bytes / copy and read", "ms", figure("worker/frame"),
              figure("channel/copy_floor_small"), 2.2),
        Ratio("AddRTExportAVData of 45 MB / copy and read", "ms", figure("worker/large_frame"),
              figure("channel/copy_floor_large"), 1.15),
        Ratio("import of a large clip / cp and checksum of both", "ms", figure("worker/import"),
              figure("worker/copy_floor"), 1.1),
        Ratio("processor time of an idle parser's second / 5 ms", "ms", figure("worker/idle"),
              fixed(5), 1.0),
    ]


def avchd_ratios(figure: Callable) -> list[Ratio]:
    """The lines for AVCHD cards."""

    def per_clip(clips: int) -> Callable[[Figures], float]:
        return lambda figures: figures[f"avchd_load/{clips}"] / clips * 1000

    few, some, many = AVCHD_CLIPS
    return [
        Ratio(f"AVCHD scan of {some} / plain read with 64 KB of each stream", "ms",
              figure(f"avchd_load/{some}"), figure(f"avchd_floor/{some}"), 4),
        Ratio(f"time per AVCHD clip, {some} / {few}", "us", per_clip(some), per_clip(few), 1.25),
        Ratio(f"time per AVCHD clip, {many} / {some}", "us", per_clip(many), per_clip(some), 1.15),
    ]


def summarize(lines: list[Ratio], rounds: list[Figures]) -> list[Row]:
    """Medians over the rounds."""
    rows = []
    for line in lines:
        pairs = [(line.ours(figures), line.floor(figures)) for figures in rounds]
        quotients = [ours / floor for ours, floor in pairs]
        rows.append(Row(line.name, line.unit, median(ours for ours, _ in pairs),
                        median(floor for _, floor in pairs), median(quotients), min(quotients),
                        max(quotients), line.target))
    return rows


def table(rows: list[Row]) -> str:
    head = ("", "unit", "ours", "floor", "ratio", "lowest", "highest", "target", "")
    body = [(row.name, row.unit, f"{row.ours:.1f}", f"{row.floor:.1f}", f"{row.ratio:.2f}",
             f"{row.lowest:.2f}", f"{row.highest:.2f}",
             "-" if row.target is None else f"{row.target:.2f}", "OVER" if row.over else "")
            for row in rows]
    widths = [max(map(len, column)) for column in zip(head, *body)]
    return "\n".join(
        "  ".join(cell.ljust(width) if place < 2 else cell.rjust(width)
                  for place, (cell, width) in enumerate(zip(line, widths))).rstrip()
        for line in (head, *body))


def figures_of(report: dict) -> Figures:
    """The figures of one JSON report of the benchmark program."""
    figures: Figures = {}
    for entry in report["benchmarks"]:
        name = "/".join(part for part in entry["name"].split("/")[:2] if part != "real_time")
        if entry.get("error_occurred"):
            raise RuntimeError(f"{name}: {entry['error_message']}")
        figures[name] = entry["real_time"]
        if "held_bytes" in entry:
            figures[f"{name}:held_bytes"] = entry["held_bytes"]
    return figures


def calls_of(summary: str) -> int:
    """The number of calls in the summary that `strace -c` writes."""
    total = [line.split() for line in summary.splitlines() if line.endswith(" total")]
    if len(total) != 1:
        raise RuntimeError("strace wrote no summary")
    return int(total[0][3])


def card_with(clips: int, folder: Path, kind: str = "p2") -> Path:
    """A card of that many clips, made anew when the sources of its maker have changed."""
    digest = hashlib.sha256()
    for source in sorted(MAKE_CARD.parent.rglob("*.py")):
        digest.update(source.read_bytes())
    name = str(clips) if kind == "p2" else f"{kind}-{clips}"
    card, stamp = folder / name, folder / f"{name}.made-by"
    if not stamp.is_file() or stamp.read_text(encoding="ascii") != digest.hexdigest():
        folder.mkdir(parents=True, exist_ok=True)
        print(f"making a card of {clips} clips ({kind})", file=sys.stderr)
        subprocess.run([sys.executable, MAKE_CARD, card, "--kind", kind, "--clips", str(clips),
                        "--force"], check=True)
        stamp.write_text(digest.hexdigest(), encoding="ascii")
    return card


def measured_by(program: Path, arguments: list, min_time: float) -> Figures:
    result = subprocess.run(
        [program, "--benchmark_format=json", f"--benchmark_min_time={min_time}", *arguments],
        check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    return figures_of(json.loads(result.stdout))


def measure_round(programs: Path, cards: list[Path], min_time: float,
                  clip_megabytes: int) -> Figures:
    figures: Figures = {}
    for card in cards:
        # The slow medium is slow by intent: the small card shows all there is to see.
        chosen = "." if card == cards[0] else "-slow"
        figures.update(measured_by(programs / "bench_scan",
                                   [f"--benchmark_filter={chosen}", card], min_time))
    folder = cards[0].parent
    worker = programs.parent / "programs" / "nqp2" / "nqp2-worker"
    avchd = [card_with(clips, folder, "avchd") for clips in AVCHD_CLIPS]
    figures.update(measured_by(programs / "bench_channel", [], min_time))
    figures.update(measured_by(programs / "bench_lists", [folder / "lists"], min_time))
    figures.update(measured_by(programs / "bench_avchd", avchd, min_time / 5))
    figures.update(measured_by(programs / "bench_worker", [worker, folder, str(clip_megabytes)],
                               min_time))
    return figures


def count_calls(program: Path, cards: list[Path], sizes: list[int], scratch: Path) -> Figures:
    """System calls for one more clip: what the large card takes beyond the small one, so that the
    program's start does not count. Nothing where strace cannot be used."""
    if not shutil.which("strace"):
        print("system calls not counted: strace is not installed", file=sys.stderr)
        return {}
    counts = []
    for card in cards:
        # Tracing makes a fast medium look slow, so that threads read ahead and wait for one
        # another.
        result = subprocess.run(
            ["strace", "-c", "-f", "-e", "trace=!futex", "-o", scratch, program, card],
            check=False, capture_output=True, text=True)
        if result.returncode != 0:
            print(f"system calls not counted: {result.stderr.strip()}", file=sys.stderr)
            return {}
        counts.append(calls_of(scratch.read_text(encoding="utf-8")))
    return {"calls:load": (counts[-1] - counts[0]) / (sizes[-1] - sizes[0])}


def arguments_of(command_line: Optional[list[str]]) -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=Path, default=ROOT / "build" / "bench",
                        help="build folder of the preset 'bench' (default: build/bench)")
    parser.add_argument("--clips", type=int, nargs=2, default=[1000, 10000],
                        metavar=("SMALL", "LARGE"), help="sizes of the cards (default: 1000 10000)")
    parser.add_argument("--rounds", type=int, default=5, help="default: 5")
    parser.add_argument("--min-time", type=float, default=0.5, metavar="SECONDS",
                        help="least time of each measurement in a round (default: 0.5)")
    parser.add_argument("--clip-megabytes", type=int, default=4096, metavar="MEGABYTES",
                        help="size of the clip that is imported, sparse (default: 4096)")
    parser.add_argument("--json", type=Path, metavar="FILE", help="write the result there as well")
    parser.add_argument("--check", action="store_true", help="exit status 1 when over a target")
    arguments = parser.parse_args(command_line)
    if not 0 < arguments.clips[0] < arguments.clips[1] or arguments.rounds < 1:
        parser.error("SMALL must be below LARGE, and at least one round is needed")
    return arguments


def run(arguments: argparse.Namespace) -> list[Row]:
    programs = arguments.build / "bench"
    folder = arguments.build / "bench-cards"
    cards = [card_with(clips, folder) for clips in arguments.clips]
    calls = count_calls(programs / "scan_once", cards, arguments.clips, folder / "strace.txt")
    rounds = []
    for number in range(arguments.rounds):
        print(f"round {number + 1} of {arguments.rounds}", file=sys.stderr)
        rounds.append(calls | measure_round(programs, cards, arguments.min_time,
                                            arguments.clip_megabytes))
    lines = ratios(*arguments.clips)
    return summarize(lines if calls else [each for each in lines if each.name != CALLS], rounds)


def main() -> int:
    arguments = arguments_of(None)
    try:
        rows = run(arguments)
    except (OSError, RuntimeError, subprocess.CalledProcessError) as error:
        print(f"run_bench.py: {error}", file=sys.stderr)
        return 3
    print(table(rows))
    if arguments.json:
        lines = [row._asdict() | {"over": row.over} for row in rows]
        arguments.json.write_text(json.dumps(lines, indent=2) + "\n", encoding="utf-8")
    return 1 if arguments.check and any(row.over for row in rows) else 0


if __name__ == "__main__":
    sys.exit(main())
