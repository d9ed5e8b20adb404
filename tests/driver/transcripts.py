"""Sessions held in text files, byte for byte.

A console session looks as a terminal shows it: what is typed stands behind the prompt. In a protocol session the
lines that are sent begin with "> ", and the lines that each leads to follow it. Both begin with the banner and the
mode line. The time column of thinking lines, which differs from run to run, reads "*".

    transcripts.py FILE...   holds the sessions again and prints them, for reading; the files stay as they are.
"""

import os
import re
import struct
import sys

from driven_clock import standing_clock
from engine import BANNER, PROMPT, SMALL_INI, Engine

FOLDER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "data", "transcripts")
PROMPT_LINE = PROMPT.lstrip("\n")
SENT = "> "

# No budget ends a search on a busy machine: every depth of a session is searched to its end.
CLOCK = standing_clock()

# Depth, score, time, nodes, each of its own width.
NUMBERS = re.compile(r"(?m)^([ \d]{2} [ \d-]{6} )[ \d]{6}( [ \d]{10} )")

START_KEY = 0x463B96181691FC9C
AFTER_E2E4_KEY = 0x823C9B50FD114196


def book_move(text):
    squares = [ord(text[i]) - ord("a") + 8 * (int(text[i + 1]) - 1) for i in (0, 2)]
    return squares[1] | squares[0] << 6


def book(*records):
    """A book file of (key, move, weight), which must be in order of their keys."""
    return b"".join(struct.pack(">QHHI", key, book_move(move), weight, 0) for key, move, weight in records)


SMALL_BOOK = book((START_KEY, "e2e4", 3), (START_KEY, "d2d4", 1), (AFTER_E2E4_KEY, "e7e5", 1))
WRONG_BOOK = book((START_KEY, "e2e5", 1))

INI_WITH_BOOK = SMALL_INI.replace("Book=0", "Book=1\nRandBook=0\nBookFile=small.bin")

# What a session needs beside the usual small configuration, by the name of its file.
SETTINGS = {
    "console_book": {"ini": INI_WITH_BOOK, "files": {"small.bin": SMALL_BOOK}},
    "console_wrong_book": {"ini": INI_WITH_BOOK, "files": {"small.bin": WRONG_BOOK}},
    "protocol_book": {"ini": INI_WITH_BOOK, "files": {"small.bin": SMALL_BOOK}},
    "protocol_wrong_book": {"ini": INI_WITH_BOOK, "files": {"small.bin": WRONG_BOOK}},
    "console_table_test": {"files": {
        "TestSyzygy/TestCase_09.txt": b"4k3/8/8/8/8/8/8/4K3 w - - 0 1,0,0\nnonsense,0,0\n"}},
}


def names(mode):
    """The sessions of a mode, "console" or "protocol"."""
    return sorted(name[:-4] for name in os.listdir(FOLDER) if name.startswith(mode) and name.endswith(".txt"))


def read(name):
    with open(os.path.join(FOLDER, name + ".txt"), encoding="latin-1", newline="") as file:
        return file.read()


def mask(text):
    return NUMBERS.sub(r"\1     *\2", text)


def console_session(name, text):
    """Types the lines of `text` at the prompt and returns the session as it went."""
    typed = [line[len(PROMPT_LINE):] for line in text.split("\n") if line.startswith(PROMPT_LINE)]
    with Engine(arguments=CLOCK, **SETTINGS.get(name, {})) as engine:
        session = BANNER + "console\n" + engine.console() + PROMPT
        for line in typed[:-1]:
            session += line + "\n" + engine.ask(line) + PROMPT
        # The last line ends the session, by itself or by the end of the input.
        engine.send(typed[-1])
        status = engine.quit()
        session += typed[-1] + "\n" + engine.rest()
        return mask(session) + "status %d\n" % status


def protocol_session(name, text):
    """Sends the marked lines of `text` and returns the session as it went."""
    sent = [line[len(SENT):] for line in text.split("\n") if line.startswith(SENT)]
    with Engine(arguments=CLOCK, **SETTINGS.get(name, {})) as engine:
        session = BANNER + "\n" + SENT + sent[0] + "\n" + engine.xboard()
        for line in sent[1:-1]:
            engine.send(line)
            lines = engine.sync()
            session += SENT + line + "\n" + "".join(line + "\n" for line in lines)
        engine.send(sent[-1])
        status = engine.quit()
        session += SENT + sent[-1] + "\n" + engine.rest()
        return mask(session) + "status %d\n" % status


def hold(name):
    text = read(name)
    return console_session(name, text) if name.startswith("console") else protocol_session(name, text)


if __name__ == "__main__":
    for path in sys.argv[1:]:
        sys.stdout.write(hold(os.path.basename(path)[:-4]))
