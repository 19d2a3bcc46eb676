# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The demo card: a small production with every kind of clip that a reader has to cope with."""

from card import scenes
from card.clip_xml import Clip, Memo, Proxy, Relation, Segment, Style, document, render, umid
from card.edit_list import Cut, edit_list, ingest_list
from card.formats import FORMATS
from card.icons import bmp
from card.media import CardWriter, apple_double

THIS_CARD = "SMP24E0001"
OTHER_CARD = "SMP24E0002"
CAMERA = {"Manufacturer": "Sample Camera Works", "SerialNo.": "A4DEMO017", "ModelName": "SC-2000"}
CRLF = Style(namespace=None, newline="\r\n")
ONE_LINE = Style(indent=None)


def _access(day: str, creator: str = "M. Okafor") -> dict[str, str]:
    return {"Creator": creator, "CreationDate": day, "LastUpdatePerson": creator,
            "LastUpdateDate": day}


def _single_clips() -> list[tuple[Clip, object]]:
    """Clips that stand alone, each with its picture."""
    return [
        (Clip("0001AB", FORMATS["dv25-50i"], 250, "00:00:00:00",
              "2024-05-10T08:00:00+02:00", "2024-05-10T08:00:10+02:00", drop=False,
              user_name="Farbbalken & Pegelton – Prüfstück", style=Style(
                  namespace=None, newline="\r\n", lower_identifier=True),
              access=_access("2024-05-10T08:00:00+02:00", "Jürgen Groß"), device=CAMERA),
         scenes.colour_bars),
        (Clip("0002AB", FORMATS["dv25-5994i"], 1800, "01:00:00;00",
              "2024-05-10T19:42:10-05:00", "2024-05-10T19:43:10-05:00", drop=True,
              user_name="Sunset over the bay", audio_channels=2, device=CAMERA,
              memos=[Memo(0, "Rosa", "Good from the first frame on.")]),
         scenes.sunset_sea),
        (Clip("0003K7", FORMATS["dv50-2997p"], 5400, "10:15:30:12",
              "2024-05-11T09:15:30-05:00", "2024-05-11T09:18:30-05:00", drop=False,
              user_name="Interview Ms Ångström, 1st half", device=CAMERA, shooter="T. Lindqvist",
              access=_access("2024-05-11T09:15:30-05:00"), unused_offset=15,
              memos=[Memo(120, "Rosa", "Names her teacher here: good opening."),
                     Memo(900, "Tove", "Telephone rings, cut around it.", voice=True),
                     Memo(120, "Tove", "Same place: lower third from here."),
                     Memo(2400, "Rosa", "“It was never about the money.”\nUse as the headline."),
                     Memo(900, "Rosa", "The ring is on the boom only, lavalier is clean.")],
              news={"Reporter": "Tove Berg", "Purpose": "Feature", "Object": "Ms Ångström"}),
         scenes.interview),
        (Clip("0004QX", FORMATS["dv50-50i"], 500, "00:12:00:00",
              "2024-05-11T11:02:45+02:00", "2024-05-11T11:03:05+02:00",
              device=CAMERA, proxy=Proxy(codec="MPEG-4", resolution="SIF_PAL", bit_rate=384000)),
         scenes.green_hills),
        (Clip("0005M2", FORMATS["dv100-1080-25p"], 750, "00:20:11:05",
              "2024-05-12T05:48:00+02:00", "2024-05-12T05:48:30+02:00", drop=False,
              user_name="Morgenröte am Grat", device=CAMERA, shooter="Jürgen Groß",
              location={"Altitude": "2480", "Longitude": "E011.0583", "Latitude": "N47.4210",
                        "Source": "GPS", "PlaceName": "Höllgrat, Südhang"},
              proxy=Proxy(resolution="QVGA", on_card=False), instance=2),
         scenes.snow_mountains),
        (Clip("0006ZT", FORMATS["dv100-720-2398p"], 719, "02:00:00:23",
              "2024-05-12T22:10:00-08:00", "2024-05-12T22:10:30-08:00", drop=False,
              user_name="City, 23.98p native", device=CAMERA),
         scenes.night_city),
        (Clip("0007H4", FORMATS["avci50-1080-50i"], 1500, "05:01:02:03",
              "2024-05-13T05:05:00+09:00", "2024-05-13T05:06:00+09:00", drop=False,
              user_name="夜明けの港", style=ONE_LINE, device=CAMERA, shooter="山本 葵",
              location={"Source": "MANUAL", "PlaceName": "港町・第二埠頭"},
              memos=[Memo(300, "葵", "ここから風の音。")]),
         scenes.harbour),
        (Clip("0008RR", FORMATS["avci100-1080-5994i"], 1798, "12:59:59;28",
              "2024-05-13T20:30:00+09:00", "2024-05-13T20:31:00+09:00", drop=True,
              user_name="Night market", device=CAMERA,
              style=Style(namespace="v3.0", odd_comments=True)),
         scenes.night_market),
        (Clip("0009D1", FORMATS["avci50-720-5994p"], 3596, "00:59:58:29",
              "2024-05-14T14:00:00+00:00", "2024-05-14T14:01:00+00:00", drop=True,
              user_name="400 m final, finish", device=CAMERA,
              proxy=Proxy("MOV", bit_rate=1500000, frame_rate="29.97p", audio_bit_rate=128000),
              scenario={"ProgramName": "Track & Field", "SceneNo.": "12", "TakeNo.": "1"}),
         scenes.running_track),
        (Clip("0010LG", FORMATS["longg50-1080-5994i"], 2700, "03:10:00:00",
              "2024-05-15T10:00:00+01:00", "2024-05-15T10:01:30+01:00", drop=True,
              user_name="Caravan", device=CAMERA, style=Style(namespace="v3.2", camera_block=True),
              proxy=Proxy(resolution="960x540", bit_rate=3500000, frame_rate="29.97p",
                          audio_count=4)),
         scenes.dunes),
        (Clip("0011C2", FORMATS["avci200-1080-50p"], 1500, "18:09:30:24",
              "2024-05-16T07:30:00+03:00", "2024-05-16T07:30:30+03:00", drop=False,
              user_name="Beech wood, 50p", device=CAMERA,
              proxy=Proxy("MOV", bit_rate=6000000, frame_rate="50p", resolution="1920x1080",
                          audio_codec="LPCM", audio_bit_rate=1536000, audio_count=3)),
         scenes.forest),
    ]


