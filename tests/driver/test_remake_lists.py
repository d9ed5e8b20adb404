"""The golden lists can be remade: with play unchanged list_writer makes each of them to the byte, and what has changed is
shown by tools/remake_lists.py. Of the searches and games only the shortest of each kind: the golden tests have them all.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

TOP = pathlib.Path(__file__).resolve().parent.parent.parent
LISTS = TOP / "tests" / "data" / "golden"
TOOL = TOP / "tools" / "remake_lists.py"
PROGRAMS = os.environ.get("TARVELMON_LIST_WRITERS", "")

SEARCH_LISTS = ["search-full.txt", "search-material.txt", "search-full-syzygy-on-no-files.txt"]


def blocks_of(name):
    """The blocks of a list, each a text."""
    return ["fen " + block for block in ("\n" + (LISTS / name).read_text("ascii")).split("\nfen ")[1:]]


def attempts_of(block):
    """The thinking lines, word by word."""
    return [line.split() for line in block.splitlines() if line[:1].isdigit() and "{" not in line]


def nodes_of(block):
    return sum(int(attempt[2]) for attempt in attempts_of(block))


def kind_of(block):
    """What ends a search: its nodes before or within a depth, or its depth (0 for a single legal move), then also whether
    it saw a mate."""
    last_depth = attempts_of(block)[-1][0]
    limit = [line.split()[-1] for line in block.splitlines() if line.startswith("limit at depth ")]
    if limit:
        return ("within" if limit[0] == last_depth else "before",)
    return last_depth, "\nMate in" in block, "\nMated to" in block


def shortest_of_each_kind(blocks):
    shortest = {}
    for block in sorted(blocks, key=nodes_of):
        shortest.setdefault(kind_of(block), block)
    return list(shortest.values())


def write(name, text):
    program = "material_list_writer" if name == "search-material.txt" else "list_writer"
    return subprocess.run([os.path.join(PROGRAMS, program), name], input=text.encode("ascii"), capture_output=True, check=False)


class ListWriter(unittest.TestCase):
    maxDiff = 2000

    def assert_remade(self, name, read, expected):
        made = write(name, read)
        self.assertEqual((made.returncode, made.stderr), (0, b""), name)
        self.assertMultiLineEqual(made.stdout.decode("ascii"), expected)

    def test_makes_the_lists_of_the_board_and_the_evaluation(self):
        for name, read in [("moves.txt", "moves.txt"), ("see.txt", "see.txt"), ("eval.txt", "eval.txt"),
                           ("user.txt", "user.in")]:
            with self.subTest(name):
                self.assert_remade(name, (LISTS / read).read_text("ascii"), (LISTS / name).read_text("ascii"))

    def test_makes_searches_of_each_kind(self):
        kinds = set()
        for name in SEARCH_LISTS:
            blocks = shortest_of_each_kind(blocks_of(name))
            kinds |= {kind_of(block) for block in blocks}
            with self.subTest(name):
                self.assert_remade(name, "\n".join(blocks) + "\n", "\n".join(blocks) + "\n")
        self.assertLessEqual({"within", "before", "0", "9", "12"}, {kind[0] for kind in kinds})

    def test_makes_a_game_with_its_result(self):
        ended = [block for block in blocks_of("games-depth5.txt") if "{" in block]
        game = min(ended, key=nodes_of).rstrip("\n") + "\n"
        self.assert_remade("games-depth5.txt", game, game)

    def test_takes_positions_alone_from_the_old_list(self):
        for name in ["see.txt", "search-material.txt"]:
            block = min(blocks_of(name), key=nodes_of if name != "see.txt" else len)
            with self.subTest(name):
                self.assert_remade(name, "a head\n" + block.splitlines()[0] + "\n1 2 3 a2a3\n", block.rstrip("\n") + "\n")

    def test_tells_bad_input(self):
        for name, text in [("see.txt", ""), ("see.txt", "no position\n"), ("see.txt", "fen \n"), ("eval.txt", "fen 8/8\n"),
                           ("user.txt", ""), ("user.txt", "8/8/8/8/8/8/8/8 w - - 0 1\n"), ("games-depth5.txt", "fen x\n"),
                           ("user.in", "fen 4k3/8/8/8/8/8/8/4K3 w - - 0 1\n"), ("", "")]:
            with self.subTest(name + " " + text):
                made = write(name, text)
                self.assertEqual(made.returncode, 2)
                self.assertNotEqual(made.stderr, b"")


class RemakeLists(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="tarvelmon-")
        self.addCleanup(folder.cleanup)
        self.lists = pathlib.Path(folder.name)
        for name in ["see.txt", "eval.txt", "user.in", "user.txt"]:
            shutil.copy(LISTS / name, self.lists)

    def run_tool(self, *arguments):
        return subprocess.run(
            [sys.executable, "-B", TOOL, "--programs", PROGRAMS, "--lists", self.lists, *arguments],
            capture_output=True, text=True, check=False)

    def alter(self, name, before, after, times=1):
        """Puts another number into a list. Returns its text before."""
        text = (self.lists / name).read_text("ascii")
        self.assertTrue(before in text)
        (self.lists / name).write_text(text.replace(before, after, times), "ascii")
        return text

    def test_says_that_nothing_differs(self):
        ran = self.run_tool("see.txt", "eval.txt", "user.txt")
        self.assertEqual(ran.returncode, 0, ran.stderr)
        self.assertEqual(ran.stdout, "see.txt: the same, 957 lines\neval.txt: the same, 1262 lines\n"
                                     "user.txt: the same, 2000 lines\n")

    def test_shows_a_changed_value_and_leaves_the_list(self):
        self.alter("eval.txt", "evaluate -16 ", "evaluate -17 ")
        altered = (self.lists / "eval.txt").read_text("ascii")
        ran = self.run_tool("see.txt", "eval.txt")
        self.assertEqual(ran.returncode, 1, ran.stderr)
        self.assertIn("see.txt: the same", ran.stdout)
        self.assertIn("-evaluate -17 kingDanger 0 easyVal -14 sufficientMaterial 1\n"
                      "+evaluate -16 kingDanger 0 easyVal -14 sufficientMaterial 1\n", ran.stdout)
        self.assertIn("eval.txt: 1 of 1262 lines gone, 1 come\n", ran.stdout)
        self.assertIn("no longer come from a second implementation", ran.stdout)
        self.assertEqual((self.lists / "eval.txt").read_text("ascii"), altered)

    def test_shows_the_beginning_of_a_long_difference(self):
        self.alter("eval.txt", "sufficientMaterial 1", "sufficientMaterial 3", times=100)
        ran = self.run_tool("eval.txt")
        self.assertEqual(ran.returncode, 1)
        self.assertIn("more lines of this difference\n", ran.stdout)
        self.assertIn("eval.txt: 100 of 1262 lines gone, 100 come\n", ran.stdout)
        self.assertLess(len(ran.stdout.splitlines()), 50)

    def test_writes_the_new_list(self):
        before = self.alter("user.txt", "rule50=1 ", "rule50=2 ")
        ran = self.run_tool("--write", "user.txt")
        self.assertEqual(ran.returncode, 1, ran.stderr)
        self.assertIn("user.txt: written\n", ran.stdout)
        self.assertEqual((self.lists / "user.txt").read_text("ascii"), before)
        self.assertEqual(self.run_tool("user.txt").returncode, 0)

    def test_writes_nothing_that_could_not_be_made(self):
        (self.lists / "see.txt").write_text("fen 8/8\n", "ascii")
        ran = self.run_tool("--write", "see.txt")
        self.assertEqual(ran.returncode, 2)
        self.assertIn("no position: fen 8/8", ran.stderr)
        self.assertEqual((self.lists / "see.txt").read_text("ascii"), "fen 8/8\n")

    def test_refuses_what_is_no_list(self):
        for name in ["user.in", "see", "../golden/see.txt"]:
            self.assertEqual(self.run_tool(name).returncode, 2, name)
        os.remove(self.lists / "see.txt")
        self.assertEqual(self.run_tool("see.txt").returncode, 2)


if __name__ == "__main__":
    unittest.main()
