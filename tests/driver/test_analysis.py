"""The protocol's analysis: a search beside a monitor, ended by a line."""

import re
import unittest

from chess_rules import Position
from driven_clock import PRELOADED, DrivenClock
from engine import Engine, SMALL_INI

THINKING = r" ?\d+ +-?\d+ +\d+ +\d+ .*"
MOVE = r"move (\S+) ?"
BUDGET = r"#DEBUG moves: \d+ move speed: \d+  allocated time: -?\d+"
KNIGHT_ENDING = "8/5k2/8/4n3/8/2N5/2K5/8 w - - 0 1"


def others(lines):
    """The lines that are neither thinking nor a mate found."""
    return [line for line in lines if not re.fullmatch(THINKING, line) and not line.startswith("Mate")]


class AnalysisTest(unittest.TestCase):
    def analysing(self, *setup, depths=2):
        """A session that analyses, after some lines of the protocol, and has finished some depths."""
        engine = Engine()
        self.addCleanup(engine.close)
        engine.xboard()
        engine.tell("new", "sd 64", *setup)
        engine.send("analyze")
        for _ in range(depths):
            engine.expect(THINKING)
        return engine

    def assert_waits(self, engine, *lines):
        """The engine reads commands again, after having printed `lines`, and plays no move."""
        self.assertEqual(others(engine.sync()), list(lines))

    def answers_legally(self, engine, position):
        engine.expect(BUDGET)
        self.assertEqual(others(engine.skipped), [])
        move = engine.expect(MOVE)[1]
        self.assertIn(move, position.legal_moves())

    def test_exit_ends_it_and_the_engine_plays_neither_side(self):
        engine = self.analysing("level 0 2 0")
        engine.send("exit")
        self.assert_waits(engine)
        self.assertEqual(engine.tell("usermove e2e4", "usermove e7e5"), [])

    def test_easy_ends_it_and_switches_pondering_off(self):
        engine = self.analysing("level 0 2 0", "hard")
        engine.send("easy")
        self.assert_waits(engine)
        self.assertEqual(engine.tell("usermove e2e4"), [])

    def test_new_ends_it_and_sets_up_a_game_in_which_the_engine_plays_black(self):
        engine = self.analysing("setboard " + KNIGHT_ENDING, "level 0 2 0")
        engine.send("new")
        self.assert_waits(engine)
        engine.send("usermove e2e4")
        self.answers_legally(engine, Position().legal_moves()["e2e4"])

    def test_a_move_is_played_and_answered(self):
        engine = self.analysing("level 0 2 0")
        engine.send("usermove e2e4")
        self.answers_legally(engine, Position().legal_moves()["e2e4"])
        self.assert_waits(engine)

    def test_a_move_of_black_is_answered_for_white(self):
        engine = self.analysing("force", "usermove e2e4", "level 0 2 0")
        engine.send("usermove e7e5")
        self.answers_legally(engine, Position().legal_moves()["e2e4"].legal_moves()["e7e5"])

    def test_an_illegal_move_is_reported_once(self):
        for text in ("e2e5", "", "xyz"):
            with self.subTest(text):
                engine = self.analysing()
                engine.send("usermove " + text)
                self.assert_waits(engine, "Illegal move: " + text)
                self.assert_waits(engine)

    def test_a_move_that_ends_the_game_gives_the_result_once(self):
        engine = self.analysing("setboard 6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1")
        engine.send("usermove a1a8")
        self.assert_waits(engine, "1-0 {White mates}")
        self.assert_waits(engine)

    def test_go_plays_for_the_side_to_move(self):
        engine = self.analysing("level 0 2 0")
        engine.send("go")
        self.answers_legally(engine, Position())
        self.assert_waits(engine)

    def test_the_move_that_an_earlier_search_expected_is_played_like_any_other(self):
        engine = Engine(ini=SMALL_INI.replace("[ENGINE]\n", "[ENGINE]\nsafePly=64\n"))
        self.addCleanup(engine.close)
        engine.xboard()
        engine.tell("new", "level 0 5 0", "hard")
        for move in ("e2e4", "a2a3"):
            engine.send("time 7000", "otim 7000", "usermove " + move)
            engine.expect(MOVE)
        expected = engine.expect(r"Hint: (\S+) ?")[1]
        engine.expect(THINKING)
        engine.send("exit")
        engine.expect(MOVE)
        # Back to the position before the expected move.
        engine.tell("easy", "undo", "undo")
        engine.send("analyze")
        engine.expect(THINKING)
        engine.send("usermove " + expected)
        engine.expect(BUDGET)
        self.assertEqual(int(engine.expect(THINKING)[0][:2]), 1)
        engine.expect(MOVE)
        self.assert_waits(engine)

    def test_what_it_has_found_is_not_taken_for_a_reply(self):
        engine = Engine(ini=SMALL_INI.replace("[ENGINE]\n", "[ENGINE]\nsafePly=2\n"))
        self.addCleanup(engine.close)
        engine.xboard()
        engine.tell("new", "easy", "level 0 5 30")
        position = Position()
        for move in ("e2e4", "a2a3"):
            position = position.legal_moves()[move]
            engine.send("time 2500", "otim 2500", "usermove " + move)
            position = position.legal_moves()[engine.expect(MOVE)[1]]
        thinking = [line for line in engine.skipped if re.fullmatch(THINKING, line)]
        expected = thinking[-1].split()[5]
        engine.tell("hard")
        engine.send("analyze")
        for _ in range(3):
            engine.expect(THINKING)
        engine.send("usermove " + expected)
        engine.expect(BUDGET)
        self.assertIn(engine.expect(MOVE)[1], position.legal_moves()[expected].legal_moves())

    def test_the_clocks_are_answered_and_all_else_is_swallowed(self):
        engine = self.analysing()
        engine.send("force", "undo", "setboard 8/8/8/8/8/8/8/8 w - - 0 1", "nopost", "hard", "ping 5", "quit",
                    ".", "", "?", "bk", "hint", "exit ", "new game", "analyze", "time 5000", "otim 4000")
        engine.expect("#DEBUG time:5000")
        self.assertEqual(others(engine.skipped), [])
        engine.expect("#DEBUG otim:4000")
        self.assertEqual(others(engine.skipped), [])
        engine.send("exit")
        self.assert_waits(engine)

    @unittest.skipUnless(PRELOADED, "needs the library with the clock")
    def test_it_ends_by_itself_with_the_last_budget_and_the_next_line_is_lost(self):
        clock = DrivenClock()
        self.addCleanup(clock.close)
        engine = Engine(arguments=clock.arguments)
        self.addCleanup(engine.close)
        engine.xboard()
        engine.tell("new", "st 3600")
        engine.send("analyze")
        engine.expect(THINKING)
        engine.wait_for_end_of_search(lambda: clock.advance(3600.01))
        engine.send("ping 78")
        self.assert_waits(engine)
        engine.send("analyze")
        engine.expect(THINKING)
        engine.send("exit")
        self.assert_waits(engine)

    def test_at_the_highest_depth_it_waits_for_a_line_that_ends_it(self):
        engine = Engine()
        self.addCleanup(engine.close)
        engine.xboard()
        engine.tell("new", "sd 3")
        engine.send("analyze")
        for _ in range(3):
            engine.expect(THINKING)
        engine.wait_for_end_of_search()
        engine.send("ping 79", "time 3000")
        engine.expect("#DEBUG time:3000")
        self.assertEqual(engine.skipped, [])
        engine.send("exit")
        self.assert_waits(engine)

    def test_without_post_it_is_silent(self):
        engine = Engine()
        self.addCleanup(engine.close)
        engine.xboard()
        engine.tell("new", "nopost", "sd 4")
        engine.send("analyze", "time 4000")
        engine.expect("#DEBUG time:4000")
        self.assertEqual(engine.skipped, [])
        engine.send("exit")
        self.assert_waits(engine)

    def test_a_position_without_moves_or_kings_is_borne(self):
        for fen in ("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", "8/8/8/8/8/8/8/8 w - - 0 1", "QQQQQQQQ/8/8/8/8/8/8/8 w - - 0 1"):
            with self.subTest(fen):
                engine = self.analysing("setboard " + fen, "sd 4", depths=0)
                engine.send("time 4000", "exit")
                engine.expect("#DEBUG time:4000")
                self.assert_waits(engine)

    def test_the_end_of_input_ends_the_process_without_a_move(self):
        for rest in ("", "quit", "time 5"):
            with self.subTest(rest):
                engine = self.analysing()
                engine.send_raw(rest)
                self.assertEqual(engine.quit(), 0)
                self.assertNotIn("\nmove", engine.text)

    def test_it_can_be_entered_and_left_many_times(self):
        engine = self.analysing()
        for _ in range(30):
            engine.send("exit", "analyze")
            engine.expect(THINKING)
        engine.send("exit")
        self.assert_waits(engine)


if __name__ == "__main__":
    unittest.main()
