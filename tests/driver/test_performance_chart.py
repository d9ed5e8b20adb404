"""The chart of docs/performance.md is what the program makes of the table there.

The program is the one named by the environment variable TARVELMON_CHART; without it there is none in this build.
"""

import os
import re
import subprocess
import unittest
import xml.etree.ElementTree

from engine import PATIENCE
from scratch_folder import ScratchFolderTest
from test_documents import TOP

PROGRAM = os.environ.get("TARVELMON_CHART") or "/nonexistent"
TABLE = """Text.

| other | table |
| --- | --- |
| x | y |

| commit | what | search | start |
| --- | --- | --- | --- |
| 0000001 | the beginning | 200.0 | 4 |
| 0000002 | <slower> | 220.0 | 1 |

| 0000003 | of no table | 1 | 1 |
"""


@unittest.skipUnless(os.path.isfile(PROGRAM), "performance_chart is not built")
class PerformanceChart(ScratchFolderTest):

    def draw(self, document, status=0):
        done = subprocess.run([PROGRAM, document], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              timeout=PATIENCE, check=False)
        self.assertEqual(done.returncode, status, done.stderr)
        return done.stderr if status else done.stdout

    def test_the_document_shows_what_its_table_says(self):
        drawn = self.draw(TOP / "docs/performance.md")
        self.assertEqual((TOP / "docs/performance.svg").read_text(encoding="utf-8"), drawn,
                         "run tools/measure.sh --chart BUILD")

    def test_each_column_is_a_line_that_begins_at_a_hundred(self):
        drawing = self.draw(self.write("table.md", TABLE))
        xml.etree.ElementTree.fromstring(drawing)
        paths = re.findall(r'<path class="line line\d" d="M([\d.]+) ([\d.]+)L([\d.]+) ([\d.]+)"', drawing)
        self.assertEqual(len(paths), 2)
        (left, begin, right, slower), (_, start, _, quicker) = [[float(number) for number in path] for path in paths]
        self.assertEqual(begin, start)
        self.assertLess(left, right)
        self.assertLess(slower, begin)  # what is more stands higher
        ground = 10 * (begin - slower) + begin  # 10 % is the way from the one to the other
        self.assertAlmostEqual(quicker, ground - 0.25 * (ground - begin), delta=1)
        self.assertIn("<title>0000002 &lt;slower&gt;: search 220</title>", drawing)
        self.assertNotIn("0000003", drawing)

    def test_a_table_that_cannot_be_read_is_told(self):
        for old, new, told in (("220.0", "quick", ":10: a row has"), ("220.0", "", ":10: a row has"),
                               ("220.0", "nan", ":10: a row has"), ("| 220.0 ", "", ":10: a row has"),
                               ("200.0", "0", ":9: a row has"), ("commit", "hash", ": there is no table"),
                               ("| 0000002 | <slower> | 220.0 | 1 |\n", "", ": there is no table")):
            with self.subTest(new):
                file = self.write("bad.md", TABLE.replace(old, new, 1))
                self.assertTrue(self.draw(file, status=1).startswith(file + told))
        self.assertIn(": there is no table", self.draw(self.path("none"), status=1))
        self.assertEqual(subprocess.run([PROGRAM], stderr=subprocess.DEVNULL, check=False).returncode, 2)


if __name__ == "__main__":
    unittest.main()
