#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Checks that each test which a README of tests/ names for a rule exists below that folder. The
tables have the columns `rule` and `test`. A test is `file: Suite.Name`, `file: Suite`, a file or,
where it is clear, what follows the colon alone; several are separated by commas or semicolons."""

import argparse
import re
import sys
from pathlib import Path
from typing import Iterator

ROOT = Path(__file__).resolve().parent.parent
HEAD = re.compile(r"\|\s*rule\s*\|\s*tests?\s*\|$", re.IGNORECASE)
CPP_TEST = re.compile(r"\b(?:TYPED_)?TEST(?:_[FP])?\(\s*(\w+),\s*(\w+)\s*\)")
PYTHON_CLASS = re.compile(r"^class (\w+)", re.MULTILINE)
PYTHON_TEST = re.compile(r"^    def (test_\w+)", re.MULTILINE)


def tests_of(file: Path) -> set:
    """`Suite.Name` and `Suite` of each test in a file."""
    text = file.read_text(encoding="utf-8")
    if file.suffix == ".cpp":
        found = CPP_TEST.findall(text)
    else:
        parts = PYTHON_CLASS.split(text)
        found = [(suite, name) for suite, body in zip(parts[1::2], parts[2::2])
                 for name in PYTHON_TEST.findall(body)]
    return {f"{suite}.{name}" for suite, name in found} | {suite for suite, _ in found}


def files_named(folder: Path, name: str) -> list:
    names = {name + end for end in ("", ".cpp", ".py", "_test.cpp", "_test.py")}
    return [file for file in folder.rglob("*") if file.relative_to(folder).as_posix() in names
            or file.name in names]


def fault_of(folder: Path, reference: str) -> str:
    """What is wrong with one reference; "" when nothing is."""
    name, colon, test = (part.strip() for part in reference.partition(":"))
    files = files_named(folder, name)
    if colon and not files:
        return f"no file {name}"
    if files and not test:
        return ""
    wanted = (test or name).removesuffix(".*")
    places = files or [file for file in folder.rglob("*_test.*") if file.suffix in (".cpp", ".py")]
    found = any(wanted in tests_of(file) for file in places)
    return "" if found else f"no test {wanted}" + (f" in {name}" if colon else "")


def references_in(readme: Path) -> Iterator[tuple]:
    """Line number and text of each test named in the tables."""
    inside = False
    for number, line in enumerate(readme.read_text(encoding="utf-8").splitlines(), start=1):
        is_head = HEAD.match(line) is not None
        inside = is_head or (inside and line.startswith("|"))
        if not inside or is_head or re.fullmatch(r"[|\s:-]+", line):
            continue
        file, cell = "", line.rstrip().rstrip("|").rpartition("|")[2].replace("`", "")
        for part in re.split(r"[;,]|<br>", cell):
            named, colon, test = part.strip().rpartition(":")
            file = named if colon else file
            is_test = "." in test and not test.endswith((".cpp", ".py"))
            yield number, f"{file}: {test}" if file and (colon or is_test) else test


def faults_below(root: Path) -> Iterator[str]:
    for readme in sorted((root / "tests").rglob("README.md")):
        rows = list(references_in(readme))
        place = readme.relative_to(root).as_posix()
        if not rows:
            yield f"{place}:1: no table of rules and tests"
        for number, reference in rows:
            fault = fault_of(readme.parent, reference)
            if fault:
                yield f"{place}:{number}: {fault}"


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("root", type=Path, nargs="?", default=ROOT)
    faults = list(faults_below(parser.parse_args().root))
    print("\n".join(faults), end="\n" if faults else "")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
