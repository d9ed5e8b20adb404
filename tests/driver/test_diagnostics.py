"""The console's looks into the engine: every command, its place in the chain and its output.

The positions and the pictures of the board are made here, apart from the program.
"""

import os
import pty
import re
import subprocess
import tempfile
import unittest

from chess_rules import Position
from engine import PROGRAM, PROMPT, SMALL_INI, Engine

SYZYGY_PATH = os.environ.get("TARVELMON_SYZYGY_PATH")

# name: (FEN, shown, sets "post", value shown)
TEST_POSITIONS = {
    "mate": ("8/RP6/2k5/8/8/6P1/7P/7K w - - 1 62", False, True, False),
    "mate8": ("8/7K/8/8/8/8/R7/7k w - - 0 1", False, True, False),
    "killer": ("r3qrk1/pp2ppbp/6p1/1Np5/P7/2PP3P/1P2QPP1/R2R2K1 w - - 0 1", False, False, False),
    "hang": ("rnb1kbnr/pppp1p1Q/6p1/4p1q1/3PP3/8/PPP2PPP/RNB1KBNR w - - 8 1 ", False, False, False),
    "test": ("r3k2r/p1p3pp/2pq1p2/4pb2/1bQ2n2/2N2N1P/PPPP1PP1/R1B1K1R1 w Qkq - 8 12 ", False, True, False),
    "good": ("r1bqkb1r/ppp2ppp/2n1pn2/8/2pP4/3BPN2/PP3PPP/RNBQK2R w KQkq - 0 6 ", False, False, False),
    "bug": ("6k1/7p/3p3b/2pN4/4p3/8/1Pn2PPP/4K2R w K - 0 24 ", False, False, False),
    "bug2": ("r3kb2/1pp5/p4qp1/7r/3pPnQ1/3P1P2/PPP2RPP/RN4K1 w q - 3 21", False, False, False),
    "bug5": ("3r1rk1/pp1b1p1p/3b1qp1/3P4/2B5/2NQ4/PP3PPP/R4RK1 b - - 4 21 ", False, False, False),
    "113": ("r1b2rk1/ppn1ppb1/2pq2p1/4N3/3P1PP1/2N4p/PP1QBP1P/R2R2K1 b - - 1 21 ", False, False, False),
    "cazz": ("8/pr6/1p4R1/1Pkp1p2/8/P5P1/3n1PKP/1R6 w - - 0 43", True, False, False),
    "k1": ("7k/8/8/4p3/3P4/8/8/6K1 w - - 6 1", False, False, False),
    "k2": ("r3q1k1/n4pp1/8/6N1/b7/3Q3R/1B3PPP/6K1 b - - 0 1", False, False, False),
    "t1": ("4r1k1/6p1/P7/1P6/2p5/3p4/R5P1/6K1 w - - 0 1 ", False, False, False),
    "t2": ("4r1k1/6p1/P7/1P6/2p5/3p4/R5P1/6K1 b - - 0 1 ", False, False, False),
    "w1": ("3r2k1/5ppp/6q1/8/6n1/R4NQP/5PP1/6K1 w - - 1 1 ", False, False, False),
    "w2": ("3r2k1/5ppp/6q1/8/6n1/R4NQP/5PP1/6K1 b - - 1 1 ", False, False, False),
    "p1": ("6k1/6p1/8/8/8/P7/5PPP/5K2 w - - 0 1 ", False, False, False),
    "p2": ("6k1/6p1/8/8/P2P4/P2P4/5P2/5K2 w - - 0 1 ", False, False, False),
    "p3": ("k7/8/p7/K7/8/8/7P/8 w - - 0 1 ", False, False, False),
    "p4": ("8/7k/8/PK6/8/7p/8/8 w - - 0 1 ", False, False, False),
    "err": ("r1bq1rk1/p1p3pp/2p5/3ppp2/7N/2PP4/PP1NQ1P1/R4R1K w - - 0 1 ", True, False, False),
    "all": ("8/p1Pk4/7p/p1n5/4p1rP/2KBR3/2P5/8 w - - 1 47", True, False, False),
    "wac2": ("8/7p/5k2/5p2/p1p2P2/Pr1pPK2/1P1R3P/8 b - -", True, False, False),
    "tatt": ("r4k1r/1p3ppp/p4B2/q1bp4/3p2b1/1B1P1Q2/PPP2PPP/RN2R1K1 w - - 1 1", True, False, False),
    "patta": ("8/1k6/r1p3R1/1p1p4/1P1N4/2PK4/8/8 w - - 5 1 ", True, False, False),
    "tre": ("r1br2k1/ppp2ppp/2n2n2/3qp1N1/8/P1PB3P/1PP2PP1/R1BQ1RK1 w - - 2 11", True, False, False),
    "ava": ("6k1/5ppp/5n2/2pNp3/2P1P3/5P2/6PP/6K1 w - - 1 1", True, False, False),
    "icheck": ("2r5/1p1k1ppQ/p3p1n1/3pP1P1/3P4/1Pr1B3/4qP1P/R4RK1 w - - 0 28 ", True, False, False),
    "wac002": ("8/7p/5k2/5p2/p1p2P2/Pr1pPK2/1P1R3P/8 b - - 0 1 ", True, False, False),
    "wac141": ("4r1k1/p1qr1p2/2pb1Bp1/1p5p/3P1n1R/1B3P2/PP3PK1/2Q4R w - - 0 1", True, False, False),
    "diag": ("6k1/pbp5/1p6/8/8/6P1/1B3P1P/6K1 w - - 3 1 ", True, False, False),
    "ps": ("6k1/1b3npp/8/4N3/8/5N2/5PP1/6K1 w - - 0 1 ", True, False, False),
    "cw": ("6k1/p1p2ppp/1p1b4/8/1P6/P1P3P1/5PBP/6K1 w - - 0 1 ", True, False, False),
    "end": ("8/1k3ppp/8/5PPP/K7/8/8/8 w - - 0 1", True, False, False),
    "bh7": ("3qrrk1/p1p2ppp/1p1pb3/8/3Q4/P2B4/1PP2PPP/R3R1K1 w - - 0 16 ", True, False, False),
    "xray": ("r5k1/pp6/2n5/6N1/8/6R1/5P1P/7K w - - 0 1", True, False, False),
    "trap": ("3k4/3pp3/8/8/4N3/1P6/b1P5/3K4 w - - 0 1 ", True, False, True),
    "b1": ("6k1/5ppp/8/8/p7/P7/1P4PP/6K1 w - - 0 1 ", True, False, True),
    "p": ("8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w - -", True, False, False),
}

