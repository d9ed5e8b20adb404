"""Openings that the referee reads, and game scores that it writes; these are read back by python-chess and pgn-extract
where they are."""

import io
import os
import random
import shutil
import subprocess
import sys
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "..", "tools"))
from match.judge import GameRecord  # noqa: E402
from match.notation import NotationError, pgn, read_move, san  # noqa: E402
from match.openings import FileOpenings, OpeningError, RandomOpenings, read_openings  # noqa: E402
from chess_rules import START_FEN, Game, Position  # noqa: E402
from scratch_folder import ScratchFolderTest  # noqa: E402

sys.path.insert(0, os.environ.get("TARVELMON_CLIENTS", "/nonexistent"))
try:
    import chess.pgn
except ImportError:
    chess = None
PGN_EXTRACT = shutil.which("pgn-extract", path=os.environ.get("PATH", "") + ":/usr/games")

ENDING = "8/8/4k3/8/8/3K4/4P3/8 b - - 0 1"
CASTLING = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1"
ROOKS = "R6R/8/8/3k4/8/8/8/R3K3 w - - 0 1"
PROMOTION = "3r4/4P1k1/8/8/8/8/8/4K3 w - - 0 1"


class Openings(ScratchFolderTest):
    def read(self, text, plies=None):
        return [(opening.fen, " ".join(opening.moves)) for opening in read_openings(self.write("file", text), plies)]

    def test_lines_hold_positions_or_moves_in_either_notation(self):
        text = f"""# a remark
[Name of an opening]
1. e4 e5 2. Nf3?! Nc6! 3.Bb5 a6 {{a comment}} $14 *
e2e4 c7c5 g1f3

{ENDING}
8/8/4k3/8/8/3K4/4P3/8 b - - id "an ending"; bm Kd5;
"""
        self.assertEqual(self.read(text), [(START_FEN, "e2e4 e7e5 g1f3 b8c6 f1b5 a7a6"), (START_FEN, "e2e4 c7c5 g1f3"),
                                           (ENDING, ""), (ENDING, "")])

    def test_games_have_tags_variations_and_positions_of_their_own(self):
        text = f"""[Event "one"]
[Result "1-0"]

1. d4 (1. e4 e5 (1... c5) 2. Nf3) d5 2. c4 {{[%clk 0:01]}} dxc4 ; to the end (of the line
3. e3 1-0

[Event "two"]
[FEN "{ENDING}"]

1... Kd5 2. e3 *
"""
        self.assertEqual(self.read(text), [(START_FEN, "d2d4 d7d5 c2c4 d5c4 e2e3"), (ENDING, "e6d5 e2e3")])
        self.assertEqual(self.read(text, plies=1), [(START_FEN, "d2d4"), (ENDING, "e6d5")])

    def test_what_cannot_be_played_is_told_with_its_line(self):
        for text, words in (("1. e4 e5\n1. e4 e4\n", "file:2: no legal move: e4"),
                            ("# nothing\n", "file: no openings in it"),
                            ("8/8/4k3/8/8/3K4/4P3/7 w - - 0 1\n", "file:1: no position to play from"),
                            ("8/8/4k3/8/8/8/4P3/8 w - - 0 1\n", "file:1: no position to play from"),
                            ("8/8/4k3/5P2/8/3K4/8/8 w - - 0 1\n", "file:1: no position to play from"),
                            ("8/8/4k3/8/8/3K4/4P3/8 w K - 0 1\n", "file:1: no position to play from"),
                            ("P7/8/4k3/8/8/3K4/8/8 w - - 0 1\n", "file:1: no position to play from"),
                            ("1. f3 e5 2. g4 Qh4#\n", "file:1: the game has ended already"),
                            ("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1\n", "file:1: the game has ended already"),
                            ('[Event "x"]\n\n1. e4 e5 2. Ke3 *\n', "file:1: no legal move: Ke3")):
            with self.subTest(text), self.assertRaises(OpeningError) as caught:
                self.read(text)
            self.assertIn(words, str(caught.exception).replace(self.folder + "/", ""))

    def test_the_shipped_openings_are_read(self):
        self.assertGreater(len(read_openings(os.path.join(HERE, "..", "..", "data", "book", "openings.txt"), 8)), 300)

    def test_the_seed_alone_says_which_pair_begins_with_which_opening(self):
        path = self.write("file", "".join(f"1. {move}\n" for move in ("e4", "d4", "c4", "Nf3", "g3")))
        first, again, other = (FileOpenings(path, seed) for seed in (1, 1, 2))
        order = [first.of_pair(pair).moves for pair in range(5)]
        self.assertEqual([again.of_pair(pair).moves for pair in (3, 0, 4, 1, 2)], [order[i] for i in (3, 0, 4, 1, 2)])
        self.assertEqual(len({tuple(moves) for moves in order}), 5)
        self.assertNotEqual([other.of_pair(pair).moves for pair in range(5)], order)
        self.assertEqual(first.of_pair(7).moves, order[2])
        self.assertEqual(RandomOpenings(3).of_pair(4), RandomOpenings(3).of_pair(4))
        self.assertNotEqual(RandomOpenings(3).of_pair(4), RandomOpenings(3).of_pair(5))


    def test_openings_that_lead_to_one_position_count_once(self):
        path = self.write("file", "1. e4 e5 2. Nf3\n1. d4 d5\n1. Nf3 e5 2. e4 Nc6\n1. d4 d5 2. c4\n")
        self.assertEqual([opening.moves for opening in sorted(FileOpenings(path).openings, key=lambda o: o.moves)],
                         [["d2d4", "d7d5"], ["d2d4", "d7d5", "c2c4"], ["e2e4", "e7e5", "g1f3"],
                          ["g1f3", "e7e5", "e2e4", "b8c6"]])
        self.assertEqual(len(FileOpenings(path, plies=2).openings), 3)
        path = self.write("file", "1. Nf3 e6 2. g3\n1. g3 e6 2. Nf3\n")
        self.assertEqual([opening.moves for opening in FileOpenings(path).openings], [["g1f3", "e7e6", "g2g3"]])


