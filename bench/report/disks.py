# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Disks to measure with: file systems in files that lie in memory, each as fast as is wished."""

import os
import shutil
import subprocess
from pathlib import Path

from report.terms import Figures, NoFigure

# What the system's controller of devices is told, for all processes alike: only so are bytes
# limited that the system writes some time later.
LIMITS = [Path("/sys/fs/cgroup/blkio") / f"blkio.throttle.{way}_bps_device"
          for way in ("read", "write")]


def forget(files: list[Path]) -> None:
    """Lets the system read the files from the medium again."""
    for file in files:
        with open(file, "rb") as opened:
            os.fsync(opened.fileno())
            os.posix_fadvise(opened.fileno(), 0, 0, os.POSIX_FADV_DONTNEED)


def limit(place: Path, rate: int) -> None:
    """Of the device behind a folder, in bytes a second; 0: none."""
    device = place.stat().st_dev
    for each in LIMITS:
        each.write_text(f"{os.major(device)}:{os.minor(device)} {rate}", encoding="ascii")


class Disks:
    """One with a card and two for its copies, as far as this user may mount them."""

    def __init__(self, folder: Path, card: Path):
        self._folder, self._card = folder, card
        self._memory = Path("/dev/shm") / f"nqp2-bench-{os.getpid()}"
        self._megabytes = 64 + 2 * sum(file.stat().st_size for file in card.rglob("*")) // 1_000_000

    def lacking(self, names: set[str]) -> Figures:
        """Those of the figures that cannot be had here."""
        limited = {name for name in names if "_limited" in name}
        wanted = limited | {name for name in names if "_disk" in name}
        try:
            if wanted:
                self._mount("card")
                shutil.copytree(self._card, self._folder / "card" / "card")
        except (OSError, subprocess.CalledProcessError):
            return {name: NoFigure("file systems cannot be mounted here", False)
                    for name in wanted}
        try:
            if limited:
                limit(self._folder / "card", 0)
        except OSError:
            return {name: NoFigure("the rate of a device cannot be limited here", False)
                    for name in limited}
        return {}

    def fresh(self, count: int, rate: int) -> tuple[Path, list[Path]]:
        """The card, which is in no cache, and places for as many copies."""
        targets = [f"{number}" for number in range(count)]
        for name in targets:
            self._mount(name)
        card = self._folder / "card"
        forget([file for file in card.rglob("*") if file.is_file()])
        for name in ("card", *targets):
            self._limit(name, rate)
        return card / "card", [self._folder / name / "copy" for name in targets]

    def _mount(self, name: str) -> None:
        self._remove(name)
        image, place = self._memory / name, self._folder / name
        for folder in (self._memory, place):
            folder.mkdir(parents=True, exist_ok=True)
        with open(image, "wb") as file:
            file.truncate(self._megabytes << 20)
        subprocess.run(["mkfs.ext4", "-q", "-F", "-E", "lazy_itable_init=0,lazy_journal_init=0",
                        image], check=True)
        subprocess.run(["mount", "-o", "loop", image, place], check=True, capture_output=True)

    def _limit(self, name: str, rate: int) -> None:
        if rate != 0 or os.access(LIMITS[0], os.W_OK):
            limit(self._folder / name, rate)

    def _remove(self, name: str) -> None:
        place = self._folder / name
        if place.is_mount():
            self._limit(name, 0)
            subprocess.run(["umount", place], check=True)

    def remove(self) -> None:
        for name in ("card", "0", "1"):
            self._remove(name)
        shutil.rmtree(self._memory, ignore_errors=True)
