# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The demo card: a small production with every kind of clip that a reader has to cope with."""

from card import scenes
from card.clip_xml import Clip, Memo, Proxy, Relation, Segment, Style, document, render, umid
from card.edit_list import Cut, edit_list, ingest_list
from card.essence import record_all
from card.formats import FORMATS
from card.icons import bmp
from card.media import CardWriter, apple_double

THIS_CARD = "SMP24E0001"
OTHER_CARD = "SMP24E0002"
CAMERA = {"Manufacturer": "Sample Camera Works", "SerialNo.": "A4DEMO017", "ModelName": "SC-2000"}
SMALL_CAMERA = {**CAMERA, "SerialNo.": "C1DEMO305", "ModelName": "SC-350"}
CRLF = Style(namespace=None, newline="\r\n")
ONE_LINE = Style(indent=None)


def _access(day: str, creator: str, last_person: str = "", last_day: str = "") -> dict[str, str]:
    return {"Creator": creator, "CreationDate": day, "LastUpdatePerson": last_person or creator,
            "LastUpdateDate": last_day or day}


def _place(name: str, latitude: str = "", longitude: str = "",
           altitude: str = "") -> dict[str, str]:
    """A place; where it lies is known by satellite, or not at all."""
    if not latitude:
        return {"Source": "MANUAL", "PlaceName": name}
    return {"Altitude": altitude, "Longitude": longitude, "Latitude": latitude, "Source": "GPS",
            "PlaceName": name}


def _scene(programme: str, scene: str, take: str) -> dict[str, str]:
    return {"ProgramName": programme, "SceneNo.": scene, "TakeNo.": take}


def _news(reporter: str, purpose: str, thing: str) -> dict[str, str]:
    return {"Reporter": reporter, "Purpose": purpose, "Object": thing}


