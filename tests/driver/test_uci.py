"""The companion speaks UCI: what the protocol asks, and hostile or odd input in every state. No crash, no silence, one
"bestmove" for each "go", never an illegal move."""

import os
import random
import re
import time
import unittest

from chess_rules import Game
from gui import Gui, findings

SLOW = bool(os.environ.get("TARVELMON_SANITIZE"))
SAMPLE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "data", "tarvelmon.ini")
QUICK_PAIRS = 150 if SLOW else 1000

MATED = "rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3"
STALEMATE = "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1"
ONE_MOVE = "6k1/8/8/2B5/8/8/6PP/r6K w - - 0 1"
MATE_IN_TWO = "7k/8/5K2/6R1/8/8/8/8 w - - 0 1"
MIDDLE_GAME = "r1bqkb1r/pppp1ppp/2n2n2/4p3/2B1P3/5N2/PPPP1PPP/RNBQK2R w KQkq - 4 4"


def long_game(plies, seed=7):
    """Moves of a random game of so many plies."""
    generator = random.Random(seed)
    while True:
        game = Game()
        while len(game.moves) < plies and game.position.has_legal_move():
            game.play(generator.choice(sorted(game.position.legal_moves())))
        if len(game.moves) == plies and game.position.has_legal_move():
            return game
        seed += 1
        generator = random.Random(seed)


class Conversation(unittest.TestCase):
    def setUp(self):
        self.gui = Gui()
        self.addCleanup(self.gui.close)
        self.greeting = self.gui.uci()

    def assertLegal(self, game, best, reply=None):
        self.assertIn(best, game.position.legal_moves())
        if reply:
            self.assertIn(reply, game.position.legal_moves()[best].legal_moves())

    def assertClean(self):
        """The process ends in order and has said nothing out of place."""
        self.gui.send("quit")
        self.assertEqual(self.gui.wait_for_end(), 0, self.gui.errors)
        self.assertEqual(self.gui.errors, "")


