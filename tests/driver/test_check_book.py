"""tools/check_book.py finds the moves of opening lines that lose, tells where they stand, and searches nothing twice."""

import os
import subprocess
import sys
import unittest

from analyse import PROGRAM, AnalyseTest, text_of

TOOL = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools", "check_book.py")

GOOD_LINES = """\
# head
[Ruy Lopez]
1. e4 e5 2. Nf3 Nc6 3. Bb5 a6  # so far
5: 1. d4 d5 2. c4 e6
"""


class CheckBook(AnalyseTest):

    def check(self, lines, *arguments, status=0):
        """Runs the tool at a small depth; returns the lines that it prints. `errors` is what it says beside."""
        self.write("lines.txt", lines)
        done = subprocess.run(
            [sys.executable, "-B", TOOL, "--analyse", PROGRAM, "--depth", "6", "--hash", "4", "--jobs", "1",
             *arguments, "lines.txt"],
            cwd=self.folder, capture_output=True, text=True, check=False)
        self.errors = done.stderr
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout.splitlines()

    def test_sound_lines_pass(self):
        self.assertEqual(self.check(GOOD_LINES), ["11 positions, 10 moves to be played, 10 of them judged; 0 findings"])

    def test_a_blunder_of_either_side_is_told_with_its_line(self):
        found = self.check(GOOD_LINES + "1. e4 e5 2. Nf3 Nc6 3. Nxe5 Nxe5\n1. e4 e5 2. Nf3 Qg5\n", status=1)
        self.assertEqual(len(found), 3, found)
        self.assertRegex(found[0], r"^lines\.txt:5: 3\. Nxe5 stands at -\d\.\d\d; had [+-]0\.\d\d before$")
        self.assertRegex(found[1], r"^lines\.txt:6: 2\.\.\. Qg5 stands at -\d+\.\d\d; had [+-]0\.\d\d before$")
        self.assertTrue(found[2].endswith("; 2 findings"), found[2])

    def test_the_best_move_loses_nothing(self):
        results = ("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - acd 6; ce 90; pm %s;\n"
                   "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - acd 6; ce -10; pm e5;\n")
        self.write("found.epd", results % "e4")
        self.check("1. e4\n", "--results", "found.epd")
        self.write("found.epd", results % "d4")
        found = self.check("1. e4\n", "--results", "found.epd", status=1)
        self.assertEqual(found[0], "lines.txt:1: 1. e4 falls from +0.90 to +0.10")

    def test_what_is_only_answered_is_not_judged(self):
        self.check(GOOD_LINES + "1. e4 e5 2. Nf3 Nc6 3. Nxe5? Nxe5\n1. e4 e5 2. Nf3 Qg5?! 3. Nxg5\n")

    def test_a_mark_that_another_line_does_not_bear_is_told(self):
        found = self.check(GOOD_LINES + "1. d4 d5 2. c4? c6\n1. e4? e5\n", status=1)
        self.assertEqual(found[:2], ["lines.txt:5: 2. c4? is played in line 4", "lines.txt:6: 1. e4? is played in line 3"])
        self.assertTrue(found[2].endswith("; 2 findings"), found[2])

    def test_what_follows_an_own_move_that_is_only_answered_is_not_judged(self):
        lines = GOOD_LINES + "1. e4 e5 2. Nf3 Qg5? 3. Nxg5 d6 4. Nf3\n"
        self.assertIn("15 positions, 12 moves to be played, 12 of them judged", self.check(lines)[0])
        found = self.check(lines + "1. e4 e5 2. Nf3 d6 3. d4 Qg5 4. Nxg5\n", status=1)
        self.assertEqual(len(found), 2, found)
        self.assertIn("3... Qg5", found[0])

    def test_what_neither_side_plays_is_not_searched(self):
        found = self.check(GOOD_LINES + "1. e4 e5 2. Nf3 Qg5? 3. Nh4? Qd8 4. Nf3\n")
        self.assertEqual(found, ["11 positions, 10 moves to be played, 10 of them judged; 0 findings"])
        self.assertIn(": 11 positions to search", self.errors)

    def test_a_move_in_several_lines_is_told_once(self):
        found = self.check("1. e4 e5 2. Nf3 Qg5 3. Nxg5\n1. e4 e5 2. Nf3 Qg5 3. d4\n", status=1)
        self.assertIn(" (and in 1 more)", found[0])
        self.assertIn("lines.txt:2: 3. d4 falls from +", found[1])
        self.assertEqual(len(found), 3, found)

    def test_a_mate_is_no_number(self):
        found = self.check("1. f3 e5 2. g4 Nf6\n", status=1)
        self.assertRegex(found[0], r"2\. g4 stands at -mate; had [+-]0\.\d\d before")
        self.assertRegex(found[1], r"2\.\.\. Nf6 falls from \+mate to ")

    def test_the_limit_can_be_set(self):
        self.check("1. e4 e5 2. Nf3 Nc6 3. Nxe5 Nxe5\n", "--limit", "5")

    def test_only_what_is_new_is_searched(self):
        self.check(GOOD_LINES, "--results", "found.epd")
        self.assertIn(": 11 positions to search", self.errors)
        self.check(GOOD_LINES + "1. d4 d5 2. c4 c6\n", "--results", "found.epd")
        self.assertIn(": 1 position to search", self.errors)
        kept = text_of(self.path("found.epd"))
        self.assertEqual(kept.count("\n"), 12)
        self.check(GOOD_LINES, "--results", "found.epd")
        self.assertEqual((self.errors, text_of(self.path("found.epd"))), ("", kept))
        self.check(GOOD_LINES, "--results", "found.epd", "--depth", "7", "--limit", "1")
        self.assertIn(": 11 positions to search", self.errors)

    def test_a_line_that_was_cut_off_is_searched_again(self):
        self.check(GOOD_LINES, "--results", "found.epd")
        whole = text_of(self.path("found.epd"))
        self.write("found.epd", whole[:-20])
        self.check(GOOD_LINES, "--results", "found.epd")
        self.assertIn(": 1 position to search", self.errors)
        self.assertEqual(text_of(self.path("found.epd")).splitlines()[-1], whole.splitlines()[-1])

    def test_a_line_whose_numbers_are_none_is_searched_again(self):
        self.write("found.epd", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - acd six; ce 0; pm e4;\n")
        self.check(GOOD_LINES, "--results", "found.epd")
        self.assertIn(": 11 positions to search", self.errors)

    def test_some_lines_can_be_searched_first(self):
        self.write("first.txt", "1. d4 d5 2. c4 e6\n")
        found = self.check(GOOD_LINES, "--results", "found.epd", "--only", "first.txt")
        self.assertEqual(found, ["11 positions, 10 moves to be played, 4 of them judged; 0 findings"])

    def test_the_same_position_stands_once(self):
        self.check("1. d4 Nf6 2. c4 e6\n1. c4 Nf6 2. d4 e6\n", "--write", "positions.epd")
        epds = text_of(self.path("positions.epd")).splitlines()
        self.assertEqual(len(epds), 7)
        self.assertEqual(len(set(epds)), 7)
        self.check("1. e4 Nf6 2. e5 d5 3. exd6\n", "--write", "positions.epd")
        self.assertIn("rnbqkb1r/ppp1pppp/5n2/3pP3/8/8/PPPP1PPP/RNBQKBNR w KQkq d6", text_of(self.path("positions.epd")))

    def test_what_cannot_be_checked_has_a_status_of_its_own(self):
        self.check("1. e4 e5\n1. e4 e5 2. Nd4\n", status=2)
        self.assertIn("lines.txt:2: no legal move: Nd4", self.errors)
        self.check("# nothing\n", status=2)
        self.assertIn("lines.txt: no moves to be played in it", self.errors)
        self.check(GOOD_LINES, "--only", "none.txt", status=2)
        self.assertIn("none.txt: No such file or directory", self.errors)
        self.check(GOOD_LINES, "--depth", "0", status=2)
        self.check(GOOD_LINES, "--no-such-option", status=2)
        self.check(GOOD_LINES, "--analyse", "/nonexistent/program", status=2)
        self.assertIn("/nonexistent/program: No such file or directory", self.errors)
        self.check(GOOD_LINES, "--analyse", "/bin/false", status=2)
        self.assertIn("11 positions without a score", self.errors)


if __name__ == "__main__":
    unittest.main()
