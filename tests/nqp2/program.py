# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Runs nqp2 and makes the small cards that the tests of the command line read."""

import fcntl
import functools
import json
import os
import pty
import re
import select
import shutil
import struct
import subprocess
import sys
import tempfile
import termios
import unittest
from contextlib import contextmanager
from pathlib import Path
from xml.sax.saxutils import escape

PROGRAM = sys.argv.pop(1)
SOURCES = Path(__file__).resolve().parents[2]
INCLUDE = SOURCES / "include" / "NQP2ParserU"
GOLDEN = Path(__file__).resolve().parent / "golden"
NAMESPACE = "urn:schemas-Professional-Plug-in:P2:ClipMetadata:v3.1"


def command_line(*arguments):
    """The program with arguments that may be texts, paths or numbers."""
    texts = (str(each) if isinstance(each, int) else each for each in arguments)
    return [PROGRAM, *map(os.fsencode, texts)]


def run(*arguments, cwd=None, stdout=subprocess.PIPE, given=""):
    """The finished program with its output as text; undecodable bytes stay recognisable. `given`
    is what it finds on standard input."""
    return subprocess.run(command_line(*arguments), cwd=cwd, stdout=stdout, input=given,
                          stderr=subprocess.PIPE, encoding="utf-8", errors="surrogateescape",
                          timeout=60, check=False)


def traced(options, arguments):
    """The finished program, run under strace."""
    # The search for leaks at the end stops the program's threads by tracing them, which a traced
    # program cannot do.
    asan = os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"
    return subprocess.run(["strace", "-f", *options, *command_line(*arguments)],
                          env={**os.environ, "ASAN_OPTIONS": asan},
                          stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, timeout=60,
                          check=False)


def can_trace():
    if shutil.which("strace") is None:
        return False
    trial = subprocess.run(["strace", "-f", "-o", "/dev/null", "-e",
                            "inject=getpid:signal=KILL:when=99", "true"],
                           capture_output=True, check=False)
    return trial.returncode == 0


