"""The same commands give the same lines, in one process and in another, but for the time; also from a program of
another compiler, if TARVELMON_OTHER names one."""

import os
import re
import unittest

from engine import PROGRAM, SMALL_INI, Engine
from transcripts import CLOCK, mask

GOLDEN = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "data", "golden")
OTHER = os.environ.get("TARVELMON_OTHER")
PROCESSES = [PROGRAM, PROGRAM] + ([OTHER] if OTHER else [])

GAMES = ["new", "sd 8", "setboard r1bqkbnr/pppp1ppp/2n5/4p3/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq - 2 3", "go",
         "usermove a7a6", "go", "new", "sd 7", "usermove d2d4", "usermove c2c4", "usermove b1c3", "force",
         "setboard 8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", "sd 9", "go"]
# What the console tells of a position.
LOOKS = ["b", "score", "w", "icheck", "catt", "err", "hash", "killer", "param"]
# Boards that no game leads to; the first can only be looked at, for not even two plies end in time.
STRANGE = ["QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/qqqqqqqq/qqqqqqqq/qqqqqqqq/qqqqqqqq w - - 0 1",
           "8/8/8/8/8/8/8/8 w - - 0 1", "PPPPPPPP/8/8/8/8/8/8/pppppppp w KQkq e3 0 1",
           "KKKKKKKK/8/8/8/8/8/8/kkkkkkkk b KQkq - 99999999999 1", "4k3/8/8/8/8/8/8/4K3 w KQkq - 0 1",
           "8/8/8/4k3/4K3/8/8/8 b - - -1 0"]


def golden_fens(name, count):
    """Positions spread over a list."""
    with open(os.path.join(GOLDEN, name), encoding="ascii") as file:
        fens = [line[4:].rstrip("\n") for line in file if line.startswith("fen ")]
    return fens[::max(1, len(fens) // count)]


def searches():
    lines = ["post", "easy", "st 1000"]
    for fen in golden_fens("search-full.txt", 40):
        lines += ["new", "sd 7", "setboard " + fen, "go", "force"]
    for fen in STRANGE[1:]:
        lines += ["new", "sd 2", "setboard " + fen, "go", "force"]
    return lines


def looks():
    lines = []
    for fen in golden_fens("eval.txt", 200) + STRANGE:
        lines += ["setboard " + fen, *LOOKS]
    return lines


def answers(engine, lines):
    return mask("\n".join(engine.tell(*lines)) + "\n")


def in_protocol(engine, lines):
    engine.xboard()
    return answers(engine, lines)


def in_console(engine, lines):
    engine.console()
    return mask("".join(engine.ask(line) for line in lines))


class Repeatable(unittest.TestCase):
    maxDiff = None

    def started(self, program):
        engine = Engine(ini=SMALL_INI, program=program, arguments=CLOCK)
        self.addCleanup(engine.close)
        return engine

    def assert_all_equal(self, texts):
        for other in texts[1:]:
            self.assertMultiLineEqual(texts[0], other)

    def test_games_twice_in_a_process_and_in_others(self):
        rounds = []
        for program in PROCESSES:
            engine = self.started(program)
            engine.xboard()
            rounds += [answers(engine, GAMES) for _ in range(2)]
        self.assertGreater(len(re.findall("^move ", rounds[0], re.MULTILINE)), 4)
        self.assert_all_equal(rounds)

    def test_searches_of_many_positions(self):
        lines = searches()
        texts = [in_protocol(self.started(program), lines) for program in PROCESSES]
        self.assertGreater(len(re.findall("^move ", texts[0], re.MULTILINE)), 40)
        self.assert_all_equal(texts)

    def test_what_the_console_tells_of_many_positions(self):
        lines = looks()
        texts = [in_console(self.started(program), lines) for program in PROCESSES]
        self.assertGreater(len(texts[0]), 100000)
        self.assert_all_equal(texts)


if __name__ == "__main__":
    unittest.main()
