"""Thinking on the opponent's time: what each line means for the running search, and what follows its end.

An increment of half a minute keeps pondering on at any clock, and clocks of 25 seconds, to which it cannot be added,
keep the budgets at a fifth of a second. The two values of safePly decide what a hit
means: with 2 every ponder search that has finished two depths is deep enough, with 64 none is.
"""

import os
import re
import resource
import signal
import unittest

from chess_rules import Position
from driven_clock import PRELOADED, DrivenClock, standing_clock
from engine import SMALL_INI, Engine

THINKING = r" ?\d+ +-?\d+ +\d+ +\d+ .*"
MOVE = r"move (\S+) ?"
# A ponder search that becomes the real one finds no new move to expect: the former one is tried again.
NO_EXPECTED_MOVE = "#DEBUG Errore sulla ponderMove dopo Thinking"
BUDGET = r"#DEBUG moves: \d+ move speed: \d+  allocated time: -?\d+"

# For games in which the depth alone ends a search.
STANDING = standing_clock()

# Ways for White to go on after e2e4 and any answer.
SECOND_MOVES = ("g1f3", "b1c3", "d2d3", "f1e2", "e1e2")


def ini(safe_ply):
    return SMALL_INI.replace("[ENGINE]\n", "[ENGINE]\nsafePly=%d\n" % safe_ply)


def is_thinking(line):
    return re.fullmatch(THINKING, line) is not None


def is_pv(line):
    return is_thinking(line) or line.startswith("Mate")


def depth_of(line):
    return int(line[:2])


class Game:
    """A game against the engine, whose moves are checked against the rules. After `start` it ponders."""

    def __init__(self, engine, fen=None, setup=(), clock=2500):
        self.engine = engine
        self.clock = clock
        self.position = Position(fen) if fen else Position()
        engine.xboard()
        engine.tell("new", "level 0 5 30", "hard", *setup)
        if fen:
            engine.tell("setboard " + fen)

    def user_plays(self, move):
        """Sends the clocks and a move; `position` is then the one for the engine."""
        self.position = self.position.legal_moves()[move]
        self.engine.send("time %d" % self.clock, "otim %d" % self.clock, "usermove " + move)

    def take_move(self):
        """Waits for the engine's move, which must be legal."""
        move = self.engine.expect(MOVE)[1]
        legal = self.position.legal_moves()
        assert move in legal, "%s is not legal in %s" % (move, self.position.fen())
        self.position = legal[move]
        return move

    def take_hint(self, lines=1):
        """Waits until the engine ponders and has finished some depths; `expected` is the move it waits for."""
        self.expected = self.engine.expect(r"Hint: (\S+) ?")[1]
        assert self.expected in self.position.legal_moves()
        self.depths = [depth_of(self.engine.expect(THINKING)[0]) for _ in range(lines)]

    def other_move(self):
        """A legal move that is not the expected one."""
        return next(m for m in sorted(self.position.legal_moves()) if m[:4] != self.expected[:4])

    def after_expected(self):
        return self.position.legal_moves()[self.expected]

    def start(self, lines=1):
        """Two moves each, then pondering."""
        self.user_plays("e2e4")
        self.take_move()
        self.user_plays(next(m for m in SECOND_MOVES if m in self.position.legal_moves()))
        self.take_move()
        self.take_hint(lines)
        return self


class PonderTest(unittest.TestCase):
    def start_engine(self, safe_ply=64, **arguments):
        engine = Engine(ini=ini(safe_ply), **arguments)
        self.addCleanup(engine.close)
        return engine

    def start_clock(self, **arguments):
        clock = DrivenClock(**arguments)
        self.addCleanup(clock.close)
        return clock

    def pondering_game(self, safe_ply=64, lines=1, **arguments):
        return Game(self.start_engine(safe_ply), **arguments).start(lines)

    def game_out_of_time(self, safe_ply=64):
        """A game whose ponder search has ended by the time of "st", an hour."""
        clock = self.start_clock()
        game = Game(self.start_engine(safe_ply, arguments=clock.arguments), setup=("st 3600",)).start()
        game.engine.wait_for_end_of_search(lambda: clock.advance(3600.01))
        return game

    def assert_no_pondering(self, engine):
        """The engine reads commands again, and has not begun to ponder."""
        for line in engine.sync():
            self.assertNotRegex(line, "Hint|move")


