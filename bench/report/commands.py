# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Whole programs, measured from outside: processor time, wall clock, memory, system calls."""

import json
import os
import shutil
import subprocess
import tempfile
from pathlib import Path
from typing import Callable

from report.cards import media_of
from report.disks import Disks, forget
from report.lines import DISK_RATE
from report.terms import Figures, NoFigure

FORMS = {"table": [], "csv": ["--csv", "--columns", "all"], "json": ["--json"],
         "metadata": ["--json", "--metadata"]}


def cost_of(run_once: Path, command: list) -> dict[str, float]:
    """What one run took: "wall" and "processor" in ns, "peak" in bytes."""
    result = subprocess.run([run_once, *map(str, command)], check=False, capture_output=True,
                            text=True)
    if result.returncode != 0:
        raise RuntimeError(result.stderr.strip())
    return json.loads(result.stdout)


def calls_of(summary: str) -> int:
    """The number of calls in the summary that `strace -c` writes."""
    total = [line.split() for line in summary.splitlines() if line.endswith(" total")]
    if len(total) != 1:
        raise RuntimeError("strace wrote no summary")
    return int(total[0][3])


class Commands:
    def __init__(self, setting):
        self._setting = setting
        self._run_once = setting.programs / "run_once"
        self._scratch = setting.cards.folder / "scratch"

    def measure(self, kind: str, names: set[str]) -> Figures:
        kinds: dict[str, Callable[[set[str]], Figures]] = {
            "command": self._listings, "calls": self._calls, "copy": self._copies,
            "record": self._recordings, "page": self._pages, "shelf": self._shelves,
            "disc": self._discs, "fan": self._fans, "offload": self._offloads,
            "rewrap": self._rewraps}
        return kinds[kind](names)

    def _low(self, runs: dict[str, Callable[[], list]], times: int) -> Figures:
        """The least of each kind of cost; the runs take turns. A run prepares, which is not
        measured, and gives the command."""
        costs: dict[str, list[dict[str, float]]] = {name: [] for name in runs}
        for _ in range(times):
            for name, prepare in runs.items():
                costs[name].append(cost_of(self._run_once, prepare()))
        return {f"{name}:{key}": min(cost[key] for cost in series)
                for name, series in costs.items() for key in series[0]}

    def _listings(self, names: set[str]) -> Figures:
        """nqp2 clips in each form, and the scan alone."""
        figures: Figures = {}
        for clips in (self._setting.sizes.small, self._setting.sizes.large):
            card = self._setting.cards.bulk(clips)
            commands = {f"command/{form}/{clips}": [self._setting.nqp2, "clips", card, *options]
                        for form, options in FORMS.items()}
            commands[f"command/scan/{clips}"] = [self._setting.programs / "scan_once", card]
            wanted = {name: lambda command=command: command for name, command in commands.items()
                      if any(each.startswith(f"{name}:") for each in names)}
            figures |= self._low(wanted, 3)
        return figures

    def _shelves(self, _names: set[str]) -> Figures:
        """nqp2 clips of all cards in a folder, and a program that finds and scans each of them."""
        shelf = self._setting.cards.shelf(*self._setting.sizes.shelf)
        return self._low({
            "shelf/json": lambda: [self._setting.nqp2, "clips", "--recursive", shelf, "--json"],
            "shelf/scan": lambda: [self._setting.programs / "scan_once", "--below", shelf]}, 5)

    def _discs(self, _names: set[str]) -> Figures:
        """nqp2 clips of an AVCHD card."""
        command = [self._setting.nqp2, "clips",
                   self._setting.cards.bulk(self._setting.sizes.small, "avchd"), *FORMS["json"]]
        return self._low({"disc/json": lambda: command,
                          "disc/metadata": lambda: [*command, "--metadata"]}, 5)

    def _pages(self, _names: set[str]) -> Figures:
        """The page of a card with icons, to nowhere and into a file; the scan with all icons read;
        writing and flushing what is as large as the page."""
        clips = self._setting.sizes.small
        card = self._setting.cards.pictured(clips)
        page, copy = (self._setting.cards.folder / f"{name}.html" for name in ("page", "copy"))
        report = [self._setting.nqp2, "report", card, "-o"]
        subprocess.run([*report, page], check=True, capture_output=True)
        figures = self._low({
            f"page/report/{clips}": lambda: [*report, "-"],
            f"page/file/{clips}": lambda: [*report, page],
            f"page/flush/{clips}": lambda: ["dd", f"if={page}", f"of={copy}", "bs=1M",
                                            "conv=fsync", "status=none"],
            f"page/scan/{clips}": lambda: [self._setting.programs / "scan_once", card,
                                           card / "CONTENTS" / "ICON"]}, 5)
        return figures | {f"page/size/{clips}": page.stat().st_size}

    def _calls(self, names: set[str]) -> Figures:
        """System calls for one more clip: what the large card takes beyond the small one, so that
        the program's start does not count."""
        if not shutil.which("strace"):
            return {name: NoFigure("strace is not installed", False) for name in names}
        sizes, counts = self._setting.sizes, []
        for clips in (sizes.small, sizes.large):
            report = self._setting.cards.folder / "strace.txt"
            # Tracing makes a fast medium look slow, so that threads read ahead and wait for one
            # another.
            result = subprocess.run(
                ["strace", "-c", "-f", "-e", "trace=!futex", "-o", report,
                 self._setting.programs / "scan_once", self._setting.cards.bulk(clips)],
                check=False, capture_output=True, text=True)
            if result.returncode != 0:
                return {name: NoFigure(f"strace: {result.stderr.strip()}", False)
                        for name in names}
            counts.append(calls_of(report.read_text(encoding="utf-8")))
        return {"calls/clip": (counts[1] - counts[0]) / (sizes.large - sizes.small)}

    def _copies(self, _names: set[str]) -> Figures:
        card = self._setting.cards.real(self._setting.sizes.copy_megabytes)
        files = media_of(card)

        def prepare() -> Path:
            forget(files)
            return self._fresh_folder()

        try:
            return self._low({
                "copy/plain": lambda: [self._setting.programs / "plain_copy", "both", *files,
                                       prepare()],
                "copy/import": lambda: [self._setting.nqp2, "import", card, files[-1].stem, "--to",
                                        prepare(), "--quiet"]}, 1)
        finally:
            self._fresh_folder()

    def _fans(self, names: set[str]) -> Figures:
        """The copying engine alone."""
        ours = self._setting.programs / "fan_once"
        return self._trees("fan", names, lambda source, targets: [ours, source, *targets], {})

    def _offloads(self, names: set[str]) -> Figures:
        """The program, its lists included; and what reads all of it once."""
        nqp2, real = self._setting.nqp2, self._setting.cards.real(self._setting.sizes.copy_megabytes)
        sealed = self._setting.cards.folder / "sealed"

        def command(source: Path, targets: list[Path], *options: str) -> list:
            for target in targets:
                target.mkdir(parents=True, exist_ok=True)
            return [nqp2, "offload", source, *(word for target in targets
                                               for word in ("--to", target)),
                    "--name", "copy", "--quiet", *options]

        def cold(run: list) -> list:
            forget([file for file in sealed.rglob("*") if file.is_file()])
            return run

        if any(name.startswith(("offload/verify", "offload/read")) for name in names):
            shutil.rmtree(sealed, ignore_errors=True)
            shutil.copytree(real, sealed)
            subprocess.run([nqp2, "seal", sealed, "--quiet"], check=True, capture_output=True)
        try:
            return self._trees(
                "offload", names,
                lambda source, targets: command(source, targets, "--no-verify-source"),
                {"offload/twice": lambda: command(real, [self._prepared(real)]),
                 "offload/verify": lambda: cold([nqp2, "verify", sealed, "--quiet"]),
                 "offload/read": lambda: cold([self._setting.programs / "plain_copy", "read",
                                               sealed])})
        finally:
            shutil.rmtree(sealed, ignore_errors=True)

    def _prepared(self, source: Path) -> Path:
        """A new folder, the source dropped from the cache."""
        forget([file for file in source.rglob("*") if file.is_file()])
        self._scratch.mkdir(parents=True, exist_ok=True)
        os.sync()
        return Path(tempfile.mkdtemp(dir=self._scratch))

    def _trees(self, kind: str, names: set[str], ours: Callable[[Path, list[Path]], list],
               more: dict[str, Callable[[], list]]) -> Figures:
        """What copies folders, against cp -a, and onto two disks against one. Files are not
        removed between the runs: file systems are slow to make new ones after that."""
        programs, sizes = self._setting.programs, self._setting.sizes
        real = self._setting.cards.real(sizes.copy_megabytes)
        disks = Disks(self._setting.cards.folder / "disks", real)
        plain, prepare = programs / "plain_copy", self._prepared

        def onto(count: int, rate: int) -> list:
            return ours(*disks.fresh(count, rate))

        runs = {f"{kind}/tree": lambda: [plain, "tree", real, prepare(real)],
                f"{kind}/one": lambda: ours(real, [prepare(real)]),
                f"{kind}/one_disk": lambda: onto(1, 0), f"{kind}/two_disks": lambda: onto(2, 0),
                f"{kind}/one_limited": lambda: onto(1, DISK_RATE),
                f"{kind}/two_limited": lambda: onto(2, DISK_RATE)}
        if any(name.startswith((f"{kind}/small", f"{kind}/flushed")) for name in names):
            small = self._setting.cards.small_files(sizes.small_files)
            runs |= {f"{kind}/flushed": lambda: [plain, "flushed", small, prepare(small)],
                     f"{kind}/small": lambda: ours(small, [prepare(small)])}
        missing = disks.lacking(names)
        runs |= more
        wanted = {name: run for name, run in runs.items()
                  if any(each.startswith(f"{name}:") for each in names - missing.keys())}
        try:
            return self._low(wanted, 1) | missing
        finally:
            disks.remove()
            self._fresh_folder()

    def _recordings(self, _names: set[str]) -> Figures:
        tape = self._setting.cards.tape(self._setting.sizes.frames)

        def prepare() -> Path:
            forget([tape])
            folder = self._fresh_folder()
            (folder / "CONTENTS").mkdir()
            return folder

        try:
            return self._low({
                "record/plain": lambda: [self._setting.programs / "plain_copy", "once", tape,
                                         prepare()],
                "record/ours": lambda: [self._setting.nqp2, "rt-export", prepare(), tape,
                                        "--code-type", "CT_DV25_50I", "--quiet"]}, 2)
        finally:
            self._fresh_folder()

    def _rewraps(self, names: set[str]) -> Figures:
        """Clips as a file of each container, against proven copies of what they are made of."""
        cards, sizes = self._setting.cards, self._setting.sizes
        figures: Figures = {}
        if any(name.startswith("rewrap/dv/") for name in names):
            figures |= self._rewraps_of("dv", cards.recorded(self._setting.nqp2, sizes.frames))
        if any(name.startswith("rewrap/avc/") for name in names) and shutil.which("ffmpeg"):
            figures |= self._rewraps_of("avc", cards.avc_intra(sizes.intra_frames))
        return figures

    def _rewraps_of(self, kind: str, essence: Path) -> Figures:
        ours = [self._setting.programs / "rewrap_once", self._setting.nqp2.parent / "nqp2-worker"]

        def prepare() -> Path:
            forget([essence])
            return self._fresh_folder()

        runs = {f"rewrap/{kind}/plain": lambda: [self._setting.programs / "plain_copy", "both",
                                                 essence, prepare()]}
        for form in ("mov", "mxf", "mkv"):
            runs[f"rewrap/{kind}/{form}"] = lambda form=form: [
                *ours, form, prepare() / f"file.{form}", essence]
        try:
            return self._low(runs, 2)
        finally:
            self._fresh_folder()

    def _fresh_folder(self) -> Path:
        shutil.rmtree(self._scratch, ignore_errors=True)
        self._scratch.mkdir(parents=True)
        os.sync()
        return self._scratch