ITALIAN = dict(zip("pnbrqkPNBRQK.", "pcatdrPCATDR "))


def picture(fen):
    """The board as the console shows it."""
    border = "  +---+---+---+---+---+---+---+---+\n"
    board = Position(fen).board
    text = "\n\n"
    for rank in range(7, -1, -1):
        cells = "".join(" %s |" % ITALIAN[board[8 * rank + file]] for file in range(8))
        text += border + "%d |%s\n" % (rank + 1, cells)
    return text + border + "\n    A   B   C   D   E   F   G   H\n\n"


class ConsoleTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.engine = self.console()

    def console(self, **arguments):
        engine = Engine(**arguments)
        self.addCleanup(engine.close)
        engine.console()
        return engine

    def ask(self, line):
        return self.engine.ask(line)

    def key(self):
        """The key of the position, from scratch."""
        return re.search(r"New method  Hash key: +([0-9a-f]+)\n", self.ask("hash"))[1]

    def post(self):
        return re.search(r"postThinking: +(\d)\n", self.ask("param"))[1] == "1"


class TestPositions(ConsoleTest):
    def test_each_name_loads_its_position(self):
        for name, (fen, shown, sets_post, valued) in TEST_POSITIONS.items():
            with self.subTest(name):
                self.ask("nopost")
                output = self.ask(name)
                value = ""
                if valued:
                    value = "Valutazione: %s" % re.search(r"Score: +(-?\d+)\n", self.ask("score"))[1]
                self.assertEqual(output, (picture(fen) if shown else "") + value)
                self.assertEqual(self.post(), sets_post)
                self.assertEqual(self.ask("b"), picture(fen))
                loaded = self.key()
                self.ask("setboard " + fen)
                self.assertEqual(self.key(), loaded)

    def test_the_moves_played_before_stay_below(self):
        for name, (fen, *_) in TEST_POSITIONS.items():
            with self.subTest(name):
                self.ask("new")
                self.ask("force")
                self.ask("e2e4")
                self.ask("e7e5")
                self.ask(name)
                self.assertEqual(self.ask("undo"), picture("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1"))
                self.assertEqual(self.ask("undo"), picture("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"))

    def test_only_113_goes_on_to_the_reply(self):
        self.ask("sd 2")
        for name, (fen, *_) in TEST_POSITIONS.items():
            with self.subTest(name):
                # The engine plays the side that is to move in the position.
                self.ask("setboard " + fen)
                self.ask("force")
                self.ask("go")
                self.ask("undo")
                output = self.ask(name)
                self.assertEqual("move " in output, name == "113")

    def test_a_blank_behind_a_name_makes_it_another_line(self):
        for name in TEST_POSITIONS:
            if name[0] in "ps":
                continue
            with self.subTest(name):
                output = self.ask(name + " ")
                if name[0] == "w":
                    self.assertIn("- Syzygy WDL probe test -\n", output)
                else:
                    self.assertEqual(output, "Error (unknown command): %s \n" % name)


