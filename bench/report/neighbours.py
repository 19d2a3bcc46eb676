# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""What other programs take for the same card, as far as they are installed. They do other work:
some less, for they know nothing of clips, some more, for they look into the media."""

import shutil
import subprocess
import sys
from functools import cache
from pathlib import Path
from typing import NamedTuple

from report.commands import cost_of

LXML = "import sys; from lxml import etree; [etree.parse(name) for name in sys.argv[1:]]"


@cache
def python_with_lxml() -> str:
    """The system's own Python has what the system's packages bring; "" for none."""
    for python in (sys.executable, "/usr/bin/python3"):
        if shutil.which(python) and subprocess.run(
                [python, "-c", "import lxml.etree"], check=False,
                stderr=subprocess.DEVNULL).returncode == 0:
            return python
    return ""


class Neighbour(NamedTuple):
    name: str
    command: list[str]
    what: str


def neighbours() -> tuple[Neighbour, ...]:
    return (
        Neighbour("xmllint", ["xmllint", "--noout"], "parses the metadata"),
        Neighbour("lxml", [python_with_lxml(), "-c", LXML], "trees of the metadata, in Python"),
        Neighbour("exiftool", ["exiftool", "-json"], "all tags of the metadata"),
        Neighbour("MediaInfo", ["mediainfo", "--Output=JSON"], "clips and the media they name"),
    )


def least_cost(run_once: Path, command: list[str]) -> dict[str, float]:
    """Of two runs; one is enough where it takes seconds."""
    cost = cost_of(run_once, command)
    if cost["wall"] < 2e9:
        cost = min(cost, cost_of(run_once, command), key=lambda each: each["processor"])
    return cost


def table_body(run_once: Path, nqp2: Path, card: Path) -> list[tuple[str, ...]]:
    """Program, what it does, wall clock and processor time of all clips, time of one."""
    files = sorted((card / "CONTENTS" / "CLIP").iterdir())
    body = []
    programs = [(Neighbour("nqp2 clips --json", [str(nqp2), "clips", "--json", str(card)],
                           "all fields and files of all clips"), [])]
    programs += [(each, [str(file) for file in files]) for each in neighbours()]
    for neighbour, arguments in programs:
        if shutil.which(neighbour.command[0]) is None:
            body.append((neighbour.name, neighbour.what, "not installed", "-", "-"))
            continue
        try:
            cost = least_cost(run_once, [*neighbour.command, *arguments])
        except RuntimeError as error:
            body.append((neighbour.name, neighbour.what, f"failed: {error}", "-", "-"))
            continue
        body.append((neighbour.name, neighbour.what, f"{cost['wall'] / 1e6:,.0f} ms",
                     f"{cost['processor'] / 1e6:,.0f} ms",
                     f"{cost['processor'] / len(files) / 1e3:,.0f} us"))
    return body