class Notation(unittest.TestCase):
    def test_moves_are_written_as_the_rules_of_the_notation_say(self):
        for fen, text, written in ((CASTLING, "e1g1", "O-O"), (CASTLING, "e1c1", "O-O-O"), (CASTLING, "h1h8", "Rxh8+"),
                                   (ROOKS, "a1a4", "R1a4"), (ROOKS, "a8d8", "Rad8+"), (PROMOTION, "e7d8q", "exd8=Q"),
                                   (PROMOTION, "e7e8n", "e8=N+")):
            self.assertEqual(san(Position(fen), text), written)

    def test_every_move_is_read_as_it_is_written(self):
        chance = random.Random(9)
        for _ in range(4):
            game = Game()
            while game.position.has_legal_move() and len(game.moves) < 60:
                moves = sorted(game.position.legal_moves())
                for text in chance.sample(moves, min(4, len(moves))):
                    self.assertEqual(read_move(game.position, san(game.position, text)), text)
                game.play(chance.choice(moves))

    def test_a_move_that_two_men_can_make_is_not_guessed(self):
        with self.assertRaises(NotationError):
            read_move(Position(ROOKS), "Rd8")

    def test_a_score_from_a_position_tells_it_and_counts_from_its_number(self):
        text = pgn(GameRecord("A", 'B "the \\ second"', "1/2-1/2", "length", "adjudication", ["e6d5", "e2e3", "d5e5"],
                              ENDING), {"TimeControl": "10+0.1"})
        for words in ('[White "A"]', '[Black "B \\"the \\\\ second\\""]', '[TimeControl "10+0.1"]', '[SetUp "1"]',
                      f'[FEN "{ENDING}"]', '[Termination "adjudication"]', "\n1... Kd5 2. e3 Ke5 {length} 1/2-1/2\n"):
            self.assertIn(words, text)


class ReadBack(ScratchFolderTest):
    """Games of random moves, from the start and from positions, as other programs read them."""

    def setUp(self):
        super().setUp()
        chance = random.Random(31)
        self.records = []
        for fen in (START_FEN, START_FEN, START_FEN, CASTLING, ENDING, PROMOTION):
            game = Game(fen)
            while game.position.has_legal_move() and len(game.moves) < 150:
                game.play(chance.choice(sorted(game.position.legal_moves())))
            self.records.append(GameRecord("A", "B", "1/2-1/2", "said 'x {y} z'", "normal", game.moves, fen))
        self.text = "".join(pgn(record, {"Round": str(number)}) for number, record in enumerate(self.records))

    @unittest.skipUnless(chess, "python-chess is not installed")
    def test_python_chess_reads_every_game_without_a_complaint(self):
        stream = io.StringIO(self.text)
        for record in self.records:
            game = chess.pgn.read_game(stream)
            self.assertEqual(game.errors, [])
            self.assertEqual([move.uci() for move in game.mainline_moves()], record.moves)
        self.assertIsNone(chess.pgn.read_game(stream))

    @unittest.skipUnless(PGN_EXTRACT, "pgn-extract is not installed")
    def test_pgn_extract_reads_every_game_without_a_complaint(self):
        path = self.write("games.pgn", self.text)
        done = subprocess.run([PGN_EXTRACT, "-s", "-Wuci", path], capture_output=True, text=True, check=False)
        self.assertEqual(done.stderr.strip(), "")
        self.assertEqual(done.stdout.count("[Event "), len(self.records))


if __name__ == "__main__":
    unittest.main()
