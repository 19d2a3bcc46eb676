# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""A clip's description and its metadata document."""

import hashlib
from dataclasses import dataclass, field
from datetime import datetime, timedelta
from typing import NamedTuple
from xml.etree.ElementTree import Comment, Element, SubElement, indent, tostring

from card.formats import Format

NAMESPACE = "urn:schemas-Professional-Plug-in:P2:ClipMetadata:"
CAMERA_NAMESPACE = "urn:schemas-Professional-Plug-in:P2:CameraMetadata:v1.2"
DECLARATION = '<?xml version="1.0" encoding="UTF-8" standalone="no" ?>'
ESSENCE_START = 32768  # bytes in front of the essence, of a file that has room for both


class Extent(NamedTuple):
    """Where the essence lies in a media file, in bytes."""

    start: int
    size: int


@dataclass
class Memo:
    offset: int
    person: str
    text: str
    voice: bool = False


@dataclass
class Proxy:
    container: str = "MP4"
    codec: str = "AVC"
    bit_rate: int = 800000
    frame_rate: str = "25p"
    resolution: str = "640x360"
    audio_codec: str = "AAC"
    audio_bit_rate: int = 64000
    audio_count: int = 2
    on_card: bool = True  # False: described, but the file is not there


@dataclass
class Segment:
    """Another clip of the same take, as a relation names it."""

    name: str
    identifier: str
    serial_no: str | None = None


@dataclass
class Relation:
    shot: str
    offset: int
    top: Segment
    previous: Segment | None = None
    next: Segment | None = None


@dataclass
class Style:
    """How the document is written down, its content left aside."""

    namespace: str | None = "v3.1"
    newline: str = "\n"
    indent: str | None = "  "  # None: the whole document in one line
    odd_comments: bool = False
    camera_block: bool = False  # an element with a default namespace of its own
    lower_identifier: bool = False


