# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The page of what a search finds, in a real browser."""

import sys
from pathlib import Path
from xml.sax.saxutils import escape

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "nqp2"))
from browser import Browser  # noqa: E402
from program import CardTest, main, run  # noqa: E402

SHOWN = ("Array.from(document.querySelectorAll('.clip')).filter(row => row.checkVisibility())"
         ".map(row => row.querySelector('b').textContent)")
SCRIPT = "</script><script>document.title='own'</script>\"'><img src=x onerror=document.title=1>"


class PageTest(CardTest):
    def test_is_searched_sorted_and_filtered_and_holds_nothing_of_strangers(self):
        database, page = self.folder / "c.sqlite", self.folder / "page.html"
        for number, title in ((1, "Sunset"), (2, SCRIPT), (3, "x" * 9999)):
            self.card.add(f"000{number}AA", title=title, start=f"2026-05-0{number}T08:00:00",
                          identifier=f"{number:064}", memos=[(1, title, escape(title))])
            self.card.add_file("VIDEO", f"000{number}AA.MXF")
        run("catalog", "add", self.card.path, "--db", database, "--label", SCRIPT)
        for place, status in ((page, 0), (self.card.clips / "page.html", 2), (self.folder, 1)):
            found = run("catalog", "search", "000*", "-o", place, "--db", database)
            self.assertEqual(found.returncode, status, found.stderr)
        self.assertFalse((self.card.clips / "page.html").exists())
        browser = Browser()
        self.addCleanup(browser.close)
        for width in (400, 1100, 1400):
            browser.show(width=width)
            browser.open(page)
            self.assertLessEqual(browser.run("document.documentElement.scrollWidth"), width)
        self.assertEqual(browser.run(SHOWN), ["0003AA", "0002AA", "0001AA"])
        browser.run("document.querySelector('th button').click()")
        self.assertEqual(browser.run(SHOWN), ["0001AA", "0002AA", "0003AA"])
        for field, value, shown in (("search", "sunset", ["0001AA"]), ("search", "", None),
                                    ("day", "2026-05-02", ["0002AA"]), ("state", "taken", [])):
            browser.run(f"(() => {{ const it = document.getElementById('{field}'); it.value = "
                        f"'{value}'; it.dispatchEvent(new Event('input')); }})()")
            self.assertIn(shown, (browser.run(SHOWN), None))
        self.assertEqual(browser.run("document.title"), "Catalogue: 000*")
        self.assertEqual(browser.run("document.querySelectorAll('[onerror], [src=x], script').length"), 1)
        self.assertEqual((browser.complaints(), browser.loaded()), ([], []))


if __name__ == "__main__":
    main()
