#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Checks what each folder includes: folders depend downward only, libxml2, libavformat and the
operating system stay in their folders, exported headers show exported headers only."""

import argparse
import re
import sys
from pathlib import Path
from typing import Iterator, NamedTuple, Optional

BASE = {"platform"}
READERS = BASE | {"media", "xml", "xml/dom"}
SUBJECTS = ("edl", "capacity", "ingest", "avchd", "bridge")

# The folders that each folder may include from, beside itself.
MAY_INCLUDE = {
    "platform": set(),
    "media": BASE,
    "xml/dom": BASE,
    "xml": BASE | {"media", "xml/dom"},
    "channel": BASE,
    "edl": READERS,
    "ingest": READERS,
    "capacity": READERS,
    "avchd": READERS | {"bridge"},
    "bridge": READERS | {"channel"},
    "parser": READERS | set(SUBJECTS),
    "programs/copy": BASE,
    "worker": READERS | {"avchd", "bridge", "capacity", "channel", "parser", "programs/copy"},
    # The module shares the headers that the two agree on; nobody includes from it.
    "worker/av": BASE | {"worker"},
}
# These see of the library what a host sees: the exported headers.
HOSTS = ("tools", "examples")
# These may look into every folder.
OBSERVERS = ("tests", "bench", "fuzz")

# The benchmarks measure the bare XML library as a floor.
XML_LIBRARY_FOLDERS = {"xml/dom", "bench"}
SYSTEM_FOLDERS = {"platform", "channel", "worker"}
# The tests make camera files with it.
MEDIA_LIBRARY_FOLDERS = {"worker/av", "tests"}
XML_LIBRARY = re.compile(r"libxml2?/")
MEDIA_LIBRARY = re.compile(r"lib(av|sw)\w+/")
SYSTEM = re.compile(
    r"(sys|linux|asm|netinet|arpa|net)/"
    r"|(aio|dirent|dlfcn|execinfo|fcntl|ftw|glob|grp|iconv|langinfo|mqueue|netdb|poll|pthread|pwd"
    r"|sched|semaphore|spawn|strings|syslog|termios|unistd|utime|wordexp|windows)\.h$",
    re.IGNORECASE)

# A subject's part of the parser class lives beside the functions that it adapts.
ADAPTER = re.compile(r"parser_\w+\.cpp")
PARSER_CLASS = "parser/NQP2Parser.h"

INCLUDE = re.compile(r'\s*#\s*include\s*([<"])([^>"]+)[>"]')
SOURCES = {".cpp", ".h"}


class Include(NamedTuple):
    line: int
    quoted: bool
    path: str


def includes_of(file: Path) -> Iterator[Include]:
    text = file.read_text(encoding="utf-8")
    for number, line in enumerate(text.splitlines(), start=1):
        found = INCLUDE.match(line)
        if found:
            yield Include(number, found[1] == '"', found[2])


def folder_of(path: str) -> str:
    """The layer of a file: its folder, or the top folder of a host or observer."""
    parts = path.split("/")[:-1]
    if parts and parts[0] in HOSTS + OBSERVERS:
        return parts[0]
    return "/".join(parts)


def is_exported(path: str) -> bool:
    """Exported headers are named after their class, all others in lower case."""
    return path.rsplit("/", 1)[-1][0].isupper()


def fault_of_own(source: str, include: Include) -> Optional[str]:
    """What is wrong with including one of the project's headers."""
    folder, target = folder_of(source), folder_of(include.path)
    if target == folder or folder in OBSERVERS:
        return None
    if folder in HOSTS:
        exported = target in MAY_INCLUDE and is_exported(include.path)
        return None if exported else f"a host includes exported headers only, not {include.path}"
    if (include.path == PARSER_CLASS and folder in SUBJECTS
            and ADAPTER.fullmatch(source.rsplit("/", 1)[-1])):
        return None
    if target not in MAY_INCLUDE[folder]:
        return f"{folder}/ may not include from {target or 'the top'}/: {include.path}"
    return None


def fault_of(root: Path, source: str, include: Include) -> Optional[str]:
    folder = folder_of(source)
    if XML_LIBRARY.match(include.path) and folder not in XML_LIBRARY_FOLDERS:
        return f"libxml2 belongs to xml/dom/: {include.path}"
    if MEDIA_LIBRARY.match(include.path) and folder not in MEDIA_LIBRARY_FOLDERS:
        return f"libavformat belongs to worker/av/: {include.path}"
    if (SYSTEM.match(include.path) and folder not in SYSTEM_FOLDERS
            and folder not in OBSERVERS):
        return f"the operating system belongs to platform/: {include.path}"
    own = (root / include.path).is_file()
    if include.quoted and not own:
        return f"no such file from the top of the tree: {include.path}"
    if source.endswith(".h") and folder in MAY_INCLUDE and is_exported(source):
        if own and not is_exported(include.path):
            return f"an exported header shows an internal one: {include.path}"
        if XML_LIBRARY.match(include.path) or SYSTEM.match(include.path):
            return f"an exported header shows {include.path}"
    return fault_of_own(source, include) if own else None


def sources_below(root: Path) -> Iterator[Path]:
    for folder in sorted({name.split("/")[0] for name in MAY_INCLUDE} | {*HOSTS, *OBSERVERS}):
        for file in sorted((root / folder).rglob("*")):
            if file.suffix in SOURCES and file.is_file():
                yield file


def faults_below(root: Path) -> Iterator[str]:
    for file in sources_below(root):
        source = file.relative_to(root).as_posix()
        folder = folder_of(source)
        if folder not in MAY_INCLUDE and folder not in HOSTS + OBSERVERS:
            yield f"{source}:1: {folder}/ has no place among the layers"
            continue
        for include in includes_of(file):
            fault = fault_of(root, source, include)
            if fault:
                yield f"{source}:{include.line}: {fault}"


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("root", type=Path, nargs="?", default=Path(__file__).parent.parent)
    root = parser.parse_args().root
    if not any(sources_below(root)):
        print(f"check_layers: no sources below {root}", file=sys.stderr)
        return 2
    faults = list(faults_below(root))
    print("\n".join(faults), end="\n" if faults else "")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