class Protocol(Conversation):
    def test_introduction_has_name_author_and_options(self):
        self.assertTrue(self.greeting[0].startswith("id name tarvelmon"))
        self.assertTrue(self.greeting[1].startswith("id author "))
        options = {re.match(r"option name (.+) type (\w+)", line).groups() for line in self.greeting[2:]}
        self.assertLessEqual({
            ("Hash", "spin"), ("PawnHash", "spin"), ("OwnBook", "check"), ("BookFile", "string"),
            ("RandBook", "check"), ("SyzygyPath", "string"), ("SyzygyProbeLimit", "spin"), ("Ponder", "check"),
            ("Move Overhead", "spin"), ("Clear Hash", "button")}, options)

    def test_defaults_are_those_of_the_ini_file(self):
        self.assertIn("option name Hash type spin default 16 min 1 max 65536", self.greeting)
        self.assertIn("option name OwnBook type check default false", self.greeting)

    def test_every_line_of_a_search_is_of_the_protocol(self):
        self.gui.send("position startpos")
        best, reply, lines = self.gui.go("depth 6")
        self.assertLegal(Game(), best, reply)
        self.assertEqual([fields["depth"] for fields in findings(lines)][-1], 6)
        for line in lines:
            self.assertTrue(line.startswith("info "), line)
        last = findings(lines)[-1]
        self.assertLessEqual({"depth", "score", "time", "nodes", "nps", "hashfull", "tbhits", "pv"}, set(last))
        self.assertEqual(last["pv"][0], best)
        self.assertEqual(last["pv"][1], reply)
        self.assertClean()

    def test_nodes_are_those_of_the_whole_search(self):
        self.gui.send("position fen " + MIDDLE_GAME)
        nodes = [fields["nodes"] for fields in findings(self.gui.go("depth 7")[2])]
        self.assertEqual(nodes, sorted(nodes))

    def test_failed_attempts_are_bounds(self):
        self.gui.send("position fen 8/6k1/3pP3/pP6/8/2K5/8/n7 w - - 2 42")
        bounds = [fields["bound"] for fields in findings(self.gui.go("depth 7")[2])]
        self.assertIn("lowerbound", bounds)

    def test_mates_are_counted_in_moves(self):
        self.gui.send("position fen " + MATE_IN_TWO)
        best, _, lines = self.gui.go("depth 6")
        self.assertEqual(best, "f6f7")
        self.assertEqual(findings(lines)[-1]["score"], ("mate", 2))
        self.gui.send("position fen 7k/5K2/8/6R1/8/8/8/8 b - - 1 1")
        self.assertEqual(findings(self.gui.go("depth 6")[2])[-1]["score"][0], "cp")  # the only move
        self.gui.send("position fen 6k1/8/5K2/6Q1/8/8/8/8 b - - 1 1")
        kind, moves = findings(self.gui.go("depth 6")[2])[-1]["score"]
        self.assertEqual(kind, "mate")
        self.assertIn(moves, (-1, -2))

    def test_no_legal_move_gives_none(self):
        for fen in (MATED, STALEMATE):
            for words in ("depth 3", "movetime 10", "wtime 1000 btime 1000", "nodes 100"):
                self.gui.send("position fen " + fen)
                self.assertEqual(self.gui.go(words)[0], "(none)", fen)
            self.gui.send("go infinite", "stop")
            self.assertEqual(self.gui.best_move()[0], "(none)")

    def test_a_single_legal_move_is_played_at_once(self):
        self.gui.send("position fen " + ONE_MOVE)
        legal = list(Game(ONE_MOVE).position.legal_moves())
        self.assertEqual(len(legal), 1)
        self.assertEqual(self.gui.go("wtime 60000 btime 60000")[0], legal[0])

    def test_search_moves_alone_are_searched(self):
        self.gui.send("position startpos")
        for moves in ("a2a3", "a2a3 h2h4", "e2e5 h2h4 a2a3 b1b1"):
            best, _, lines = self.gui.go("depth 5 searchmoves " + moves)
            self.assertIn(best, moves.split())
            self.assertEqual(findings(lines)[-1]["depth"], 5)
            self.assertTrue(all(fields["pv"][0] in moves for fields in findings(lines)))
        self.assertEqual(self.gui.go("searchmoves a2a3 h2h4 depth 2")[2][-1].split()[2], "2")

    def test_node_limits_end_the_search_soon(self):
        self.gui.send("position fen " + MIDDLE_GAME)
        for limit in (1, 1000, 50000):
            best, _, lines = self.gui.go("nodes %d" % limit)
            self.assertLegal(Game(MIDDLE_GAME), best)
            for fields in findings(lines)[:-1]:
                self.assertLess(fields["nodes"], limit + 20000)

    def test_mate_search_ends_with_the_mate(self):
        self.gui.send("position fen " + MATE_IN_TWO)
        best, _, lines = self.gui.go("mate 2")
        self.assertEqual(best, "f6f7")
        self.assertLess(findings(lines)[-1]["depth"], 8)

    def test_move_time_is_kept(self):
        self.gui.send("position fen " + MIDDLE_GAME)
        for wanted in (50, 300):
            begun = time.monotonic()
            self.gui.go("movetime %d" % wanted)
            used = (time.monotonic() - begun) * 1000
            self.assertGreaterEqual(used, wanted - 12)

    def test_clocks_go_through_the_engines_allocation(self):
        self.gui.send("debug on", "position startpos")
        self.gui.send("setoption name Move Overhead value 0", "go wtime 300000 btime 300000 movestogo 40")
        budget = self.gui.expect(r"info string moves: 0 move speed: 125 allocated time: (\d+)").group(1)
        self.assertEqual(budget, "240")
        self.gui.send("stop")
        self.gui.best_move()
        # The overhead goes off both clocks: equal clocks stay equal.
        self.gui.send("setoption name Move Overhead value 1000", "go wtime 300000 btime 300000")
        self.gui.expect(r"info string moves: 0 move speed: 125 allocated time: 239")
        self.gui.send("stop")
        self.gui.best_move()

    def test_repetitions_count_as_in_play(self):
        # The third occurrence is a draw in the search: a queen up, White must not go back.
        shuffle = "h1g1 g8h8 g1h1 h8g8 " * 2
        self.gui.send("position fen 6k1/8/8/8/8/8/8/2Q4K w - - 0 1 moves " + shuffle.strip())
        best, _, lines = self.gui.go("depth 4")
        self.assertGreater(findings(lines)[-1]["score"][1] if findings(lines)[-1]["score"][0] == "cp" else 1000, 500)
        self.assertNotEqual(best, "h1g1")

    def test_pondering_waits_for_the_hit(self):
        self.gui.send("position startpos moves e2e4", "go ponder wtime 2000 btime 2000")
        self.gui.expect(r"info depth 6 .*")
        self.gui.is_ready()
        self.assertNotIn("bestmove", self.gui.text)
        self.gui.send("ponderhit")
        self.assertLegal(self.played("e2e4"), *self.gui.best_move()[:2])

    def test_pondering_that_is_stopped_answers_too(self):
        self.gui.send("position startpos moves e2e4", "go ponder wtime 2000 btime 2000", "stop")
        self.assertLegal(self.played("e2e4"), *self.gui.best_move()[:2])

    def test_a_ponder_search_that_has_ended_keeps_its_answer(self):
        self.gui.send("position fen " + ONE_MOVE, "go ponder wtime 2000 btime 2000")
        self.gui.expect(r"info depth 0 .*")
        time.sleep(0.1)
        self.gui.is_ready()
        self.assertNotIn("bestmove", self.gui.text)
        self.gui.send("ponderhit")
        self.assertLegal(Game(ONE_MOVE), *self.gui.best_move()[:2])

    def test_an_endless_search_that_has_ended_waits_for_stop(self):
        self.gui.send("position fen " + ONE_MOVE, "go infinite")
        self.gui.expect(r"info depth 0 .*")
        time.sleep(0.1)
        self.gui.is_ready()
        self.assertNotIn("bestmove", self.gui.text)
        self.gui.send("stop")
        self.gui.best_move()

    def test_current_moves_are_told_in_long_searches(self):
        self.gui.send("position fen " + MIDDLE_GAME, "go infinite")
        match = self.gui.expect(r"info depth \d+ currmove (\S+) currmovenumber (\d+)")
        self.assertIn(match.group(1), Game(MIDDLE_GAME).position.legal_moves())
        self.gui.send("stop")
        self.gui.best_move()

    def played(self, moves):
        game = Game()
        for move in moves.split():
            self.assertTrue(game.play(move))
        return game


