# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Kills the program at each system call of a save: the old file is whole then, or the new one."""

import json
import re
import shutil
import unittest
import xml.etree.ElementTree as ElementTree
from collections import Counter
from pathlib import Path

from program import CardTest, can_trace, main, traced

IDENTIFIER = f"060A2B340101010501010D4313000000{0xA1:032X}"
NEW_FILE = re.compile(r'openat\(.*\.tmp".*O_CREAT')
CALL = re.compile(r"^(?:\[pid +\d+\] |\d+ +)?(\w+)\(")
KILLED = (-9, 128 + 9)


def calls_of_the_save(trace):
    """Each system call from the one that makes the new file on, with the number that it has among
    calls of its name. All of them: what follows the save must do no harm either."""
    counts, calls, saving = Counter(), [], False
    for line in trace.read_text(errors="replace").splitlines():
        match = CALL.match(line)
        if match and "resumed>" not in line:
            counts[match.group(1)] += 1
            saving = saving or bool(NEW_FILE.search(line))
            if saving:
                calls.append((match.group(1), counts[match.group(1)]))
    return calls


@unittest.skipUnless(can_trace(), "strace is missing or may not trace")
class KillTest(CardTest):
    def kill_at_each_call(self, arguments, prepare, file):
        """Runs the command once to its end and then once for each call of its save. Yields the
        file's content after each kill."""
        trace = self.folder / "trace"
        prepare()
        old = file.read_bytes()
        self.assertEqual(traced(["-o", trace], arguments).returncode, 0)
        new = file.read_bytes()
        self.assertNotEqual(old, new)
        calls = calls_of_the_save(trace)
        self.assertGreater(len(calls), 5)
        self.assertLess(len(calls), 200)
        left, kills = Counter(), 0
        for name, number in calls:
            if name in ("exit_group", "exit"):
                continue
            prepare()
            inject = f"inject={name}:signal=KILL:when={number}"
            result = traced(["-o", "/dev/null", "-e", inject], arguments)
            with self.subTest(name, number=number):
                content = file.read_bytes()
                # A later run may ask for memory less often, so that the call never comes.
                if result.returncode != 0 or content != new:
                    self.assertIn(result.returncode, KILLED, result.stderr)
                    kills += 1
                self.assertIn(content, (old, new))
                left["old" if content == old else "new"] += 1
                ElementTree.fromstring(content)
                listed = [path.name for path in file.parent.iterdir()
                          if path.name.lower().endswith(".xml")]
                self.assertEqual(listed, [file.name])
        self.assertGreater(kills, len(calls) // 2)
        self.assertGreater(min(left["old"], left["new"]), 0, left)

    def fresh(self, folder, name, content):
        def prepare():
            shutil.rmtree(folder, ignore_errors=True)
            folder.mkdir()
            (folder / name).write_bytes(content)
        return prepare

    def test_edit_list(self):
        self.card.add("0001AA", identifier=IDENTIFIER)
        event = {"ClipName": "0001AA", "GlobalClipID": IDENTIFIER, "Duration": 10}
        edl = Path(self.folder / "cut.json")
        edl.write_text(json.dumps({"Events": [event] * 50}))
        folder = self.card.path / "EDITLIST"
        self.kill_at_each_call(("edl", "write", self.card.path, edl, "--name", "CUT"),
                               self.fresh(folder, "CUT.xml", b"<old/>"), folder / "CUT.xml")

    def test_ingest_list(self):
        folder = self.card.path / "USERDATA"
        old = b'<Media MediaID="P2"><Clip ClipName="0001AA"/></Media>'
        self.kill_at_each_call(("ingest", "add", self.card.path, "0002BB", "0-9"),
                               self.fresh(folder, "Ingest.xml", old), folder / "Ingest.xml")


if __name__ == "__main__":
    main()
