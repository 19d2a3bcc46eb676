#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Adds up what was recorded on each day, card by card, from the JSON of `nqp2 clips`.

    card_totals.py [--nqp2 PROGRAM] CARD...
"""

import argparse
import collections
import datetime
import json
import signal
import subprocess
import sys


def clips_of(program, cards):
    """The clips of all cards; the member names are those of docs/json/."""
    try:
        done = subprocess.run([program, "clips", "--json", *cards], stdout=subprocess.PIPE,
                              check=False)
    except OSError as error:
        sys.exit(f"card_totals.py: {program} cannot be run ({error.strerror}); try --nqp2")
    if done.returncode < 0:
        sys.exit(f"card_totals.py: {program} was ended by signal {-done.returncode}")
    if done.returncode != 0:
        sys.exit(done.returncode)  # nqp2 has said why
    try:
        return json.loads(done.stdout)["clips"]
    except (ValueError, KeyError, TypeError):
        sys.exit(f"card_totals.py: {program} printed no list of clips; is it nqp2?")


def totals_of(clips):
    """Number of clips and seconds by day and card. Both members are missing where the card does not
    tell a date or a rate."""
    totals = collections.defaultdict(lambda: [0, 0.0])
    for clip in clips:
        total = totals[clip.get("start", "no date")[:10], clip["card"]]
        total[0] += 1
        total[1] += clip["length"].get("seconds", 0.0)
    return totals


def main():
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)  # `| head` ends it quietly
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--nqp2", default="nqp2", metavar="PROGRAM")
    parser.add_argument("cards", nargs="+", metavar="CARD")
    arguments = parser.parse_args()
    totals = totals_of(clips_of(arguments.nqp2, arguments.cards))
    for (day, card), (count, seconds) in sorted(totals.items()):
        time = datetime.timedelta(seconds=round(seconds))
        print(f"{day}  {time}  {count:4} clips  {card}")


if __name__ == "__main__":
    main()