class WhatALineMeans(PonderTest):
    def test_no_pondering_after_the_first_move_of_a_game(self):
        game = Game(self.start_engine())
        game.user_plays("e2e4")
        game.take_move()
        self.assertEqual(game.engine.sync(), [])

    def test_no_pondering_without_hard(self):
        game = Game(self.start_engine(), setup=("easy",))
        for move in ("e2e4", "d2d3"):
            game.user_plays(move)
            game.take_move()
        self.assertEqual(game.engine.sync(), [])

    def test_another_move_is_answered_by_a_new_search(self):
        for safe_ply in (2, 64):
            with self.subTest(safe_ply=safe_ply):
                game = self.pondering_game(safe_ply, lines=4)
                game.user_plays(game.other_move())
                game.engine.expect(BUDGET)
                self.assertEqual(depth_of(game.engine.expect(THINKING)[0]), 1)
                self.assertEqual(game.engine.skipped, [])
                game.take_move()
                game.take_hint()

    def test_the_expected_move_after_a_deep_search_is_answered_at_once(self):
        game = self.pondering_game(2, lines=4)
        game.user_plays(game.expected)
        game.take_move()
        for line in game.engine.skipped:
            self.assertRegex(line, "%s|#DEBUG (time|otim):2500" % THINKING)
            if is_thinking(line):
                self.assertGreaterEqual(depth_of(line), game.depths[-1])
        self.assert_no_pondering(game.engine)

    def test_after_an_answer_from_pondering_the_next_move_is_thought_about_and_pondered(self):
        game = self.pondering_game(2, lines=4)
        game.user_plays(game.expected)
        game.take_move()
        game.user_plays(sorted(game.position.legal_moves())[0])
        game.engine.expect(BUDGET)
        game.take_move()
        game.take_hint()

    def test_the_expected_move_after_a_shallow_search_lets_it_go_on_as_the_real_one(self):
        game = self.pondering_game(64)
        for _ in range(2):
            game.user_plays(game.expected)
            game.engine.expect(BUDGET)
            before = game.engine.skipped
            game.take_move()
            after = game.engine.skipped
            depths = game.depths + [depth_of(line) for line in before + after if is_thinking(line)]
            self.assertEqual(depths, sorted(depths), "the search began anew")
            self.assertEqual([line for line in after if not is_pv(line)], [])
            self.assertEqual(game.engine.sync(), [NO_EXPECTED_MOVE])
            game.user_plays(sorted(game.position.legal_moves())[0])
            game.take_move()
            game.take_hint()

    @unittest.skipUnless(PRELOADED, "needs the library with the clock")
    def test_a_hit_after_long_pondering_has_its_whole_budget(self):
        for _ in range(3):
            clock = self.start_clock(look_takes=3000)
            game = Game(self.start_engine(arguments=clock.arguments)).start()
            clock.stop()
            clock.advance(0.5)  # longer than the budget
            game.position = game.after_expected()
            game.engine.send("time 2500", "otim 2500", "usermove " + game.expected)
            budget = int(game.engine.expect(BUDGET)[0].split()[-1]) / 100
            for seconds in (0.0, budget):
                clock.advance(seconds)
                clock.wait_for_looks(3, lambda: "\nmove" not in game.engine.rest())
                self.assertNotRegex(game.engine.rest(), "(?m)^move")
            clock.advance(0.01)
            game.take_move()

    def test_exit_plays_what_the_search_found_with_the_expected_move_on_the_board(self):
        game = self.pondering_game()
        game.position = game.after_expected()
        game.engine.send("exit")
        game.take_move()
        self.assertEqual([line for line in game.engine.skipped if not is_pv(line)], [])
        # The engine plays neither side now.
        self.assertEqual(game.engine.sync(), [NO_EXPECTED_MOVE])
        self.assertEqual(game.engine.tell("usermove " + sorted(game.position.legal_moves())[0]), [])

    def test_easy_does_the_same_and_ends_pondering(self):
        game = self.pondering_game()
        game.position = game.after_expected()
        game.engine.send("easy")
        game.take_move()
        self.assertEqual(game.engine.sync(), [])
        game.user_plays(sorted(game.position.legal_moves())[0])
        game.take_move()
        self.assertEqual(game.engine.sync(), [])

    def test_an_old_ponder_result_is_not_played_when_pondering_is_switched_on_again(self):
        game = self.pondering_game(2, lines=3)
        game.position = game.after_expected()
        game.engine.send("easy")
        game.take_move()
        game.user_plays(game.other_move())
        game.take_move()
        thinking = [line for line in game.engine.skipped if is_thinking(line)]
        expected = thinking[-1].split()[5]
        self.assertIn(expected, game.position.legal_moves())
        game.engine.tell("hard")
        game.user_plays(expected)
        game.take_move()
        self.assertRegex("\n".join(game.engine.skipped), BUDGET)

    def test_easy_with_text_behind_it_counts_too(self):
        game = self.pondering_game()
        game.position = game.after_expected()
        game.engine.send("easygoing")
        game.take_move()
        self.assertEqual(game.engine.sync(), [])

    def test_a_move_of_the_former_game_counts_by_what_stands_on_its_squares(self):
        # e5d3 is played in the new game's position, where nothing stands on e5: key and score follow the squares.
        engine = self.start_engine(10)
        engine.xboard()
        engine.tell("new", "hard", "sd 2", "level 0 5 0")
        engine.send("usermove e2e4")
        engine.expect(MOVE)
        engine.send("usermove d2d4")
        engine.expect("Hint: b1d2 ")
        engine.expect(r" 2 .*")
        engine.send("new")
        engine.expect("move e5d3 ")
        engine.send("usermove e2e4")
        engine.expect("Illegal move: e2e4")
        self.assertRegex(engine.expect(r" 1 .*")[0], r"^ 1     20 +\d+         25 g8f6  $")
        self.assertRegex(engine.expect(r" 2 .*")[0], r"^ 2    -10 +\d+        482 g8f6  b1c3  $")
        engine.expect("move g8f6 ")

    def test_new_plays_the_move_on_the_new_game_s_board_and_ends_pondering(self):
        game = self.pondering_game()
        game.engine.send("new")
        move = game.engine.expect(MOVE)[1]
        self.assertRegex(move, r"^[a-h][1-8][a-h][1-8][nbrq]?$")
        self.assertEqual(game.engine.sync(), [])
        # The next "new" is a new game like any other.
        game.engine.tell("new")
        game.position = Position()
        game.user_plays("d2d4")
        game.engine.expect(r"#DEBUG moves: 0 .*")
        game.take_move()
        self.assertEqual(game.engine.sync(), [])

    def test_go_takes_the_expected_move_back_and_thinks_for_the_other_side(self):
        game = self.pondering_game()
        game.engine.send("go")
        game.engine.expect(BUDGET)
        self.assertTrue(game.position.white)
        game.take_move()
        game.take_hint()

    def test_go_after_a_deep_search_plays_its_result_in_the_position_before(self):
        game = self.pondering_game(2, lines=4)
        game.engine.send("go")
        game.engine.expect(MOVE)
        self.assertEqual([line for line in game.engine.skipped if not is_pv(line)], [])
        self.assertEqual(game.engine.sync(), [])

    def test_time_and_otim_are_answered_and_stored(self):
        game = self.pondering_game()
        game.engine.send("time 7500", "otim 9000", "time", "otimx", "time x", "time 999999999999")
        for line in ("time:7500", "otim:9000", "time:7500", "otim:9000", "time:7500", "time:2147483647"):
            game.engine.expect("#DEBUG " + line)
            self.assertEqual([line for line in game.engine.skipped if not is_pv(line)], [])
        # 2600 against 9000 is behind: 20 + 5 + 105.
        game.engine.send("time 2600", "usermove " + game.other_move())
        game.engine.expect(r"#DEBUG moves: 2 move speed: 130  allocated time: 20")

    def test_a_hit_is_budgeted_with_the_clocks_sent_before_it(self):
        game = self.pondering_game()
        game.engine.send("time 3250", "otim 3250", "usermove " + game.expected)
        game.engine.expect(r"#DEBUG moves: 2 move speed: 125  allocated time: 26")

    def test_a_low_clock_of_the_opponent_does_not_end_pondering_here(self):
        game = self.pondering_game(2, lines=4)
        game.engine.send("otim 500", "usermove " + game.expected)
        game.engine.expect(MOVE)
        game.engine.send("usermove a2a3")
        game.engine.expect("Hint: .*")

    def test_without_the_increment_a_clock_below_a_minute_ends_pondering(self):
        for time, otim in ((6000, 9000), (6001, 6000)):
            with self.subTest(time=time, otim=otim):
                game = self.pondering_game(setup=("level 0 5 2",), clock=7000)
                game.engine.send("time %d" % time, "otim %d" % otim, "usermove " + game.other_move())
                game.engine.expect(MOVE)
                self.assertEqual(game.engine.sync(), [])

    def test_every_other_line_is_swallowed(self):
        game = self.pondering_game()
        swallowed = ("force", "undo", "setboard 8/8/8/8/8/8/8/8 w - - 0 1", "post", "nopost", "hard", "ping 5",
                     "quit", "sd 3", "st 0", "memory 3", "level 1 1 1", "name x", "protover 2", "analyze",
                     "white", "black", ".", "result 1-0 {x}", "?", "", "exit now", "new ", "go on", "e2e4",
                     "xboard", "\0usermove")
        game.engine.send(*swallowed, "time 7100")
        game.engine.expect("#DEBUG time:7100")
        self.assertEqual([line for line in game.engine.skipped if not is_pv(line)], [])
        # Nothing of it has changed the game.
        game.user_plays(game.other_move())
        game.take_move()
        game.take_hint()

    def test_a_move_that_differs_is_taken_even_if_it_is_illegal(self):
        for text in ("e2e9", "zzzz", "e2", "", "x" * 240):
            with self.subTest(text):
                game = self.pondering_game()
                game.engine.send("usermove " + text)
                game.engine.expect("Illegal move: " + text)
                # It is reported once, and the game goes on with a legal one.
                self.assertEqual(game.engine.sync(), [])
                game.user_plays(game.other_move())
                game.take_move()
                game.take_hint()

    def test_usermove_without_a_move_is_illegal(self):
        game = self.pondering_game()
        game.engine.send("usermove")
        game.engine.expect("Illegal move: ")
        self.assertEqual(game.engine.sync(), [])

    def test_interrupts_before_commands_do_no_harm(self):
        game = self.pondering_game()
        for _ in range(2):
            for _ in range(50):
                game.engine.process.send_signal(signal.SIGINT)
            game.user_plays(game.other_move())
            game.take_move()
            game.take_hint()

    def test_a_termination_ends_the_process(self):
        game = self.pondering_game()
        game.engine.process.terminate()
        self.assertEqual(game.engine.wait_for_end(), -signal.SIGTERM)


