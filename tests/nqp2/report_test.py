# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The page of cards: what is written, and what becomes of pictures, without a browser."""

import os
import re
import signal
import struct
import subprocess
import unittest
from html.parser import HTMLParser

from program import PROGRAM, CardTest, can_trace, command_line, main, run

PICTURE = re.compile(r'<img [^>]*src="data:image/jpeg;base64,')
WORKER = os.path.join(os.path.dirname(PROGRAM), "nqp2-worker")


def bitmap(width=80, height=60, bits=24, length=None):
    """A bitmap file, of which no more than `length` bytes are there."""
    row = (width * bits // 8 + 3) // 4 * 4
    head = struct.pack("<2sIII IiiHHIIiiII", b"BM", 54 + row * abs(height) & 0xFFFFFFFF, 0, 54, 40, width, height, 1, bits, 0, 0, 0,
                       0, 0, 0)
    return (head + b"\x30\x80\xff" * (min(row * abs(height), 100_000) // 3 + 1))[:length]


class Outline(HTMLParser):
    """Checks that elements are closed in order, and keeps the page's text."""

    VOID = {"meta", "img", "input"}

    def __init__(self, page):
        super().__init__()
        self.open, self.text, self.policy = [], "", ""
        self.feed(page)
        self.close()

    def handle_starttag(self, tag, attrs):
        if tag not in self.VOID:
            self.open.append(tag)
        if ("http-equiv", "Content-Security-Policy") in attrs:
            self.policy = dict(attrs)["content"]

    def handle_endtag(self, tag):
        assert self.open.pop() == tag, (tag, self.open[-5:])

    def handle_data(self, data):
        self.text += data


class ReportTest(CardTest):
    def setUp(self):
        super().setUp()
        self.page = self.folder / "page.html"

    def add_icon(self, name, content):
        folder = self.card.path / "CONTENTS" / "ICON"
        folder.mkdir(exist_ok=True)
        (folder / f"{name}.BMP").write_bytes(content)

    def written(self, *options):
        result = run("report", self.card.path, "-o", self.page, *options)
        self.assertEqual(result.returncode, 0, result.stderr)
        page = self.page.read_text()
        outline = Outline(page)
        self.assertEqual(outline.open, [])
        self.assertTrue(outline.policy.startswith("default-src 'none'; img-src data:;"))
        return page, outline.text, result.stderr

    def worker_with(self, signal_name, clip):
        """A worker that gets a signal where it reads that clip's icon."""
        worker = self.folder / "worker"
        worker.write_text("#!/bin/sh\nexport ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0\n"
                          "exec strace -f -o /dev/null -e trace=pread64 -P "
                          f"{self.card.path}/CONTENTS/ICON/{clip}.BMP "
                          f"-e inject=pread64:signal={signal_name} {WORKER} \"$@\"\n")
        worker.chmod(0o755)
        return worker

    def test_tells_takes_lists_what_was_taken_in_and_what_was_skipped(self):
        self.card.add("0001AA", duration=100, identifier="1" * 64, relation=(
            f"<Relation><Connection><Top><GlobalClipID>{'1' * 64}</GlobalClipID></Top><Next>"
            f"<GlobalClipID>{'2' * 64}</GlobalClipID><P2SerialNo.>CARD-2</P2SerialNo.>"
            "<ClipName>0007XY</ClipName></Next></Connection></Relation>"))
        self.card.add_raw("0009ZZ.XML", b"<P2Main")
        run("ingest", "add", self.card.path, "0001AA", "0-24", "20-29")
        page, text, told = self.written()
        for part in ("0007XY on card CARD-2", "incomplete", "30 % taken in", "0009ZZ.XML",
                     "video missing", "Not whole", "1 take incomplete", "1 file skipped"):
            self.assertIn(part, text)
        self.assertIsNone(PICTURE.search(page))
        self.assertEqual(told, "1 clip, 1 without a picture\n")

    def test_pictures_that_are_none_are_told_and_left_out(self):
        icons = {"0001AA": bitmap(), "0002BB": b"", "0003CC": b"no picture at all",
                 "0004DD": bitmap(65535, 65535, length=100_000), "0005EE": bitmap(length=200),
                 "0006FF": bitmap(height=-60, bits=32), "0007GG": bitmap(300, 100),
                 "0008HH": b"\x89PNG\r\n\x1a\n" + b"\xff" * 99, "0009II": b"\xff\xd8\xff" * 99}
        for name, content in icons.items():
            self.card.add(name)
            self.add_icon(name, content)
        os.mkfifo(self.card.path / "CONTENTS" / "ICON" / "0010JJ.BMP")
        self.card.add("0010JJ")
        page, _, told = self.written()
        self.assertEqual(len(PICTURE.findall(page)), 3)
        self.assertEqual(told, "10 clips, 7 without a picture\n")
        self.assertGreaterEqual(len(re.findall('class="blank" title="[^"]+"', page)), 6)

    def test_what_another_picture_or_a_whole_clip_hides_is_told(self):
        self.card.add("0001AA", codec="AVC-LongG422", identifier="2" * 64, relation=(
            f"<Relation><Connection><Top><GlobalClipID>{'1' * 64}</GlobalClipID></Top><Previous>"
            f"<GlobalClipID>{'1' * 64}</GlobalClipID></Previous></Connection></Relation>"))
        self.card.add_file("AVCLIP", "0001AA.MXF")
        self.card.add_file("PROXY", "0001AA.MP4")
        (self.card.path / "CONTENTS" / "PROXY" / "0001AA.MP4").write_bytes(bitmap())
        self.add_icon("0001AA", b"no picture at all")
        page, text, told = self.written()
        self.assertEqual((len(PICTURE.findall(page)), told),
                         (1, "1 clip, 1 with another picture than the icon\n"))
        self.assertIn("wholetake incompleteicon is no picture", text)
        self.assertEqual(re.findall('data-state="(.+?)"', page), ["broken"])
        self.assertRegex(text, "/ICON/0001AA.BMP: .+")

    @unittest.skipUnless(os.path.exists(WORKER) and can_trace(), "strace cannot trace here")
    def test_a_worker_that_dies_costs_the_picture_at_which_it_does(self):
        for number in range(6):
            self.card.add(f"000{number}AA")
            self.add_icon(f"000{number}AA", bitmap())
        page, _, told = self.written("--worker", self.worker_with("KILL", "0003AA"))
        self.assertEqual(len(PICTURE.findall(page)), 5)
        self.assertEqual(told, "6 clips, 1 without a picture\n")
        self.assertEqual(page.count("The worker ended while it read the file."), 1)

    @unittest.skipUnless(os.path.exists(WORKER) and can_trace(), "strace cannot trace here")
    def test_what_a_stopped_worker_keeps_waiting_is_told_and_can_be_ended(self):
        self.card.add("0001AA")
        self.add_icon("0001AA", bitmap())
        line = command_line("report", self.card.path, "-o", self.page, "--worker",
                            self.worker_with("STOP", "0001AA"))
        with subprocess.Popen(line, stderr=subprocess.PIPE, text=True) as program:
            self.assertEqual(program.stderr.readline(), "nqp2: waiting for the picture of 0001AA: "
                             "the worker has not answered for 10 seconds\n")
            program.send_signal(signal.SIGINT)
            self.assertEqual(program.wait(timeout=10), -signal.SIGINT)
        self.assertFalse(self.page.exists())

    def test_without_a_worker_there_is_a_page_that_says_so(self):
        self.card.add("0001AA")
        self.add_icon("0001AA", bitmap())
        page, text, told = self.written("--worker", "/nonexistent")
        self.assertIn("Pictures are missing: the worker: does not start", text)
        self.assertIn("does not start", told)

    def test_a_page_is_replaced_as_a_whole_or_not_at_all(self):
        self.card.add("0001AA")
        self.page.write_text("old")
        (self.folder / ".nqp2-killed.part").write_text("what a killed writer has left")
        self.written()
        self.assertEqual(sorted(os.listdir(self.folder)), ["card", "page.html"])
        shown = run("report", self.card.path, "-o", "-")
        self.assertEqual((shown.returncode, shown.stdout.count("</html>")), (0, 1))
        for place in (self.folder, self.folder / "missing" / "page.html", "/dev/full"):
            failed = run("report", self.card.path, "-o", place)
            self.assertEqual(failed.returncode, 1)
            self.assertTrue(failed.stderr.startswith(f"nqp2: {place}: cannot be written"))
        self.assert_each_fails(2, [(("report", self.card.path, "-o", place), f"{place}: is on the card")
                                   for place in (self.card.clips / "page.html",
                                                 self.folder / "card" / ".." / "card" / "p.html")])


if __name__ == "__main__":
    main()
