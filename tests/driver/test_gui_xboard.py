"""The companion speaks the xboard protocol, versions 1 and 2, as its document says: games, analysis, pondering, takebacks,
clocks, claims, and odd input."""

import os
import random
import re
import time
import unittest

from chess_rules import Game
from driven_clock import PRELOADED, DrivenClock
from engine import PATIENCE
from gui import Gui

SLOW = bool(os.environ.get("TARVELMON_SANITIZE"))
QUICK_PAIRS = 60 if SLOW else 300

MIDDLE_GAME = "r1bqkb1r/pppp1ppp/2n2n2/4p3/2B1P3/5N2/PPPP1PPP/RNBQK2R w KQkq - 4 4"
MOVE = r"move (\S+)"
# A line of thinking, whatever its depth: a search beside the input may be at any when a line is read.
THINKING = r" *\d+ +-?\d+ +\d+ +\d+ (.*)"
ENDLESS = ("level 0 60 0", "time 360000", "otim 360000")


class Conversation(unittest.TestCase):
    VERSION = 2

    def setUp(self):
        self.gui = Gui()
        self.addCleanup(self.gui.close)
        self.greeting = self.gui.xboard_protocol(self.VERSION)
        self.pings = 0

    def tell(self, *lines):
        """Sends lines and returns what they led to. Not while the engine thinks about its move."""
        self.pings += 1
        self.gui.send(*lines, "ping %d" % self.pings)
        self.gui.expect("pong %d" % self.pings)
        return [line for line in self.gui.skipped if not line.startswith("#")]

    def move(self, game):
        """Waits for the engine's move, which must be legal, and plays it in `game`."""
        text = self.gui.expect(MOVE).group(1)
        self.assertTrue(game.play(text), text)
        return text

    def assertClean(self):
        self.gui.send("quit")
        self.assertEqual(self.gui.wait_for_end(), 0, self.gui.errors)
        self.assertEqual(self.gui.errors, "")

    def assertNoError(self):
        self.assertNotRegex(self.gui.text, r"(?m)^(Error|Illegal|tellusererror)")


class Features(Conversation):
    def features(self):
        return dict(re.findall(r'(\w+)=(?:"[^"]*"|(\S+))', " ".join(self.greeting)))

    def test_the_features_are_those_of_the_design(self):
        wanted = {"ping": "1", "setboard": "1", "usermove": "1", "playother": "1", "analyze": "1", "memory": "1",
                  "time": "1", "name": "1", "colors": "0", "sigint": "0", "reuse": "1", "debug": "1", "nps": "0",
                  "draw": "1"}
        self.assertEqual({**self.features(), **wanted}, self.features())
        self.assertEqual(self.greeting[0], "feature done=0")
        self.assertIn('egt="syzygy"', " ".join(self.greeting))

    def test_every_setting_a_person_may_want_is_an_option(self):
        text = "\n".join(self.greeting)
        for name in ("OwnBook -check", "BookFile -file", "RandBook -check", "SyzygyPath -path", "SyzygyProbeLimit -spin",
                     "SafePly -spin", "SuddenDeath -spin", "MoreTime -spin", "LessTime -spin", "FastGame -spin",
                     "FastOpening -spin"):
            self.assertIn('feature option="' + name, text)

    def test_nothing_that_interfaces_send_by_habit_is_an_error(self):
        lines = ["accepted ping", "rejected reuse", "rejected option nonsense", "random", "computer", "name Somebody",
                 "rating 1500 1600", "ics -", "ics freechess.org", "variant normal", "ponder off", "hint", "draw", "post", "nopost",
                 "hard", "easy", "?", ".", "memory 16", "egtpath syzygy /nowhere", "egtpath nalimov /nowhere",
                 "option SafePly=12", "option RandBook=0", "option ClearHash", "level 40 5 0", "level 0 0:20 3", "st 5",
                 "sd 4", "time 1000", "otim 1000", "result * {no reason}", "new", "force", "undo", "remove", "exit", ""]
        for line in lines:
            said = [said for said in self.tell(line) if not said.startswith("stat01:")]
            self.assertEqual(said, [], line)
        self.assertNoError()

    def test_what_is_not_offered_is_an_unknown_command(self):
        for line in ("nps 1000", "cores 4", "pause", "resume", "exclude all", "setscore 5 5", "nonsense", "e2e4e5"):
            self.assertEqual(self.tell(line), ["Error (unknown command): " + line])
        self.assertEqual(self.tell("variant atomic"), ["Error (unsupported variant): atomic"])
        self.assertEqual(self.tell("option Nothing=1")[0][:6], "Error ")

    def test_comments_end_when_the_interface_rejects_them(self):
        self.tell("rejected debug", "memory 8")
        self.gui.send("new", "sd 2", "usermove e2e4")
        self.gui.expect(MOVE)
        self.assertEqual([line for line in self.gui.skipped if line.startswith("#")], [])


