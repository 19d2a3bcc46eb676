# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The tests of tables and migrations with a server: the program's own tests, told where it is."""

import os
import subprocess
import sys
import unittest

from postgresql_server import server

PROGRAM = sys.argv.pop(1)


class TablesTest(unittest.TestCase):
    def test_migrations(self):
        url = server().new_database("tables")
        result = subprocess.run([PROGRAM, "--gtest_filter=Engines/*"], check=False,
                                capture_output=True, text=True,
                                env=os.environ | {"NQP2_TEST_POSTGRESQL": url})
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertNotIn("SKIPPED", result.stdout)


if __name__ == "__main__":
    unittest.main()
