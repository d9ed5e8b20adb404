"""The engine with opening books: both reply steps, the listing, and books that are missing or broken."""

import os
import struct
import subprocess
import tempfile
import unittest

from engine import Engine, PATIENCE, PROGRAM

START_KEY = 0x463B96181691FC9C
AFTER_E4_KEY = 0x823C9B50FD114196

INI = "[ENGINE]\nHashSize=16\nPawnHashSize=16\n[BOOK]\nRandBook=0\n[TABLEBASE]\nSyzygy=0\n"

# A line in which no position comes twice, longer than the protocol's use of the book.
LONG_LINE = ("a3 a6 b3 b6 c3 c6 d3 d6 e3 e6 f3 f6 g3 g6 h3 h6 a4 a5 b4 b5 c4 c5 d4 d5 e4 e5 f4 f5 g4 g5 h4 h5 "
             "Nd2 Nd7 Ngf3 Ngf6 Ra2 Ra7 Bb2 Bb7 Bg2 Bg7 Ra3 Ra6 Qc2 Qc7").split()
LONG_LINE_PLIES = len(LONG_LINE)

# The same in coordinates, for the opponent's moves.
LONG_LINE_COORDINATES = (
    "a2a3 a7a6 b2b3 b7b6 c2c3 c7c6 d2d3 d7d6 e2e3 e7e6 f2f3 f7f6 g2g3 g7g6 h2h3 h7h6 "
    "a3a4 a6a5 b3b4 b6b5 c3c4 c6c5 d3d4 d6d5 e3e4 e6e5 f3f4 f6f5 g3g4 g6g5 h3h4 h6h5 "
    "b1d2 b8d7 g1f3 g8f6 a1a2 a8a7 c1b2 c8b7 f1g2 f8g7 a2a3 a7a6 d1c2 d8c7").split()


def book_move(squares, promotion=0):
    file_from, rank_from, file_to, rank_to = (ord(c) for c in squares)
    return (promotion << 12 | (rank_from - ord("1")) << 9 | (file_from - ord("a")) << 6 |
            (rank_to - ord("1")) << 3 | (file_to - ord("a")))


def book(*records):
    """The bytes of a book of (key, squares, weight)."""
    return b"".join(struct.pack(">QHHI", key, book_move(squares), weight, 0) for key, squares, weight in records)


def book_of_lines(*lines):
    """The bytes of a book that the book program makes of opening lines."""
    with tempfile.TemporaryDirectory() as folder:
        source, target = os.path.join(folder, "lines.txt"), os.path.join(folder, "book.bin")
        with open(source, "w", encoding="ascii") as file:
            file.write("\n".join(lines) + "\n")
        subprocess.run([os.environ["TARVELMON_BOOK"], "build", "--max-ply", "100", "-o", target, source],
                       check=True, stdout=subprocess.DEVNULL, timeout=PATIENCE)
        with open(target, "rb") as file:
            return file.read()