class VersionOne(Conversation):
    VERSION = 1

    def test_bare_moves_are_moves_without_any_protover(self):
        game = Game()
        self.gui.send("new", "random", "level 40 5 0", "post", "sd 3")
        for reply in ("e2e4", "d2d4", "g1f3"):
            if not game.play(reply):
                break
            self.gui.send("time 30000", "otim 30000", reply)
            self.move(game)
        self.assertEqual([line for line in self.gui.text.split("\n") if line.startswith("#")], [])
        self.assertNoError()

    def test_castling_is_two_steps_of_the_king(self):
        self.gui.send("new", "force", *"e2e4 e7e5 g1f3 g8f6 f1c4 f8c5 e1g1 e8g8".split())
        self.assertEqual(self.tell(), [])
        self.gui.send("sd 2", "go")
        game = Game()
        for move in "e2e4 e7e5 g1f3 g8f6 f1c4 f8c5 e1g1 e8g8".split():
            game.play(move)
        self.move(game)

    def test_the_old_ways_to_choose_a_side(self):
        for lines in (("white", "go"), ("white", "time 3000", "otim 3000", "go"),
                      ("black", "time 3000", "otim 3000", "white", "go")):
            self.gui.send("new", "sd 2", "force", *lines)
            self.move(Game())

    def test_edit_sets_up_a_position(self):
        self.tell("new", "force", "edit", "#", "Pa2", "Ke1", "Rh1", "c", "Ke8", "Pa7", ".", "sd 2")
        game = Game("4k3/p7/8/8/8/8/P7/4K2R w K - 0 1")
        self.assertEqual(self.tell("e1g1"), [])
        game.play("e1g1")
        self.gui.send("go")
        self.move(game)

    def test_edit_keeps_the_side_to_move(self):
        self.tell("new", "force", "a2a3", "edit", "#", "Ke1", "Qd1", "c", "Ke8", ".", "sd 2", "go")
        self.assertIn(self.gui.text.rsplit("move ", 1)[1].split()[0],
                      Game("4k3/8/8/8/8/8/8/3QK3 b - - 0 1").position.legal_moves())

    def test_an_edited_position_without_kings_takes_no_move(self):
        said = self.tell("new", "force", "edit", "#", "Pa2", "xa2", "zz", "Q", ".")
        self.assertEqual(len(said), 1)
        self.assertTrue(said[0].startswith("tellusererror Illegal position"))
        self.assertEqual(self.tell("a2a3"), ["Illegal move (the position is illegal): a2a3"])
        self.assertEqual(self.tell("go"), [])
        self.assertEqual(self.tell("new", "force", "a2a3"), [])