def _single_clips() -> list[tuple[Clip, object]]:
    """Clips that stand alone, each with its picture."""
    return [
        (Clip("0001AB", FORMATS["dv25-50i"], 50, "00:00:00:00", "2024-05-10T08:00:00+02:00",
              drop=False, user_name="Farbbalken & Pegelton – Prüfstück",
              style=Style(namespace=None, newline="\r\n", lower_identifier=True),
              access=_access("2024-05-10T08:00:02+02:00", "Jürgen Groß", "Rosa Vidal",
                             "2024-05-12T17:31:05+02:00"),
              device=SMALL_CAMERA, shooter="Jürgen Groß", scenario=_scene("Technik", "0", "1")),
         scenes.colour_bars),
        (Clip("0002AB", FORMATS["dv25-5994i"], 30, "01:00:00;00", "2024-05-10T19:42:10-05:00",
              drop=True, user_name="Sunset over the bay", audio_channels=2, device=SMALL_CAMERA,
              shooter="M. Okafor", access=_access("2024-05-10T19:42:11-05:00", "M. Okafor"),
              location=_place("Pelican Bay, east pier", "N29.2630", "W090.2146", "3"),
              memos=[Memo(0, "Rosa", "Good from the first frame on.")], lower_case_files=True),
         scenes.sunset_sea),
        (Clip("0003K7", FORMATS["dv50-2997p"], 45, "10:15:30:12", "2024-05-11T09:15:30-05:00",
              drop=False, user_name="Interview Ms Ångström, 1st half", device=CAMERA,
              shooter="T. Lindqvist", unused_offset=15,
              access=_access("2024-05-11T09:15:32-05:00", "M. Okafor", "Rosa Vidal"),
              location=_place("School of Music, room 12"),
              scenario=_scene("Portrait of a Teacher", "3", "2"),
              memos=[Memo(6, "Rosa", "Names her teacher here: good opening."),
                     Memo(18, "Tove", "Telephone rings, cut around it.", voice=True),
                     Memo(6, "Tove", "Same place: lower third from here."),
                     Memo(40, "Rosa", "“It was never about the money.”\nUse as the headline."),
                     Memo(18, "Rosa", "The ring is on the boom only, lavalier is clean.")],
              news=_news("Tove Berg", "Feature", "Ms Ångström")),
         scenes.interview),
        (Clip("0004QX", FORMATS["dv50-50i"], 12, "00:12:00:00", "2024-05-11T11:02:45+02:00",
              device=CAMERA, proxy=Proxy(codec="MPEG-4", resolution="SIF_PAL", bit_rate=384000)),
         scenes.green_hills),
        (Clip("0005M2", FORMATS["dv100-1080-25p"], 12, "00:20:11:05", "2024-05-12T05:48:00+02:00",
              drop=False, user_name="Morgenröte am Grat", device=CAMERA, shooter="Jürgen Groß",
              access=_access("2024-05-12T05:48:01+02:00", "Jürgen Groß"),
              location=_place("Höllgrat, Südhang", "N47.4210", "E011.0583", "2480"),
              scenario=_scene("Bergjahr", "1A", "4"),
              proxy=Proxy(resolution="QVGA", on_card=False), instance=2),
         scenes.snow_mountains),
        (Clip("0006ZT", FORMATS["dv100-720-2398p"], 24, "02:00:00:23", "2024-05-12T22:10:00-08:00",
              drop=False, user_name="City, 23.98p native", device=CAMERA, shooter="M. Okafor",
              access=_access("2024-05-12T22:10:01-08:00", "M. Okafor"),
              location=_place("Signal Hill, car park", "N34.0522", "W118.2437", "112"),
              scenario=_scene("Night Shift", "27", "1")),
         scenes.night_city),
        (Clip("0007H4", FORMATS["avci50-1080-50i"], 25, "05:01:02:03", "2024-05-13T05:05:00+09:00",
              drop=False, user_name="夜明けの港", style=ONE_LINE, device=CAMERA, shooter="山本 葵",
              access=_access("2024-05-13T05:05:01+09:00", "山本 葵"),
              location=_place("港町・第二埠頭"), scenario=_scene("海のまち", "5", "3"),
              memos=[Memo(10, "葵", "ここから風の音。")]),
         scenes.harbour),
        (Clip("0008RR", FORMATS["avci100-1080-5994i"], 15, "12:59:59;28",
              "2024-05-13T20:30:00+09:00", drop=True, user_name="Night market", device=CAMERA,
              style=Style(namespace="v3.0", odd_comments=True), shooter="山本 葵",
              access=_access("2024-05-13T20:30:01+09:00", "山本 葵", "Tove Berg"),
              location=_place("Lantern Street", "N34.6937", "E135.5023", "9"),
              news=_news("Tove Berg", "Daily news", "Summer festival"),
              memos=[Memo(3, "Tove", "Lanterns are lit one after another.")]),
         scenes.night_market),
        (Clip("0009D1", FORMATS["avci50-720-5994p"], 30, "00:59:58:29", "2024-05-14T14:00:00+00:00",
              drop=True, user_name="400 m final, finish", device=CAMERA, shooter="E. Fjeld",
              access=_access("2024-05-14T14:00:01+00:00", "E. Fjeld"),
              proxy=Proxy("MOV", bit_rate=1500000, frame_rate="29.97p", audio_bit_rate=128000),
              location=_place("Stadium, gate 4", "N59.9490", "E010.7343", "90"),
              scenario=_scene("Track & Field", "12", "1"),
              news=_news("Ola Nes", "Sports", "400 m, women, final")),
         scenes.running_track),
        (Clip("0010LG", FORMATS["longg50-1080-5994i"], 30, "03:10:00:00",
              "2024-05-15T10:00:00+01:00", drop=True, user_name="Caravan", device=CAMERA,
              style=Style(namespace="v3.2", camera_block=True), shooter="M. Okafor",
              access=_access("2024-05-15T10:00:01+01:00", "M. Okafor"),
              location=_place("Dunes behind the last well", "N31.0802", "W004.0133", "705"),
              scenario=_scene("Salt Road", "8", "2"),
              proxy=Proxy(resolution="960x540", bit_rate=3500000, frame_rate="29.97p",
                          audio_count=4)),
         scenes.dunes),
        (Clip("0011C2", FORMATS["avci200-1080-50p"], 10, "18:09:30:24", "2024-05-16T07:30:00+03:00",
              drop=False, user_name="Beech wood, 50p", device=CAMERA, shooter="E. Fjeld",
              access=_access("2024-05-16T07:30:01+03:00", "E. Fjeld"),
              location=_place("Old forest, south edge", "S41.2865", "E174.7762", "240"),
              proxy=Proxy("MOV", bit_rate=6000000, frame_rate="50p", resolution="1920x1080",
                          audio_codec="LPCM", audio_bit_rate=768000, audio_count=3)),
         scenes.forest),
    ]


