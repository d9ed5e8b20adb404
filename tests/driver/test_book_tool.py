"""The book program on its command line."""

import os
import subprocess
import unittest

from engine import PATIENCE
from scratch_folder import ScratchFolderTest

TOOL = os.environ.get("TARVELMON_BOOK", "")


class BookToolTest(ScratchFolderTest):
    encoding = "latin-1"

    def run_tool(self, *arguments, status=0, limits=()):
        done = subprocess.run([*limits, os.path.abspath(TOOL), *arguments], cwd=self.folder, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=PATIENCE, check=False)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        self.errors = done.stderr
        return done.stdout

    def build(self, name, text, *options):
        self.write("lines.txt", text)
        self.run_tool("build", "-o", name, *options, "lines.txt")
        return name

    def test_lines_become_a_book(self):
        self.write("lines.txt", "1. e4 e5 2. Nf3\n2: 1. e4 c5\nd4 d5\n")
        self.assertEqual(self.run_tool("build", "-o", "book.bin", "lines.txt"),
                         "lines.txt: 3 lines, 0 faulty\nbook.bin: 6 records\n")
        self.assertEqual(os.path.getsize(self.path("book.bin")), 6 * 16)
        self.assertEqual(self.run_tool("show", "book.bin"),
                         "key 463b96181691fc9c\ne2e4   weight     3   75.00%\nd2d4   weight     1   25.00%\n")
        self.assertEqual(self.run_tool("show", "book.bin", "e4"),
                         "key 823c9b50fd114196\nc7c5   weight     2   66.67%\ne7e5   weight     1   33.33%\n")
        self.assertEqual(self.run_tool("show", "book.bin", "e4 e5"), self.run_tool("show", "book.bin", "e2e4", "e7e5"))
        self.assertIn("no moves\n", self.run_tool("show", "book.bin", "a4"))
        self.assertIn("e2e4 ", self.run_tool(
            "show", "book.bin", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"))
        self.assertIn("the book is sound\n", self.run_tool("check", "book.bin"))

    def test_games_become_a_book(self):
        self.write("games.PGN", "[Event \"x\"]\n\n1. e4 e5 *\n\n[Event \"y\"]\n\n1. e4 Ke7 *\n")
        self.assertEqual(self.run_tool("build", "-o", "book.bin", "games.PGN"),
                         "games.PGN: 2 games, 1 faulty\nbook.bin: 2 records\n")
        self.assertEqual(self.errors, "games.PGN:7: \"Ke7\" is not a legal move here\n")
        self.assertEqual(self.run_tool("build", "-o", "book.bin", "--min-count", "2", "games.PGN"),
                         "games.PGN: 2 games, 1 faulty\nbook.bin: 1 records\n")

    def test_only_the_asked_number_of_moves_counts(self):
        self.build("book.bin", "e4 e5 Nf3 Nc6\n", "--max-ply", "3")
        self.assertEqual(os.path.getsize(self.path("book.bin")), 3 * 16)

    def test_books_are_merged(self):
        self.build("a.bin", "e4 e5\n")
        self.build("b.bin", "4: e4 c5\n")
        self.assertEqual(self.run_tool("merge", "-o", "c.bin", "a.bin", "b.bin"), "c.bin: 3 records\n")
        self.assertIn("e2e4   weight     5  100.00%\n", self.run_tool("show", "c.bin"))
        self.assertIn("the book is sound\n", self.run_tool("check", "c.bin"))

    def test_fault_in_a_line_stops_the_work(self):
        self.write("lines.txt", "e4 e5\ne4 e6 Ke3\n")
        self.run_tool("build", "-o", "book.bin", "lines.txt", status=1)
        self.assertEqual(self.errors, "lines.txt:2: \"Ke3\" is not a legal move here\n")
        self.assertFalse(os.path.exists(self.path("book.bin")))

    def test_faulty_book_is_found(self):
        self.build("book.bin", "e4 e5\n")
        with open(self.path("book.bin"), "rb") as file:
            content = file.read()
        for name, bad in {"cut": content[:-1], "unsorted": content[16:] + content[:16], "empty": b"",
                          "repeated": content[:16] + content}.items():
            with self.subTest(name):
                with open(self.path("bad.bin"), "wb") as file:
                    file.write(bad)
                self.assertIn("the book is faulty\n", self.run_tool("check", "bad.bin", status=1))

    def test_missing_files_are_said(self):
        for command in (("show", "none.bin"), ("check", "none.bin"), ("build", "-o", "x.bin", "none.txt"),
                        ("merge", "-o", "x.bin", "none.bin", "none.bin")):
            with self.subTest(command):
                self.run_tool(*command, status=1)
                self.assertRegex(self.errors, r"^none\....: No such file or directory\n$")

    @unittest.skipIf(os.environ.get("TARVELMON_SANITIZE"), "the sanitizer takes more memory than the limit")
    def test_short_memory_is_said(self):
        with open(self.path("large.bin"), "wb") as file:
            file.truncate(1500 << 20)
        for command in (("check", "large.bin"), ("show", "large.bin"), ("merge", "-o", "x", "large.bin", "large.bin"),
                        ("build", "-o", "x", "large.bin")):
            with self.subTest(command):
                self.run_tool(*command, status=1, limits=("prlimit", "--as=%d" % (1500000 << 10)))
                self.assertEqual(self.errors, "tarvelmon-book: there is not enough memory\n")

    def test_a_folder_cannot_be_replaced_by_a_book(self):
        os.mkdir(self.path("folder"))
        self.write("lines.txt", "e4 e5\n")
        for name in ("folder", "folder/"):
            with self.subTest(name):
                self.run_tool("build", "-o", name, "lines.txt", status=1)
                self.assertRegex(self.errors, "^%s: (Is|Not) a directory\n$" % name)
        self.assertEqual(sorted(os.listdir(self.path(""))), ["folder", "lines.txt"])
        self.assertEqual(os.listdir(self.path("folder")), [])

    def test_wrong_arguments_are_said(self):
        for arguments in ((), ("sing",), ("build",), ("build", "-o"), ("build", "-o", "x"), ("build", "x"),
                          ("build", "-o", "x", "--max-ply", "0", "y"), ("build", "-o", "x", "--max-ply", "401", "y"),
                          ("build", "-o", "x", "--min-count", "z", "y"), ("build", "-o", "x", "--fast", "y"),
                          ("merge", "-o", "x", "y"), ("show",), ("check",), ("check", "a", "b")):
            with self.subTest(arguments):
                self.assertEqual(self.run_tool(*arguments, status=2), "")
                self.assertIn("Try: tarvelmon-book help\n", self.errors)

    def test_wrong_positions_are_said(self):
        self.build("book.bin", "e4\n")
        self.run_tool("show", "book.bin", "e5", status=1)
        self.assertIn("\"e5\" is not a legal move here", self.errors)
        self.run_tool("show", "book.bin", "8/8 w", status=1)
        self.assertIn("\"8/8 w\" is not a position", self.errors)
        self.run_tool("show", "book.bin", "Nf3 Nf6 Ng1 Ng8 " * 101, status=1)
        self.assertIn("one move too many", self.errors)

    def test_help_tells_of_the_keys(self):
        for word in ("help", "--help", "-h"):
            text = self.run_tool(word)
            self.assertIn("en passant", text)
            self.assertIn("tarvelmon-book merge", text)


if __name__ == "__main__":
    unittest.main()
