"""The sessions that README.md and docs/*.md show are what the programs print.

A block that is fenced as "console" is a session, typed to a program in a folder as ./run makes it: the supplied settings
and book, no tables. A block that begins with "$ ./run" or "$ ./run gui" starts the program, another goes on with the one
before it. What is typed stands behind the mode line, behind the prompt, or behind "> ".

All else is compared line for line. A line "...", with the empty lines behind it, stands for any lines or none up to the next
that is shown. The time of thinking lines is left out, and so are blanks at the ends of lines. Nothing ends a search but its
depth: the clock stands.
"""

import re
import subprocess
import tempfile
import unittest
from pathlib import Path

import gui
from driven_clock import standing_clock
from engine import PROMPT, Engine, EngineError
from test_documents import BOOK_TOOL, TOP
from transcripts import mask

CLOCK = standing_clock()
MODE_LINE = "enter 'console' for console mode..."
PROMPT_LINE = PROMPT.lstrip("\n")
SENT = "> "
ANY_LINES = "..."
SECONDS = 10

BLOCK = re.compile(r"^```console\n(.*?)^```\n", re.MULTILINE | re.DOTALL)


def sessions_in(text):
    """The sessions of a document, each a list of lines that begins with the command."""
    found = []
    for block in BLOCK.findall(text):
        lines = block.splitlines()
        if lines[0].startswith("$ "):
            found.append(lines)
        else:
            found[-1] += lines
    return found


def comparable(line):
    return re.sub(r"\b(time|nps) \d+", r"\1 *", mask(line + " ")).rstrip()


class Replay:
    """One session. `skips` is whether printed lines may stand before the next that is shown."""

    def __init__(self, engine):
        self.engine = engine
        self.skips = False

    def show(self, line):
        """Types the line, or waits for it."""
        if line == ANY_LINES:
            self.skips = True
        elif line == "" and self.skips:
            pass
        elif line.startswith(MODE_LINE):
            self.type_behind(MODE_LINE, line)
        elif line.startswith(PROMPT_LINE.rstrip()):
            self.type_behind(PROMPT_LINE, line)
        elif line.startswith(SENT):
            self.engine.send(line[len(SENT):])
        else:
            self.wait_for(line)

    def type_behind(self, prompt, line):
        before = self.engine.expect_text(prompt, SECONDS)
        self.must_be_skipped(before, line)
        self.engine.send(line[len(prompt):])

    def wait_for(self, line):
        printed = self.engine.expect_text("\n", SECONDS)
        while comparable(printed) != comparable(line):
            self.must_be_skipped(printed, line)
            printed = self.engine.expect_text("\n", SECONDS)
        self.skips = False

    def must_be_skipped(self, printed, line):
        if printed and not self.skips:
            raise AssertionError(f"shown is {line!r}, printed was {printed!r}")
        self.skips = self.skips and not line.startswith((PROMPT_LINE, MODE_LINE))

    def end(self):
        """The program is at rest, or has been told to quit: nothing is left that is not shown."""
        status = self.engine.quit()
        left = self.engine.rest().removesuffix(PROMPT_LINE).strip("\n")
        if left and not self.skips:
            raise AssertionError(f"printed behind the last line that is shown: {left!r}")
        if status != 0:
            raise AssertionError(f"it ended with status {status}")


class ShownSessions(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        with tempfile.TemporaryDirectory() as folder:
            book = Path(folder, "book.bin")
            subprocess.run([BOOK_TOOL, "build", "-o", book, TOP / "data/book/openings.txt"], check=True,
                           stdout=subprocess.DEVNULL)
            cls.folder = {"ini": (TOP / "data/tarvelmon.ini").read_text(encoding="utf-8"),
                          "files": {"book.bin": book.read_bytes()}}

    def replay(self, lines):
        programs = {"$ ./run": Engine, "$ ./run gui": gui.Gui}
        with programs[lines[0]](arguments=CLOCK, **self.folder) as engine:
            session = Replay(engine)
            for line in lines[1:]:
                session.show(line)
            session.end()

    def test_every_session_is_what_is_printed(self):
        count = 0
        for path in [TOP / "README.md", *sorted((TOP / "docs").glob("*.md"))]:
            for lines in sessions_in(path.read_text(encoding="utf-8")):
                count += 1
                with self.subTest(document=path.name, session=count):
                    self.replay(lines)
        self.assertGreaterEqual(count, 4)

    def test_a_session_that_is_not_what_is_printed_is_found(self):
        banner = ["$ ./run", "tarvelmon chess engine by Ubaldo Merikossa", "version 0.12", "", MODE_LINE + "console"]
        self.replay([*banner, ANY_LINES, "tarvelmon> sd 3", "Depth set with value 3 PLY"])
        budget = "#DEBUG moves: 0 move speed: 50  allocated time: 6000"
        for name, lines in {
                "a line that is not printed": ["tarvelmon> sd 3", "Depth set with value 4 PLY"],
                "a line that is not shown": ["tarvelmon> sd 3", "", "tarvelmon> quit"],
                "a line at the end that is not shown": ["tarvelmon> sd 3"],
                "a number of nodes": ["tarvelmon> mate8", "", "tarvelmon> sd 2", ANY_LINES, "tarvelmon> go", budget,
                                      " 1    525      0         37 a2a8"],
        }.items():
            with self.subTest(name):
                with self.assertRaises((AssertionError, EngineError)):
                    self.replay([*banner, ANY_LINES, *lines])


if __name__ == "__main__":
    unittest.main()
