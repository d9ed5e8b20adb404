"""The pages of tarvelmon-analyse: one file that needs no other, with all it should show."""

import html.parser
import os
import re
import shutil
import subprocess
import unittest

from analyse import AnalyseTest, WELL_KNOWN, text_of
from engine import PATIENCE

GAMES = """[White "Anna & <Bela>"]
[Black "Two"]
[Result "0-1"]

1. f3 e5 2. g4 Qh4# 0-1

[White "Three"]
[Black "Four"]

1. e4 e5 2. Nf3 Nc6 *
"""
CHROMIUM = shutil.which("chromium")


class Outline(html.parser.HTMLParser):
    """Which elements there are, whether each is closed, and what they point to."""

    VOID = {"meta"}

    def __init__(self, text):
        super().__init__()
        self.open, self.count, self.links, self.classes = [], {}, [], []
        self.feed(text)
        self.close()

    def handle_starttag(self, tag, attrs):
        self.count[tag] = self.count.get(tag, 0) + 1
        self.links += [value for name, value in attrs if name in ("src", "href", "xlink:href")]
        self.classes += [value for name, value in attrs if name == "class"]
        if tag not in self.VOID:
            self.open.append(tag)

    def handle_startendtag(self, tag, attrs):
        self.handle_starttag(tag, attrs)
        if tag not in self.VOID:
            self.open.pop()

    def handle_endtag(self, tag):
        assert self.open.pop() == tag, tag


class Pages(AnalyseTest):

    def page(self, *arguments, given=""):
        output = self.analyse(*arguments, "--html", self.path("page.html"), given=given)
        text = text_of(self.path("page.html"))
        outline = Outline(text)
        self.assertEqual(outline.open, [])
        self.assertEqual(outline.links, [])
        self.assertNotIn("script", outline.count)
        self.assertNotRegex(text, r"url\(|@import|https?:")
        self.assertIn("prefers-color-scheme: dark", text)
        return output, text, outline

    def test_a_chart_boards_and_losses_for_each_game(self):
        output, text, outline = self.page("--pgn", "--depth", "4", given=GAMES)
        self.assertEqual(output, self.analyse("--pgn", "--depth", "4", given=GAMES))
        self.assertEqual(outline.count["section"], 2)
        self.assertEqual(outline.classes.count("chart"), 2)
        self.assertEqual(outline.count["table"], 2)
        self.assertIn("<h2>Anna &amp; &lt;Bela&gt; – Two, 0-1</h2>", text)
        self.assertRegex(text, r"<figcaption>2\. g4 lost \d+\.\d\d\. Better: \S+</figcaption>")
        self.assertEqual(outline.classes.count("board"), outline.count["figure"])
        self.assertEqual(outline.count["circle"], 8)  # one a half move

    def test_a_curve_and_a_table_for_a_suite(self):
        output, text, outline = self.page("--suite", "--depth", "4", WELL_KNOWN)
        solved, count = re.search(r"# solved (\d+) of (\d+)", output).groups()
        self.assertIn(f"<h1>Solved {solved} of {count}</h1>", text)
        self.assertEqual(outline.count["tr"], int(count) + 1)
        self.assertEqual(outline.count["circle"], int(solved) + 1)
        self.assertEqual(text.count("<td>not solved</td>"), int(count) - int(solved))

    def test_where_it_cannot_be_written_and_what_it_needs(self):
        self.analyse("--suite", "--depth", "2", "--html", self.path("none/x"), WELL_KNOWN, status=1)
        self.assertEqual(self.errors, self.path("none/x") + ": No such file or directory\n")
        self.analyse("--html", "x.html", WELL_KNOWN, status=2)
        self.analyse("--pgn", "--html", "x.html", "--resume", "y", status=2)

    @unittest.skipIf(CHROMIUM is None or bool(os.environ.get("TARVELMON_SANITIZE")), "there is no browser")
    def test_a_browser_shows_it_without_scrolling_sideways(self):
        self.page("--pgn", "--depth", "3", given=GAMES)
        probe = self.write("probe.html", """<body><script>
            for (const width of [400, 1400]) {
              const frame = document.createElement("iframe");
              frame.width = width; frame.height = 1000; frame.src = "page.html";
              frame.onload = () => document.body.append(
                  `[${width}: ${frame.contentDocument.documentElement.scrollWidth <= width}]`);
              document.body.append(frame); }
            </script></body>""")
        done = subprocess.run([CHROMIUM, "--headless", "--no-sandbox", "--disable-gpu", "--allow-file-access-from-files",
                               "--user-data-dir=" + self.path("profile"), "--virtual-time-budget=5000", "--dump-dom",
                               "file://" + probe], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                              timeout=PATIENCE, check=True)
        self.assertIn("[400: true]", done.stdout)
        self.assertIn("[1400: true]", done.stdout)


if __name__ == "__main__":
    unittest.main()
