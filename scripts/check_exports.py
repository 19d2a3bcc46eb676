#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Checks what a built library shows to the world: every exported symbol belongs to something that
an exported header marks with NQP2_API, and only the promised libraries are needed."""

import argparse
import re
import subprocess
import sys
from pathlib import Path
from typing import Iterator, NamedTuple, Set

NEEDED = re.compile(r"lib(stdc\+\+|gcc_s|c|m|pthread|dl|xml2)\.so\.\d+|ld-linux\S*")

MARKED_CLASS = re.compile(r"\b(?:class|struct)\s+NQP2_API\s+(\w+)")
MARKED_FUNCTION = re.compile(r"\bNQP2_API\s+[^;{(]*?\b(operator[^\s(]+|\w+)\s*\(")

# "vtable for X" and the like belong to X.
ABOUT = re.compile(r"^(?:(?:typeinfo(?: name)?|vtable|VTT|guard variable|construction vtable"
                   r"|(?:non-virtual|virtual) thunk) (?:for|to) )+")


class Marked(NamedTuple):
    classes: Set[str]
    functions: Set[str]


def marked_in(include_dir: Path) -> Marked:
    marked = Marked(set(), set())
    for header in sorted(include_dir.rglob("*.h")):
        text = header.read_text(encoding="utf-8")
        marked.classes.update(MARKED_CLASS.findall(text))
        marked.functions.update(MARKED_FUNCTION.findall(text))
    return marked


def lines_of(*command: str) -> list:
    result = subprocess.run(command, capture_output=True, text=True, check=True)
    return result.stdout.splitlines()


def symbols_of(library: Path) -> Iterator[str]:
    for line in lines_of("nm", "--dynamic", "--defined-only", "--demangle", "--format=posix",
                         str(library)):
        # name, type, value, size: the name may hold blanks.
        yield re.sub(r" [A-Za-z] [0-9a-f]+(?: [0-9a-f]*)?\s*$", "", line)


def is_marked(symbol: str, marked: Marked) -> bool:
    name = ABOUT.sub("", symbol).split("(")[0].split("[abi:")[0].removeprefix("nqp2::")
    first, *rest = name.split("::")
    if rest or ABOUT.match(symbol):
        return first in marked.classes
    return first in marked.functions or first in marked.classes


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("library", type=Path)
    parser.add_argument("include_dir", type=Path, help="the installed headers")
    arguments = parser.parse_args()

    marked = marked_in(arguments.include_dir)
    symbols = list(symbols_of(arguments.library))
    if not symbols or not marked.classes:
        print("check_exports: nothing is exported", file=sys.stderr)
        return 2
    faults = [f"exported without a mark: {symbol}" for symbol in symbols
              if not is_marked(symbol, marked)]
    needed = [found[1] for line in lines_of("readelf", "--dynamic", "--wide",
                                            str(arguments.library))
              if (found := re.search(r"\(NEEDED\).*\[(.+)\]", line))]
    faults += [f"needs {name}" for name in needed if not NEEDED.fullmatch(name)]
    print("\n".join(faults or [f"{len(symbols)} exported symbols, needs {' '.join(needed)}"]))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
