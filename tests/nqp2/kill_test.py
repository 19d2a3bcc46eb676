# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Kills the program at each system call of a save: the old file is whole then, or the new one."""

import json
import re
import shutil
import unittest
from collections import Counter

from program import CardTest, can_trace, main, traced

IDENTIFIER = f"060A2B340101010501010D4313000000{0xA1:032X}"
NEW_FILE = re.compile(r"openat\(.*/?\.nqp2-.*O_CREAT")
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


def content_of(file):
    return file.read_bytes() if file.exists() else None


@unittest.skipUnless(can_trace(), "strace is missing or may not trace")
class KillTest(CardTest):
    def kill_at_each_call(self, arguments, file, old=None, options=()):
        """Runs the command once to its end and then once for each call of its save. The file must
        be the old one or the new one after each kill, and no other may have a list's name."""
        def prepare():
            shutil.rmtree(file.parent, ignore_errors=True)
            file.parent.mkdir()
            if old is not None:
                file.write_bytes(old)

        trace = self.folder / "trace"
        prepare()
        self.assertEqual(traced(["-o", trace, *options], arguments).returncode, 0)
        new = content_of(file)
        self.assertNotEqual(old, new)
        calls = calls_of_the_save(trace)
        self.assertGreater(len(calls), 5)
        self.assertLess(len(calls), 200)
        left, kills = Counter(), 0
        for name, number in calls:
            if name in ("exit_group", "exit") or any(f"={name}:" in each for each in options):
                continue
            prepare()
            inject = f"inject={name}:signal=KILL:when={number}"
            result = traced(["-o", "/dev/null", *options, "-e", inject], arguments)
            with self.subTest(name, number=number):
                content = content_of(file)
                # A later run may ask for memory less often, so that the call never comes.
                if result.returncode != 0 or content != new:
                    self.assertIn(result.returncode, KILLED, result.stderr)
                    kills += 1
                self.assertIn(content, (old, new))
                left["old" if content == old else "new"] += 1
                listed = [path.name for path in file.parent.iterdir()
                          if path.name.lower().endswith(".xml")]
                self.assertEqual(listed, [] if content is None else [file.name])
        self.assertGreater(kills, len(calls) // 2)
        self.assertGreater(min(left["old"], left["new"]), 0, left)


    def test_edit_lists(self):
        self.card.add("0001AA", identifier=IDENTIFIER)
        event = {"ClipName": "0001AA", "GlobalClipID": IDENTIFIER, "Duration": 10}
        edl = self.folder / "cut.json"
        edl.write_text(json.dumps({"Events": [event] * 50}))
        command, folder = ("edl", "write", self.card.path, edl), self.card.path / "EDITLIST"
        self.kill_at_each_call((*command, "--name", "CUT"), folder / "CUT.xml", b"<old/>")
        for options in ((), ("-e", "inject=renameat2:error=EINVAL")):
            self.kill_at_each_call(command, folder / "P001AB.XML", options=options)

    def test_ingest_list(self):
        self.card.add("0002BB")
        self.kill_at_each_call(("ingest", "add", self.card.path, "0002BB", "0-9"),
                               self.card.path / "USERDATA" / "Ingest.xml",
                               b'<Media MediaID="P2"><Clip ClipName="0001AA"/></Media>')


if __name__ == "__main__":
    main()
