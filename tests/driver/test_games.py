"""Whole games of the built engine over pipes, judged by the referee: no illegal move, no error line, no loss on time,
every result announced rightly, status 0 at the end."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools"))
from referee import Options, play_match  # noqa: E402

ENGINE = os.environ["TARVELMON"]
SANITIZED = bool(os.environ.get("TARVELMON_SANITIZE"))
INI = "[ENGINE]\nHashSize=16\nPawnHashSize=4\nsafePly=4\n[BOOK]\nBook=0\n[TABLEBASE]\nSyzygy=0\n"


class Games(unittest.TestCase):
    def play(self, opponent, games, **options):
        """Plays and returns the tally; fails with the referee's report on any fault."""
        # Other work may take the processor away for a second: only a clock far below zero is a fault here.
        settings = dict(seconds=4.0, increment=0.04, margin=10.0, ini=INI, max_plies=80 if SANITIZED else 300)
        settings.update(options)
        tally = play_match([ENGINE, opponent], Options(**settings), games)
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
        self.play(ENGINE, 1 if SANITIZED else 2, seconds=120.0, increment=3.0, ponder="both", depth=5, max_plies=80)


if __name__ == "__main__":
    unittest.main()
