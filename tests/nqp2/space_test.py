# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""How much can be recorded: the command space."""

import json
import os
import unittest

from program import CardTest, main, run

FIXED = 5308864  # bytes of a recording without a frame
FIXED_INTRA = FIXED + 612
MOST = 2 ** 63 - 1


def space(*arguments):
    result = run("space", *arguments, "--json")
    assert (result.returncode, result.stderr) == (0, ""), result.stderr
    return json.loads(result.stdout)


def counted(free, code_type, standard, *options):
    return space("--bytes", free, "--code-type", code_type, "--standard", standard, *options)


class CountTest(CardTest):
    def test_figures(self):
        cases = (  # free bytes, code type, standard, options, what must come out
            (0, "CT_DV25_50I", "vs_5994i", (),
             {"FreeBytes": 0, "MaxFrames": -39, "FramesFor4GB": 35425, "SizeFor4GB": 4800436864}),
            (FIXED + 15360, 51, 1, ("--frames", 1),  # no frame size: only sound is counted
             {"fits": True, "FreeBytes": FIXED + 15360, "MaxFrames": 1,
              "SpaceForFrames": FIXED + 15360}),
        )
        for free, code_type, standard, options, expected in cases:
            with self.subTest(free=free, code_type=code_type):
                answer = counted(free, code_type, standard, *options)
                self.assertEqual(answer, expected)
                self.assertEqual(list(answer), list(expected))

    def test_table(self):
        result = run("space", "--bytes", 0, "--code-type", 0, "--standard", 1, "--frames", 2)
        self.assert_golden("space.txt", result.stdout)
        table = run("space", "--bytes", MOST, "--code-type", 0, "--standard", 0, "--frames", MOST)
        self.assertIn(f"Bytes they take   {MOST} or more\nFits              no", table.stdout)

    def test_wrong_usage(self):
        both = ("--code-type", 0, "--standard", 0)
        cases = (
            ((), "space usage: CARD or --bytes is required"),
            (("--bytes", 1), "space usage: --bytes needs --code-type and --standard"),
            (("--bytes", 1, "--code-type", 0), "space usage: --bytes needs"),
            (("--bytes", 1, self.card.path, *both), "space usage: "),
            (("--bytes", -1, *both), "--bytes -1: "),
            (("--bytes", 1, *both, "--frames", -1), "--frames -1: "),
            (("--bytes", 2 ** 63, *both), "--bytes 9223372036854775808: is no whole number"),
            (("--bytes", "1x", *both), "--bytes 1x: is no"),
            (("--bytes", 1, "--code-type", "CT_X", "--standard", 0), "--code-type CT_X: is no"),
            (("--bytes", 1, "--code-type", -1, "--standard", 0), "--code-type -1: is no"),
            (("--bytes", 1, "--code-type", 2 ** 31, "--standard", 0), "--code-type 2147483648: "),
            (("--bytes", 1, "--code-type", 0, "--standard", 7), "--standard 7: is no video"),
        )
        for arguments, line in cases:
            result = run("space", *arguments)
            self.assertEqual((result.returncode, result.stdout), (2, ""), arguments)
            self.assertEqual(result.stderr.count("\n"), 1)
            self.assertTrue(result.stderr.startswith(f"nqp2: {line}"), result.stderr)


class CardSpaceTest(CardTest):
    def test_a_card_tells_its_format_and_its_free_bytes(self):
        self.card.add("0001AA", codec="AVC-I_1080/50i", codec_class="100")
        answer = space(self.card.path, "--frames", 1, "--audio24")
        disk = os.statvfs(self.card.path)
        self.assertEqual(answer["SpaceForFrames"], FIXED_INTRA + 576000 + 23040)
        self.assertEqual(answer["FramesFor4GB"], 7380)
        # Others write to the same disk.
        self.assertAlmostEqual(answer["FreeBytes"], disk.f_bfree * disk.f_frsize, delta=2 ** 33)
        self.assertEqual(answer["MaxFrames"],
                         (answer["FreeBytes"] - FIXED_INTRA) // (576000 + 23040))
        self.assertTrue(answer["fits"])
        self.assertFalse(space(self.card.path, "--frames", 2 ** 62)["fits"])
        other = space(self.card.path, "--code-type", "CT_DV25_50I")
        self.assertNotIn("fits", other)
        self.assertEqual(other["SizeFor4GB"], counted(0, 0, 1)["SizeFor4GB"])

    def test_the_class_of_the_first_clip_counts(self):
        cases = (  # codec, class, bytes of a frame (0: not known)
            ("AVC-I_1080/50i", "50", 288000),
            ("AVC-I_1080/25p", "50", 288000),
            ("AVC-I_1080/50i", "100", 576000),
            ("AVC-I_1080/50i", "200", 0),
        )
        for codec, codec_class, frame in cases:
            with self.subTest(codec=codec, codec_class=codec_class):
                self.card.add("0001AA", codec=codec, codec_class=codec_class)
                answer = space(self.card.path, "--frames", 1)
                fixed = FIXED_INTRA if frame else FIXED
                self.assertEqual(answer["SpaceForFrames"], fixed + frame + 15360)
                self.assertEqual("FramesFor4GB" in answer, frame != 0)

    def test_an_empty_card_needs_to_be_told_a_format(self):
        self.assert_fails(run("space", self.card.path), 1,
                          f"nqp2: {self.card.path}: no clip tells the card's format "
                          "(give --code-type and --standard)")
        told = ("--code-type", "CT_DV50_50I", "--standard", "VS_50I")
        self.assertGreater(space(self.card.path, *told)["FreeBytes"], 0)
        self.assert_fails(run("space", self.folder / "none", *told), 1,
                          f"nqp2: {self.folder / 'none'}: no such folder")


if __name__ == "__main__":
    main()
