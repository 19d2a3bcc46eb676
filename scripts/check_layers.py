#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Checks what each room of the house includes: rooms depend downward only, a public header belongs
to the room that implements it and shows public headers only, and libxml2, libavformat, SQLite,
libpq and the operating system stay in their rooms."""

import argparse
import re
import sys
from pathlib import Path
from typing import Dict, Iterator, NamedTuple, Optional

PUBLIC = "NQP2ParserU"
BASE = {"platform"}
READERS = BASE | {"media", "xml", "xml/dom"}
LIBRARY_OF_WORKER = READERS | {"avchd", "bridge", "capacity", "channel", "clips"}

# The rooms of library/, and those that each may include from beside itself.
ROOMS = {
    "platform": set(),
    "media": BASE,
    "xml/dom": BASE,
    "xml": BASE | {"media", "xml/dom"},
    "channel": BASE,
    "clips": READERS,
    "edl": READERS,
    "ingest": READERS,
    "capacity": BASE | {"media"},
    "cards": BASE | {"media"},
    "bridge": BASE | {"media", "channel"},
    "avchd": BASE | {"media", "bridge"},
    "parser": READERS | {"clips", "edl", "ingest", "capacity", "cards",
                         "bridge", "avchd"},
}
# The programs that are built from rooms; they include each other as worker/..., copy/...
PROGRAMS = {
    "copy": BASE,
    "offload/mhl": BASE | {"xml/dom"},
    "worker": LIBRARY_OF_WORKER | {"copy", "manual", "worker/base", "worker/rewrap"},
    "worker/base": BASE | {"media", "copy"},
    "worker/rewrap": BASE | {"media", "bridge", "copy", "worker/base"},
    # The module shares the headers that the two agree on.
    "worker/av": BASE | {"worker/base"},
    "offload": LIBRARY_OF_WORKER - {"channel"} | {"cards", "edl", "parser", "console", "copy",
                                                  "offload/mhl"},
    "catalogue/sqlite": {"catalogue"},
    "catalogue/postgresql": {"catalogue"},
    "catalogue": BASE | {"media", "cards", "clips", "edl", "ingest", "parser", "console",
                         "page", "offload/mhl", "catalogue/sqlite", "catalogue/postgresql"},
}
MAY_INCLUDE = {**ROOMS, **PROGRAMS}
# These see of the library what a host sees, the public headers, and of the programs what is named.
HOSTS = {"nqp2": {"console", "manual", "page"}, "console": set(), "manual": set(),
         "page": {"console"}, "examples": set()}
# These may look into every room.
OBSERVERS = ("tests", "bench", "fuzz")

# The benchmarks measure the bare XML library as a floor.
XML_LIBRARY_FOLDERS = {"xml/dom", "bench"}
SYSTEM_FOLDERS = {"platform", "channel", "worker", "worker/base", *OBSERVERS}
# The tests make camera files with it, and an example opens a clip as a host would.
MEDIA_LIBRARY_FOLDERS = {"worker/av", "tests", "examples"}
# The benchmarks write the same rows by them alone.
SQLITE_FOLDERS = {"catalogue/sqlite", "bench"}
SERVER_LIBRARY_FOLDERS = {"catalogue/postgresql", "bench"}
XML_LIBRARY = re.compile(r"libxml2?/")
MEDIA_LIBRARY = re.compile(r"lib(av|sw)\w+/")
SQLITE = re.compile(r"sqlite3")
SERVER_LIBRARY = re.compile(r"libpq|pg_config|postgresql/")
SYSTEM = re.compile(
    r"(sys|linux|asm|netinet|arpa|net)/"
    r"|(aio|dirent|dlfcn|execinfo|fcntl|ftw|glob|grp|iconv|langinfo|mqueue|netdb|poll|pthread|pwd"
    r"|sched|semaphore|spawn|strings|syslog|termios|unistd|utime|wordexp|windows)\.h$",
    re.IGNORECASE)

INCLUDE = re.compile(r'\s*#\s*include\s*([<"])([^>"]+)[>"]')
EXPORTED = re.compile(r"\bEXPORTED\s+((?:\w+\.h\s*)+)")
SOURCES = {".cpp", ".h"}


class Include(NamedTuple):
    line: int
    quoted: bool
    path: str


class House:
    """A tree of the project's layout."""

    def __init__(self, root: Path):
        self.root = root
        self.owner: Dict[str, str] = {}  # the room of each public header
        for room in ROOMS:
            lists = root / "library" / room / "CMakeLists.txt"
            found = EXPORTED.search(lists.read_text(encoding="utf-8")) if lists.is_file() else None
            for header in found[1].split() if found else ():
                self.owner[header] = room

    def sources(self) -> Iterator[Path]:
        for top in ("include", "library", "programs", "examples", *OBSERVERS):
            for file in sorted((self.root / top).rglob("*")):
                if file.suffix in SOURCES and file.is_file():
                    yield file

    def room_of(self, source: str) -> str:
        """The room of a file by its path in the tree; of a host or observer, its name."""
        parts = source.split("/")
        if parts[0] == "include":
            return self.owner.get(parts[-1], "/".join(parts[:-1]))
        if parts[0] in OBSERVERS or parts[0] in HOSTS:
            return parts[0]
        inside = parts[1:-1]
        return inside[0] if inside and inside[0] in HOSTS else "/".join(inside)

    def target_of(self, include: Include) -> Optional[str]:
        """The path in the tree of what is included; None for what is not the project's."""
        tops = ("include", "library", "programs", ".") if include.quoted else ("include",)
        for top in tops:
            path = include.path if top == "." else f"{top}/{include.path}"
            if (self.root / path).is_file():
                return path
        return None