@dataclass
class Clip:
    name: str
    format: Format
    duration: int
    timecode: str
    start: str
    drop: bool | None = None  # None: the metadata does not tell
    user_name: str | None = None
    audio_channels: int = 4
    instance: int = 0  # which copy of the material this is, part of the identifier
    unused_offset: int | None = None
    memos: list[Memo] = field(default_factory=list)
    proxy: Proxy | None = None
    relation: Relation | None = None
    style: Style = field(default_factory=Style)
    lower_case_files: bool = False
    essence_size: int = 0  # bytes of each of its media files, when they are placeholders
    extents: list[Extent] = field(default_factory=list)  # when not: of the picture, of each channel
    access: dict[str, str] = field(default_factory=dict)
    device: dict[str, str] = field(default_factory=dict)
    shooter: str | None = None
    location: dict[str, str] = field(default_factory=dict)
    scenario: dict[str, str] = field(default_factory=dict)
    news: dict[str, str] = field(default_factory=dict)
    settings: list[tuple[str, str]] = field(default_factory=list)  # camera settings, in order

    @property
    def identifier(self) -> str:
        return umid(f"clip {self.name} {self.start}", self.instance)

    @property
    def end(self) -> str:
        length = timedelta(seconds=float(self.duration / self.format.frames_per_second))
        return (datetime.fromisoformat(self.start) + length).isoformat(timespec="seconds")

    def file_name(self, name: str) -> str:
        return name.lower() if self.lower_case_files else name

    @property
    def first_frame(self) -> int:
        """How many frames of its take come before it."""
        return self.relation.offset if self.relation else 0

    def essence_index(self, number: int) -> dict[str, int]:
        """What the metadata tell of the picture's extent (0), of a channel's (1 and up)."""
        if self.extents:
            extent = self.extents[number]
        else:
            start = min(ESSENCE_START, self.essence_size // 2)
            extent = Extent(start, self.essence_size - start)
        return {"StartByteOffset": extent.start, "DataSize": extent.size}


def umid(material: str, instance: int = 0) -> str:
    """A 64-digit material identifier made from a text, the same for the same text."""
    number = hashlib.md5(material.encode()).hexdigest().upper()
    return f"060A2B340101010501010D4313{instance:06X}{number}"


def document(clip: Clip) -> Element:
    """The clip's metadata as a tree."""
    namespace = {"xmlns": NAMESPACE + clip.style.namespace} if clip.style.namespace else {}
    root = Element("P2Main", {
        "xmlns:xsi": "http://www.w3.org/2001/XMLSchema-instance", **namespace})
    content = SubElement(root, "ClipContent")
    identifier = clip.identifier.lower() if clip.style.lower_identifier else clip.identifier
    fill(content, {
        "ClipName": clip.name,
        "GlobalClipID": identifier,
        "Duration": clip.duration,
        "EditUnit": clip.format.edit_unit,
    })
    _add_essence(content, clip)
    if clip.relation:
        _add_relation(content, clip.relation)
    _add_metadata(content, clip)
    return root


def render(root: Element, style: Style) -> bytes:
    """The document's bytes. Adds white space and comments to the tree."""
    if style.indent:
        indent(root, style.indent)
    if style.odd_comments:  # after indenting, which would give the texts white space
        _add_odd_comments(root.find("ClipContent"))
    lines = [DECLARATION, tostring(root, encoding="unicode")]
    if style.odd_comments:
        lines = [lines[0], "<!-- before the root -->", lines[1], "<!-- after the root -->"]
    if style.indent is None:
        return "".join(lines).encode()
    return ("\n".join(lines) + "\n").replace("\n", style.newline).encode()


def fill(parent: Element, values: dict[str, object]) -> None:
    """Adds an element for each value that is there."""
    for name, value in values.items():
        if value is not None:
            SubElement(parent, name).text = str(value)


def _add_group(parent: Element, name: str, values: dict[str, object]) -> None:
    if values:
        fill(SubElement(parent, name), values)


def _add_essence(content: Element, clip: Clip) -> None:
    essence = SubElement(content, "EssenceList")
    if clip.unused_offset is not None:
        fill(essence, {"UnusedOffset": clip.unused_offset})
    _add_video(essence, clip)
    if clip.format.one_file:
        _add_audio(essence, clip, 1, {"Channel": clip.audio_channels})
        return
    for channel in range(1, clip.audio_channels + 1):
        _add_audio(essence, clip, channel, {})


def _add_video(essence: Element, clip: Clip) -> None:
    form = clip.format
    video = SubElement(essence, "Video", {"ValidAudioFlag": "false"})
    fill(video, {"VideoFormat": "MXF"})
    codec = SubElement(video, "Codec", {"Class": form.codec_class} if form.codec_class else {})
    codec.text = form.codec
    if form.raster:
        fill(video, {"ActivePixel": form.raster[0], "ActiveLine": form.raster[1], "BitDepth": 10})
    rate = SubElement(video, "FrameRate")
    rate.text = form.frame_rate
    if form.one_file:
        fill(video, {"TimecodeType": "Drop" if clip.drop else "NonDrop"})
    elif clip.drop is not None:
        rate.set("DropFrameFlag", "true" if clip.drop else "false")
    fill(video, {
        "StartTimecode": clip.timecode,
        "StartBinaryGroup": "00000000",
        "AspectRatio": form.aspect,
    })
    _add_group(video, "VideoIndex", clip.essence_index(0))


def _add_audio(essence: Element, clip: Clip, number: int, extra: dict[str, object]) -> None:
    audio = SubElement(essence, "Audio")
    fill(audio, {
        "AudioFormat": "MXF",
        "SamplingRate": 48000,
        "BitsPerSample": clip.format.audio_bits,
        **extra,
    })
    _add_group(audio, "AudioIndex", clip.essence_index(number))


def _add_relation(content: Element, relation: Relation) -> None:
    element = SubElement(content, "Relation")
    fill(element, {"GlobalShotID": relation.shot, "OffsetInShot": relation.offset})
    connection = SubElement(element, "Connection")
    neighbours = {"Top": relation.top, "Previous": relation.previous, "Next": relation.next}
    for name, segment in neighbours.items():
        if segment:
            _add_group(connection, name, {
                "ClipName": segment.name,
                "GlobalClipID": segment.identifier,
                "P2SerialNo.": segment.serial_no,
            })


def _add_metadata(content: Element, clip: Clip) -> None:
    metadata = SubElement(content, "ClipMetadata")
    fill(metadata, {"UserClipName": clip.user_name, "DataSource": "SHOOTING"})
    _add_group(metadata, "Access", clip.access)
    _add_group(metadata, "Device", clip.device)
    shoot = SubElement(metadata, "Shoot")
    fill(shoot, {"Shooter": clip.shooter, "StartDate": clip.start, "EndDate": clip.end})
    _add_group(shoot, "Location", clip.location)
    _add_group(metadata, "Scenario", clip.scenario)
    _add_group(metadata, "News", clip.news)
    if clip.memos:
        _add_memos(SubElement(metadata, "MemoList"), clip.memos)
    _add_group(metadata, "Thumbnail", {
        "FrameOffset": 0, "ThumbnailFormat": "BMP", "Width": 80, "Height": 60})
    if clip.proxy:
        _add_proxy(SubElement(metadata, "Proxy"), clip)
    if clip.settings:
        log = SubElement(metadata, "SettingLog")
        for name, value in clip.settings:
            SubElement(log, name).text = value
    if clip.style.camera_block:
        _add_camera(metadata)


def _add_memos(memo_list: Element, memos: list[Memo]) -> None:
    for number, memo in enumerate(memos):
        element = SubElement(memo_list, "Memo", {"MemoID": str(number)})
        fill(element, {"Offset": memo.offset, "Person": memo.person, "Text": memo.text})
        if memo.voice:
            fill(element, {
                "VoiceFormat": "WAV", "VoiceSamplingRate": 12000, "VoiceBitsPerSample": 16})


def _add_proxy(element: Element, clip: Clip) -> None:
    proxy = clip.proxy
    fill(element, {"ProxyFormat": proxy.container})
    elements = SubElement(element, "ProxyElementList")
    _add_group(elements, "ProxyVideo", {
        "ProxyVideoCodec": proxy.codec,
        "ProxyVideoBitRate": proxy.bit_rate,
        "ProxyFrameRate": proxy.frame_rate,
        "ProxyResolution": proxy.resolution,
        "AspectRatio": clip.format.aspect,
    })
    for _ in range(proxy.audio_count):
        _add_group(elements, "ProxyAudio", {
            "ProxyAudioCodec": proxy.audio_codec,
            "ProxyAudioBitRate": proxy.audio_bit_rate,
            "ProxySamplingRate": 48000,
        })


def _add_camera(metadata: Element) -> None:
    block = SubElement(metadata, "AcquisitionMetadata", {"xmlns": CAMERA_NAMESPACE})
    unit = SubElement(block, "CameraUnitMetadata")
    fill(unit, {"ISOSensitivity": 800, "WhiteBalanceColorTemperature": "5600K"})
    _add_group(unit, "Gamma", {"CaptureGamma": "FILM-LIKE"})


def _add_odd_comments(content: Element) -> None:
    content.insert(0, Comment(" first child of the content "))
    rate = content.find("EssenceList/Video/FrameRate")
    rate.append(Comment(" behind the rate "))
    name = content.find("ClipMetadata/UserClipName")
    inside = Comment(" inside the name ")
    half = len(name.text) // 2
    name.text, inside.tail = name.text[:half], name.text[half:]
    name.append(inside)
    content.find("ClipMetadata").append(Comment(" the shot list is on paper "))
