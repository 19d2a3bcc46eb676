# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Several cards in one listing."""

import csv
import io
from pathlib import Path

from program import Card, CardTest, main, run

SHOT = ("0001AA", "0002BB", "0003CC")


def segment(number):
    """Fields of a clip that is a segment of one shot over as many cards as it has segments."""
    def place(tag, index):
        return (f"<{tag}><GlobalClipID>{index + 1:064X}</GlobalClipID><ClipName>{SHOT[index]}"
                f"</ClipName><P2SerialNo.>SN{index}</P2SerialNo.></{tag}>")

    around = [(0, "Top"), (number - 1, "Previous"), (number + 1, "Next")]
    connection = "".join(place(tag, index) for index, tag in around if 0 <= index < len(SHOT))
    return {"identifier": f"{number + 1:064X}",
            "relation": f"<Relation><OffsetInShot>{100 * number}</OffsetInShot><Connection>"
                        f"{connection}</Connection></Relation>"}


class CardsTest(CardTest):
    def setUp(self):
        super().setUp()
        self.top = self.folder / "shoot"
        self.cards = [Card(self.top / "day 1" / "A"), Card(self.top / "day 1" / "B"),
                      Card(self.top / "day 2")]
        for number, card in enumerate(self.cards):
            card.add(SHOT[number], **segment(number), start=f"2024-05-1{3 - number}T00:00:00+00:00")
        (self.top / "day 1" / "again").symlink_to(self.cards[2].path)
        self.paths = [str(card.path) for card in self.cards]
        self.labels = ["SN0", *self.paths[1:]]  # the first card's clip tells where it lies itself

    def rows(self, *arguments):
        """Card and name of each clip, and what is said beside. None has picture and sound, which
        a report says too."""
        result = run("clips", "--csv", "--columns", "Card,ClipName", *arguments)
        rows = csv.DictReader(io.StringIO(result.stdout))
        return ([(row["Card"], row["ClipName"]) for row in rows],
                [line for line in result.stderr.splitlines() if " is not whole: " not in line])

    def test_clips_of_all_cards_come_with_their_card(self):
        expected = list(zip(self.labels, SHOT))
        for arguments in (self.paths, ["--recursive", self.top]):
            self.assertEqual(self.rows(*arguments), (expected, []))
            self.assertEqual(self.rows(*arguments, "--sort", "date"), (expected[::-1], []))
        table = run("clips", self.top, "--recursive")
        self.assertEqual([line.split("  ")[0] for line in table.stdout.splitlines()],
                         ["CARD", *self.labels])
        self.assertEqual(table.stderr, "3 clips, 0:00:01\n")
        self.assertEqual(self.rows("--recursive", self.cards[0].path), (expected[:1], []))

    def test_a_card_that_is_named_twice_is_listed_once(self):
        first, *others = self.paths
        rows, told = self.rows(first, f"{first}/CONTENTS", *others, self.top / "day 1" / "again")
        self.assertEqual(rows, list(zip(self.labels, SHOT)))
        self.assertEqual(told, [f"nqp2: {first}/CONTENTS: took the card at {first}"])
        self.assertEqual(self.rows("--recursive", self.top, self.top / "day 1")[0], rows)

    def test_takes_are_joined_over_the_cards(self):
        first, second, third = self.paths
        for cards, take in (
                (self.paths, f"0001AA on SN0 + 0002BB on {second} + 0003CC on {third}: complete"),
                ([third, first], f"0001AA on SN0 + 0003CC on {third}: incomplete, missing 0002BB "
                                 "on card SN1"),
                ([second, third], f"0002BB on {second} + 0003CC on {third}: incomplete, missing "
                                  "0001AA on card SN0")):
            self.assertEqual(self.rows(*cards, "--report")[1], [f"take {take}"])
        shown = [(Path(clip["card"]).name, clip["take"])
                 for clip in self.told("clips", second, third)["clips"]]
        lost = [{"clipName": "0001AA", "globalClipID": f"{1:064X}", "serialNo": "SN0"}]
        self.assertEqual(shown, [(card, {"top": "0001AA", "place": place, "of": 3,
                                         "complete": False, "missing": lost})
                                 for card, place in (("B", 2), ("day 2", 3))])
        self.cards[1].add("0001AA", **segment(0))
        self.assertIn(f"take 0001AA on {first} and {second} + 0002BB on {second} + ",
                      run("clips", self.top, "--recursive", "--report").stdout)
        page = run("report", self.top, "--recursive", "-o", "-").stdout
        self.assertIn("</bdi></li><li><bdi>0001AA, 0002BB</bdi> on "
                      f"<bdi>{second}</bdi></li><li><bdi>", page)

    def test_what_is_left_out_is_told_of_each_card(self):
        self.cards[1].add_raw("0009XX.XML", b"<x")
        (self.top / "disc" / "BDMV").mkdir(parents=True)
        left_out = [f"nqp2: {self.top}/disc: skipped (cannot be read: the card does not open)",
                    f"nqp2: {self.paths[1]}: 1 file skipped or incomplete (--report names it)"]
        rows, told = self.rows("--recursive", self.top)
        self.assertEqual((len(rows), told), (3, left_out))
        report = self.rows("--recursive", self.top, "--report")[1]
        self.assertEqual([line.split(":")[0] for line in report[:2]],
                         [f"skipped {self.top}/disc", f"skipped {self.cards[1].clips}/0009XX.XML"])
        for path in (self.cards[1].path, self.top / "disc"):
            self.assertEqual(run("clips", "--recursive", path.parent, "--strict").returncode, 4)
        (self.folder / "none").mkdir()
        self.assert_each_fails(1, [
            (("clips", self.paths[0], self.folder / "no"), f"{self.folder}/no: no such folder\n"),
            (("clips", "--recursive", self.folder / "no"), f"{self.folder}/no: no such folder\n"),
            (("clips", "--recursive", self.folder / "none"),
             f"{self.folder}/none: no cards in it or below\n"),
            (("clips", self.top / "day 1"), f"{self.top}/day 1: leads to 2 cards (give one of them, "
             f"or all with --recursive: {self.paths[0]}, {self.paths[1]})\n")])


if __name__ == "__main__":
    main()
