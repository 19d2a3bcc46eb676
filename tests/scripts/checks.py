# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Small trees of sources, and the scripts that look at them."""

import subprocess
import sys
import tempfile
from contextlib import contextmanager
from pathlib import Path

SCRIPTS = Path(__file__).resolve().parents[2] / "scripts"
sys.path.insert(0, str(SCRIPTS))


@contextmanager
def tree(files):
    """A folder with these files, names and contents."""
    with tempfile.TemporaryDirectory() as folder:
        root = Path(folder)
        for name, content in files.items():
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            (root / name).write_text(content, encoding="utf-8")
        yield root


def run(script, *arguments):
    return subprocess.run([sys.executable, "-B", SCRIPTS / script, *arguments],
                          capture_output=True, text=True, check=False)
