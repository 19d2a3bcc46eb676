#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Shows that check_links.py says what it is there for."""

import unittest

from checks import run, tree

PAGES = (  # what stands in a page, and what is found
    ('<a href="b.html#part">b</a><img src="sub/c%20d.png"><a href="https://x.invalid/y">y</a>', ""),
    ('<a href="gone.html">b</a>', "a.html: gone.html"), ('<object data="c.svg">', "a.html: c.svg"),
    ('<a href="../a.html">b</a>', "a.html: ../a.html"), ('<a href="sub">b</a>', "a.html: sub"),
    ("see @ref b.md here", "a.html: a link that is text"),
)


class CheckLinks(unittest.TestCase):
    def test_a_link_leads_to_a_file_of_the_folder(self):
        for content, complaint in PAGES:
            files = {"a.html": content, "b.html": "", "sub/c d.png": ""}
            with self.subTest(content), tree(files) as root:
                result = run("check_links.py", root)
                self.assertEqual((result.stdout.strip(), result.returncode),
                                 (complaint, 1 if complaint else 0))

    def test_no_pages_are_a_fault(self):
        with tree({"a.txt": ""}) as root:
            self.assertEqual(run("check_links.py", root).returncode, 1)


if __name__ == "__main__":
    unittest.main()
