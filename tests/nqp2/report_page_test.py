# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The page of cards in a real browser. NQP2_SCREENSHOTS=FOLDER keeps pictures of it."""

import os
from pathlib import Path
from xml.sax.saxutils import escape

from browser import Browser
from edl_test import edit_list
from program import CardTest, main, run

MARKUP = "<img src=x onerror=document.title=1>"
SCRIPT = "</script><script>document.title='own'</script>\"'><b onclick=x>"
REVERSED = "\u202egpj.exe"
HEBREW = "\u05e8\u05d0\u05d9\u05d5\u05df"
LONG = "x" * 10_000
SHOWN = ("Array.from(document.querySelectorAll('.clip')).filter(row => row.checkVisibility())"
         ".map(row => row.querySelector('b').textContent)")
WIDTHS = (400, 800, 1100, 1270, 1400)


class PageTest(CardTest):
    def setUp(self):
        super().setUp()
        self.browser = Browser()
        self.addCleanup(self.browser.close)
        self.page = self.folder / "page.html"

    def open(self):
        result = run("report", self.card.path, "-o", self.page)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.browser.show(width=1400)
        self.browser.open(self.page)

    def choose(self, name, value):
        self.browser.run(f"(() => {{ const it = document.getElementById('{name}'); it.value = "
                         f"'{value}'; it.dispatchEvent(new Event('input')); }})()")

    def click_head(self, title):
        self.browser.run("Array.from(document.querySelectorAll('th button')).find(each => "
                         f"each.textContent == '{title}').click()")

    def shown(self):
        return self.browser.run(SHOWN)

    def assert_silent(self):
        self.assertEqual((self.browser.complaints(), self.browser.loaded()), ([], []))

    def test_search_sort_and_filters(self):
        self.card.add("0001AA", title="Sunset", duration=50, start="2026-05-01T08:00:00+02:00")
        self.card.add("0002BB", title="Night market", duration=9, codec="DV50_422",
                      start="2026-05-02T20:00:00+02:00", memos=[(3, "Rosa", "lanterns are lit")])
        self.card.add("0003CC", duration=700, start="2026-05-02T17:00:00-02:00")
        ingested = run("ingest", "add", self.card.path, "0003CC", "0-699")
        self.assertEqual(ingested.returncode, 0, ingested.stderr)
        self.open()
        every = ["0001AA", "0002BB", "0003CC"]
        self.assertEqual(self.shown(), every)
        for search, found in (("SUNSET", every[:1]), ("lanterns rosa", every[1:2]), ("dv25", [
                every[0], every[2]]), ("nowhere", []), ("", every)):
            self.choose("search", search)
            self.assertEqual(self.shown(), found, search)
        self.choose("day", "2026-05-02")
        self.assertEqual(self.shown(), every[1:])
        self.choose("state", "taken")
        self.assertEqual(self.shown(), every[2:])
        self.assertEqual(self.browser.run("document.getElementById('count').textContent"),
                         "1 of 3 clips")
        self.choose("day", "")
        self.choose("state", "")
        for head, order in (("Length", [1, 0, 2]), ("Length", [2, 0, 1]), ("Start", [0, 1, 2]),
                            ("Codec", [0, 2, 1]), ("Memos and marks", [0, 2, 1])):
            self.click_head(head)
            self.assertEqual(self.shown(), [every[place] for place in order], head)
        self.click_head("Sound")  # alike: as they came, up and down
        self.click_head("Sound")
        self.assertEqual(self.shown(), every)
        self.browser.run("document.getElementById('view').click()")
        self.choose("state", "taken")  # as pictures too
        self.assertEqual(self.shown(), every[2:])
        self.choose("state", "")
        self.click_head("Length")
        self.assertEqual(self.shown(), [every[1], every[0], every[2]])
        self.assert_silent()

    def test_names_of_strangers_are_shown_and_nothing_more(self):
        (self.card.clips.parent / "EDITLIST").mkdir()
        names = [MARKUP, "0002" + HEBREW, "0003" + REVERSED]
        for name, title in zip(names, (SCRIPT, HEBREW, LONG)):
            self.card.add(name, title=title, codec=escape(title), rate=escape(title),
                          memos=[(1, LONG, title)])
            event = ("<Event><Duration>9</Duration><Source>"
                     f"<ClipName>{escape(title)}</ClipName></Source></Event>")
            self.card.add_raw(f"../EDITLIST/{name}.XML", edit_list(
                event * 2, head=f"<Codec>{escape(title)}</Codec><FrameRate>{LONG}</FrameRate>"))
        self.open()
        shown = self.shown()
        self.assertIn(MARKUP, shown)
        self.assertIn("0003\\u202egpj.exe", shown)
        self.assertEqual(self.browser.run("document.title"), f"Card report: {self.card.path}")
        self.assertEqual(self.browser.run("document.querySelectorAll('[onerror], [onclick], "
                                          "[src=x], script').length"), 1)
        self.assertEqual(self.browser.run(
            f"Array.from(document.querySelectorAll('.title bdi')).some(each => "
            f"each.textContent == '{HEBREW}' && getComputedStyle(each).direction == 'rtl')"), True)
        for width in WIDTHS:
            self.browser.show(width=width)
            self.assertLessEqual(self.browser.run("document.documentElement.scrollWidth"), width)
            self.assertLess(self.browser.run("Math.max(...Array.from(document.querySelectorAll("
                                             "'.clip, .edit'), each => each.offsetHeight))"), 400)
        self.assert_silent()

    def test_is_read_without_script(self):
        self.card.add("0001AA", title="Sunset")
        self.browser.call("Emulation.setScriptExecutionDisabled", value=True)
        self.open()
        self.assertEqual(self.shown(), ["0001AA"])
        self.assertFalse(self.browser.run("document.querySelector('.tools').offsetHeight"))

    def test_fits_screens_and_paper_in_light_and_dark(self):
        for number in range(9):
            self.card.add(f"000{number}AA", title=f"Clip {number}", memos=[(0, "Rosa", "good")])
        self.open()
        ink = {}
        for scheme in ("light", "dark"):
            for width in WIDTHS:
                self.browser.show(width=width, scheme=scheme)
                self.keep(f"{scheme}-{width}")
                self.assertLessEqual(self.browser.run("document.documentElement.scrollWidth"),
                                     width)
            ink[scheme] = self.browser.run("getComputedStyle(document.documentElement).color")
        self.assertNotEqual(ink["light"], ink["dark"])
        self.browser.show(width=720, media="print", scheme="dark")
        self.keep("print")
        rows = self.browser.run("Array.from(document.querySelectorAll('.clip'), "
                                "each => each.getBoundingClientRect().top)")
        self.assertEqual([rows.count(top) for top in sorted(set(rows))], [4, 4, 1])
        self.assertEqual(self.browser.run("getComputedStyle(document.body).color"), "rgb(0, 0, 0)")
        self.assert_silent()

    def keep(self, name):
        picture = self.browser.picture()
        self.assertTrue(picture.startswith(b"\x89PNG"))
        if folder := os.environ.get("NQP2_SCREENSHOTS"):
            Path(folder, f"{name}.png").write_bytes(picture)


if __name__ == "__main__":
    main()
