#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Shows that check_rules.py and count say what they are there for."""

import unittest

from checks import run, tree

CPP = "TEST(Suite, Name) {\n}\nTEST_F(Other, Runs) {\n}\n"
PYTHON = "class OldTest(Base):\n    def test_it(self):\n        pass\n"
ROWS = (  # the cell of a table, and what is found
    ("`a_test.cpp: Suite.Name`", ""), ("a: Other.Runs, Suite.Name", ""), ("`a_test.cpp`", ""),
    ("Suite.*; `b: OldTest.test_it`", ""), ("OldTest", ""),
    ("a: Suite.Gone", "2: no test Suite.Gone in a"), ("a: Suite.Name, Suite.Gone", "no test Suite.Gone"),
    ("a: OldTest.test_it", "no test OldTest.test_it"), ("c: Suite.Name", "no file c"),
    ("Nothing", "no test Nothing"),
)
CODE = """// a comment
int One() {
    if (f()) {
        g([] {
            return 1;
        });
    }

    return 2; // counts
}
"""


class CheckRules(unittest.TestCase):
    def test_a_rule_names_tests_that_exist(self):
        for cell, complaint in ROWS:
            readme = f"| rule | test |\n|---|---|\n| It works. | {cell} |\n\n| other | x |\n"
            with self.subTest(cell), tree({"tests/x/README.md": readme, "tests/x/a_test.cpp": CPP,
                                           "tests/x/b_test.py": PYTHON}) as root:
                result = run("check_rules.py", root)
                self.assertIn(complaint.replace("2:", "README.md:3:"), result.stdout)
                self.assertEqual((result.returncode, result.stdout == ""),
                                 (1, False) if complaint else (0, True))


class Count(unittest.TestCase):
    def test_counts_what_is_neither_blank_nor_comment(self):
        files = {"library/a/a.cpp": CODE * 2, "programs/b.py": "# none\n\ndef f():\n    return 1\n",
                 "tests/a/a_test.cpp": CODE, "scripts/tool": "#!/usr/bin/env python3\nx = 1\n"}
        with tree(files) as root:
            shown = run("count", root).stdout.splitlines()
            self.assertEqual([line.split() for line in shown[-4:]], [
                "code 18 2 2 / 16 3 8 / 8".split(), "tests 8 1 8 / 8 1 8 / 8".split(),
                "other 1 1 1 / 1 0 -".split(), "tests for 100 lines of code: 44.4".split()])
            self.assertEqual([run("count", root, "--limit", limit).returncode
                              for limit in ("44", "45")], [1, 0])


if __name__ == "__main__":
    unittest.main()
