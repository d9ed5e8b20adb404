"""The scripts' own rules of chess, held against published counts before they judge anybody."""

import unittest

from chess_rules import Game, Position, START_FEN, perft

# Published counts of legal move sequences: FEN, depth, count.
PUBLISHED_COUNTS = {
    "start position": (START_FEN, 3, 8902),
    "castling, pins, en passant": ("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 3, 97862),
    "en passant that uncovers the king": ("8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 4, 43238),
    "promotions on both sides": (
        "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", 3, 9467),
    "promotion with capture of a castling rook": (
        "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8", 3, 62379),
    "quiet middle game": ("r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10", 2, 2079),
    "en passant gives check": ("8/8/1k6/2b5/2pP4/8/5K2/8 b - d3 0 1", 4, 13931),
    "castling gives check": ("5k2/8/8/8/8/8/8/4K2R w K - 0 1", 4, 6399),
    "promotion out of check": ("2K2r2/4P3/8/8/8/8/8/3k4 w - - 0 1", 4, 19174),
    "stalemate and checkmate": ("8/k1P5/8/1K6/8/8/8/8 w - - 0 1", 5, 10857),
}


class Rules(unittest.TestCase):
    def test_move_counts_are_the_published_ones(self):
        for name, (fen, depth, count) in PUBLISHED_COUNTS.items():
            with self.subTest(name):
                self.assertEqual(perft(Position(fen), depth), count)

    def test_fen_survives_reading_and_writing(self):
        for name, (fen, _, _) in PUBLISHED_COUNTS.items():
            with self.subTest(name):
                self.assertEqual(Position(fen).fen(), fen)

    def test_illegal_move_changes_nothing(self):
        game = Game()
        self.assertFalse(game.play("e2e5"))
        self.assertEqual(game.position.fen(), START_FEN)

    def test_fools_mate_is_a_win_for_black(self):
        game = Game()
        for move in "f2f3 e7e5 g2g4 d8h4".split():
            self.assertTrue(game.play(move))
        self.assertTrue(game.is_checkmate())
        self.assertEqual(game.mate_result(), "0-1")

    def test_stalemate_is_no_checkmate(self):
        game = Game("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1")
        self.assertTrue(game.is_stalemate())
        self.assertFalse(game.is_checkmate())

    def test_knights_out_and_back_twice_repeat_twice(self):
        game = Game()
        for move in "g1f3 g8f6 f3g1 f6g8".split() * 2:
            self.assertTrue(game.play(move))
        self.assertEqual(game.occurrences(), 3)
        self.assertEqual(game.placements_alike(), 3)

    def test_lost_castling_right_makes_another_position(self):
        game = Game("4k3/8/8/8/8/8/8/4K2R w K - 0 1")
        for move in "e1e2 e8e7 e2e1 e7e8".split():
            self.assertTrue(game.play(move))
        self.assertEqual(game.occurrences(), 1)
        self.assertEqual(game.placements_alike(), 2)

    def test_fifty_moves_need_a_hundred_plies(self):
        game = Game("4k3/8/8/8/8/8/8/4K2R w - - 98 80")
        self.assertTrue(game.play("h1h2"))
        self.assertFalse(game.is_fifty_moves())
        self.assertTrue(game.play("e8e7"))
        self.assertTrue(game.is_fifty_moves())


if __name__ == "__main__":
    unittest.main()
