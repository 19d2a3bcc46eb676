# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Edit lists and the list of what was taken in."""

from dataclasses import dataclass
from xml.etree.ElementTree import Element, SubElement, indent, tostring

from card.clip_xml import DECLARATION, Clip, fill

NAMESPACE = "urn:schemas-Professional-Plug-in:P2:EditMetadata:"
TRACKS = {"v2.0": "ClipTrack", "v3.0": "VideoTrack"}  # where each version keeps its events


@dataclass
class Cut:
    """A stretch of a clip in an edit."""

    clip: Clip
    first: int
    length: int
    channels: str | None = None
    levels: str | None = None
    note: str | None = None


def edit_list(cuts: list[Cut], serial_no: str, version: str, thumbnail: int = 0) -> bytes:
    """An edit of the cuts one after the other, with the format of the first one's clip."""
    recording = cuts[0].clip.format
    root = Element("P2Main", {"xmlns:xsi": "http://www.w3.org/2001/XMLSchema-instance",
                              "xmlns": NAMESPACE + version})
    content = SubElement(root, "EditContent")
    fill(content, {"Duration": sum(cut.length for cut in cuts), "EditUnit": recording.edit_unit,
                   "StartTimecode": "00:00:00:00", "FrameRate": recording.frame_rate,
                   "Codec": recording.codec})
    if recording.codec_class:
        content.find("Codec").set("Class", recording.codec_class)
    track = SubElement(SubElement(content, "TrackList"), TRACKS[version])
    events, at = SubElement(track, "EventList"), 0
    for cut in cuts:
        _add_event(events, cut, at, serial_no)
        at += cut.length
    fill(SubElement(content, "Thumbnail"), {"FrameOffset": thumbnail})
    return _bytes(root)


def _add_event(events: Element, cut: Cut, at: int, serial_no: str) -> None:
    event = SubElement(events, "Event")
    fill(event, {"Offset": at, "Duration": cut.length})
    fill(SubElement(event, "Source"), {
        "P2SerialNo.": serial_no, "ClipName": cut.clip.name,
        "GlobalClipID": cut.clip.identifier, "Offset": cut.first, "Channel": cut.channels})
    fill(event, {"AudioLevel": cut.levels, "Note": cut.note})


def ingest_list(segments: dict[str, list[tuple[int, int]]]) -> bytes:
    """First and last frames that were taken in, by clip."""
    media = Element("Media", MediaID="P2")
    for name, stretches in segments.items():
        clip = SubElement(media, "Clip", ClipName=name)
        for first, last in stretches:
            SubElement(clip, "Segment", InPoint=str(first), OutPoint=str(last))
    return _bytes(media)


def _bytes(root: Element) -> bytes:
    indent(root, "  ")
    return f"{DECLARATION}\n{tostring(root, encoding='unicode')}\n".encode()
