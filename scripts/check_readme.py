#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Checks that the C++ shown in README.md is in examples/, where it is built."""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


def main() -> int:
    blocks = re.findall(r"```cpp\n(.*?)```", (ROOT / "README.md").read_text(encoding="utf-8"), re.S)
    examples = [path.read_text(encoding="utf-8") for path in (ROOT / "examples").rglob("*.cpp")]
    missing = [block for block in blocks if not any(block in example for example in examples)]
    for block in missing:
        print(f"is in no example:\n{block}")
    if not blocks:
        print("shows no C++")
    return 1 if missing or not blocks else 0


if __name__ == "__main__":
    sys.exit(main())
