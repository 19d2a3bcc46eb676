#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Makes a P2 card, an AVCHD card or a folder of camera files to look at, or a card to measure with.
The same call always makes the same card."""

import argparse
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # no litter beside the sources

from card import avchd, bulk, camera, demo
from card.media import CardError, CardWriter, FolderWriter

ESSENCE_SIZE = 512


def _number(low: int, high: int):
    def convert(text: str) -> int:
        value = int(text)
        if not low <= value <= high:
            raise argparse.ArgumentTypeError(f"must be from {low} to {high}")
        return value

    convert.__name__ = "number"  # argparse puts it into "invalid number value"
    return convert


def _arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__, epilog="example: make_card.py build/card")
    parser.add_argument("out", type=Path, help="the card's folder, made when it is not there")
    parser.add_argument("--kind", choices=("p2", "avchd", "camera"), default="p2",
                        help="what to make (default: p2)")
    parser.add_argument("--clips", type=_number(1, bulk.MAX_CLIPS), metavar="N",
                        help="make a card of N clips for measuring instead of the demo card")
    parser.add_argument("--size", type=_number(bulk.SIZE_MIN, bulk.SIZE_MAX), metavar="BYTES",
                        help="with --clips: about how large each metadata file is, "
                             f"{bulk.SIZE_MIN} to {bulk.SIZE_MAX} (default: mixed)")
    parser.add_argument("--essence-size", type=_number(0, 1 << 30), metavar="BYTES",
                        help="with --clips: size of each media file, which has no content "
                             f"(default: {ESSENCE_SIZE})")
    parser.add_argument("--force", action="store_true",
                        help="replace what is in the folder if this script made it")
    arguments = parser.parse_args()
    if (arguments.size or arguments.essence_size is not None) and not arguments.clips:
        parser.error("--size and --essence-size go with --clips")
    if arguments.kind != "p2" and (arguments.size or arguments.essence_size is not None):
        parser.error("--size and --essence-size go with P2 cards")
    if arguments.kind == "camera" and arguments.clips:
        parser.error("--clips goes with cards")
    if arguments.kind == "avchd" and (arguments.clips or 0) > avchd.MAX_CLIPS:
        parser.error(f"an AVCHD card has at most {avchd.MAX_CLIPS} clips")
    if arguments.essence_size is None:
        arguments.essence_size = ESSENCE_SIZE
    return arguments


def _make_p2(arguments: argparse.Namespace) -> None:
    card = CardWriter(arguments.out, arguments.force)
    if arguments.clips:
        bulk.make(card, arguments.clips, arguments.size, arguments.essence_size)
    else:
        demo.make(card)


def _make_other(arguments: argparse.Namespace) -> None:
    folder = FolderWriter(arguments.out, arguments.force)
    if arguments.kind == "camera":
        camera.make(folder)
    elif arguments.clips:
        avchd.make_bulk(folder, arguments.clips)
    else:
        avchd.make_demo(folder)
    folder.finish()


def main() -> int:
    arguments = _arguments()
    try:
        if arguments.kind == "p2":
            _make_p2(arguments)
        else:
            _make_other(arguments)
    except CardError as error:
        print(f"make_card.py: {error}", file=sys.stderr)
        return 1
    except OSError as error:
        print(f"make_card.py: {error.filename or arguments.out}: {error.strerror}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