def _whole_take() -> list[tuple[Clip, object]]:
    """One recording in three clips, all of them on this card."""
    shot = umid("shot: balloon")
    spans = (("0012SA", 7500, "06:00:00:00", "06:00:00", "06:05:00"),
             ("0013SB", 7482, "06:05:00:00", "06:05:00", "06:09:59"),
             ("0014SC", 3110, "06:09:59:07", "06:09:59", "06:12:03"))
    clips = [Clip(name, FORMATS["avci100-1080-50i"], length, timecode,
                  f"2024-05-17T{start}+02:00", f"2024-05-17T{end}+02:00", drop=False,
                  user_name="Ballonfahrt", device=CAMERA, style=ONE_LINE if name == "0013SB"
                  else Style())
             for name, length, timecode, start, end in spans]
    _chain(clips, shot, [THIS_CARD] * 3)
    return [(clip, scenes.balloon(step / 2)) for step, clip in enumerate(clips)]


def _cut_take() -> list[tuple[Clip, object]]:
    """One recording whose third and last clip went to another card."""
    spans = (("0015TA", 9000, "20:00:00;00", "20:00:00", "20:05:00"),
             ("0016TB", 8870, "20:05:00;10", "20:05:00", "20:09:56"),
             ("0001TC", 2400, "20:09:56;08", "20:09:56", "20:11:16"))
    clips = [Clip(name, FORMATS["dv100-1080-5994i"], length, timecode,
                  f"2024-05-17T{start}-04:00", f"2024-05-17T{end}-04:00", drop=True,
                  user_name="Lighthouse, all night", device=CAMERA, style=CRLF)
             for name, length, timecode, start, end in spans]
    _chain(clips, umid("shot: lighthouse"), [THIS_CARD, THIS_CARD, OTHER_CARD])
    return list(zip(clips[:2], (scenes.lighthouse(-.12), scenes.lighthouse(.25))))


def _chain(clips: list[Clip], shot: str, serial_nos: list[str]) -> None:
    """Relates the clips of one take to each other."""
    ends = [Segment(clip.name, clip.identifier, serial) for clip, serial in zip(clips, serial_nos)]
    offset = 0
    for place, clip in enumerate(clips):
        clip.relation = Relation(
            shot, offset, ends[0],
            previous=ends[place - 1] if place > 0 else None,
            next=ends[place + 1] if place + 1 < len(clips) else None)
        offset += clip.duration


def _add_cut_off_clip(card: CardWriter, essence_size: int) -> None:
    """A clip whose metadata ends in the middle, as when a card is pulled while it is written."""
    clip = Clip("0017CX", FORMATS["avci100-1080-50i"], 425, "21:00:00:00",
                "2024-05-17T21:00:00+02:00", "2024-05-17T21:00:17+02:00", user_name="Cut off", essence_size=essence_size)
    metadata = render(document(clip), clip.style)
    card.add_clip(clip, metadata[:len(metadata) * 3 // 5], bmp(scenes.colour_bars))


def _add_edits(card: CardWriter, clips: dict[str, Clip]) -> None:
    """Two edits of this card's clips, one for each place where lists keep their events, and a note
    of what a host took in."""
    trip = [Cut(clips["0012SA"], 500, 125, channels="2 3", levels="0.5 0.5",
                note="Ab hier zählt der Ton der Kamera"),
            Cut(clips["0013SB"], 0, 250), Cut(clips["0012SA"], 2000, 75),
            Cut(clips["0014SC"], 60, 500)]
    card.add_edit_list("P001AB", edit_list(trip, THIS_CARD, "v2.0", thumbnail=130),
                       bmp(scenes.balloon(0.5)))
    lighthouse = [Cut(clips["0015TA"], 8700, 300), Cut(clips["0016TB"], 0, 450)]
    card.add_edit_list("P002AB", edit_list(lighthouse, THIS_CARD, "v3.0"))
    card.add_ingest_list(ingest_list({"0012SA": [(500, 624), (2000, 2074)], "0013SB": [(0, 249)],
                                      "0007H4": [(0, 1499)]}))


def make(card: CardWriter, essence_size: int) -> None:
    """Writes the whole card, with media files of that size."""
    clips = _single_clips() + _whole_take() + _cut_take()
    for clip, scene in clips:
        clip.essence_size = essence_size
        metadata = render(document(clip), clip.style)
        card.add_clip(clip, metadata, bmp(scene), lower_case=clip.name == "0002AB")
    _add_cut_off_clip(card, essence_size)
    card.write("CLIP", "._0001AB.XML", apple_double())
    _add_edits(card, {clip.name: clip for clip, _ in clips})
    card.add_last_clip("0017CX")
    card.finish()
