"""Games in, annotated games out: tarvelmon-analyse --pgn, read back by python-chess and pgn-extract where they are."""

import io
import json
import os
import random
import re
import shutil
import subprocess
import unittest

from analyse import AnalyseTest, PROGRAM, chess, children, end
from engine import PATIENCE

PGN_EXTRACT = shutil.which("pgn-extract", path=os.environ.get("PATH", "") + ":/usr/games")

# Two games: a short one with everything in it, and one from a position of its own with Black to move.
GAMES = """[Event "A \\"quoted\\" name"]
[White "One"]
[Black "Two"]
[Result "0-1"]
[TimeControl "60+1"]

{before the first} 1. f3?! {[%clk 0:01:00] a weak move} e5 $14 (1... d5 {solid} (1... c5) 2. d4) {after a variation}
2. g4?? ; to the end of the line
Qh4# 0-1

[Event "Black begins"]
[FEN "r5k1/5ppp/8/8/8/8/5PPP/3R2K1 b - - 3 30"]
[SetUp "1"]

30... h6 31. Rd7 {[%eval 0.99] [%depth 3]} Ra1+ {[%eval 5.0] kept} *
"""
FAULTY = '[Event "x"]\n\n1. e4 e5 2. Ke3 {no} Nc6 *\n'


def random_games(count, plies):
    """Games of random moves with variations and comments, as python-chess writes them."""
    chance = random.Random(20261121)
    texts = []
    for number in range(count):
        game = chess.pgn.Game()
        game.headers["Event"] = f"Random {number}"
        game.headers["White"] = chance.choice(["Anna", "Bela", "O'Neil"])
        node = game
        board = game.board()
        for _ in range(chance.randrange(plies)):
            moves = list(board.legal_moves)
            if not moves:
                break
            if len(moves) > 1 and chance.random() < 0.1:
                side = node.add_variation(chance.choice(moves)) if node.variations else None
                if side is not None:
                    side.comments = ["a side line (with brackets)"]
            parent, move = node, chance.choice(moves)
            node = node.add_main_variation(move)
            if len(moves) > 1 and chance.random() < 0.1:
                other = chance.choice([other for other in moves if other != move])
                parent.add_variation(other).comments = ["; or this"]
            if chance.random() < 0.1:
                node.comments = [f"[%clk 0:00:{chance.randrange(10, 60)}] said"]
            if chance.random() < 0.05:
                node.nags.add(chance.choice([1, 3, 10, 14]))
            board.push(move)
        game.headers["Result"] = board.result()
        texts.append(str(game))
    return "\n\n".join(texts) + "\n"


