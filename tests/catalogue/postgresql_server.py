# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""A PostgreSQL server of the tests' own, in a temporary folder and without a network port."""

import atexit
import functools
import os
import pwd
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

REQUIRED = os.environ.get("NQP2_POSTGRESQL") == "required"
USER = "postgres"
SETTINGS = {"listen_addresses": "", "fsync": "off", "max_connections": "40",
            "shared_buffers": "64MB"}


def programs_folder():
    """Debian keeps a server's programs beside the search path."""
    folders = sorted(Path("/usr/lib/postgresql").glob("*/bin"), reverse=True)
    folders += [Path(found).parent for found in (shutil.which("initdb"),) if found]
    return next((folder for folder in folders
                 if all((folder / name).exists() for name in ("initdb", "pg_ctl", "psql"))), None)


class Server:
    def __init__(self, programs):
        self.programs = programs
        # Its socket's path must be short.
        self.folder = Path(tempfile.mkdtemp(prefix="nqp2-pg-", dir="/tmp"))
        self.data = self.folder / "data"
        # The server refuses to run as root: it gets a user, who then owns the folder.
        self.user = {}
        if os.geteuid() == 0:
            entry = pwd.getpwnam(USER)
            os.chown(self.folder, entry.pw_uid, entry.pw_gid)
            self.user = {"user": entry.pw_uid, "group": entry.pw_gid, "extra_groups": []}
        self.folder.chmod(0o755)
        self.call("initdb", "-D", self.data, "-U", "nqp2", "-A", "trust", "-E", "UTF8",
                  "--locale=C", "--no-sync")
        self.start()

    def call(self, program, *arguments):
        # What a server that stays holds open must not be waited for.
        with open(os.devnull, "wb") as nothing:
            subprocess.run([self.programs / program, *arguments], stdout=nothing, stderr=nothing,
                           stdin=subprocess.DEVNULL, cwd="/", check=True, timeout=60, **self.user)

    def start(self):
        options = " ".join(f"-c {key}='{value}'" for key, value in SETTINGS.items())
        self.call("pg_ctl", "-D", self.data, "-w", "-l", self.folder / "log", "-o",
                  f"-k {self.folder} {options}", "start")

    def stop(self, mode="immediate"):
        self.call("pg_ctl", "-D", self.data, "-w", "-m", mode, "stop")

    def url(self, database):
        return f"postgresql://nqp2@/{database}?host={self.folder}"

    def run_sql(self, database, sql):
        return subprocess.run([self.programs / "psql", "-X", "-A", "-t", "-q", "-v",
                               "ON_ERROR_STOP=1", "-h", self.folder, "-U", "nqp2", "-d", database,
                               "-c", sql], capture_output=True, text=True, check=True,
                              timeout=60).stdout.strip()

    def new_database(self, name):
        self.run_sql("postgres", f"CREATE DATABASE {name}")
        return self.url(name)

    def end(self):
        try:
            self.stop()
        except subprocess.CalledProcessError:
            pass  # a test has stopped it
        shutil.rmtree(self.folder, ignore_errors=True)


@functools.cache
def server():
    """The server of this process. Where none is installed tests are skipped, unless it is
    required."""
    programs = programs_folder()
    if programs is None:
        if REQUIRED:
            raise AssertionError("no PostgreSQL server is installed")
        raise unittest.SkipTest("no PostgreSQL server is installed")
    started = Server(programs)
    atexit.register(started.end)
    return started
