# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""A PostgreSQL server to measure, as the tests start theirs, but with what is written flushed."""

import functools
import sys

from report.cards import ROOT

sys.path.insert(0, str(ROOT / "tests" / "catalogue"))
import postgresql_server  # noqa: E402


@functools.cache
def started():
    """Nothing where none is installed."""
    if postgresql_server.programs_folder() is None:
        return None
    postgresql_server.SETTINGS["fsync"] = "on"
    return postgresql_server.server()


@functools.cache
def server_url(database: str) -> str:
    """That of a database, which is empty at first."""
    return started().new_database(database)


def server_arguments() -> list:
    """Its socket's folder, user and a database; nothing where there is no server."""
    if started() is None:
        return []
    server_url("bench")
    return [started().folder, "nqp2", "bench"]