class MoveLists(ConsoleTest):
    def test_catt_shows_all_captures_twice_and_sorts_the_second_list(self):
        fen = "6k1/2q2ppp/8/Bn1p4/2P5/1P5r/P4PPP/6K1 b - - 1 1"
        shown = self.ask("catt")
        self.assertTrue(shown.startswith(picture(fen)))
        first, second = shown[len(picture(fen)):].split("\n\n")
        entry = re.compile(r"Mossa: ([a-h][1-8][a-h][1-8]) ?  Val: (-?\d+)")
        lists = [[entry.fullmatch(line.replace("    Val", "   Val")) for line in part.splitlines()]
                 for part in (first, second)]
        moves = [[(m[1], int(m[2])) for m in part] for part in lists]
        position = Position(fen)
        captures = {m for m in position.legal_moves() if position.board["abcdefgh".index(m[2]) + 8 * (int(m[3]) - 1)] != "."}
        self.assertEqual({m for m, _ in moves[0]}, captures)
        self.assertEqual(sorted(moves[0]), sorted(moves[1]))
        scores = [score for _, score in moves[1]]
        self.assertEqual(scores, sorted(scores, reverse=True))
        self.assertNotEqual(moves[0], moves[1])

    def test_rip_shows_the_quiet_checks(self):
        fen = "rqb3k1/pp6/2n5/6B1/8/1R4R1/Q4P1P/7K w - - 0 1"
        shown = self.ask("rip")
        self.assertTrue(shown.startswith(picture(fen)))
        moves = re.findall(r"Mossa: ([a-h][1-8][a-h][1-8]) \n", shown)
        position = Position(fen)
        checks = {m for m, after in position.legal_moves().items()
                  if after.in_check() and position.board["abcdefgh".index(m[2]) + 8 * (int(m[3]) - 1)] == "."}
        self.assertTrue(checks)
        self.assertLessEqual(checks, set(moves))
        self.assertEqual(len(shown[len(picture(fen)):].splitlines()), len(moves))


class Reports(ConsoleTest):
    def test_hash_shows_equal_keys_after_any_moves(self):
        self.ask("force")
        for move in ("e2e4", "d7d5", "e4d5", "d8d5", "b1c3", "d5a5", "g1f3", "c8g4", "f1e2", "b8c6", "e1g1", "e8c8"):
            self.assertNotIn("Illegal", self.ask(move))
            keys = re.findall(r"key: +([0-9a-f]+)\n", self.ask("hash"))
            self.assertEqual(len(keys), 2)
            self.assertEqual(keys[0], keys[1])

    def test_counts_beyond_32_bits_are_shown_whole(self):
        engine = self.console()
        with open(os.path.join(engine.folder, "tarvelmon.ini"), "w", encoding="ascii") as file:
            file.write(SMALL_INI.replace("HashSize=16\nPawn", "HashSize=2147483647\nPawn"))
        engine.ask("ini")  # which allocates nothing
        self.assertIn("#DEBUG Hash records:                   140737488289792 \n", engine.ask("hash"))

    def test_clear_runs_no_other_program(self):
        with tempfile.TemporaryDirectory() as folder:
            trace = os.path.join(folder, "trace")
            for name in ("cls", "clear", "sh"):
                path = os.path.join(folder, name)
                with open(path, "w", encoding="ascii") as script:
                    script.write("#!/bin/sh\necho run >> %s\n" % trace)
                os.chmod(path, 0o755)
            engine = self.console(arguments=("env", "PATH=" + folder + os.pathsep + os.environ["PATH"]))
            engine.ask("clear")
            self.assertFalse(os.path.exists(trace))
            self.assertEqual(engine.errors, "")

    def test_hash_shows_the_records_of_the_table(self):
        self.ask("memory 8")
        self.assertTrue(self.ask("hash").endswith("#DEBUG Hash records:                   524288 \n"))

    def test_draw_looks_at_the_material(self):
        for fen, text in (("4k3/8/8/8/8/8/8/4K3 w - - 0 1", "Materiale insufficiente!"),
                          ("4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", "Gioca!")):
            self.ask("setboard " + fen)
            self.assertEqual(self.ask("draw"), text)

    def test_int_goes_on_to_the_reply(self):
        self.ask("sd 2")
        self.ask("go")
        self.ask("undo")
        self.assertRegex(self.ask("int"), r"(?s)^Dimensione di un int: .*\nmove [a-h][1-8][a-h][1-8] \n")


