#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Checks that each link and picture of the pages in a folder leads to a file of that folder, and
that no link stands as text, as doxygen leaves one whose words go over a line's end."""

import argparse
import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urlsplit


class Links(HTMLParser):
    def __init__(self):
        super().__init__()
        self.found = set()
        self.unmade = False

    def handle_starttag(self, tag, attrs):
        self.found |= {value for name, value in attrs if name in ("href", "src", "data") and value}

    def handle_data(self, data):
        self.unmade = self.unmade or "@ref " in data


def faults_of(page: Path, root: Path) -> list:
    links = Links()
    links.feed(page.read_text(encoding="utf-8"))
    parts = [(link, urlsplit(link)) for link in sorted(links.found)]
    local = [(link, page.parent / unquote(part.path)) for link, part in parts
             if not part.scheme and not part.netloc and part.path]
    name = page.relative_to(root)
    return [f"{name}: {link}" for link, target in local
            if not target.is_file() or not target.resolve().is_relative_to(root.resolve())] + \
        ([f"{name}: a link that is text"] if links.unmade else [])


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("root", type=Path)
    root = parser.parse_args().root
    pages = sorted(root.rglob("*.html"))
    faults = [fault for page in pages for fault in faults_of(page, root)]
    for fault in faults or ([] if pages else [f"{root}: no pages"]):
        print(fault)
    return 1 if faults or not pages else 0


if __name__ == "__main__":
    sys.exit(main())
