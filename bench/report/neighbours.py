# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""What other programs take for the same card, as far as they are installed. They do other work: some
less, for they know nothing of clips, some more, for they look into the media."""

import shutil
import subprocess
import sys
from pathlib import Path
from typing import NamedTuple

from report.commands import cost_of

LXML = "import sys; from lxml import etree; [etree.parse(name) for name in sys.argv[1:]]"


class Neighbour(NamedTuple):
    name: str
    command: list[str]
    what: str


NEIGHBOURS = (
    Neighbour("xmllint", ["xmllint", "--noout"], "parses the metadata"),
    Neighbour("lxml", [sys.executable, "-c", LXML], "trees of the metadata, in Python"),
    Neighbour("exiftool", ["exiftool", "-json"], "all tags of the metadata"),
    Neighbour("MediaInfo", ["mediainfo", "--Output=JSON"], "clips and the media they name"),
)


def is_installed(neighbour: Neighbour) -> bool:
    if neighbour.name == "lxml":
        return subprocess.run([sys.executable, "-c", "import lxml.etree"], check=False,
                              stderr=subprocess.DEVNULL).returncode == 0
    return shutil.which(neighbour.command[0]) is not None


def table_body(run_once: Path, nqp2: Path, card: Path) -> list[tuple[str, ...]]:
    """Program, what it does, wall clock and processor time of all clips, time of one."""
    files = sorted((card / "CONTENTS" / "CLIP").iterdir())
    body = []
    programs = [(Neighbour("nqp2 clips --json", [str(nqp2), "clips", "--json", str(card)],
                           "all fields and files of all clips"), [])]
    programs += [(each, [str(file) for file in files]) for each in NEIGHBOURS]
    for neighbour, arguments in programs:
        if arguments and not is_installed(neighbour):
            body.append((neighbour.name, neighbour.what, "not installed", "-", "-"))
            continue
        try:
            cost = min((cost_of(run_once, [*neighbour.command, *arguments]) for _ in range(2)),
                       key=lambda each: each["processor"])
        except RuntimeError as error:
            body.append((neighbour.name, neighbour.what, f"failed: {error}", "-", "-"))
            continue
        body.append((neighbour.name, neighbour.what, f"{cost['wall'] / 1e6:,.0f} ms",
                     f"{cost['processor'] / 1e6:,.0f} ms",
                     f"{cost['processor'] / len(files) / 1e3:,.0f} us"))
    return body