def includes_of(file: Path) -> Iterator[Include]:
    text = file.read_text(encoding="utf-8")
    for number, line in enumerate(text.splitlines(), start=1):
        found = INCLUDE.match(line)
        if found:
            yield Include(number, found[1] == '"', found[2])


def fault_of_foreign(source: str, room: str, path: str) -> Optional[str]:
    """What is wrong with including a header of somebody else."""
    is_public = source.startswith("include/")
    if XML_LIBRARY.match(path) and (is_public or room not in XML_LIBRARY_FOLDERS):
        return f"libxml2 belongs to xml/dom/: {path}"
    if MEDIA_LIBRARY.match(path) and (is_public or room not in MEDIA_LIBRARY_FOLDERS):
        return f"libavformat belongs to worker/av/: {path}"
    if SQLITE.match(path) and (is_public or room not in SQLITE_FOLDERS):
        return f"SQLite belongs to catalogue/sqlite/: {path}"
    if SERVER_LIBRARY.match(path) and (is_public or room not in SERVER_LIBRARY_FOLDERS):
        return f"the server's client library belongs to catalogue/postgresql/: {path}"
    if SYSTEM.match(path) and (is_public or room not in SYSTEM_FOLDERS):
        return f"the operating system belongs to platform/: {path}"
    return None


def fault_of_own(house: House, source: str, target: str) -> Optional[str]:
    """What is wrong with including one of the project's headers."""
    room, other = house.room_of(source), house.room_of(target)
    is_public = target.startswith("include/")
    if source.startswith("include/") and not is_public:
        return f"a public header shows an internal one: {target}"
    if room == other or room in OBSERVERS:
        return None
    if room in HOSTS:
        is_allowed = is_public or other in HOSTS[room]
        return None if is_allowed else f"a host includes public headers only, not {target}"
    return None if other in MAY_INCLUDE[room] else f"{room}/ may not include from {other}/: {target}"


def fault_of(house: House, source: str, include: Include) -> Optional[str]:
    target = house.target_of(include)
    if target is not None:
        return fault_of_own(house, source, target)
    if include.quoted or include.path.startswith(f"{PUBLIC}/"):
        return f"no such file below include/, library/ and programs/: {include.path}"
    return fault_of_foreign(source, house.room_of(source), include.path)


def faults_below(root: Path) -> Iterator[str]:
    house = House(root)
    for file in house.sources():
        source = file.relative_to(root).as_posix()
        room = house.room_of(source)
        if not any(room in known for known in (MAY_INCLUDE, HOSTS, OBSERVERS)):
            yield f"{source}:1: {room}/ has no place among the rooms"
            continue
        for include in includes_of(file):
            fault = fault_of(house, source, include)
            if fault:
                yield f"{source}:{include.line}: {fault}"


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("root", type=Path, nargs="?", default=Path(__file__).parent.parent)
    root = parser.parse_args().root
    if not any(House(root).sources()):
        print(f"check_layers: no sources below {root}", file=sys.stderr)
        return 2
    faults = list(faults_below(root))
    print("\n".join(faults), end="\n" if faults else "")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