class Options(Conversation):
    def test_options_may_be_set_while_searching_and_hold_from_the_next(self):
        self.gui.send("position startpos", "go infinite", "setoption name Hash value 32",
                      "setoption name PawnHash value 2", "setoption name Clear Hash", "isready")
        self.gui.expect("readyok")
        self.gui.send("stop")
        self.gui.best_move()
        self.gui.send("debug on", "isready")
        self.gui.expect("info string Allocated 32 MB for the Hash Table")
        self.gui.expect("readyok")

    def test_values_are_held_to_their_range(self):
        for value in ("0", "-5", "99999999999999999999", "abc", "", "1e9"):
            self.gui.send("setoption name PawnHash value " + value)
        self.gui.send("setoption name Hash value -7", "setoption name PawnHash value 1")
        self.gui.is_ready()
        self.gui.send("position startpos")
        self.assertLegal(Game(), self.gui.go("depth 3")[0])

    def test_unknown_and_broken_options_are_told_or_ignored(self):
        self.gui.send("setoption", "setoption name", "setoption name Nothing value 3", "setoption value 3",
                      "setoption name Ponder value perhaps", "setoption name OwnBook", "setoption name Clear Hash value x")
        self.gui.is_ready()
        self.gui.send("position startpos")
        self.assertLegal(Game(), self.gui.go("depth 2")[0])

    def test_names_are_compared_without_case(self):
        self.gui.send("debug on", "setoption name hASH value 8", "isready")
        self.gui.expect("info string Allocated 8 MB for the Hash Table")

    def test_endgame_tables_are_asked_and_hits_are_told(self):
        folder = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "data", "syzygy")
        self.gui.send("setoption name SyzygyPath value " + os.path.abspath(folder),
                      "position fen 8/8/8/3k4/8/8/3PK2N/8 w - - 0 1")
        self.assertGreater(findings(self.gui.go("depth 7")[2])[-1]["tbhits"], 10)
        self.gui.send("setoption name SyzygyProbeLimit value 0")
        self.assertEqual(findings(self.gui.go("depth 7")[2])[-1]["tbhits"], 0)

    def test_the_book_answers_in_play_and_not_in_analysis(self):
        # One record: e2e4 in the start position.
        book = b"\x46\x3b\x96\x18\x16\x91\xfc\x9c\x03\x1c\x00\x01\x00\x00\x00\x00"
        gui = Gui(files={"own book.bin": book})
        self.addCleanup(gui.close)
        gui.uci()
        gui.send("setoption name OwnBook value true", "setoption name BookFile value own book.bin", "position startpos")
        self.assertEqual(gui.go("wtime 1000 btime 1000")[0::2], ("e2e4", ["info string move from book"]))
        self.assertEqual(gui.go("movetime 20")[0], "e2e4")
        for words in ("depth 1", "nodes 1", "depth 1 wtime 1000 btime 1000"):
            self.assertNotIn("info string move from book", gui.go(words)[2])
        gui.send("setoption name UCI_AnalyseMode value true")
        self.assertNotIn("info string move from book", gui.go("movetime 20")[2])
        gui.send("setoption name UCI_AnalyseMode value false", "setoption name BookFile value none.bin")
        self.assertNotIn("info string move from book", gui.go("movetime 20")[2])
        gui.send("quit")
        self.assertEqual(gui.wait_for_end(), 0)
        self.assertEqual(gui.errors, "")