class ProtocolTest(unittest.TestCase):

    def engine(self, content, ini=INI):
        engine = Engine(ini=ini, files={} if content is None else {"book.bin": content})
        self.addCleanup(engine.close)
        engine.xboard()
        return engine

    def test_book_move_is_shown_and_played(self):
        engine = self.engine(book((AFTER_E4_KEY, "e7e5", 1)))
        self.assertEqual(engine.tell("new", "usermove e2e4"), ["0 0 0 0 e7e5 (move from book)", "move e7e5"])

    def test_nopost_hides_the_thinking_line(self):
        engine = self.engine(book((AFTER_E4_KEY, "e7e5", 1)))
        self.assertEqual(engine.tell("new", "nopost", "usermove e2e4"), ["move e7e5"])

    def test_first_record_is_played_without_random_choice(self):
        engine = self.engine(book((START_KEY, "c2c4", 1), (START_KEY, "e2e4", 60000), (START_KEY, "d2d4", 9)))
        self.assertIn("move c2c4", engine.tell("new", "go"))

    def test_random_choice_takes_any_of_the_moves(self):
        engine = self.engine(book((START_KEY, "c2c4", 1), (START_KEY, "e2e4", 0)), INI.replace("RandBook=0", ""))
        moves = engine.tell("new", "go")
        self.assertIn(moves[-1], ["move c2c4", "move e2e4"])

    def test_castling_is_written_as_king_takes_rook(self):
        line = "e4 e5 Nf3 Nc6 Bb5 Nf6 O-O"
        engine = self.engine(book_of_lines(line))
        engine.tell("new", "go", "usermove e7e5", "usermove b8c6")
        self.assertIn("move e1g1", engine.tell("usermove g8f6"))
        self.assertEqual([l for l in engine.tell("force", "usermove f6e4", "usermove g1h1") if "Illegal" in l], [])

    def test_book_ends_with_the_engines_21st_move(self):
        engine = self.engine(book_of_lines(" ".join(LONG_LINE)))
        engine.tell("new", "sd 2")
        answers = engine.tell("go")
        for number in range(1, 23):
            self.assertEqual("(move from book)" in answers[0], number <= 21, (number, answers))
            if number <= 21:
                self.assertEqual(answers[-1], "move " + LONG_LINE_COORDINATES[2 * number - 2])
                answers = engine.tell("usermove " + LONG_LINE_COORDINATES[2 * number - 1])

    def test_book_is_found_again_after_a_miss(self):
        # Out of the book by the move order, back in it by transposition.
        engine = self.engine(book_of_lines("d4 Nf6 c4 e6 Nc3"))
        engine.tell("new", "sd 2")
        self.assertNotIn("(move from book)", "".join(engine.tell("usermove c2c4")))
        engine.tell("new", "force", "usermove c2c4", "usermove e7e6", "usermove d2d4", "usermove g8f6")
        self.assertIn("move b1c3", engine.tell("go"))

    def test_book_can_be_switched_off(self):
        engine = self.engine(book((START_KEY, "a2a4", 1)), INI.replace("[BOOK]\n", "[BOOK]\nBook=0\n"))
        answers = engine.tell("new", "sd 2", "go")
        self.assertFalse([line for line in answers if "book" in line])
        self.assertTrue(answers[-1].startswith("move "))

    def test_illegal_book_move_is_announced_all_the_same(self):
        engine = self.engine(book((START_KEY, "e2e5", 1)))
        self.assertEqual(engine.tell("new", "go"), ["0 0 0 0 e2e5 (move from book)", "move e2e5"])
        self.assertEqual(engine.quit(), 0)

    def test_missing_book_is_said_on_standard_error_and_the_engine_thinks(self):
        engine = self.engine(None)
        self.assertTrue(engine.tell("new", "sd 2", "go")[-1].startswith("move "))
        self.assertTrue(engine.tell("usermove e7e5")[-1].startswith(("move ", "Illegal")))
        self.assertEqual(engine.quit(), 0)
        self.assertEqual(engine.errors, "book.bin: No such file or directory\n" * 2)

    def test_error_text_is_a_comment_where_both_streams_are_one(self):
        with tempfile.TemporaryDirectory() as folder:
            with open(os.path.join(folder, "tarvelmon.ini"), "w", encoding="ascii") as file:
                file.write(INI)
            done = subprocess.run([os.path.abspath(PROGRAM)], cwd=folder, input=b"xboard\nnew\nsd 2\ngo\nquit\n",
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=PATIENCE, check=True)
        self.assertIn(b"\n#DEBUG book.bin: No such file or directory\n", done.stdout)

    def test_broken_books_are_survived(self):
        whole = book((START_KEY, "e2e4", 1), (AFTER_E4_KEY, "e7e5", 1))
        for name, content in {"empty": b"", "one byte": b"x", "cut": whole[:-1], "odd": whole + b"xyz",
                              "unsorted": whole[16:] + whole[:16], "zeros": bytes(160),
                              "ones": b"\xff" * 160, "crowded": whole[:16] * 101}.items():
            with self.subTest(name):
                engine = self.engine(content)
                self.assertTrue(engine.tell("new", "sd 2", "go")[-1].startswith("move "))
                self.assertEqual(engine.quit(), 0)
                self.assertEqual(engine.errors, "")

    def test_crowded_position_is_said_in_a_comment(self):
        engine = self.engine(book(*[(START_KEY, "e2e4", 1)] * 101))
        engine.tell("sd 2")
        self.assertEqual(engine.tell("new", "go")[0], "#DEBUG: Too many moves in this position (max=100)")

    def test_what_is_no_file_is_no_book(self):
        with tempfile.TemporaryDirectory() as folder:
            pipe = os.path.join(folder, "pipe")
            os.mkfifo(pipe)
            for name in (folder, pipe, "/dev/zero"):
                with self.subTest(name):
                    engine = self.engine(None, INI.replace("[BOOK]\n", "[BOOK]\nBookFile=%s\n" % name))
                    self.assertTrue(engine.tell("new", "sd 2", "go")[-1].startswith("move "))
                    self.assertEqual(engine.quit(), 0)
                    self.assertTrue(engine.errors.startswith(name + ": "), engine.errors)


class ConsoleTest(unittest.TestCase):

    def engine(self, content, ini=INI, arguments=()):
        engine = Engine(ini=ini, files={"book.bin": content}, arguments=arguments)
        self.addCleanup(engine.close)
        engine.console()
        return engine

    def test_book_move_is_played_and_shown(self):
        engine = self.engine(book((AFTER_E4_KEY, "e7e5", 1)))
        engine.ask("new")
        answer = engine.ask("e2e4")
        self.assertIn("move e7e5 from book\n", answer)
        self.assertNotIn("(move from book)", answer)
        self.assertIn("5 |   |   |   |   | p |", answer)

    def test_book_has_no_end_by_move_number(self):
        engine = self.engine(book_of_lines(" ".join(LONG_LINE)))
        engine.ask("new")
        answer = engine.ask("go")
        for ply in range(0, LONG_LINE_PLIES, 2):
            self.assertIn("move %s from book\n" % LONG_LINE_COORDINATES[ply], answer)
            if ply + 2 < LONG_LINE_PLIES:
                answer = engine.ask(LONG_LINE_COORDINATES[ply + 1])

    def test_listing_shows_moves_and_shares(self):
        engine = self.engine(book((START_KEY, "e2e4", 3), (START_KEY, "d2d4", 1), (START_KEY, "e1h1", 0)))
        self.assertEqual(engine.ask("book"), "move=e2e4 weight=75.00%\nmove=d2d4 weight=25.00%\n"
                                             "move=e1g1 weight= 0.00%\n")
        engine.ask("e2e4")
        self.assertEqual(engine.ask("book"), "823c9b50fd114196: No such key\n")

    def test_a_thousand_probes_do_with_32_file_handles(self):
        engine = self.engine(book((START_KEY, "e2e4", 3)), arguments=("sh", "-c", "ulimit -n 32; exec \"$0\""))
        for _ in range(20):
            engine.send(*["book"] * 50)
            for _ in range(50):
                self.assertIn("move=e2e4 weight=100.00%\n", engine.expect_text("\ntarvelmon> "))


if __name__ == "__main__":
    unittest.main()
