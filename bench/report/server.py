# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""A PostgreSQL server to measure, as the tests start theirs, but with what is written flushed."""

import functools
import sys

from report.cards import ROOT

sys.path.insert(0, str(ROOT / "tests" / "catalogue"))
import postgresql_server  # noqa: E402


@functools.cache
def server_arguments() -> list:
    """Its socket's folder, user and an empty database; nothing where none is installed."""
    if postgresql_server.programs_folder() is None:
        return []
    postgresql_server.SETTINGS["fsync"] = "on"
    server = postgresql_server.server()
    server.new_database("bench")
    return [server.folder, "nqp2", "bench"]