class Hostile(Conversation):
    def test_a_position_of_400_moves(self):
        game = long_game(400)
        self.gui.send("position startpos moves " + " ".join(game.moves))
        best, reply, _ = self.gui.go("depth 3")
        self.assertLegal(game, best, reply)

    def test_an_illegal_move_in_the_middle_ends_the_chain(self):
        game = long_game(60)
        for broken in ("e1e8", "zzzz", "0000", "a9b7", "e7e8x", "-", "\xff\xfe"):
            moves = game.moves[:30] + [broken] + game.moves[31:]
            self.gui.send("position startpos moves " + " ".join(moves))
            best, reply, lines = self.gui.go("depth 2")
            upto = Game()
            for move in game.moves[:30]:
                upto.play(move)
            self.assertLegal(upto, best, reply)
            self.assertTrue(any(line.startswith("info string illegal move ") for line in lines), lines)

    def test_bad_positions_leave_the_former_one(self):
        self.gui.send("position startpos moves e2e4")
        for text in ("", "fen", "fen 8/8/8/8/8/8/8/8 w - - 0 1", "fen x", "fen " + "k" * 5000, "startposition",
                     "fen rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR z KQkq - 0 1", "moves e2e4", "fen moves e2e4"):
            self.gui.send("position " + text)
        game = Game()
        game.play("e2e4")
        self.assertLegal(game, *self.gui.go("depth 2")[:2])

    def test_go_twice_is_answered_twice(self):
        self.gui.send("position startpos", "go infinite", "go infinite", "go depth 2")
        for _ in range(2):
            self.assertLegal(Game(), self.gui.best_move()[0])
        self.assertLegal(Game(), self.gui.best_move()[0])
        self.assertEqual([line for line in self.gui.is_ready() if "bestmove" in line], [])

    def test_stop_and_ponderhit_without_a_search_say_nothing(self):
        self.gui.send("stop", "ponderhit", "stop", "ponderhit")
        self.assertEqual(self.gui.is_ready(), [])
        self.gui.send("position startpos", "go infinite", "ponderhit")
        self.assertNotIn("bestmove", " ".join(self.gui.is_ready()))
        self.gui.send("stop")
        self.gui.best_move()
        self.gui.send("stop", "ponderhit")
        self.assertEqual([line for line in self.gui.is_ready() if "bestmove" in line], [])

    def test_a_flood_of_isready_is_answered_to_the_last(self):
        count = 2000
        self.gui.send("position startpos", "go infinite")
        self.gui.send_raw("isready\n" * count)
        for _ in range(count):
            self.gui.expect("readyok")
        self.gui.send("stop")
        self.gui.best_move()

    def test_position_newgame_and_uci_while_searching(self):
        for line in ("position startpos moves d2d4", "ucinewgame", "uci", "debug on", "debug off", "register later"):
            self.gui.send("position startpos", "go infinite", line, "stop")
            self.assertLegal(Game(), self.gui.best_move()[0])
            self.assertEqual([said for said in self.gui.is_ready() if "bestmove" in said], [])

    def test_lines_of_a_megabyte(self):
        for line in ("x" * (1 << 20), "position startpos moves " + "e2e4 " * (1 << 18), "setoption name " + "n" * (1 << 20),
                     "position fen " + "/" * (1 << 20), "go depth 1 " + "searchmoves " * (1 << 17),
                     "setoption name BookFile value " + "b" * (1 << 20), " " * (1 << 20)):
            self.gui.send(line)
            self.gui.is_ready()
        self.gui.send("position startpos")
        self.assertLegal(Game(), self.settled_move())

    def settled_move(self):
        """The answer to a go of its own: those of odd lines before it are skipped."""
        self.gui.is_ready()
        return self.gui.go("depth 2")[0]

    def test_bytes_of_all_kinds(self):
        self.gui.process.stdin.write(bytes(range(256)) * 20 + b"\n\0\0\0\n\r\n\t\n")
        self.gui.send("")
        self.gui.is_ready()
        self.gui.send("position startpos\r")
        self.assertLegal(Game(), self.gui.go("depth 2\r")[0])

    def test_unknown_words_are_passed_over(self):
        self.gui.send("joho isready")
        self.gui.expect("readyok")
        self.gui.send("position startpos", "joho go depth 1 gnu 5 wood")
        self.assertLegal(Game(), self.gui.best_move()[0])

    def test_odd_limits_are_answered(self):
        self.gui.send("position startpos")
        for words in ("depth 0", "depth -3", "depth 1 depth 2", "movetime 0", "movetime -100", "nodes 0", "nodes -1",
                      "wtime -5 btime -5", "wtime 0 btime 0", "wtime 1", "btime 1", "movestogo 5 wtime 10 btime 10",
                      "wtime 99999999999999999999 btime 1 depth 1", "depth 99999999999999999999 movetime 10",
                      "winc 100000 binc 5 wtime 10 btime 10", "mate 0 depth 1", "movetime abc depth 1",
                      "depth abc movetime 5", "wtime btime winc binc depth 1"):
            self.assertLegal(Game(), self.gui.go(words)[0])
        for words in ("", "infinite", "mate 0", "ponder", "winc 5", "depth", "searchmoves", "searchmoves e2e4"):
            self.gui.send(("go " + words).strip())
            self.gui.is_ready()
            self.gui.send("stop")
            self.assertLegal(Game(), self.gui.best_move()[0])

    def test_quick_pairs_of_go_and_stop(self):
        generator = random.Random(14)
        games = [Game(), Game(MIDDLE_GAME), Game(ONE_MOVE), Game(MATE_IN_TWO)]
        for pair in range(QUICK_PAIRS):
            game = generator.choice(games)
            words = generator.choice(("infinite", "ponder wtime 500 btime 500", "wtime 1000 btime 1000", "movetime 5",
                                      "depth 30", "nodes 100000"))
            self.gui.send("position fen " + game.start_fen, "go " + words)
            time.sleep(generator.random() * 0.008)
            self.gui.send(generator.choice(("stop", "stop", "ponderhit\nstop", "isready\nstop")))
            best, reply, _ = self.gui.best_move()
            self.assertLegal(game, best, reply)
        self.assertEqual([line for line in self.gui.is_ready() if "bestmove" in line], [])
        self.assertClean()


