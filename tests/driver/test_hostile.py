"""Broken and hostile input through the real program: it answers, never hangs, is never killed, and ends with status 0."""

import unittest

from engine import Engine

# Name: FEN text, and whether it is read.
POSITIONS = {
    "no men at all": ("8/8/8/8/8/8/8/8 w - - 0 1", True),
    "no kings": ("rnbq1bnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQ1BNR w KQkq - 0 1", True),
    "one king": ("8/8/8/3k4/8/8/8/3Q4 w - - 0 1", True),
    "only the other king": ("8/8/8/3k4/8/8/8/3Q4 b - - 0 1", True),
    "three kings": ("k6k/8/8/8/8/8/8/3KQ3 w - - 0 1", True),
    "62 queens and two kings": ("QQQQQQQk/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/qqqqqqqq/qqqqqqqq/qqqqqqqq/Kqqqqqqq w - - 0 1", True),
    "64 queens": ("/".join(["QqQqQqQq", "qQqQqQqQ"] * 4) + " w - - 0 1", True),
    "64 pawns": ("/".join(["pppppppp"] * 4 + ["PPPPPPPP"] * 4) + " w - - 0 1", True),
    "pawns on the first and last rank": ("PPPPkppp/8/8/8/8/8/8/ppppKPPP w - - 0 1", True),
    "rights without king": ("r6r/8/3k4/8/8/3K4/8/R6R w KQkq - 0 1", True),
    "rights without rooks": ("4k3/8/8/8/8/8/8/4K3 w KQkq - 0 1", True),
    "rights with other men on the squares": ("Qn2b2Q/8/3k4/8/8/3K4/8/qB2N2q w KQkq - 0 1", True),
    "castling with a right alone": ("4p3/8/8/8/8/8/8/7K b k - 0 1", True),
    "castling with a right and a pawn": ("7k/8/8/8/8/8/8/4P3 w K - 0 1", True),
    "castling with a pawn in front of the king": ("4k3/8/8/8/8/8/4P3/4P2R w KQ - 0 1", True),
    "a king that can be captured": ("4k3/8/8/8/4Q3/8/8/4K3 w - - 0 1", True),
    "both kings can be captured": ("4k3/8/8/8/4R3/8/8/4K2r b - - 0 1", True),
    "74 captures": ("r1n1n1b1/1P1P1P1P/1N1N1N2/2RnQrRq/2pKp3/3BNQbQ/k7/4Bq2 w - - 0 1", True),
    "218 moves": ("R6R/3Q4/1Q4Q1/4Q3/2Q4Q/Q4Q2/pp1Q4/kBNN1KB1 w - - 0 1", True),
    "en passant without a pawn": ("4k3/8/8/3P4/8/8/8/4K3 w - e6 0 1", True),
    "en passant onto a man": ("4k3/8/4q3/3P4/8/8/8/4K3 w - e6 0 1", True),
    "digits that overrun a rank": ("4k3/8/p8/P7p/8/8/8/1K8 w - - 0 1", True),
    "digits that overrun the eighth rank": ("ppppppp8/8/3k4/8/8/3K4/8/8 w - - 0 1", True),
    "a half-move clock of 300": ("4k3/8/8/8/8/8/4P3/4K3 w - - 300 1", True),
    "a half-move clock of 99999999999": ("4k3/8/8/8/8/8/4P3/4K3 w - - 99999999999 1", True),
    "a half-move clock longer than the game": ("4k3/8/8/8/8/8/4P3/4K3 w - - 99 1", True),
    "letters for numbers": ("4k3/8/8/8/8/8/4P3/4K3 w - - xyz q", True),
    "a half-move clock of -1": ("4k3/8/8/8/8/8/4P3/4K3 w - - -1 1", False),
    "too few groups": ("4k3/8/8/8 w - - 0 1", False),
    "one token": ("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR", False),
    "a side that is none": ("4k3/8/8/8/8/8/4P3/4K3 x - - 0 1", False),
    "only blanks": ("      ", False),
    "an empty text": ("", False),
    "230 characters": ("4k3/8/8/8/8/8/4P3/4K3 w - - 0 " + "1" * 200, False),
    "signs and bytes above 127": ("\xff\xfe\x80/%s%n%s/8 w - - 0 1", False),
}

# What looks at the position, each ending in a prompt; the last loads another position and shows it.
LOOKS = ("b", "score", "val", "w", "draw", "hash", "book", "c", "score", "c", "undo", "undo", "rip", "icheck", "size")

# Texts where a move is expected.
MOVE_TEXTS = ("z9z9", "a1a1", "e2", "", "e7e8q", "h8h9", "\x01\x02\x03\x04", "a8a9z", "e1g1", "O-O", "a1h8", "....", "a0i9")


