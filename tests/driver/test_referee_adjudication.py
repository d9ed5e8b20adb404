"""The referee ends games that both players think decided."""

import os
import shlex
import sys
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "..", "tools"))
from match.adjudication import Adjudication, read_adjudication  # noqa: E402
from match.engines import parse_engine  # noqa: E402
from match.judge import Options, play_game  # noqa: E402
from match.openings import RandomOpenings  # noqa: E402

WON = Adjudication(resign_moves=3, resign_score=500)
DRAWN = Adjudication(draw_moves=2, draw_score=10, draw_from=6)


def play(first, second, adjudication, number=0):
    """A game of engines that play by the alphabet and see what they are told to see; six half moves are the opening."""
    engines = [parse_engine(("uci:" if words.startswith("uci ") else "")
                            + shlex.join((sys.executable, "-BSE", os.path.join(HERE, "fake_engine.py"),
                                          words.removeprefix("uci "))))
               for words in (first, second)]
    return play_game(engines, Options(seconds=600.0, max_plies=20, adjudication=adjudication), RandomOpenings().of_pair(0),
                     number)


class Outcomes(unittest.TestCase):
    def test_a_side_wins_when_both_have_seen_it_for_so_many_moves(self):
        for white, black, result in (([500] * 3, [-500] * 3, "1-0"), ([-500] * 3, [500] * 3, "0-1"),
                                     ([0, 500, 900, 500], [30, -500, -501, -30000], "1-0")):
            self.assertEqual(WON.outcome((white, black), 20), (result, "both scores, won"))

    def test_nobody_wins_of_whom_one_player_is_not_sure(self):
        for white, black in (([499, 500, 500], [-500] * 3), ([500] * 3, [-500, -499, -500]), ([500] * 3, [500] * 3),
                             ([500] * 2, [-500] * 2), ([500] * 3, [-500] * 2), ([500] * 3, [None, -500, -500]),
                             ([500, 500, 0], [-500] * 3)):
            self.assertIsNone(WON.outcome((white, black), 20), (white, black))

    def test_a_game_is_drawn_from_a_move_on_when_nobody_sees_more(self):
        even = [10, -10], [0, 0]
        self.assertEqual(DRAWN.outcome(even, 12), ("1/2-1/2", "both scores, drawn"))
        self.assertIsNone(DRAWN.outcome(even, 11))
        for white, black in (([11, 0], [0, 0]), ([0, 0], [0, -11]), ([0], [0, 0]), ([None, 0], [0, 0])):
            self.assertIsNone(DRAWN.outcome((white, black), 12), (white, black))

    def test_without_numbers_no_game_is_ended(self):
        for scores in ([0] * 50, [0] * 50), ([900] * 50, [-900] * 50), ([], []):
            self.assertIsNone(read_adjudication("", "").outcome(scores, 100))

    def test_numbers_are_read_and_others_refused(self):
        self.assertEqual(read_adjudication("3,500", ""), WON)
        self.assertEqual(read_adjudication("", "6,2,10"), DRAWN)
        for won, drawn in (("3", ""), ("3,500,1", ""), ("0,500", ""), ("3,-1", ""), ("x,5", ""), ("", "2,10"),
                           ("", "0,2,10"), ("", "6,2,-1")):
            with self.assertRaises(ValueError, msg=(won, drawn)):
                read_adjudication(won, drawn)


class Games(unittest.TestCase):
    def ends(self, first, second, adjudication, number=0):
        record = play(first, second, adjudication, number)
        self.assertIsNone(record.fault)
        return record.result, record.reason, record.termination, len(record.moves)

    def test_scores_of_both_protocols_end_a_game(self):
        won = "both scores, won", "adjudication"
        self.assertEqual(self.ends("sees 501", "sees -600", WON), ("1-0", *won, 12))
        self.assertEqual(self.ends("sees 501", "sees -600", WON, number=1), ("0-1", *won, 12))
        self.assertEqual(self.ends("uci sees -501", "uci sees mate 4", WON), ("0-1", *won, 12))
        self.assertEqual(self.ends("uci sees mate 0", "sees 501", WON), ("0-1", *won, 12))
        self.assertEqual(self.ends("sees 3", "uci sees -4", DRAWN), ("1/2-1/2", "both scores, drawn", "adjudication", 12))

    def test_a_game_goes_on_that_one_player_sees_otherwise_or_says_nothing_of(self):
        for second in ("sees -499", "sees 600", "weak 0"):
            self.assertNotIn("both scores", self.ends("sees 600", second, WON)[1], second)


if __name__ == "__main__":
    unittest.main()