class PromotionLetters(PonderTest):
    # Black promotes with its second move; White cannot stop it and is not mated soon.
    FEN = "6k1/5ppp/8/8/3PP3/p5P1/5PKP/8 w - - 0 1"

    def expected_promotion(self, safe_ply):
        game = Game(self.start_engine(safe_ply, arguments=STANDING), fen=self.FEN, setup=("sd 4",))
        game.engine.send("time 2500", "otim 2500", "white")
        game.take_move()
        game.user_plays("a3a2")
        game.take_move()
        game.take_hint(4)
        self.assertEqual(game.expected, "a2a1q")
        return game

    def test_a_deep_hit_with_another_letter_is_thought_about_anew(self):
        game = self.expected_promotion(2)
        game.user_plays("a2a1n")
        game.engine.expect(BUDGET)
        self.assertEqual(depth_of(game.engine.expect(THINKING)[0]), 1)
        game.take_move()

    def test_a_shallow_hit_with_another_letter_leaves_the_expected_promotion(self):
        game = self.expected_promotion(64)
        game.engine.send("usermove a2a1n")
        game.engine.expect(BUDGET)
        game.position = game.position.legal_moves()["a2a1q"]
        game.take_move()
        self.assertEqual(game.engine.sync(), [NO_EXPECTED_MOVE])
        # A queen's move from a1 is legal on the engine's board.
        game.user_plays(next(m for m in ("a1a8", "a1b1", "a1a4") if m in game.position.legal_moves()))
        game.take_move()
        self.assertFalse([line for line in game.engine.skipped if line.startswith("Illegal")])


