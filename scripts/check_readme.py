#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Checks that the C++ shown in README.md and docs/host.md is in examples/, where it is built."""

import argparse
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PAGES = ("README.md", "docs/host.md")


def main() -> int:
    argparse.ArgumentParser(description=__doc__).parse_args()
    examples = [path.read_text(encoding="utf-8") for path in (ROOT / "examples").rglob("*.cpp")]
    faults = 0
    for page in PAGES:
        blocks = re.findall(r"```cpp\n(.*?)```", (ROOT / page).read_text(encoding="utf-8"), re.S)
        missing = [block for block in blocks if not any(block in example for example in examples)]
        for block in missing:
            print(f"{page}: is in no example:\n{block}")
        if not blocks:
            print(f"{page}: shows no C++")
        faults += len(missing) + (not blocks)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
