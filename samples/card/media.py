# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Writes a card's folders and files."""

import os
import shutil
import struct
from pathlib import Path

from card.clip_xml import Clip

MARKER = ".sample-card"
MARKER_TEXT = b"made by samples/make_card.py, which may replace this card\n"
LAST_CLIP = "LASTCLIP.TXT"
USER_DATA = "USERDATA"
TOP_FOLDERS = ("CONTENTS", USER_DATA, "EDITLIST", "PRIVATE", "PANA_GRP", "SONY")
FOLDERS = ("AUDIO", "AVCLIP", "CLIP", "ICON", "PROXY", "VIDEO", "VOICE")
MODIFIED = 1715400000  # every file and folder: 2024-05-11T04:00:00Z


class CardError(Exception):
    """The card cannot be made; the text says why."""


def apple_double() -> bytes:
    """A companion file as another system's file manager leaves it: magic, version, two entries."""
    finder_info = b"\0" * 32
    resource_fork = b"\0" * 16
    head_size = 26 + 2 * 12
    head = struct.pack(">II16sH", 0x00051607, 0x00020000, b"\0" * 16, 2)
    entries = struct.pack(">III", 9, head_size, len(finder_info))
    entries += struct.pack(">III", 2, head_size + len(finder_info), len(resource_fork))
    return head + entries + finder_info + resource_fork


class FolderWriter:
    """A folder that this script fills and may replace. Files get a fixed time, so that two runs give
    the same."""

    def __init__(self, out: Path, force: bool):
        self._out = out
        self._folders: list[Path] = []  # in the order in which they were made
        self._placed: list[Path] = []
        self._prepare(force)

    def write_file(self, name: str, content: bytes, size: int = 0) -> None:
        """A file of any folder, made longer to `size` without content."""
        for above in reversed(Path(name).parents):
            self._make_folder(self._out / above)
        self._write(f"{self._out}/{name}", content, size)

    def place(self, name: str) -> Path:
        """Where another program is to write a file of any folder."""
        path = self._out / name
        for above in reversed(Path(name).parents):
            self._make_folder(self._out / above)
        self._placed.append(path)
        return path

    def finish(self) -> None:
        """Gives folders, and files that others wrote, their time, once all are there."""
        for path in (*self._placed, *reversed(self._folders)):
            os.utime(path, (MODIFIED, MODIFIED))

    def _prepare(self, force: bool) -> None:
        if self._out.exists() and not self._out.is_dir():
            raise CardError(f"{self._out}: not a folder")
        if self._out.is_dir() and any(self._out.iterdir()):
            self._remove_old(force)
        self._make_folder(self._out)
        self._write(f"{self._out}/{MARKER}", MARKER_TEXT)

    def _remove_old(self, force: bool) -> None:
        if not force:
            raise CardError(f"{self._out}: the folder is not empty (--force replaces a sample card)")
        marker = self._out / MARKER
        if not marker.is_file() or marker.read_bytes() != MARKER_TEXT:
            raise CardError(f"{self._out}: --force replaces a card that this script made, "
                            f"and this is none (no {MARKER} file)")
        for name in TOP_FOLDERS:
            if (self._out / name).exists():
                shutil.rmtree(self._out / name)
        (self._out / LAST_CLIP).unlink(missing_ok=True)

    def _make_folder(self, folder: Path) -> None:
        if folder not in self._folders:
            folder.mkdir(parents=True, exist_ok=True)
            self._folders.append(folder)

    @staticmethod
    def _write(path: str, content: bytes, size: int = 0) -> None:
        with open(path, "wb", buffering=0) as file:
            if content:
                file.write(content)
            if size > len(content):
                file.truncate(size)
            os.utime(file.fileno(), (MODIFIED, MODIFIED))


class CardWriter(FolderWriter):
    """One P2 card."""

    def __init__(self, out: Path, force: bool):
        super().__init__(out, force)
        self._contents = out / "CONTENTS"
        for folder in (self._contents, *(self._contents / name for name in FOLDERS)):
            self._make_folder(folder)

    def write(self, folder: str, name: str, content: bytes, size: int = 0) -> None:
        """A file of a CONTENTS folder, made longer to `size` without content."""
        self._write(f"{self._contents}/{folder}/{name}", content, size)

    def add_edit_list(self, name: str, content: bytes, icon: bytes | None = None) -> None:
        """An edit list and its picture, which has a folder of its own."""
        self._make_folder(self._contents / "EDITLIST")
        self.write("EDITLIST", f"{name}.XML", content)
        if icon:
            self._make_folder(self._contents / "EDITLIST" / name)
            self.write(f"EDITLIST/{name}", "ICON.BMP", icon)

    def add_ingest_list(self, content: bytes) -> None:
        """What the host took in from the card, in a folder beside CONTENTS."""
        self._make_folder(self._out / USER_DATA)
        self._write(f"{self._out}/{USER_DATA}/Ingest.xml", content)

    def add_metadata(self, clip: Clip, metadata: bytes) -> None:
        self.write("CLIP", clip.file_name(f"{clip.name}.XML"), metadata)

    def add_hollow_clip(self, clip: Clip, metadata: bytes) -> None:
        """A clip whose media have a length and no content, and take no room."""
        self.add_metadata(clip, metadata)
        for folder, name in clip_files(clip):
            self.write(folder, name, b"", 0 if folder == "ICON" else clip.essence_size)

    def add_last_clip(self, last_clip: str) -> None:
        """The card's last-clip file: the last name, a version and the number of the next clip."""
        next_number = int(last_clip[:4]) % 9999 + 1
        text = f"{last_clip}\r\n1.0\r\n{next_number}\r\n"
        self._write(f"{self._out}/{LAST_CLIP}", text.encode())


def clip_files(clip: Clip):
    """Folder and name of each of a clip's files but its metadata."""
    yield "ICON", f"{clip.name}.BMP"
    if clip.format.one_file:
        yield "AVCLIP", f"{clip.name}.MXF"
    else:
        yield "VIDEO", f"{clip.name}.MXF"
        for channel in range(clip.audio_channels):
            yield "AUDIO", f"{clip.name}{channel:02d}.MXF"
    if clip.proxy and clip.proxy.on_card:
        yield "PROXY", f"{clip.name}.{clip.proxy.container}"
    for number, _ in enumerate(memo for memo in clip.memos if memo.voice):
        yield "VOICE", f"{clip.name}{number:02d}.WAV"