class SearchesThatEndByThemselves(PonderTest):
    @unittest.skipUnless(PRELOADED, "needs the library with the clock")
    def test_by_the_time_of_st_any_line_brings_the_move_and_is_lost(self):
        game = self.game_out_of_time()
        game.position = game.after_expected()
        game.engine.send("ping 77")
        game.take_move()
        self.assertEqual([line for line in game.engine.skipped if not is_pv(line)], [])
        self.assertEqual(game.engine.sync(), [NO_EXPECTED_MOVE])

    @unittest.skipUnless(PRELOADED, "needs the library with the clock")
    def test_by_the_time_of_st_the_expected_move_is_answered_at_once(self):
        for safe_ply, budgets in ((64, 1), (2, 0)):
            with self.subTest(safe_ply=safe_ply):
                game = self.game_out_of_time(safe_ply)
                game.engine.send("usermove " + game.expected)
                game.position = game.after_expected()
                game.take_move()
                others = [line for line in game.engine.skipped if not is_pv(line)]
                self.assertEqual(len([line for line in others if re.fullmatch(BUDGET, line)]), budgets)
                self.assertEqual(len(others), budgets)

    def test_at_the_highest_depth_the_monitor_reads_on(self):
        game = Game(self.start_engine(arguments=STANDING), setup=("sd 3",))
        game.start(3)
        game.engine.wait_for_end_of_search()
        game.engine.send("ping 5", "time 7200")
        game.engine.expect("#DEBUG time:7200")
        self.assertEqual([line for line in game.engine.skipped if not is_pv(line)], [])
        game.engine.send("usermove " + game.expected)
        game.position = game.after_expected()
        game.engine.expect(BUDGET)
        game.take_move()
        self.assertEqual(game.engine.skipped, [])
        self.assertEqual(game.engine.sync(), [NO_EXPECTED_MOVE])

    def test_a_single_legal_reply_is_found_at_once_and_waits_for_the_move(self):
        # Black checks for ever, from g4 and d1; the check on d1 has one answer.
        game = Game(self.start_engine(arguments=STANDING), fen="8/RQ4pk/8/8/8/8/5P1P/3q1K2 w - - 0 1", setup=("sd 4",))
        game.engine.send("time 2500", "otim 2500", "white")
        self.assertEqual(game.take_move(), "f1g2")
        self.assertRegex(game.engine.skipped[-1], r" 0      0 +\d+ +\d+ f1g2  ")
        game.user_plays("d1g4")
        game.take_move()
        game.take_hint()
        self.assertEqual((game.expected, game.depths), ("g4d1", [0]))
        game.engine.wait_for_end_of_search()
        game.engine.send("ping 6")
        game.user_plays("g4d1")
        game.engine.expect(BUDGET)
        game.take_move()
        self.assertEqual(game.engine.skipped, [])
        self.assertEqual(game.engine.sync(), [NO_EXPECTED_MOVE])

    def test_a_single_legal_move_of_an_ordinary_think_leaves_the_former_expected_move(self):
        game = Game(self.start_engine(arguments=STANDING), fen="8/RQ4pk/8/8/6q1/8/5PKP/8 w - - 0 1", setup=("sd 4",))
        game.engine.send("time 2500", "otim 2500", "white")
        game.take_move()
        game.user_plays("g4d1")
        game.take_move()
        self.assertEqual(game.engine.sync(), [NO_EXPECTED_MOVE])