class Games(Conversation):
    def test_a_game_is_played_to_its_end(self):
        generator = random.Random(3)
        game = Game()
        self.gui.send("new", "sd 3", "nopost", "level 0 5 0")
        while game.position.has_legal_move() and len(game.moves) < 300:
            move = generator.choice(sorted(game.position.legal_moves()))
            game.play(move)
            self.gui.send("usermove " + move)
            if not game.position.has_legal_move() or game.is_fifty_moves() or game.occurrences() >= 3:
                break
            self.move(game)
        self.gui.expect(r"(1-0|0-1|1/2-1/2) \{.*\}")
        self.assertNoError()

    def test_moves_are_refused_with_the_reason(self):
        self.tell("new", "force")
        for move, reason in (("e2e5", "the pawn does not move so"), ("e7e5", "it is White's move"),
                             ("e4e5", "no man on e4"), ("a1a2", "own man on a2"), ("@@@@", "a pass is not allowed"),
                             ("hello", "not a move")):
            self.assertEqual(self.tell("usermove " + move), ["Illegal move (%s): %s" % (reason, move)])
        self.assertEqual(self.tell("usermove e2e4"), [])

    def test_undo_and_remove_take_back(self):
        self.tell("new", "force", "usermove e2e4", "usermove e7e5", "undo")
        self.assertEqual(self.tell("usermove e7e6"), [])
        self.assertEqual(self.tell("remove", "usermove d2d4"), [])
        self.tell(*["undo"] * 20)
        self.assertEqual(self.tell("usermove e2e4"), [])

    def test_remove_goes_on_with_the_same_colour(self):
        game = Game()
        self.gui.send("new", "sd 2", "usermove e2e4")
        game.play("e2e4")
        self.move(game)
        self.assertEqual(self.tell("remove"), [])
        game = Game()
        game.play("d2d4")
        self.gui.send("usermove d2d4")
        self.move(game)

    def test_move_now_moves_at_once(self):
        # Without the word it would think for longer than any wait for a line.
        self.gui.send("new", "level 0 600 0", "time 36000000", "otim 36000000", "st 3600", "post", "usermove e2e4")
        self.gui.expect(r" *5 .*")
        self.gui.send("?")
        game = Game()
        game.play("e2e4")
        self.move(game)

    def test_a_ping_while_thinking_is_answered_after_the_move(self):
        self.gui.send("new", "st 60", "post", "usermove e2e4")
        self.gui.expect(r" *4 .*")
        self.gui.send("ping 99", "?")
        self.gui.expect("pong 99")
        self.assertTrue(any(line.startswith("move ") for line in self.gui.skipped))

    def test_force_ends_the_thinking_without_a_move(self):
        self.gui.send("new", "st 60", "usermove e2e4")
        said = self.tell("force", "usermove e7e5", "usermove g1f3")
        self.assertEqual([line for line in said if line.startswith("move")], [])
        game = Game()
        for move in "e2e4 e7e5 g1f3".split():
            game.play(move)
        self.gui.send("sd 2", "go")
        self.move(game)

    def test_new_clears_depth_and_time_for_a_move(self):
        self.tell("new", "sd 2", "st 1", "level 0 5 0")
        self.gui.send("new", "post", "usermove e2e4")
        self.gui.expect(r" *5 .*")
        self.gui.send("?")
        self.gui.expect(MOVE)

    def test_playother_waits_for_the_other_side(self):
        self.tell("new", "force", "usermove e2e4", "sd 2", "playother")
        self.gui.send("usermove e7e5")
        game = Game()
        game.play("e2e4")
        game.play("e7e5")
        self.move(game)

    def test_easy_and_settings_are_taken_while_thinking(self):
        self.gui.send("new", "st 60", "hard", "usermove e2e4", "easy", "time 500", "otim 500", "nopost", "memory 8",
                      "option SafePly=5", "level 0 1 0", "hint", "bk", ".", "draw", "usermove d2d4", "?")
        game = Game()
        game.play("e2e4")
        self.move(game)
        self.assertIn("Illegal move (it is not your turn): d2d4", self.gui.text)

    def test_levels_with_seconds_and_fractions(self):
        for level, budget in (("level 0 0:20 3", 316), ("level 40 5 0", 240), ("level 0 2:30 0.5", 170),
                              ("level 0 5 12", 1440)):
            self.gui.send("new", "force", level, "go")
            match = self.gui.expect(r"# moves: 0 move speed: \d+ allocated time: (\d+)")
            self.assertEqual(int(match.group(1)), budget, level)
            self.gui.send("?")
            self.gui.expect(MOVE)

    @unittest.skipUnless(PRELOADED, "needs the library with the clock")
    def test_time_for_a_move_may_be_a_fraction_of_a_second(self):
        clock = DrivenClock()
        self.addCleanup(clock.close)
        with Gui(arguments=clock.arguments) as gui:
            gui.xboard_protocol()
            gui.send("new", "st 0.1", "ping 1")
            gui.expect("pong 1")
            clock.stop()
            gui.send("usermove e2e4")
            clock.wait_for_looks(5, lambda: "\nmove" not in gui.rest())
            self.assertNotRegex(gui.rest(), "(?m)^move")
            clock.advance(0.11)
            gui.expect(MOVE)

    def test_the_book_answers_and_is_told(self):
        book = b"\x46\x3b\x96\x18\x16\x91\xfc\x9c\x03\x1c\x00\x01\x00\x00\x00\x00"
        with Gui(files={"book.bin": book}) as gui:
            gui.xboard_protocol()
            gui.send("option OwnBook=1", "new", "post", "bk", "go")
            gui.expect(r" move=e2e4.*")
            gui.expect("")
            gui.expect(r"0 0 0 0 \(e2e4 from the book\)")
            gui.expect("move e2e4")