class HostilePositions(unittest.TestCase):
    def test_console_looks_at_and_searches_any_position(self):
        for name, (fen, is_read) in POSITIONS.items():
            with self.subTest(name), Engine(files={"book.bin": bytes(16)}) as engine:
                engine.console()
                engine.ask("sd 3")
                engine.ask("st 1")
                answer = engine.ask("setboard " + fen)
                self.assertEqual("FEN load Error" in answer, not is_read)
                self.assertEqual("+---+" in answer, is_read)
                thoughts = engine.ask("go")
                self.assertNotIn("unknown command", thoughts)
                for command in LOOKS:
                    answer = engine.ask(command)
                self.assertIn("Size of Scacchiera: 56 byte\n", answer)
                engine.send("quit")
                self.assertEqual(engine.wait_for_end(), 0)
                self.assertEqual(engine.errors, "")

    def test_protocol_searches_any_position_and_takes_any_move_text(self):
        for name, (fen, _) in POSITIONS.items():
            with self.subTest(name), Engine() as engine:
                engine.xboard()
                engine.tell("new", "force", "sd 3", "st 1", "setboard " + fen)
                for text in MOVE_TEXTS:
                    engine.tell("usermove " + text)
                engine.tell("go")
                engine.tell("undo", "undo", "force", "setboard " + fen, "go")
                engine.send("quit")
                self.assertEqual(engine.wait_for_end(), 0)
                self.assertEqual(engine.errors, "")

    def test_legal_positions_among_them_are_answered_with_a_move(self):
        for name in ("74 captures", "218 moves"):
            with self.subTest(name), Engine() as engine:
                engine.xboard()
                answers = engine.tell("new", "force", "sd 3", "st 1", "setboard " + POSITIONS[name][0], "go")
                self.assertTrue(any(line.startswith("move ") for line in answers), answers)

    def test_a_fen_of_4000_characters_is_refused_and_its_pieces_are_commands(self):
        with Engine() as engine:
            engine.console()
            engine.send("setboard " + "8/" * 2000, "size")
            text = engine.expect_text("Size of Scacchiera: 56 byte\n")
            # 4009 characters are 16 lines of 255 at most, and each has its answer.
            self.assertIn("FEN load Error", text)
            self.assertEqual(text.count("Error (unknown command): "), 15)
            engine.send("quit")
            self.assertEqual(engine.wait_for_end(), 0)


class HostileGames(unittest.TestCase):
    def play_knights(self, plies):
        """Knights go out and back in force mode; returns the engine's answers, the repetitions left out."""
        cycle = ["usermove " + move for move in ("g1f3", "g8f6", "f3g1", "f6g8")]
        with Engine() as engine:
            engine.xboard()
            engine.tell("new", "force")
            answers = engine.tell(*(cycle[ply % 4] for ply in range(plies)))
            engine.tell("new")
            self.assertRegex(engine.tell("sd 2", "usermove e2e4")[-1], r"^move [a-h][78][a-h][56] $")
            engine.send("quit")
            self.assertEqual(engine.wait_for_end(), 0)
        return [line for line in answers if not line.startswith("1/2-1/2")]

    def test_games_of_thousands_of_plies_are_taken(self):
        for plies in (1500, 6000):
            with self.subTest(plies):
                self.assertEqual(self.play_knights(plies), [])


class HostileLines(unittest.TestCase):
    def test_table_sizes_that_cannot_be_had_are_refused(self):
        with Engine() as engine:
            engine.xboard()
            answers = engine.tell("new", "sd 3", "memory 2147483647", "memory -1", "memory 99999999999999", "usermove e2e4")
            self.assertEqual(sum(line.startswith("tellusererror") for line in answers), 3)
            self.assertRegex(answers[-1], r"^move [a-h][78][a-h][56] $")

    def test_every_command_alone_or_with_nonsense_is_survived(self):
        words = ("protover", "new", "post", "nopost", "undo", "white", "black", "go", "force", ".", "setboard", "sd", "st",
                 "memory", "hard", "easy", "level", "time", "otim", "ping", "name", "setvalue", "usermove", "exit")
        tails = ("", " ", " %s%n%s", " -", " 99999999999999999999", " -99999999999999999999", " " + "A" * 240, " 1 2 3 4 5",
                 "\t7", " \xff\xfe", "x")
        with Engine() as engine:
            engine.xboard()
            engine.tell("sd 1", "st 1")
            for word in words:
                for tail in tails:
                    engine.tell("force", word + tail)
                    engine.tell("sd 2", "st 1", "level 0 1 0", "easy")
            engine.send("quit")
            self.assertEqual(engine.wait_for_end(), 0)
            self.assertEqual(engine.errors, "")


if __name__ == "__main__":
    unittest.main()