class EndOfInput(unittest.TestCase):
    STATES = {
        "before the first line": [],
        "after uci": ["uci"],
        "with a position": ["uci", "position startpos moves e2e4"],
        "in an endless search": ["uci", "position startpos", "go infinite"],
        "in a search by the clock": ["uci", "position startpos", "go wtime 100000 btime 100000"],
        "while pondering": ["uci", "position startpos", "go ponder wtime 100000 btime 100000"],
        "with an answer held": ["uci", "position fen " + ONE_MOVE, "go infinite"],
        "after a hit": ["uci", "position startpos", "go ponder wtime 100000 btime 100000", "ponderhit"],
    }

    def ends(self, lines, how):
        with Gui() as gui:
            gui.send(*lines)
            if len(lines) > 2:
                gui.is_ready()
            how(gui)
            self.assertEqual(gui.wait_for_end(), 0, gui.errors)
            self.assertEqual(gui.text.count("bestmove"), sum(line.startswith("go") for line in lines))
            self.assertEqual(gui.errors, "")

    def test_in_each_state(self):
        for name, lines in self.STATES.items():
            with self.subTest(name):
                self.ends(lines, lambda gui: gui.end_input())

    def test_quit_in_each_state(self):
        for name, lines in self.STATES.items():
            with self.subTest(name):
                self.ends(lines, lambda gui: gui.send("quit"))

    def test_a_last_line_without_its_end_counts(self):
        with Gui() as gui:
            gui.send_raw("uci\nisready")
            gui.end_input()
            self.assertEqual(gui.wait_for_end(), 0)
            self.assertTrue(gui.text.endswith("readyok\n"))