class Games(AnalyseTest):

    def test_a_game_is_annotated_move_by_move(self):
        output = self.analyse("--pgn", "--depth", "4", given=GAMES)
        first, second = output.split("\n\n[Event ")
        self.assertTrue(first.startswith(GAMES[:GAMES.index("\n\n") + 2] + "{before the first} 1. f3 $6 {[%clk"), first)
        self.assertEqual(len(re.findall(r"\[%eval -?[\d.#-]+\] \[%depth 4\]\}(?! ?\))", first)), 3)
        self.assertIn("{[%clk 0:01:00] a weak move}", first)
        self.assertIn("(1... d5 {solid} (1... c5) 2. d4) {after a variation}", first.replace("\n", " "))
        self.assertIn("{ to the end of the line }", first.replace("\n", " "))
        self.assertRegex(first.replace("\n", " "), r"2\. g4 \$4 .*\{\[%eval #-1\] \[%depth 4\]\} \(2\. \S+ .*\) "
                                                   r"2\.\.\. Qh4# 0-1$")
        self.assertRegex(second.replace("\n", " "), r"30\.\.\. h6 .*\{\[%eval [^]]*\] \[%depth 4\]\} 31\. Rd7 ")
        self.assertIn(" kept}", second)
        self.assertNotIn("0.99", second)
        self.assertNotIn("5.0]", second)
        self.assertTrue(second.endswith("*\n\n"))

    def test_the_same_bytes_for_any_number_of_jobs(self):
        whole = self.analyse("--pgn", "--depth", "3", "--jobs", "1", given=GAMES)
        self.assertEqual(self.analyse("--pgn", "--depth", "3", "--jobs", "3", given=GAMES), whole)
        self.assertEqual(self.analyse("--pgn", "--depth", "3", "--lines", "1", given=GAMES) +
                         self.analyse("--pgn", "--depth", "3", "--lines", "2-", given=GAMES), whole)

    def test_annotating_again_adds_nothing(self):
        for threshold in ("50", "0.5"):
            once = self.analyse("--pgn", "--depth", "3", "--threshold", threshold, given=GAMES)
            again = self.analyse("--pgn", "--depth", "3", "--threshold", threshold, given=once)
            for mark in ("[%eval ", "(", "$", "{"):
                self.assertEqual(again.count(mark), once.count(mark), mark)
        self.assertEqual(self.analyse("--pgn", "--depth", "3", "--threshold", threshold, given=again), again)

    def test_a_game_that_cannot_be_played_stays_as_it_is(self):
        output = self.analyse("--pgn", "--depth", "3", given=FAULTY + "\n" + GAMES)
        self.assertTrue(output.startswith(FAULTY.strip() + "\n\n[Event \"A "))
        self.assertEqual(self.errors, "standard input:3: \"Ke3\" is not a legal move here; the game is left as it is\n")
        self.analyse("--pgn", "--depth", "3", given=FAULTY, status=1)
        for bad in ("{", "(", "1. e4 )", "}", "[FEN \"x\"]\n\n*", "1. e4 {x", "1. e4 ((((", "[", "1. -- e5 *"):
            with self.subTest(bad):
                self.analyse("--pgn", "--depth", "2", given=bad, status=1)

    def bytes_of(self, given, *arguments):
        """What the program makes of bytes in a file of any kind."""
        with open(self.path("given.pgn"), "wb") as file:
            file.write(given)
        done = subprocess.run([PROGRAM, "--pgn", "--depth", "3", *arguments, self.path("given.pgn")],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=PATIENCE, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        return done.stdout

    def test_how_lines_end_and_a_file_begins_makes_no_difference(self):
        plain = GAMES.encode()
        whole = self.bytes_of(plain)
        self.assertEqual(self.bytes_of(plain.replace(b"\n", b"\r\n")), whole)
        self.assertEqual(self.bytes_of(b"\xef\xbb\xbf" + plain.replace(b"\n\n[", b"\n\n\xef\xbb\xbf[")), whole)
        self.assertEqual(self.bytes_of(b"% made by hand\n" + plain), whole)
        self.assertEqual(self.bytes_of(b"\0\t \n" + plain.rstrip()), whole)

    def test_letters_of_any_alphabet_are_kept(self):
        for encoding in ("latin-1", "utf-8"):
            head = '[White "M\xfcller, J\xf6rg"]'.encode(encoding)
            comment = '{tr\xe8s bien \xb1}'.encode(encoding)
            given = head + b"\n\n1. e4 \xb1 " + comment + b" *\n"
            output = self.bytes_of(given)
            self.assertTrue(output.startswith(head + b"\n\n1. e4 " + comment + b" {[%eval"), output)
            json.loads(self.bytes_of(given, "--json"))
            self.bytes_of(given, "--html", self.path("page.html"))
            with open(self.path("page.html"), encoding="utf-8") as page:
                self.assertIn("M\xfcller" if encoding == "utf-8" else "M?ller", page.read())

    @unittest.skipIf(chess is None, "python-chess cannot be imported")
    def test_a_mixture_is_read_back_by_another_program(self):
        given = ("; made by a program\n\n" + GAMES + "\n[Event \"no result\"]\n\n1. e4 e5 2. Nf3 {a\n% b}\n\n"
                 "[Event \"no moves\"]\n\n1/2-1/2 {agreed}\n\n[Event \"deep\"]\n\n1. d4 (1. e4 (1. c4 (1. f4 {(}) c5) "
                 "1... e5 ; )\n 2. Nf3) 1... d5 += 2. c4 1/2 ; agreed\n\n1. e4 *")
        output = io.StringIO(self.analyse("--pgn", "--depth", "2", given=given))
        self.assertEqual(self.errors, "")
        games = list(iter(lambda: chess.pgn.read_game(output), None))
        self.assertEqual([len(list(game.mainline_moves())) for game in games], [4, 3, 3, 0, 3, 1])
        self.assertEqual([game.headers["Event"] for game in games[2:5]], ["no result", "no moves", "deep"])
        for game in games:
            self.assertEqual(game.errors, [])
        self.assertEqual(games[4].next().nags, set())
        self.assertEqual(games[4].next().next().nags, {14})
        self.assertIn("agreed", games[4].end().comments)
        self.assertIsNotNone(games[2].end().eval())

    def test_what_stands_in_an_earlier_output_is_not_searched_again(self):
        whole = self.analyse("--pgn", "--depth", "3", given=GAMES)
        marked = re.sub(r"%depth 3", "%depth 33", whole, count=1)
        for length in (len(marked) - 5, marked.index("[Event \"Black") + 150):
            self.write("part", marked[:length])
            self.assertEqual(self.analyse("--pgn", "--depth", "3", "--resume", self.path("part"), given=GAMES), marked)

    def test_less_depth_and_moves_without_an_evaluation_are_searched_again(self):
        whole = self.analyse("--pgn", "--depth", "3", given=GAMES)
        for earlier in (self.analyse("--pgn", "--depth", "2", given=GAMES), GAMES,
                        re.sub(r"\{\[%eval [^]]*\] \[%depth 3\]\}", "", whole, count=1),
                        re.sub(r"\{\[%eval [^]]*\] \[%depth 3\]\}", "{not analysed: x}", whole, count=1),
                        whole.replace("[%depth 3]", "[%depth x]", 1)):
            self.write("part", earlier)
            again = self.analyse("--pgn", "--depth", "3", "--resume", self.path("part"), given=GAMES)
            self.assertEqual(again, whole)

    def test_a_worker_that_dies_leaves_its_move_alone(self):
        process = self.start("--pgn", "--jobs", "1", "--time", "1")
        process.stdin.write("1. e4 e5 *\n")
        process.stdin.close()
        process.stdin = open(os.devnull, "w", encoding="ascii")
        while not children(process):
            pass
        end(children(process)[0])
        output = process.stdout.read()
        self.assertIn("1. e4 {[%eval", output)
        self.assertIn("0:", process.stderr.read())
        self.assertEqual(process.wait(PATIENCE), 0)

    def test_json_tells_each_move(self):
        games = [json.loads(line) for line in self.analyse("--pgn", "--json", "--depth", "4", given=GAMES).splitlines()]
        self.assertEqual([[move["san"] for move in game["moves"]] for game in games],
                         [["f3", "e5", "g4", "Qh4#"], ["h6", "Rd7", "Ra1+"]])
        self.assertEqual(games[0]["moves"][2]["mate"], -1)
        self.assertGreater(games[0]["moves"][2]["loss"], 800)
        self.assertEqual(games[0]["moves"][3]["loss"], 0)

    @unittest.skipIf(chess is None, "python-chess cannot be imported")
    def test_python_chess_reads_all_of_it_back(self):
        given = random_games(int(os.environ.get("TARVELMON_GAMES", "30")), 60)
        output = self.analyse("--pgn", "--depth", "1", "--hash", "1", given=given)
        before, after = io.StringIO(given), io.StringIO(output)
        while True:
            old, new = chess.pgn.read_game(before), chess.pgn.read_game(after)
            if old is None or new is None:
                break
            self.assertEqual(new.errors, [])
            self.assertEqual(old.headers, new.headers)
            self.assertEqual(list(old.mainline_moves()), list(new.mainline_moves()))
            for was, now in zip(old.mainline(), new.mainline()):
                for comment in was.comments:
                    self.assertIn(comment, now.comments)
                self.assertLessEqual(was.nags, now.nags)
                if not now.board().is_checkmate():
                    self.assertIsNotNone(now.eval(), now)
                lines = [(side.move, comment) for side in now.parent.variations[1:] for comment in side.comments]
                for side in was.parent.variations[1:]:
                    for comment in side.comments:
                        self.assertIn((side.move, comment), lines)
        self.assertIsNone(old)
        self.assertIsNone(new)

    @unittest.skipIf(chess is None or PGN_EXTRACT is None, "python-chess and pgn-extract are needed")
    def test_pgn_extract_reads_it_without_a_complaint(self):
        count = int(os.environ.get("TARVELMON_GAMES", "30"))
        output = self.write("out.pgn", self.analyse("--pgn", "--depth", "1", "--hash", "1", given=random_games(count, 60)))
        done = subprocess.run([PGN_EXTRACT, "-r", output], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, timeout=PATIENCE, check=True)
        self.assertIn(f"{count} games matched out of {count}.", done.stdout)
        self.assertNotIn("Line number", done.stdout)  # as each of its complaints tells


if __name__ == "__main__":
    unittest.main()
