#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Writes those seeds into fuzz/corpus that are no files of their own kind already, with the sample
cards' own writers where these are of use."""

import json
import struct
import sys
from fractions import Fraction
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(HERE.parent / "samples"))

from card.avc_stream import Picture, stream  # noqa: E402
from card.avchd_files import (AvchdClip, AvchdPlaylist, clip_information,  # noqa: E402
                              playlist)


def write(target: str, name: str, content: bytes) -> None:
    folder = HERE / "corpus" / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / f"{name}.bin").write_bytes(content)


def seed(target: str, name: str) -> bytes:
    return (HERE / "corpus" / target / name).read_bytes()


def text(content: str) -> bytes:
    """As ByteSource::Text takes one that is no choice from a table."""
    content_bytes = content.encode()
    return bytes([0x80 | len(content_bytes)]) + content_bytes


def card(files: dict) -> bytes:
    """As MemoryFiles::AddFrom takes a card."""
    return b"".join(text(path) + struct.pack("<H", len(content)) + content
                    for path, content in files.items())


def write_avchd_cards(bdmv: str, clips: list, last: str) -> None:
    upper = last == "MPL"
    information, video = ("CPI", "MTS") if upper else ("clpi", "m2ts")
    files = {f"{bdmv}/CLIPINF/{clip.name}.{information}": clip_information(clip, 64)
             for clip in clips}
    files[f"{bdmv}/STREAM/{clips[0].name}.{video}"] = b""
    files[f"{bdmv}/PLAYLIST/00000.{last}"] = playlist(AvchdPlaylist("00000", clips))
    write("card_scan", f"avchd_{last}", card(files))


def write_p2_cards() -> None:
    write("card_scan", "p2", card({
        "CONTENTS/CLIP/0001AA.XML": seed("clip_readers", "dv25.xml"),
        "contents/clip/0002bb.xml": seed("clip_readers", "spanned.xml"),
        "CONTENTS/CLIP/0003CC.XML/": b"", "CONTENTS/CLIP/._0001AA.XML": b"Mac",
        "CONTENTS/VIDEO/0001AA.MXF": b"", "CONTENTS/AUDIO/0001AA00.MXF": b"",
        "CONTENTS/ICON/0001AA.BMP": b"", "EDITLIST/P001ED.XML": seed("edl_reader", "v2.xml"),
        "USERDATA/Ingest.xml": seed("ingest_reader", "two_clips.xml")}))


def write_clip_rows() -> None:
    """Clip files one after another, of which each resembles the ones before."""
    plain = seed("clip_readers", "memos.xml")
    root = plain.index(b"<ClipContent")
    inner = clip_xml("0002BB").split(b"<P2Main")[1]
    changed = [plain.replace(b"</Memo>", b"</Memo><Memo><Offset>7</Offset><Text/></Memo>", 1),
               plain.replace(b"<ClipContent", b"<!-- c --><Other>v</Other><ClipContent", 1),
               plain.replace(b"</ClipContent>", b"</ClipContent><ClipContent><ClipName>x"
                             b"</ClipName></ClipContent>"),
               plain[:root] + b"<a xmlns='urn:a'><b>t</b></a>" + plain[root:],
               plain.replace(b"</Offset>", b"<!-- c -->9</Offset>", 1),
               plain.replace(b"</ClipContent>", b"<P2Main" + inner + b"</ClipContent>"),
               plain.replace(b"<Codec>", b"<Codec Class='a&amp;b'>", 1).replace(b"\n", b"\r\n")]
    for number, other in enumerate(changed):
        for target in ("field_reader", "clip_metadata"):
            write(target, f"changed_{number}", b"\0".join([plain, other, plain]))
    for name in ("dv25", "proxy", "repeated", "many_channels", "prefixes"):
        write("field_reader", name, b"\0".join([seed("clip_readers", f"{name}.xml"), plain]))
    for name in ("spanned", "entities", "prefixes", "nested"):
        write("clip_metadata", name, b"\0".join([seed("clip_readers", f"{name}.xml"), plain]))
    write("clip_metadata", "mixed", b"<a b='1'>x<!--c--><b>y</b><![CDATA[<z>]]><b/> <b> </b></a>")


def clip_xml(name: str) -> bytes:
    """A clip that does not tell how large its essence is."""
    return (f'<?xml version="1.0"?><P2Main xmlns="urn:fuzz:clip"><ClipContent><ClipName>{name}'
            "</ClipName><GlobalClipID>060A2B340101010501010D43130000004A5B6C7D8E9F01A2B3C4D5E6F70819"
            f"{name[2:4]}</GlobalClipID><Duration>2</Duration><EditUnit>1/25</EditUnit><EssenceList>"
            "<Video><Codec>DV25_420</Codec><FrameRate>50i</FrameRate></Video><Audio>"
            "<SamplingRate>48000</SamplingRate><BitsPerSample>16</BitsPerSample></Audio>"
            "</EssenceList></ClipContent></P2Main>").encode()


def requests(*messages: bytes, icon: bytes = b"BM") -> bytes:
    """The input of the worker's target: a card with a clip and what a host asks."""
    files = card({"CONTENTS/CLIP/0001AA.XML": clip_xml("0001AA"),
                  "CONTENTS/CLIP/0002BB.XML": clip_xml("0002BB"),
                  "CONTENTS/VIDEO/0001AA.MXF": b"video", "CONTENTS/AUDIO/0001AA00.MXF": b"sound",
                  "CONTENTS/ICON/0001AA.BMP": icon})
    return b"\0" + struct.pack("<H", len(files)) + files + b"".join(messages)