class Settings(unittest.TestCase):
    def test_the_users_folder_is_read_where_the_working_directory_has_no_file(self):
        import subprocess
        import tempfile
        from gui import PROGRAM
        with tempfile.TemporaryDirectory() as home, tempfile.TemporaryDirectory() as work:
            with open(os.path.join(home, "tarvelmon.ini"), "w", encoding="ascii") as ini:
                ini.write("[ENGINE]\nHashSize=9\n")

            def hash_default():
                output = subprocess.run([os.path.abspath(PROGRAM)], cwd=work, input=b"uci\nquit\n", timeout=60,
                                        env={"TARVELMON_HOME": home}, stdout=subprocess.PIPE, check=True).stdout
                return re.search(rb"option name Hash type spin default (\d+)", output).group(1)

            self.assertEqual(hash_default(), b"9")
            with open(os.path.join(work, "tarvelmon.ini"), "w", encoding="ascii") as ini:
                ini.write("[ENGINE]\nHashSize=7\n")
            self.assertEqual(hash_default(), b"7")


    def test_without_a_file_numbers_and_truths_are_those_of_the_sample_file(self):
        with open(SAMPLE, encoding="latin-1") as file:
            sample = file.read()

        def greeting(ini):
            with Gui(ini) as gui:
                return [line for line in gui.uci() if re.search(r" type (spin|check) ", line)]

        self.assertGreater(len(greeting(None)), 12)
        self.assertEqual(greeting(None), greeting(sample))
        self.assertNotEqual(greeting(None), greeting(""))


class Bench(unittest.TestCase):
    @unittest.skipIf(SLOW, "a minute of search under a sanitizer")
    def test_bench_prints_the_signature_as_test_farms_read_it(self):
        with Gui() as gui:
            gui.send("bench", "uci")
            gui.expect(r"Nodes searched  : 15055063")
            gui.expect(r"Nodes/second    : \d+")
            gui.expect(r"15055063 nodes \d+ nps")
            gui.expect("uciok")  # the session goes on
            gui.send("position startpos")
            self.assertIn(gui.go("depth 2")[0], Game().position.legal_moves())


if __name__ == "__main__":
    unittest.main()
