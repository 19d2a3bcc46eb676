# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""How much can be recorded: the command space."""

import os

from program import CardTest, main, run

FIXED = 5308864  # bytes of a recording without a frame
FIXED_INTRA = FIXED + 612
BOTH = ("--code-type", 0, "--standard", 0)


def free_bytes(folder):
    disk = os.statvfs(folder)
    return disk.f_bfree * disk.f_frsize


class SpaceTest(CardTest):
    def space(self, *arguments):
        return self.told("space", *arguments)

    def test_figures_in_json_and_table(self):
        cases = (  # free bytes, code type, standard, options, what must come out
            (0, "CT_DV25_50I", "vs_5994i", (),
             {"FreeBytes": 0, "MaxFrames": -39, "FramesFor4GB": 35425, "SizeFor4GB": 4800436864}),
            (FIXED + 15360, 51, 1, ("--frames", 1),  # no frame size: only sound is counted
             {"fits": True, "FreeBytes": FIXED + 15360, "MaxFrames": 1,
              "SpaceForFrames": FIXED + 15360}))
        for free, code_type, standard, options, expected in cases:
            answer = self.space("--bytes", free, "--code-type", code_type, "--standard", standard,
                                *options)
            self.assertEqual(list(answer.items()), list(expected.items()))
        for size, count in (("64GB", 64 * 10**9), ("1.5 MiB", 3 << 19), ("2t", 2 * 10**12), ("0.9", 0)):
            self.assertEqual(self.space("--bytes", size, *BOTH)["FreeBytes"], count)
        result = run("space", "--bytes", 0, "--code-type", 0, "--standard", 1, "--frames", 2)
        self.assert_golden("space.txt", result.stdout)

    def test_a_code_type_tells_its_standard(self):
        for code_type, standard in (("CT_DV25_50I", 1), ("CT_DV100_720_25P", 1), (58, 4),
                                    ("CT_AVCI100_1080_5994I", 0), ("CT_DV50_2997P", 0),
                                    ("CT_AVCI50_720_5994P", 3), ("CT_AVCHD_1280_720_50P", 4)):
            of_type = self.space("--bytes", "64GB", "--code-type", code_type)
            self.assertEqual(of_type, self.space("--bytes", "64GB", "--code-type", code_type,
                                                 "--standard", standard))
            given = run("space", "--bytes", 1, "--code-type", code_type)
            self.assertIn(f"({standard})", given.stdout.splitlines()[1])

    def test_wrong_usage(self):
        self.assert_each_fails(2, [(("space", *arguments), line) for arguments, line in (
            ((), "space usage: CARD or --bytes is required"),
            (("--bytes", 1), "space usage: --bytes needs --code-type"),
            (("--bytes", 1, "--code-type", 9999), "space usage: --bytes and a code type without"),
            (("--bytes", 1, self.card.path, *BOTH), "space usage: "),
            *((("--bytes", size, *BOTH), f"--bytes {size}: ") for size in (
                -1, "-1GB", "GB", "1xB", "inf", "nan", "9e9", "9EiB", "1 GB x", "")),
            (("--bytes", 2 ** 63, *BOTH), "--bytes 9223372036854775808: is no number of bytes (such"),
            (("--bytes", 1, "--code-type", "CT_X", "--standard", 0), "--code-type CT_X: is no"),
            (("--bytes", 1, "--code-type", 0, "--standard", 7), "--standard 7: is no video"))])

    def test_a_card_tells_its_format_and_its_free_bytes(self):
        self.card.add("0001AA", codec="AVC-I_1080/50i", codec_class="100")
        for _ in range(100):  # others write to the same disk
            before, answer, after = (free_bytes(self.card.path), self.space(
                self.card.path, "--frames", 1, "--audio24"), free_bytes(self.card.path))
            is_between = min(before, after) <= answer["FreeBytes"] <= max(before, after)
            if is_between:
                break
        frame = 576000 + 23040
        self.assertEqual((answer["SpaceForFrames"], answer["FramesFor4GB"]),
                         (FIXED_INTRA + frame, 7380))
        self.assertTrue(is_between, f"{before} {answer['FreeBytes']} {after}: not a user's share")
        self.assertEqual(answer["MaxFrames"], (answer["FreeBytes"] - FIXED_INTRA) // frame)
        self.assertTrue(answer["fits"])
        self.assertFalse(self.space(self.card.path, "--frames", 2 ** 62)["fits"])

    def test_the_class_of_the_first_clip_counts(self):
        for codec, codec_class, size in (("AVC-I_1080/50i", "50", FIXED_INTRA + 288000),
                                         ("AVC-I_1080/50i", "200", FIXED)):  # a frame is not known
            self.card.add("0001AA", codec=codec, codec_class=codec_class)
            self.assertEqual(self.space(self.card.path, "--frames", 1)["SpaceForFrames"],
                             size + 15360)

    def test_an_empty_card_needs_to_be_told_a_format(self):
        told = ("--code-type", "CT_DV50_50I", "--standard", "VS_50I")
        self.assertGreater(self.space(self.card.path, *told)["FreeBytes"], 0)
        none = self.folder / "none"
        self.assert_each_fails(1, (
            (("space", self.card.path), f"{self.card.path}: no clip tells the card's format "
                                        "(give --code-type and --standard)\n"),
            (("space", none, *told), f"{none}: no such folder\n")))


if __name__ == "__main__":
    main()