def _whole_take() -> list[tuple[Clip, object]]:
    """One recording in three clips, all of them on this card."""
    spans = (("0012SA", "06:00:00:00"), ("0013SB", "06:00:00:10"), ("0014SC", "06:00:00:20"))
    clips = [Clip(name, FORMATS["avci50-1080-50i"], 10, timecode, "2024-05-17T06:00:00+02:00",
                  drop=False, user_name="Ballonfahrt", device=CAMERA, shooter="Jürgen Groß",
                  access=_access("2024-05-17T06:00:02+02:00", "Jürgen Groß"),
                  location=_place("Startplatz West", "N48.3705", "E010.8978", "494"),
                  scenario=_scene("Bergjahr", "9", "1"),
                  style=ONE_LINE if name == "0013SB" else Style())
             for name, timecode in spans]
    _chain(clips, umid("shot: balloon"), [THIS_CARD] * 3)
    return [(clip, scenes.balloon(step / 2)) for step, clip in enumerate(clips)]


def _cut_take() -> list[tuple[Clip, object]]:
    """One recording whose third and last clip went to another card."""
    spans = (("0015TA", "20:00:00;00"), ("0016TB", "20:00:00;10"), ("0001TC", "20:00:00;20"))
    clips = [Clip(name, FORMATS["dv100-1080-5994i"], 10, timecode, "2024-05-17T20:00:00-04:00",
                  drop=True, user_name="Lighthouse, all night", device=CAMERA, style=CRLF,
                  shooter="M. Okafor", access=_access("2024-05-17T20:00:02-04:00", "M. Okafor"),
                  location=_place("Gull Rock", "N44.8378", "W066.9806", "21"))
             for name, timecode in spans]
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


def _cut_off_clip() -> tuple[Clip, object]:
    """A clip whose metadata ends in the middle, as when a card is pulled while it is written."""
    return (Clip("0017CX", FORMATS["avci50-1080-50i"], 10, "21:00:00:00",
                 "2024-05-17T21:00:00+02:00", user_name="Cut off"), scenes.colour_bars)


def _add_edits(card: CardWriter, clips: dict[str, Clip]) -> None:
    """Two edits of this card's clips, one for each place where lists keep their events, and a note
    of what a host took in."""
    trip = [Cut(clips["0012SA"], 1, 4, channels="2 3", levels="0.5 0.5",
                note="Ab hier zählt der Ton der Kamera"),
            Cut(clips["0013SB"], 0, 8), Cut(clips["0012SA"], 7, 3), Cut(clips["0014SC"], 2, 6)]
    card.add_edit_list("P001AB", edit_list(trip, THIS_CARD, "v2.0", thumbnail=5),
                       bmp(scenes.balloon(0.5)))
    lighthouse = [Cut(clips["0015TA"], 6, 4), Cut(clips["0016TB"], 0, 5)]
    card.add_edit_list("P002AB", edit_list(lighthouse, THIS_CARD, "v3.0"))
    card.add_ingest_list(ingest_list({"0012SA": [(1, 4), (7, 9)], "0013SB": [(0, 7)],
                                      "0007H4": [(0, 24)]}))


def make(card: CardWriter) -> None:
    """Writes the whole card."""
    clips = [*_single_clips(), *_whole_take(), *_cut_take(), _cut_off_clip()]
    record_all(clips, card)
    for clip, _ in clips:
        metadata = render(document(clip), clip.style)
        whole = clip.name != clips[-1][0].name
        card.add_metadata(clip, metadata if whole else metadata[:len(metadata) * 3 // 5])
    card.write("CLIP", "._0001AB.XML", apple_double())
    _add_edits(card, {clip.name: clip for clip, _ in clips})
    card.add_last_clip(clips[-1][0].name)
    card.finish()
