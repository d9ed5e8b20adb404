"""A real client, python-chess, plays and analyses with the companion over both protocols, where it can be imported. The
environment variable TARVELMON_CLIENTS may name the folder that holds it."""

import asyncio
import logging
import os
import sys
import tempfile
import time
import unittest

from gui import PROGRAM, SMALL_INI

sys.path.insert(0, os.environ.get("TARVELMON_CLIENTS", "/nonexistent"))
try:
    import chess
    import chess.engine
except ImportError:
    chess = None

SLOW = bool(os.environ.get("TARVELMON_SANITIZE"))
OPENINGS = 50
TIMEOUT = 60


class Complaints(logging.Handler):
    """What the client complains of: unexpected lines, lines that cannot be read, moves that are not legal."""

    def __init__(self):
        super().__init__(logging.WARNING)
        self.records = []

    def emit(self, record):
        self.records.append(record.getMessage())


class Client(unittest.TestCase):
    """The tests of both protocols; the two classes below name theirs."""

    open = None

    @classmethod
    def setUpClass(cls):
        if cls is Client or chess is None:
            raise unittest.SkipTest("python-chess cannot be imported")
        if SLOW:
            raise unittest.SkipTest("the client's own time limits are too short for a sanitizer")

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="tarvelmon-")
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        with open(os.path.join(self.folder, "tarvelmon.ini"), "w", encoding="ascii") as ini:
            ini.write(SMALL_INI)
        self.complaints = Complaints()
        chess.engine.LOGGER.addHandler(self.complaints)
        self.addCleanup(chess.engine.LOGGER.removeHandler, self.complaints)

    def start(self):
        opener = chess.engine.SimpleEngine.popen_uci if self.uci else chess.engine.SimpleEngine.popen_xboard
        return opener([os.path.abspath(PROGRAM)], cwd=self.folder, timeout=TIMEOUT)

    def tearDown(self):
        # It asks "." and then wonders at the answer of the protocol.
        complaints = [text for text in self.complaints.records if "output: 'stat01:" not in text]
        self.assertEqual(complaints, [])

    def test_it_opens_every_time(self):
        for _ in range(OPENINGS):
            with self.start() as engine:
                self.assertIn("tarvelmon", engine.id["name"])
                engine.ping()

    def play_game(self, limit_for, plies):
        with self.start() as engine:
            board = chess.Board()
            while len(board.move_stack) < plies and not board.is_game_over():
                result = engine.play(board, limit_for(board), game="one")
                self.assertIn(result.move, board.legal_moves)
                board.push(result.move)
            self.assertGreater(len(board.move_stack), 10)

    def test_a_game_by_the_clock(self):
        clocks = {chess.WHITE: 20.0, chess.BLACK: 20.0}

        def limit(board):
            return chess.engine.Limit(white_clock=clocks[chess.WHITE], black_clock=clocks[chess.BLACK], white_inc=0.2,
                                      black_inc=0.2)

        with self.start() as engine:
            board = chess.Board()
            while len(board.move_stack) < 60 and not board.is_game_over():
                begun = time.monotonic()
                move = engine.play(board, limit(board), game="clock").move
                clocks[board.turn] += 0.2 - (time.monotonic() - begun)
                self.assertGreater(clocks[board.turn], 0)
                self.assertIn(move, board.legal_moves)
                board.push(move)

    def test_a_game_by_time_for_a_move(self):
        self.play_game(lambda board: chess.engine.Limit(time=0.05), 40)

    def test_a_game_by_depth(self):
        self.play_game(lambda board: chess.engine.Limit(depth=3), 60)

    def test_games_from_positions_and_takebacks(self):
        with self.start() as engine:
            board = chess.Board("r1bqkb1r/pppp1ppp/2n2n2/4p3/2B1P3/5N2/PPPP1PPP/RNBQK2R w KQkq - 4 4")
            for _ in range(4):
                board.push(engine.play(board, chess.engine.Limit(depth=3), game="one").move)
            board.pop()
            board.pop()
            self.assertIn(engine.play(board, chess.engine.Limit(depth=3), game="one").move, board.legal_moves)
            other = chess.Board("4k3/P7/8/8/8/8/8/4K3 w - - 0 1")
            self.assertIn(engine.play(other, chess.engine.Limit(depth=3), game="two").move, other.legal_moves)

    def test_a_game_with_pondering(self):
        with self.start() as engine:
            board = chess.Board()
            for _ in range(12):
                result = engine.play(board, chess.engine.Limit(time=0.05), game="one", ponder=True)
                self.assertIn(result.move, board.legal_moves)
                board.push(result.move)
                if result.ponder:
                    self.assertIn(result.ponder, board.legal_moves)
                board.push(result.ponder or next(iter(board.legal_moves)))

    def test_analysis_with_limits_of_time(self):
        board = chess.Board()
        board.push_san("e4")
        with self.start() as engine:
            for seconds in (0.1, 0.3, 1.0, 2.0, 5.0):
                begun = time.monotonic()
                info = engine.analyse(board, chess.engine.Limit(time=seconds))
                self.assertGreaterEqual(time.monotonic() - begun, seconds - 0.05)
                self.assertIn(info["pv"][0], board.legal_moves)
                self.assertIn("score", info)
                self.assertGreater(info["depth"], 0)

    def test_analysis_by_depth(self):
        with self.start() as engine:
            info = engine.analyse(chess.Board(), chess.engine.Limit(depth=6))
            self.assertGreaterEqual(info["depth"], 6)

    def test_analysis_that_is_stopped(self):
        board = chess.Board()
        with self.start() as engine:
            for _ in range(5):
                with engine.analysis(board) as analysis:
                    for info in analysis:
                        if info.get("depth", 0) >= 5 and "pv" in info:
                            break
                    analysis.stop()
                    best = analysis.wait()
                self.assertIn(best.move, board.legal_moves)
                board.push(best.move)

    def test_analysis_of_a_forced_move(self):
        board = chess.Board("6k1/8/8/2B5/8/8/6PP/r6K w - - 0 1")
        with self.start() as engine:
            info = engine.analyse(board, chess.engine.Limit(time=0.2))
            self.assertIn(info["pv"][0], board.legal_moves)

    def test_options_and_pings(self):
        with self.start() as engine:
            self.assertEqual(engine.options["SyzygyProbeLimit"].default, 5)
            engine.configure({"SafePly": 12, "RandBook": False, "SyzygyPath": "/nowhere", self.clear: None})
            engine.ping()
            self.assertIsNotNone(engine.play(chess.Board(), chess.engine.Limit(depth=3)).move)

    def test_it_closes_while_it_searches(self):
        async def close():
            opener = chess.engine.popen_uci if self.uci else chess.engine.popen_xboard
            transport, engine = await opener([os.path.abspath(PROGRAM)], cwd=self.folder)
            analysis = await engine.analysis(chess.Board())
            await asyncio.sleep(0.1)
            analysis.stop()
            await asyncio.wait_for(engine.quit(), TIMEOUT)
            return transport.get_returncode()

        self.assertEqual(asyncio.run(close()), 0)


