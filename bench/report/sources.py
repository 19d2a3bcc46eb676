# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Who measures which figures: the first part of a figure's name has a row here."""

import json
import os
import subprocess
import sys
import time
from pathlib import Path
from typing import Callable, Iterable, NamedTuple

from report.cards import Cards
from report.commands import Commands
from report.lines import Sizes
from report.server import server_arguments, server_url
from report.terms import Figures, NoFigure


class Setting(NamedTuple):
    build: Path
    cards: Cards
    sizes: Sizes
    min_time: float

    @property
    def programs(self) -> Path:
        return self.build / "bench"

    @property
    def nqp2(self) -> Path:
        return self.build / "programs" / "nqp2" / "nqp2"

    @property
    def worker(self) -> Path:
        return self.nqp2.with_name("nqp2-worker")


def scan_arguments(setting: Setting) -> list:
    cards, sizes = setting.cards, setting.sizes
    arguments: list = []
    for clips in (sizes.small, sizes.large):
        arguments += [clips, cards.bulk(clips), cards.clips_only(clips)]
    for name, card in (("8k", cards.bulk(sizes.small, "p2", "--size", "8192")),
                       ("odd", cards.odd(sizes.small))):
        arguments += [name, card, card]
    return arguments


def name_arguments(setting: Setting) -> list:
    cards = setting.cards
    return [argument for clips in (setting.sizes.small, setting.sizes.large)
            for argument in (clips, cards.bulk(clips), f"missing-{clips}", cards.missing(clips))]


def avchd_arguments(setting: Setting) -> list:
    return [argument for clips in setting.sizes.avchd
            for argument in (clips, setting.cards.bulk(clips, "avchd"))]


def catalogue_arguments(setting: Setting) -> list:
    """Made-up cards of a hundred clips; the file is kept, as cards are, the server goes."""
    cards = setting.sizes.catalogue // 100
    folder = setting.cards.folder / "catalogues"
    folder.mkdir(parents=True, exist_ok=True)
    arguments = [cards, 100, "sqlite", folder / f"of-{cards}-cards.sqlite"]
    if server_arguments():
        arguments += ["server", server_url("searched")]
    return arguments


PROCESSORS = tuple(count for count in (2, 1) if count <= len(os.sched_getaffinity(0)))

# Programs of bench/ by the first part of the name, each with the arguments of its runs.
PROGRAMS: dict[str, Callable[[Setting], list[list]]] = {
    "scan": lambda setting: [scan_arguments(setting)],
    "names": lambda setting: [name_arguments(setting)],
    "metadata": lambda setting: [[argument for clips in (setting.sizes.small, setting.sizes.large)
                                  for argument in (clips, setting.cards.bulk(clips))]],
    "slow": lambda setting: [[setting.cards.bulk(setting.sizes.small)]],
    "edit_lists": lambda setting: [[setting.cards.folder / "lists", setting.sizes.large,
                                    *setting.sizes.lists]],
    "ingest": lambda setting: [[setting.cards.folder / "lists", *setting.sizes.lists[1:]]],
    "growth": lambda setting: [[]],
    "avchd": lambda setting: [avchd_arguments(setting)],
    "catalogue": lambda setting: [[setting.cards.folder / "catalogues",
                                   setting.cards.bulk(setting.sizes.large)]],
    "catalogue_search": lambda setting: [catalogue_arguments(setting)],
    "catalogue_server": lambda setting: [server_arguments()],
    "channel": lambda setting: [[count] for count in PROCESSORS],
    "proxy": lambda setting: [[count, setting.worker] for count in PROCESSORS],
    "start": lambda setting: [[setting.programs / "bare_program", setting.nqp2, setting.worker,
                               setting.cards.camera_file()]],
}


def figures_of(kind: str, report: list[dict]) -> Figures:
    """The figures of what one program printed."""
    figures: Figures = {}
    for entry in report:
        value = entry.get("value")
        if value is None:
            value = NoFigure(entry.get("error") or entry["absent"], "error" in entry)
        figures[f"{kind}/{entry['name']}"] = value
    return figures


def run_program(setting: Setting, kind: str, arguments: list, names: Iterable[str]) -> Figures:
    only = ",".join(sorted(name.split("/", 1)[1] for name in names))
    program = setting.programs / f"bench_{kind}"
    result = subprocess.run(
        [program, f"--min-time={setting.min_time}", f"--only={only}", *map(str, arguments)],
        check=False, capture_output=True, text=True)
    if result.returncode != 0:
        raise RuntimeError(f"{program.name}: {result.stderr.strip() or result.returncode}")
    return figures_of(kind, json.loads(result.stdout))


def one_processor(names: Iterable[str]) -> Figures:
    """The figures that need a second processor, where there is none."""
    if 2 in PROCESSORS:
        return {}
    return {name: NoFigure("there is one processor", False) for name in names
            if name.startswith(("channel/", "proxy/")) and name.endswith("/2")}


def measure(setting: Setting, wanted: set[str]) -> Figures:
    """One round of all figures that are wanted; what fails is among them as a failure."""
    commands = Commands(setting)
    figures = one_processor(wanted)
    for kind in sorted({name.split("/")[0] for name in wanted - figures.keys()}):
        names = {name for name in wanted - figures.keys() if name.startswith(f"{kind}/")}
        started = time.monotonic()
        try:
            if kind in PROGRAMS:
                for arguments in PROGRAMS[kind](setting):
                    figures |= run_program(setting, kind, arguments, names)
            else:
                figures |= commands.measure(kind, names)
            reason = "the program did not tell"
        except (OSError, RuntimeError, ValueError, subprocess.SubprocessError) as error:
            reason = str(error)
        figures |= {name: NoFigure(reason, True) for name in names - figures.keys()}
        print(f"  {kind}: {time.monotonic() - started:.0f} s", file=sys.stderr)
    return figures