class Claims(Conversation):
    CASES = (
        # After the opponent's move: moves before, his move, the claim.
        ("7k/5K2/8/8/8/8/8/6Q1 w - - 0 1", "g1g6", "1/2-1/2 {Stalemate}"),
        ("rnb1kbnr/pppp1ppp/4p3/8/6Pq/5P2/PPPPP2P/RNBQKBNR b KQkq - 1 3", "h4e1", None),
        ("6k1/5ppp/8/8/8/8/8/K3R3 w - - 0 1", "e1e8", "1-0 {White mates}"),
        ("4k3/8/8/8/8/8/3p4/4K3 w - - 0 1", "e1d2", "1/2-1/2 {Draw by insufficient material}"),
        ("4k2r/8/8/8/8/8/8/4K2R w - - 99 80", "h1h2", "1/2-1/2 {Draw by 50 move rule}"),
    )

    def test_the_end_of_a_game_is_claimed_and_nothing_is_played(self):
        for fen, move, claim in self.CASES:
            if claim is None:
                continue
            self.tell("new", "force", "setboard " + fen, "sd 2", "playother")
            self.assertEqual(self.tell("usermove " + move), [claim])

    def test_nothing_is_claimed_in_force_mode_or_analysis(self):
        self.assertEqual(self.tell("new", "force", "setboard 7k/5K2/8/8/8/8/8/6Q1 w - - 0 1", "usermove g1g6"), [])
        self.assertEqual(self.tell("force", "nopost", "setboard 7k/5K2/8/8/8/8/8/6Q1 w - - 0 1", "analyze",
                                   "usermove g1g6", "exit"), [])

    def test_the_engines_own_mate_is_claimed(self):
        self.tell("new", "force", "setboard 6k1/5ppp/8/8/8/8/8/K3R3 w - - 0 1", "sd 3")
        self.gui.send("go")
        self.gui.expect("move e1e8")
        self.gui.expect(r"1-0 \{White mates\}")

    def test_a_repetition_is_claimed_at_the_third_time_by_the_laws(self):
        self.tell("new", "force", "setboard 4k2r/8/8/8/8/8/8/4K2R w Kk - 0 1", *[
            "usermove " + move for move in "h1h2 h8h7 h2h1 h7h8 h1h2 h8h7 h2h1 h7h8".split()], "sd 1", "playother")
        # The first position had rights that are gone; three times the same comes one move later.
        self.gui.send("force", "usermove h1h2", "playother")
        self.assertEqual(self.tell("usermove h8h7"), ["1/2-1/2 {Draw by repetition}"])

    def test_go_moves_even_where_a_draw_could_be_claimed(self):
        self.tell("new", "force", "setboard 4k2r/8/8/8/8/8/8/4K2R w - - 120 90", "sd 2")
        self.gui.send("go")
        self.gui.expect(MOVE)


