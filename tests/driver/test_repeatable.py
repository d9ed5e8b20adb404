"""The same commands give the same lines, in one process and in another, but for the time."""

import re
import unittest

from engine import SMALL_INI, Engine

COMMANDS = ["new", "sd 8", "setboard r1bqkbnr/pppp1ppp/2n5/4p3/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq - 2 3", "go",
            "usermove a7a6", "go", "new", "sd 7", "usermove d2d4", "usermove c2c4", "usermove b1c3", "force",
            "setboard 8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", "sd 9", "go"]
TIME_FIELD = re.compile(r"^( ?\d+ +-?\d+) +\d+( +\d+ )")


def without_time(lines):
    """Thinking lines without their hundredths of a second."""
    return [TIME_FIELD.sub(r"\1 -\2", line) for line in lines]


class Repeatable(unittest.TestCase):
    def test_in_one_process_and_in_another(self):
        rounds = []
        for _ in range(2):
            with Engine(ini=SMALL_INI) as engine:
                engine.xboard()
                rounds += [without_time(engine.tell(*COMMANDS)) for _ in range(2)]
        self.assertGreater(sum(line.startswith("move ") for line in rounds[0]), 4)
        for other in rounds[1:]:
            self.assertEqual(rounds[0], other)


if __name__ == "__main__":
    unittest.main()