class EndOfInput(PonderTest):
    def test_it_ends_the_process_without_a_move(self):
        for rest in ("", "quit", "usermove", "ping 4", "time 7000"):
            with self.subTest(rest):
                game = self.pondering_game()
                mark = game.engine.position
                game.engine.send_raw("usermov" if rest == "usermove" else rest)
                self.assertEqual(game.engine.quit(), 0)
                self.assertNotRegex(game.engine.text[mark:], r"(?m)^move|^Illegal|^pong|^Hint")

    def test_a_last_move_without_newline_is_answered_first(self):
        game = self.pondering_game(2, lines=4)
        game.engine.send_raw("usermove " + game.expected)
        game.position = game.after_expected()
        self.assertEqual(game.engine.quit(), 0)
        game.take_move()

    @unittest.skipUnless(PRELOADED, "needs the library with the clock")
    def test_after_the_search_has_ended_by_itself(self):
        game = self.game_out_of_time()
        self.assertEqual(game.engine.quit(), 0)
        self.assertNotRegex(game.engine.rest(), r"(?m)^move")


@unittest.skipIf(os.environ.get("TARVELMON_SANITIZE"), "sanitizers need all of the address space")
class FailingThreads(PonderTest):
    STACK = 16 << 20

    def address_space(self, engine):
        with open("/proc/%d/statm" % engine.process.pid) as file:
            return int(file.read().split()[0]) * resource.getpagesize()

    def limited(self, stacks):
        """A protocol session that has room for so many more threads."""
        engine = self.start_engine()
        game = Game(engine, setup=("sd 4",))
        game.user_plays("e2e4")
        game.take_move()
        limit = self.address_space(engine) + stacks * self.STACK + (8 << 20)
        resource.prlimit(engine.process.pid, resource.RLIMIT_AS, (limit, limit))
        game.user_plays("d2d3")
        game.take_move()
        return engine

    def test_each_thread_that_cannot_be_started_ends_the_process(self):
        for stacks, number in ((0, 1), (1, 2)):
            with self.subTest(thread=number):
                engine = self.limited(stacks)
                self.assertEqual(engine.wait_for_end(), 1)
                lines = [line for line in engine.rest().splitlines() if not is_pv(line)]
                self.assertRegex(lines[0], "Hint: .*")
                self.assertEqual(lines[1:], ["#DEBUG Errore nella creazione del thread %d" % number])


if __name__ == "__main__":
    unittest.main()