@contextmanager
def terminal(columns):
    """The two ends of a terminal of that width. A test for which none can be had is skipped."""
    try:
        ends = pty.openpty()
    except OSError as error:
        raise unittest.SkipTest(f"no terminal can be had: {error}") from error
    try:
        fcntl.ioctl(ends[1], termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        yield ends
    finally:
        for end in ends:
            os.close(end)


def read_until_end(master, process):
    """What a process shows on a terminal until it ends. Our own copy of the other end stays open:
    what is in a terminal is lost when the last closes."""
    shown, ended = b"", False
    while not ended or select.select([master], [], [], 0)[0]:
        ended = process.poll() is not None
        if select.select([master], [], [], 0 if ended else 0.01)[0]:
            shown += os.read(master, 4096)
    return shown


def run_on_terminal(columns, *arguments):
    """The lines that the program shows on a terminal of that width."""
    environment = {key: value for key, value in os.environ.items() if key != "COLUMNS"}
    with terminal(columns) as (master, slave):
        with subprocess.Popen(command_line(*arguments), stdout=slave, stderr=subprocess.DEVNULL,
                              env=environment) as process:
            shown = read_until_end(master, process)
    return shown.decode().replace("\r\n", "\n").splitlines()


def fields_of(header, record):
    """Names of a record's fields as its declaration gives them, in order."""
    body = re.search(rf"struct (?:NQP2_API )?{record} {{(.*?)^}};", header.read_text(),
                     re.DOTALL | re.MULTILINE).group(1)
    return re.findall(r"^    [\w:<>]+ (\w+)(?:\[\w+\])?(?: = [^;]+)?;", body, re.MULTILINE)


SHARED_SAMPLES = os.environ.get("NQP2_SAMPLE_CARDS")
SAMPLES = tempfile.TemporaryDirectory()


@functools.cache
def sample(kind="p2"):
    """One of our own sample cards, made once for all tests or for these; to be read only."""
    if SHARED_SAMPLES:
        return Path(SHARED_SAMPLES) / kind
    if shutil.which("ffmpeg") is None:
        raise unittest.SkipTest("ffmpeg is not installed")
    folder = Path(SAMPLES.name) / kind
    subprocess.run([sys.executable, "-B", SOURCES / "samples" / "make_card.py", folder, "--kind",
                    kind], check=True)
    return folder


def clip_xml(name, *, title="", codec="DV25_420", codec_class="", rate="50i", duration=10,
             start="", timecode="00:00:00:00", identifier="", relation="", memos=(), audio=2):
    """A clip's metadata with what a test wants to see in it."""
    class_attribute = f' Class="{codec_class}"' if codec_class else ""
    shoot = f"<Shoot><StartDate>{start}</StartDate></Shoot>" if start else ""
    memo_list = "".join(f"<Memo><Offset>{offset}</Offset><Person>{escape(person)}</Person>"
                        f"<Text>{escape(text)}</Text></Memo>" for offset, person, text in memos)
    channel = "<Audio><BitsPerSample>16</BitsPerSample></Audio>"
    return (f'<?xml version="1.0" encoding="UTF-8"?>\n<P2Main xmlns="{NAMESPACE}"><ClipContent>'
            f"<ClipName>{escape(name)}</ClipName><GlobalClipID>{identifier}</GlobalClipID>"
            f"<Duration>{duration}</Duration><EditUnit>1/25</EditUnit>{relation}<EssenceList>"
            f"<Video><Codec{class_attribute}>{codec}</Codec><FrameRate>{rate}</FrameRate>"
            f"<StartTimecode>{timecode}</StartTimecode><AspectRatio>16:9</AspectRatio></Video>"
            f"{channel * audio}</EssenceList>"
            f"<ClipMetadata><UserClipName>{escape(title)}</UserClipName>{shoot}"
            f"<MemoList>{memo_list}</MemoList></ClipMetadata></ClipContent></P2Main>\n")


class Card:
    """A card folder that a test fills."""

    def __init__(self, folder):
        self.path = Path(folder)
        self.clips = self.path / "CONTENTS" / "CLIP"
        self.clips.mkdir(parents=True)

    def add(self, name, **fields):
        self.add_raw(f"{name}.XML", clip_xml(name, **fields).encode())

    def add_raw(self, file_name, content):
        Path(os.fsdecode(os.path.join(os.fsencode(self.clips), os.fsencode(file_name)))
             ).write_bytes(content)

    def add_file(self, folder, file_name):
        (self.path / "CONTENTS" / folder).mkdir(exist_ok=True)
        (self.path / "CONTENTS" / folder / file_name).write_bytes(b"x")


class CardTest(unittest.TestCase):
    """A test with a folder of its own and, in it, an empty card."""

    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.card = Card(self.folder / "card")

    def assert_golden(self, name, text):
        """Compares with golden/NAME, in which CARD stands for the card's folder. The program's
        line ends are kept. NQP2_WRITE_GOLDEN=1 writes the file instead."""
        shown = text.replace(str(self.card.path), "CARD")
        if os.environ.get("NQP2_WRITE_GOLDEN"):
            (GOLDEN / name).write_bytes(shown.encode())
        self.assertEqual(shown, (GOLDEN / name).read_bytes().decode())

    def shown(self, *arguments, **options):
        """What a command prints that has nothing to complain about."""
        result = run(*arguments, **options)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout

    def told(self, *arguments, **options):
        """The JSON of a command that succeeds, with messages or without."""
        result = run(*arguments, "--json", **options)
        self.assertEqual(result.returncode, 0, result.stderr)
        return json.loads(result.stdout)

    def assert_fails(self, result, status, line):
        self.assertEqual((result.returncode, result.stderr), (status, line + "\n"))

    def assert_each_fails(self, status, cases, **options):
        """Each command prints nothing but one line, which begins like this."""
        for arguments, line in cases:
            with self.subTest(arguments):
                result = run(*arguments, **options)
                self.assertEqual((result.returncode, result.stdout), (status, ""))
                self.assertEqual(result.stderr.count("\n"), 1)
                self.assertTrue(result.stderr.startswith(f"nqp2: {line}"), result.stderr)


class ListCardTest(CardTest):
    """A test whose card has edit lists."""

    def event(self, offset, duration, source=0, name="0001AA", more="", channels="", note=""):
        return (f"<Event><Offset>{offset}</Offset><Duration>{duration}</Duration><Source>"
                f"<P2SerialNo.>AB1</P2SerialNo.><ClipName>{escape(name)}</ClipName>"
                f"<Offset>{source}</Offset><Channel>{channels}</Channel></Source>{more}"
                f"<Note>{escape(note)}</Note></Event>")

    def add_list(self, name, *events, unit="1/25", start="00:00:00:00"):
        folder = self.card.path / "CONTENTS" / "EDITLIST"
        folder.mkdir(exist_ok=True)
        namespace = "urn:schemas-Professional-Plug-in:P2:EditMetadata:v2.0"
        (folder / f"{name}.XML").write_text(
            f'<P2Main xmlns="{namespace}"><EditContent><EditUnit>{unit}</EditUnit><StartTimecode>'
            f"{start}</StartTimecode><TrackList><ClipTrack><EventList>{''.join(events)}</EventList>"
            "</ClipTrack></TrackList></EditContent></P2Main>", encoding="utf-8")

    def add_clip(self, name, **fields):
        self.card.add(name, **{"duration": 100, **fields})
        self.card.add_file("VIDEO", f"{name}.MXF")
        for channel in range(fields.get("audio", 2)):
            self.card.add_file("AUDIO", f"{name}{channel:02}.MXF")


def main():
    unittest.main(verbosity=1)