class OverUci(Client):
    uci = True
    clear = "Clear Hash"

    def test_a_game_by_nodes(self):
        self.play_game(lambda board: chess.engine.Limit(nodes=2000), 40)

    def test_analysis_by_nodes_and_of_chosen_moves(self):
        board = chess.Board()
        with self.start() as engine:
            info = engine.analyse(board, chess.engine.Limit(nodes=50000))
            self.assertGreater(info["nodes"], 10000)
            moves = [chess.Move.from_uci("a2a3"), chess.Move.from_uci("h2h4")]
            info = engine.analyse(board, chess.engine.Limit(depth=4), root_moves=moves)
            self.assertIn(info["pv"][0], moves)

    def test_a_mate_is_looked_for(self):
        with self.start() as engine:
            info = engine.analyse(chess.Board("7k/8/5K2/6R1/8/8/8/8 w - - 0 1"), chess.engine.Limit(mate=2))
            self.assertEqual(info["score"].relative, chess.engine.Mate(2))


class OverXboard(Client):
    uci = False
    clear = "ClearHash"

    def test_results_are_taken(self):
        with self.start() as engine:
            board = chess.Board()
            for move in "f2f3 e7e5 g2g4".split():
                board.push_uci(move)
            self.assertEqual(engine.play(board, chess.engine.Limit(depth=3)).move.uci(), "d8h4")
            board.push_uci("d8h4")
            engine.send_game_result(board)
            engine.ping()
            self.assertIsNotNone(engine.play(chess.Board(), chess.engine.Limit(depth=3), game="next").move)


if __name__ == "__main__":
    unittest.main()