class Analysis(Conversation):
    def position_of(self, game):
        """Waits for a thinking line whose first move is legal in `game` and in no other position of the test."""
        while True:
            line = self.gui.expect(THINKING)
            moves = line.group(1).split()
            if moves and moves[0] in game.position.legal_moves():
                return

    def test_analysis_goes_on_through_moves_takebacks_positions_and_new(self):
        game = Game()
        self.gui.send("new", "force", "post", "analyze")
        self.position_of(game)
        for move in "e2e4 e7e5 g1f3 b8c6 f1c4 g8f6 e1g1 f8e7 d2d3 d7d6".split():
            game.play(move)
            self.gui.send("usermove " + move)
            self.tell()
            self.position_of(game)
        moves = game.moves
        for _ in range(3):
            moves = moves[:-1]
            self.gui.send("undo")
            self.tell()
            game = Game()
            for move in moves:
                game.play(move)
            self.position_of(game)
        self.gui.send("setboard " + MIDDLE_GAME)
        self.tell()
        self.position_of(Game(MIDDLE_GAME))
        self.gui.send("new")
        self.tell()
        self.position_of(Game())
        self.gui.send(".")
        self.gui.expect(r"stat01: \d+ \d+ \d+ \d+ \d+( \S+)?")
        self.gui.send("exit")
        self.tell()
        self.assertNoError()
        self.assertNotIn("move ", self.gui.text.replace("usermove", ""))

    def test_status_counts_up(self):
        self.gui.send("new", "force", "nopost", "setboard " + MIDDLE_GAME, "analyze")
        seen = []
        deadline = time.monotonic() + PATIENCE
        while len(seen) < 5 or (seen[-1] == seen[0] and time.monotonic() < deadline):
            time.sleep(0.1)
            self.gui.send(".")
            match = self.gui.expect(r"stat01: (\d+) (\d+) (\d+) (\d+) (\d+)( \S+)?")
            seen.append(int(match.group(2)))
            self.assertLessEqual(int(match.group(4)), int(match.group(5)))
        self.assertEqual(seen, sorted(seen))
        self.assertGreater(seen[-1], seen[0])

    def test_an_illegal_move_leaves_the_analysis_alone(self):
        self.gui.send("new", "force", "post", "analyze", "usermove e2e5")
        self.gui.expect(r"Illegal move \(the pawn does not move so\): e2e5")
        self.gui.expect(THINKING)

    def test_a_finished_game_is_analysed_without_a_word(self):
        self.gui.send("new", "force", "post", "setboard 7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", "analyze", ".")
        self.gui.expect("stat01: .*")
        self.assertEqual(self.tell("setboard " + MIDDLE_GAME)[:1], self.gui.skipped[:1])
        self.gui.expect(THINKING)

    def test_the_book_is_listed_in_between(self):
        self.gui.send("new", "force", "post", "analyze", "bk")
        self.gui.expect("")
        self.gui.expect(THINKING)


class Pondering(Conversation):
    INI = "[ENGINE]\nHashSize=16\nPawnHashSize=16\nsafePly=6\n[BOOK]\nBook=0\n[TABLEBASE]\nSyzygy=0\n"

    def begin(self, safe_ply):
        """A game up to the point where the engine ponders; returns the game and the expected move."""
        game = Game()
        self.gui.send("option SafePly=%d" % safe_ply, "new", *ENDLESS, "hard", "post", "st 0.1")
        for move in ("e2e4", "d2d4"):
            if move not in game.position.legal_moves():
                move = sorted(game.position.legal_moves())[0]
            game.play(move)
            self.gui.send("usermove " + move)
            self.move(game)
        hint = self.gui.expect(r"Hint: (\S+)").group(1)
        self.assertIn(hint, game.position.legal_moves())
        return game, hint

    def test_pings_are_answered_meanwhile(self):
        self.begin(64)
        self.tell()
        self.tell("time 1000", "otim 1000", "hint", ".")
        self.assertClean()

    def test_a_hit_deep_enough_is_answered_at_once(self):
        game, hint = self.begin(2)
        self.gui.expect(r" *6 .*")
        self.gui.send("st 100", "usermove " + hint)
        game.play(hint)
        self.move(game)

    def test_a_shallow_hit_has_its_own_time(self):
        game, hint = self.begin(64)
        self.gui.send("usermove " + hint)
        game.play(hint)
        self.move(game)

    def test_a_hit_goes_through_the_clocks(self):
        game, hint = self.begin(64)
        self.gui.send("level 0 1 0", "time 1000", "otim 1000", "usermove " + hint)
        self.gui.expect(r"# moves: 2 move speed: \d+ allocated time: \d+")
        game.play(hint)
        self.move(game)

    def test_a_miss_is_thought_about_anew(self):
        game, hint = self.begin(2)
        move = next(move for move in sorted(game.position.legal_moves()) if move != hint)
        self.gui.send("usermove " + move)
        game.play(move)
        self.move(game)

    def test_an_illegal_move_leaves_pondering_alone(self):
        game, hint = self.begin(64)
        self.gui.send("usermove e1e8")
        self.gui.expect(r"Illegal move \(.*\): e1e8")
        self.gui.send("usermove " + hint)
        game.play(hint)
        self.move(game)

    def test_everything_that_ends_a_game_ends_pondering(self):
        for lines in (("force",), ("new", "force"), ("undo",), ("remove",), ("result 1-0 {x}",), ("easy",), ("exit",),
                      ("setboard " + MIDDLE_GAME,), ("analyze", "exit"), ("playother",), ("bk", "force")):
            self.begin(64)
            said = self.tell(*lines)
            self.assertEqual([line for line in said if line.startswith("move")], [], lines)
            self.tell("force")
        self.assertClean()

    def test_a_hit_that_is_broken_off_stays_in_the_game(self):
        game, hint = self.begin(64)
        self.gui.send("st 100", "usermove " + hint, "force")
        game.play(hint)
        self.tell()
        self.gui.send("sd 2", "go")
        self.move(game)

    def test_a_game_with_pondering_on_every_move(self):
        game, hint = self.begin(4)
        generator = random.Random(5)
        for ply in range(12):
            legal = sorted(game.position.legal_moves())
            move = hint if ply % 3 and hint in legal else generator.choice(legal)
            time.sleep(generator.random() * 0.1)
            game.play(move)
            self.gui.send("time 20000", "otim 20000", "usermove " + move)
            if not game.position.has_legal_move():
                return
            self.move(game)
            if not game.position.has_legal_move():
                return
            hint = ""
            self.tell()
            for line in self.gui.skipped:
                if line.startswith("Hint: "):
                    hint = line[6:]
        self.assertNoError()
        self.assertClean()