def bitmap(height: int) -> bytes:
    """Two pixels wide."""
    head = struct.pack("<2sIHHIIiiHHIIiiII", b"BM", 54 + 8 * height, 0, 0, 54, 40, 2, height, 1, 24,
                       0, 8 * height, 0, 0, 0, 0)
    return head + bytes(range(8)) * height


def write_requests() -> None:
    # Numbers of Host::kRequests, then of its tables.
    system, importing, offset, export, delete = (bytes([number]) for number in range(5))
    card_root, other, name, error = b"\0", b"\4", b"\0", bytes([15])
    write("worker_dispatch", "import", requests(
        system + b"\1", importing + card_root + name + other + b"\0", offset,
        importing + card_root + b"\2" + other + b"\1", error))
    write("worker_dispatch", "export", requests(
        importing + card_root + name + other + b"\0", delete + card_root + name,
        export + card_root + other + b"\1" + name, delete + card_root + b"\5", error))
    data = (144000).to_bytes(3, "little") + b"\x04\x1f\x07\x00\xbf"
    sound = (1920 * 2).to_bytes(3, "little") + b"\0"
    write("worker_dispatch", "record", requests(
        bytes([9, 0, 1, 16, 0]) + card_root + b"\6" + name + bytes(6), b"\7" + b"\2" + bytes(4),
        bytes([10, 2]) + data + sound, bytes([10, 2]) + data + sound, bytes([12, 0]), error))
    write("worker_dispatch", "icon", requests(
        bytes([13]) + card_root + name + bytes([80, 60, 7]), bytes([16]) + card_root + name * 2,
        bytes([5]) + card_root, bytes([14]), bytes([11]) + struct.pack("<I", 4096) + b"\0"))
    pictures = bytes([17, 2]) + card_root + name + card_root + b"\2"  # one of them has an icon
    write("worker_dispatch", "pictures", requests(
        pictures + bytes([240, 180]), pictures + bytes([16, 16]), pictures + bytes([9, 180]), error,
        icon=bitmap(40)))
    no_text = b"\6"
    part = card_root + name + bytes([0, 0, 10, 1]) + card_root + name  # with a file of sound
    write("worker_dispatch", "rewrap", requests(*(
        bytes([19]) + other + name + bytes([container, join, 0, 25, 1]) + no_text * 3
        + bytes([1, 16, 9, 1]) + part + b"\0" + no_text + error
        for container, join in ((0, 0), (1, 0), (2, 0), (3, 0), (0, 1)))))


def write_packets() -> None:
    # What is done, length, three descriptors, how many, padding; kind, id, slot, length, sizes,
    # slots.
    def step(kind: int, count: int, first: int = 0, length: int = 32, ident: int = 7) -> bytes:
        return (bytes([0, length, first, 1, 5, count, 0, 0])
                + struct.pack("<8I", kind, ident, 0, 0, 4096, 4096, 4, 4))
    write("channel_listener", "hello", step(1, 2) + step(3, 0))
    write("channel_listener", "no_memory", step(1, 2, first=4))
    write("channel_listener", "offer", step(1, 0) + step(5, 3, first=5))
    write("channel_listener", "short", step(1, 2, length=31))


def write_texts() -> None:
    edl = {"Name": "cut", "EditUnit": [1, 25], "Identity": "0" * 32,
           "Events": [{"ClipName": "0001AA", "Duration": 9, "Offset": 1.5, "Note": "\u00e9\U0001d11e"}]}
    write("json_input", "edl", json.dumps({"edls": [edl]}).encode())
    write("json_input", "deep", b"[" * 40 + b"1e400" + b"]" * 40)
    for name, path in {"card": "/media/card/", "drive": "E=/media/card", "letter": "e",
                       "windows": "E:\\CONTENTS\\CLIP\\0001AA.XML", "odd": "a:b:\\\xff*?/..",
                       "pattern": "*0*1*.*xml0001AB.XML"}.items():
        write("path_text", name, path.encode("latin-1"))
    write("bitmap_file", "small", bitmap(3))
    write("bitmap_file", "top_down", bitmap(3)[:54].replace(
        struct.pack("<i", 3), struct.pack("<i", -3)) + bytes(24))


def main() -> None:
    interlaced = Picture(1920, 1080, True, Fraction(25))
    fast = Picture(1280, 720, False, Fraction(60000, 1001))
    start = AvchdClip("00000", interlaced, 50, "2024-05-10T08:00:00", "10:00:00:00",
                      clip_id=bytes(range(32)))
    rest = AvchdClip("00001", interlaced, 20, "2024-05-10T08:00:02", first_tick=start.end_tick,
                     continues=True)
    other = AvchdClip("00002", fast, 9, "2024-05-10T08:01:00", "01:00:00;00", audio=False)
    write("avchd_playlist", "split", playlist(AvchdPlaylist("00000", [start, rest, other])))
    write("avchd_playlist", "bare", playlist(AvchdPlaylist("00001", [other], recorded=False)))
    write("avchd_playlist", "empty", playlist(AvchdPlaylist("00002", [], recorded=False)))
    write("avchd_clip", "identified", clip_information(start, 64))
    write("avchd_clip", "silent", clip_information(other, 64))
    dated = stream(interlaced, 1, date=bytes.fromhex("0420240510080000"),
                   timecode=bytes.fromhex("50000210"))
    write("avchd_stream", "dated", dated[:192 * 8])
    write("avchd_stream", "narrow", stream(Picture(1440, 1080, True, Fraction(25)), 1)[:192 * 6])
    write("avchd_stream", "fast", stream(fast, 1, audio=False)[:192 * 6])
    write_avchd_cards("AVCHD/BDMV", [start, rest, other], "MPL")
    write_avchd_cards("BDMV", [start, rest], "mpls")
    write_p2_cards()
    write_clip_rows()
    write_requests()
    write_packets()
    write_texts()


if __name__ == "__main__":
    main()
