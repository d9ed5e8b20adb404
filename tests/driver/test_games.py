"""Whole games of the built engine over pipes, judged by the referee: no illegal move, no error line, no loss on time,
every result announced rightly, status 0 at the end."""

import os
import shlex
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools"))
from match.engines import parse_engine  # noqa: E402
from match.judge import Options  # noqa: E402
from match.openings import RandomOpenings  # noqa: E402
from match.report import Tally  # noqa: E402
from match.schedule import Match, plan  # noqa: E402
from driven_clock import PRELOADED, PROCESSOR_TIME  # noqa: E402

ENGINE = os.environ["TARVELMON"]
SANITIZED = bool(os.environ.get("TARVELMON_SANITIZE"))
INI = "[ENGINE]\nHashSize=16\nPawnHashSize=4\nsafePly=4\n[BOOK]\nBook=0\n[TABLEBASE]\nSyzygy=0\n"


@unittest.skipUnless(PRELOADED, "needs the library with the clock")
class Games(unittest.TestCase):
    def play(self, opponent, games, **options):
        """Plays and returns the tally; fails with the referee's report on any fault."""
        # The increment is a little more than a move takes without any time: 1024 nodes after the first hundredth.
        clocks = dict(seconds=4.0, increment=0.04, max_plies=80) if SANITIZED else \
            dict(seconds=0.6, increment=0.015, max_plies=120)
        # Where other work takes the processor away, clocks on the wall say nothing of the engine.
        settings = {**clocks, "ini": INI, "processor_time": True, **options}
        engine = shlex.join((*PROCESSOR_TIME, ENGINE)) if settings["processor_time"] else ENGINE
        tally = Tally()
        match = Match(parse_engine(engine), [parse_engine(engine if opponent == ENGINE else opponent)],
                      Options(**settings), RandomOpenings())
        match.play(plan(1, games), 1, tally.add)
        self.assertEqual(tally.our_faults + tally.other_faults, [], tally.report())
        self.assertEqual(sum(tally.results.values()), games)
        return tally

    def test_games_against_itself(self):
        self.play(ENGINE, 1 if SANITIZED else 4)

    def test_games_against_random_legal_moves_are_won(self):
        games = 2 if SANITIZED else 6
        tally = self.play("random", games, max_plies=300, depth=4)
        self.assertEqual(tally.results["tarvelmon 0.12"], games, tally.report())

    def test_interrupts_ahead_of_each_command_change_nothing(self):
        self.play("random", 1, sigint=True, depth=3)

    def test_pondering_games_against_itself(self):
        # The clocks stay above the minute below which pondering is switched off; the depth limit keeps the game short.
        self.play(ENGINE, 1 if SANITIZED else 2, seconds=1200.0, increment=3.0, ponder="both", depth=5, max_plies=80,
                  processor_time=False)


if __name__ == "__main__":
    unittest.main()