class Hostile(Conversation):
    def test_end_of_input_and_quit_in_each_state(self):
        states = {
            "start": [],
            "new": ["new"],
            "thinking": ["new", "st 100", "usermove e2e4"],
            "analysis": ["new", "force", "analyze"],
            "edit": ["new", "force", "edit", "#"],
            "illegal position": ["setboard 8/8/8/8/8/8/8/8 w - - 0 1", "go"],
        }
        for name, lines in states.items():
            for how in ("quit", "end"):
                with self.subTest(state=name, how=how), Gui() as gui:
                    gui.send("xboard", "protover 2", *lines)
                    if how == "quit":
                        gui.send("quit")
                    else:
                        gui.end_input()
                    self.assertEqual(gui.wait_for_end(), 0, gui.errors)
                    self.assertEqual(gui.errors, "")

    def test_odd_lines(self):
        generator = random.Random(11)
        words = ("level", "st", "sd", "time", "otim", "memory", "option", "egtpath", "setboard", "ping", "result", "name",
                 "usermove", "variant", "edit", ".", "#", "c", "x", "undo", "analyze", "exit", "go", "force", "?", "hint",
                 "bk", "hard", "easy", "post", "nopost", "new", "white", "black", "playother", "remove", "e2e4", "a7a8q")
        values = ("", "0", "-1", "99999999999999999999", "1e400", "nan", "inf", "0x10", "abc", "5:99", ":", "1:-5", "=", "A=",
                  "=B", "SafePly", "SafePly=", "SafePly=x", "e2e4", "8/8/8/8/8/8/8/8 w", "\xff\xfe\x01", "%s%n", "k" * 300)
        for _ in range(400 if SLOW else 1500):
            self.gui.send((generator.choice(words) + " " + generator.choice(values)).strip())
        self.gui.send(".", "exit", "quit")
        self.assertEqual(self.gui.wait_for_end(), 0, self.gui.errors)
        self.assertEqual(self.gui.errors, "")
        self.assertNotIn("bestmove", self.gui.text)

    def test_lines_of_a_megabyte(self):
        for line in ("x" * (1 << 20), "usermove " + "e2e4" * (1 << 18), "setboard " + "/" * (1 << 20),
                     "option BookFile=" + "b" * (1 << 20), "level " + "4" * (1 << 20)):
            for said in self.tell("new", "force", line):
                self.assertLess(len(said), 400)
        self.tell("option BookFile=book.bin")
        self.assertClean()

    def test_quick_pairs_of_go_and_move_now(self):
        generator = random.Random(14)
        self.tell("new", "force", "nopost", "level 0 60 0")
        for _ in range(QUICK_PAIRS):
            self.gui.send("force", "setboard " + MIDDLE_GAME, "go")
            time.sleep(generator.random() * 0.008)
            self.gui.send("?")
            self.move(Game(MIDDLE_GAME))
        self.assertClean()


if __name__ == "__main__":
    unittest.main()