class FirstLetters(ConsoleTest):
    def test_any_line_with_an_s_runs_the_table_test(self):
        for line in ("s", "show", "search 5", "score ", "size?", "sc", "sstop"):
            with self.subTest(line):
                engine = self.console()
                engine.send(line)
                self.assertEqual(engine.wait_for_end(), 1)
                self.assertEqual(engine.rest(), "File non trovato\n")

    def test_the_table_test_compares_and_appends(self):
        cases = b"4k3/8/8/8/8/8/8/4K3 w - - 0 1,0,0\nno fen,0,0\n"
        engine = self.console(files={"TestSyzygy/TestCase_09.txt": cases})
        output = engine.ask("s")
        self.assertTrue(output.startswith("Syzygy Test started\n"))
        self.assertRegex(output, r"Syzygy Test ended\.\nError:      +\d+   \d\.\d\d%\nBad FEN:    +1   0\.00%\n$")
        with open(os.path.join(engine.folder, "TestSyzygy", "BadFEN.txt"), encoding="latin-1") as file:
            self.assertIn("no fen", file.read())

    def test_without_tables_the_probe_fails(self):
        self.ask("setboard 4k3/8/8/8/8/8/8/3QK3 w - - 0 1")
        self.assertRegex(self.ask("wxy"), r"^- Syzygy WDL probe test -\nprobe ok:       0  \(1=true, 0=false\)\n"
                         r"DTZ:            -?\d+\nWDL:            -?\d+\nTBScore:        -?\d+\n"
                         r"mosse generate: 21\nmosse filtrate: 21\n\n$")

    @unittest.skipUnless(SYZYGY_PATH, "needs tables")
    def test_with_tables_the_moves_are_ranked(self):
        engine = self.console(ini=SMALL_INI.replace("Syzygy=0", "Syzygy=1\nSyzygyPath=%s" % SYZYGY_PATH))
        fen = "4k3/8/8/8/8/8/8/3QK3 w - - 0 1"
        engine.ask("setboard " + fen)
        output = engine.ask("w")
        head = re.match(r"- Syzygy WDL probe test -\nprobe ok:       1  \(1=true, 0=false\)\nDTZ:            (\d+)\n"
                        r"WDL:            2\nTBScore:        10000\nmosse generate: 21\nmosse filtrate: (\d+)\n\n", output)
        self.assertIsNotNone(head, output)
        moves = re.findall(r"Mossa: (\S+)    DTZ50: (-?\d+)\n", output)
        self.assertEqual(len(moves), int(head[2]))
        ranks = [int(rank) for _, rank in moves]
        self.assertEqual(ranks, sorted(ranks))
        self.assertEqual(ranks[0], int(head[1]))
        self.assertLessEqual({move for move, _ in moves}, set(Position(fen).legal_moves()))


class Terminal(unittest.TestCase):
    def test_clear_clears_a_terminal(self):
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        with tempfile.TemporaryDirectory() as folder:
            with open(os.path.join(folder, "tarvelmon.ini"), "w", encoding="latin-1") as file:
                file.write(SMALL_INI)
            process = subprocess.Popen([os.path.abspath(PROGRAM)], cwd=folder, stdin=subprocess.PIPE, stdout=slave)
            os.close(slave)
            output = b""
            process.stdin.write(b"console\nclear\nquit\n")
            process.stdin.close()
            while True:
                try:
                    piece = os.read(master, 4096)
                except OSError:
                    break
                if not piece:
                    break
                output += piece
            self.assertEqual(process.wait(), 0)
        text = output.decode("latin-1").replace("\r\n", "\n")
        self.assertTrue(text.endswith(PROMPT + "\x1b[H\x1b[2J" + PROMPT), repr(text[-60:]))


if __name__ == "__main__":
    unittest.main()
