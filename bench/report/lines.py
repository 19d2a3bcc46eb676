# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The tables of what is measured: one row a line. The first part of a figure's name tells who
measures it (report/sources.py)."""

from typing import Optional

from report.terms import Line, figure, fixed

KB = 1024
DISK_RATE = 300_000_000  # bytes a second that a disk which is like one reads, and writes


class Sizes:
    """How large what is measured is."""

    def __init__(self, small: int, large: int, copy_megabytes: int = 1024):
        self.small, self.large = small, large
        self.copy_megabytes = copy_megabytes
        self.avchd = (max(small // 10, 10), small, max(large // 2, small * 2))
        self.shelf = (max(small // 20, 2), 20)  # cards, clips of each
        self.catalogue = large * 10  # clips
        self.lists = (max(small // 10, 10), small, large)
        self.small_files = large * 10
        self.frames = copy_megabytes * 3  # of a recording of 144,000 bytes each
        self.intra_frames = copy_megabytes * 3 // 4  # of half a megabyte each


def sections(sizes: Sizes) -> dict[str, list[Line]]:
    return {
        "Cards": scan_lines(sizes) + name_lines(sizes) + metadata_lines(sizes),
        "Slow media": slow_lines(sizes),
        "The command line": command_lines(sizes),
        "Worker and channel": channel_lines() + worker_lines(sizes),
        "Lists, documents, AVCHD": list_lines(sizes) + growth_lines() + avchd_lines(sizes),
        "The way of a clip": step_lines(sizes),
        "The catalogue": catalogue_lines(sizes),
    }


def each(name: str, count: int):
    return figure(f"{name}/{count}") / count


def catalogue_lines(sizes: Sizes) -> list[Line]:
    return [
        Line(f"adding {sizes.large:,} clips / reading them and twice their rows by SQLite alone",
             "ms", figure("catalogue/add"), figure("catalogue/scan") + figure("catalogue/bare") / 0.5,
             1),
        Line(f"update of an unchanged card of {sizes.large:,} clips / listing its folders", "ms",
             figure("catalogue/update"), figure("catalogue/list"), 1.5),
        Line(f"the slowest search among {sizes.catalogue:,} clips in a file / 100 ms", "ms",
             figure("catalogue_search/sqlite/slowest"), fixed(100, "ms"), 1),
        Line(f"the slowest search among {sizes.catalogue:,} clips on a server / 100 ms", "ms",
             figure("catalogue_search/server/slowest"), fixed(100, "ms")),
        Line(f"a clip in a file of {sizes.catalogue:,} / 3 KB", "bytes",
             figure("catalogue_search/sqlite/bytes"), fixed(3 * KB, "bytes"), 1),
    ] + [line for where, key, goal in (("1 ms away", "far", 1), ("beside it", "near", None))
         for line in server_lines(where, "catalogue_server/" + key, goal)]


def server_lines(where: str, key: str, goal: Optional[float]) -> list[Line]:
    """A card's time, since rates are compared: three times one writer's rate is a third of it."""
    return [
        Line(f"a card of eight writers to PostgreSQL, {where} / a third of one writer's", "ms",
             figure(f"{key}/ours/8"), figure(f"{key}/ours/1") / 3, goal),
        Line(f"the same of bare writers, {where}, which copy the rows / a third of one's", "ms",
             figure(f"{key}/bare/8"), figure(f"{key}/bare/1") / 3),
        Line(f"one writer, {where} / one bare writer", "ms", figure(f"{key}/ours/1"),
             figure(f"{key}/bare/1")),
    ]


def scan_lines(sizes: Sizes) -> list[Line]:
    small, large = sizes.small, sizes.large
    cards = ((f"{small:,} clips", small), (f"{large:,} clips", large),
             (f"{small:,} clips of 8 KB", "8k"), (f"{small:,} clips that all differ", "odd"))
    load, read, parse = "scan/load/{}", "scan/read/{}", "scan/parse/{}"
    rows = [Line(f"scan of {name} / list, open, read, close", "ms", figure(load.format(key)),
                 figure(read.format(key)), 6) for name, key in cards]
    rows += [Line(f"scan of {name} / the same and a bare parse by libxml2", "ms",
                  figure(load.format(key)), figure(read.format(key)) + figure(parse.format(key)))
             for name, key in cards[:2]]
    peak = "command/scan/{}:peak"
    peak_of_clip = (figure(peak.format(large)) - figure(peak.format(small))) / (large - small)
    return rows + [
        Line(f"time of a clip, {large:,} / {small:,}", "us", each("scan/load", large),
             each("scan/load", small), 1.15),
        Line("memory held by a clip of drive E: / 6 KB", "bytes", figure(f"scan/held/{large}"),
             fixed(6 * KB, "bytes"), 1),
        Line("peak memory of a scan, by clip / 6 KB", "bytes", peak_of_clip,
             fixed(6 * KB, "bytes"), 1),
        Line("system calls of a clip / five", "calls", figure("calls/clip"), fixed(5, "calls"), 1),
    ]


def name_lines(sizes: Sizes) -> list[Line]:
    return [Line(f"LoadClipInfo at {count:,} clips, {what} / a scanned clip", "us",
                 figure(f"names/by_name/{key}{count}") / count,
                 figure(f"names/load/{key}{count}") / count, 5)
            for count in (sizes.small, sizes.large)
            for what, key in (("all files there", ""), ("most missing", "missing-"))]


def metadata_lines(sizes: Sizes) -> list[Line]:
    """Files: beside the scan, and half as much again as asking the system for each of them."""
    small, large = sizes.small, sizes.large
    load, read, both, asked = (f"metadata/{what}/{{}}" for what in
                               ("load", "read", "scanned_files", "asked"))
    return [
        Line(f"all metadata of {large:,} clips / the scan", "ms", figure(read.format(large)),
             figure(load.format(large)), 0.8),
        Line(f"scan and all files of {large:,} clips / scan and 1.5 times asking for each", "ms",
             figure(both.format(large)),
             figure(load.format(large)) + figure(asked.format(large)) + figure(asked.format(large)) / 2, 1),
        *(Line(f"{what} of a clip, {large:,} / {small:,}", "us", each(f"metadata/{key}", large),
               each(f"metadata/{key}", small), 1.15)
          for what, key in (("metadata", "read"), ("files", "files")))]


def slow_lines(sizes: Sizes) -> list[Line]:
    rows = [Line(f"{delay:,} us an access, scan / one read after another", "ms",
                 figure(f"slow/load/{delay}"), figure(f"slow/read/{delay}"), 0.6)
            for delay in (50, 100, 200, 1000)]
    rows += [Line(f"delay really given / {delay:,} us", "us", figure(f"slow/delay/{delay}"),
                  fixed(delay, "us")) for delay in (50, 100, 200, 1000)]
    return rows + [
        Line("cold local files, scan / one read after another", "ms", figure("slow/load/cold"),
             figure("slow/read/cold"), 1),
        Line(f"warm files, scan of {sizes.small:,} / the same without threads", "ms",
             figure("slow/load/warm"), figure("slow/alone/warm"), 1.05),
    ]


def command_lines(sizes: Sizes) -> list[Line]:
    small, large = sizes.small, sizes.large

    def growth(what: str):
        return (figure(f"command/{what}/{large}:peak")
                - figure(f"command/{what}/{small}:peak")) / (large - small)

    forms = (("table", "a table"), ("csv", "CSV"), ("json", "JSON"))
    rows = [Line(f"nqp2 clips as {name}, {large:,} clips / the scan alone", "ms",
                 figure(f"command/{form}/{large}:processor"),
                 figure(f"command/scan/{large}:processor"), 1.5) for form, name in forms]
    rows += [Line(f"memory of a clip for {name}, beyond the record / 64 bytes", "bytes",
                  growth(form) - growth("scan"), fixed(64, "bytes"), 1) for form, name in forms]
    rows.append(Line(f"nqp2 clips as JSON with all metadata, {large:,} clips, wall / without",
                     "ms", figure(f"command/metadata/{large}:wall"),
                     figure(f"command/json/{large}:wall"), 1.5))
    rows.append(Line("the same, processor time / without", "ms",
                     figure(f"command/metadata/{large}:processor"),
                     figure(f"command/json/{large}:processor")))
    rows.append(Line("nqp2 clips --recursive as JSON, {} cards of {} clips / find and scan each"
                     .format(*sizes.shelf), "ms", figure("shelf/json:processor"),
                     figure("shelf/scan:processor"), 1.5))
    rows.append(Line(f"nqp2 clips as JSON with all metadata, {small:,} AVCHD clips, wall / without",
                     "ms", figure("disc/metadata:wall"), figure("disc/json:wall"), 1.5))
    page = "page/{}/" + str(sizes.small)
    return rows + [
        Line(f"nqp2 report, {sizes.small:,} clips with icons / scan, icons read", "ms",
             figure(page.format("report") + ":wall"), figure(page.format("scan") + ":wall"), 4),
        Line("the same into a file / the same and the page written and flushed", "ms",
             figure(page.format("file") + ":wall"),
             figure(page.format("scan") + ":wall") + figure(page.format("flush") + ":wall"), 4),
        Line("beside it: the page written and flushed / scan, icons read", "ms",
             figure(page.format("flush") + ":wall"), figure(page.format("scan") + ":wall")),
        Line(f"page of {sizes.small:,} clips with icons / 15 MB", "bytes",
             figure(page.format("size")), fixed(15_000_000, "bytes"), 1),
        Line("nqp2 --version / a program that returns at once", "ms", figure("start/version"),
             figure("start/bare"), 1.5),
        Line("the worker's first answer / the same program", "ms", figure("start/first_answer"),
             figure("start/bare"), 15),
        Line("nqp2 base-info, which loads libav / the same program", "ms",
             figure("start/base_info"), figure("start/bare")),
    ]


def channel_lines() -> list[Line]:
    both = (("576,000 bytes", 576000, 2.2, "us"), ("45 MB", 45300000, 1.1, "ms"))
    messages = (("a request", 8, 3, "us"), *both)
    frames = (("smallest request", "request", 3, "us"), *both)
    rows = []
    for count, where in ((2, "two processors"), (1, "one processor")):
        rows += [Line(f"{where}: {name} / bare exchange of two processes", unit,
                      figure(f"channel/ours/{key}/{count}"),
                      figure(f"channel/bare/{key}/{count}"), goal)
                 for name, key, goal, unit in messages]
        rows += [Line(f"{where}: a parser's {name} / bare exchange", unit,
                      figure(f"proxy/ours/{key}/{count}"),
                      figure(f"proxy/bare/{key}/{count}"), goal)
                 for name, key, goal, unit in frames]
    return rows + [
        Line("processor time of a second's wait / fifty bare waits", "ms",
             figure("channel/idle/2"), figure("channel/bare_idle/2"), 1.5),
        Line("processor time of an idle parser's second / 5 ms", "ms", figure("proxy/idle/2"),
             fixed(5, "ms"), 1),
    ]


def worker_lines(sizes: Sizes) -> list[Line]:
    copied = f"import of {sizes.copy_megabytes:,} MB"
    against = "cp, flush, checksums of both"
    return [
        Line(f"{copied} / {against}", "ms", figure("copy/import:wall"), figure("copy/plain:wall"),
             1.1),
        Line(f"{copied}, processor time / the same", "ms", figure("copy/import:processor"),
             figure("copy/plain:processor"), 2),
        Line(f"recording {sizes.frames:,} frames of DV / cp, flush, checksum", "ms",
             figure("record/ours:wall"), figure("record/plain:wall"), 1.5),
        Line(f"recording {sizes.frames:,} frames, processor time / the same", "ms",
             figure("record/ours:processor"), figure("record/plain:processor")),
        *rewrap_lines(sizes),
        *copying_lines(sizes, "fan", "{} given to", "the engine"),
        *copying_lines(sizes, "offload", "nqp2 offload of {} to", "offload"),
        *offload_lines(sizes),
    ]


def copying_lines(sizes: Sizes, kind: str, copy_of: str, peak: str) -> list[Line]:
    """What gives a folder to one or more targets; it reads the folder once."""
    tree, files = f"{sizes.copy_megabytes:,} MB", sizes.small_files
    to, small = (copy_of.format(what) for what in (tree, f"{files:,} small files"))
    most = 64 * KB * KB + 200 * files
    disk = f"of {DISK_RATE // 1_000_000} MB/s"
    both_ways = fixed(2 * sizes.copy_megabytes * KB * KB / DISK_RATE, "s")
    return [
        Line(f"{to} one target / cp -a, flush, checksums of both", "ms",
             figure(f"{kind}/one:wall"), figure(f"{kind}/tree:wall"), 1.1),
        Line(f"{to} one disk {disk} / all of it written and read there", "ms",
             figure(f"{kind}/one_limited:wall"), both_ways),
        Line(f"{to} two disks {disk} each / to one", "ms", figure(f"{kind}/two_limited:wall"),
             figure(f"{kind}/one_limited:wall"), 1.2),
        Line(f"{to} two file systems in memory / to one", "ms",
             figure(f"{kind}/two_disks:wall"), figure(f"{kind}/one_disk:wall"), 1.2),
        Line(f"{small} one target / cp -a, flush", "ms", figure(f"{kind}/small:wall"),
             figure(f"{kind}/flushed:wall"), 2),
        Line(f"peak memory of {peak}, {files:,} files / 64 MiB and 200 bytes a file", "bytes",
             figure(f"{kind}/small:peak"), fixed(most, "bytes"), 1),
        Line(f"peak memory of {peak}, {tree} to two / the same", "bytes",
             figure(f"{kind}/two_disks:peak"), fixed(most, "bytes"), 1),
    ]


def offload_lines(sizes: Sizes) -> list[Line]:
    """What the whole program does beside that."""
    tree = f"{sizes.copy_megabytes:,} MB"
    return [
        Line(f"nqp2 offload of {tree} with a second reading / {tree} read and hashed more", "ms",
             figure("offload/twice:wall"), figure("offload/tree:wall") +
             figure("offload/read:wall"), 1.1),
        Line(f"nqp2 verify of {tree} / reading and hashing it", "ms",
             figure("offload/verify:wall"), figure("offload/read:wall"), 1.1),
    ]


def rewrap_lines(sizes: Sizes) -> list[Line]:
    """One playable file of a recording."""
    against = "cp, flush, checksums of both"
    return [Line(f"{form.upper()} file of {frames:,} frames of {codec} / {against}", "ms",
                 figure(f"rewrap/{kind}/{form}:wall"), figure(f"rewrap/{kind}/plain:wall"), goal)
            for kind, codec, frames in (("dv", "DV", sizes.frames),
                                        ("avc", "AVC-Intra 100", sizes.intra_frames))
            for form, goal in (("mov", 1.5), ("mxf", 1.5), ("mkv", 3))]


def list_lines(sizes: Sizes) -> list[Line]:
    few, some, many = sizes.lists
    return [
        Line(f"{some:,} edit lists / list, open, read, close", "ms",
             figure(f"edit_lists/load/{some}"), figure(f"edit_lists/read/{some}"), 13),
        Line(f"time of an edit list, {some:,} / {few:,}", "us", each("edit_lists/load", some),
             each("edit_lists/load", few), 1.15),
        Line(f"time of an edit list, {many:,} / {some:,}", "us", each("edit_lists/load", many),
             each("edit_lists/load", some), 1.15),
        Line(f"saving {many:,} events / libxml2 alone", "ms", figure("edit_lists/save"),
             figure("edit_lists/bare_save"), 3),
        Line(f"marking {some:,} listed clips as ingested / libxml2 alone", "ms",
             figure(f"ingest/mark/{some}"), figure(f"ingest/bare/{some}"), 3),
        Line(f"ingest mark of a clip, {many:,} / {some:,} listed, grown as libxml2 grows", "us",
             each("ingest/mark", many), each("ingest/mark", some)
             + (each("ingest/bare", many) - each("ingest/bare", some)), 1.2),
        Line("a figure of capacity / a call that looks up, divides, writes", "ns",
             figure("ingest/capacity"), figure("ingest/divide"), 3),
    ]


def growth_lines() -> list[Line]:
    return [
        Line("changing a text and asking, 2,000 / 500 elements", "us",
             figure("growth/set_and_ask/2000"), figure("growth/set_and_ask/500"), 1.3),
        Line("adding, asking, removing, asking, 2,000 / 500 elements", "us",
             figure("growth/add_and_ask/2000"), figure("growth/add_and_ask/500"), 1.3),
        Line("adding an attribute, 2,000 / 500 to one element", "us",
             each("growth/attributes", 2000), each("growth/attributes", 500), 1.3),
        Line("loading an element, names all different, 20,000 / 5,000", "us",
             each("growth/different_names", 20000), each("growth/different_names", 5000), 1.3),
        Line("names all different / all equal, 20,000 elements", "ms",
             figure("growth/different_names/20000"), figure("growth/equal_names/20000"), 1.3),
    ]


def avchd_lines(sizes: Sizes) -> list[Line]:
    few, some, many = sizes.avchd
    load, read, heads = (figure(f"avchd/{what}/{some}") for what in ("load", "read", "heads"))
    return [
        Line(f"AVCHD scan of {some:,} / clip information and playlists read", "ms", load, read),
        Line(f"AVCHD scan of {some:,} / the same and 64 KB of each stream", "ms", load,
             read + heads, 4),
        Line(f"time of an AVCHD clip, {some:,} / {few:,}", "us", each("avchd/load", some),
             each("avchd/load", few), 1.25),
        Line(f"time of an AVCHD clip, {many:,} / {some:,}", "us", each("avchd/load", many),
             each("avchd/load", some), 1.15),
    ]


def step_lines(sizes: Sizes) -> list[Line]:
    """Shares of the scan: what it takes with a step less what it takes without."""
    count = sizes.small
    scan = {name: each(f"scan/{name}", count)
            for name in ("list", "read", "markup", "clips_only", "load", "copy", "parse")}
    steps = (
        ("listing the folder", scan["list"]),
        ("opening, reading, closing its file", scan["read"] - scan["list"]),
        ("parsing and reading the fields into a record", scan["clips_only"] - scan["read"]),
        ("looking for the clip's files", scan["load"] - scan["clips_only"]),
        ("beside it: a tree of the file by CMarkupMSXML", scan["markup"]),
        ("beside it: a tree of the file by libxml2", scan["parse"]),
        ("beside it: copying the record", scan["copy"]),
    )
    return [Line(f"{name} / a scanned clip", "us", cost, scan["load"]) for name, cost in steps]
