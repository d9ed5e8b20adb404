"""The companion finds what the engine finds: depth, score, nodes and line of each attempt, and the move, over both
protocols, against the lists of searches that an independent model made."""

import collections
import os
import unittest

from chess_rules import Game
from gui import Gui, findings, uci_score, xboard_score

LIST = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "data", "golden", "search-full.txt")

# The sizes that the lists were made with.
INI = "[ENGINE]\nHashSize=64\nPawnHashSize=256\n[BOOK]\nBook=0\n[TABLEBASE]\nSyzygy=0\n"

SLOW = bool(os.environ.get("TARVELMON_SANITIZE"))
NODES_PER_SEARCH = 10000 if SLOW else 150000
POSITIONS = 20 if SLOW else 100

Attempt = collections.namedtuple("Attempt", "depth score nodes line")
Search = collections.namedtuple("Search", "fen depth attempts best")


def read_searches():
    """The searches of the list, each to the last depth that its nodes allow; `best` only where that is the list's own
    last depth."""
    searches = []
    with open(LIST, encoding="ascii") as file:
        blocks = file.read().split("fen ")[1:]
    for block in blocks[:POSITIONS]:
        lines = block.splitlines()
        attempts, nodes, cut, best = [], 0, None, None
        for line in lines[1:]:
            words = line.split()
            if words[0].isdigit():
                attempt = Attempt(int(words[0]), int(words[1]), int(words[2]), words[3:])
                nodes += attempt.nodes
                if nodes > NODES_PER_SEARCH and attempt.depth > 1:
                    cut = attempt.depth
                    break
                attempts.append(attempt)
            elif words[0] == "best":
                best = words[1]
        attempts = [attempt for attempt in attempts if cut is None or attempt.depth < cut]
        if attempts:
            whole = cut is None and not any(line.startswith("limit") for line in lines)
            searches.append(Search(lines[0], attempts[-1].depth, attempts, best if whole else None))
    return searches


def legal_part(fen, line):
    """The moves of a line up to the first that is not legal: the companion says no others."""
    game, moves = Game(fen), []
    for move in line:
        if not game.play(move):
            break
        moves.append(move)
    return moves


class SamePlay(unittest.TestCase):
    def check(self, search, found, best):
        expected = [attempt._replace(line=legal_part(search.fen, attempt.line)) for attempt in search.attempts]
        # The model may have ended between two attempts at its last depth.
        self.assertEqual(found[:len(expected)], expected, search.fen)
        if search.best:
            self.assertEqual(best, search.best, search.fen)
        else:
            self.assertEqual(best, found[-1].line[0], search.fen)

    def test_the_list_is_worth_the_comparison(self):
        searches = read_searches()
        self.assertEqual(len(searches), POSITIONS)
        self.assertGreater(sum(len(search.attempts) for search in searches), 4 * POSITIONS)

    def test_over_uci(self):
        with Gui(INI) as gui:
            gui.uci()
            for search in read_searches():
                gui.send("setoption name Clear Hash", "position fen " + search.fen)
                best, _, lines = gui.go("depth %d" % search.depth)
                found, before = [], 0
                for fields in findings(lines):
                    kind = fields["score"]
                    nodes, before = fields["nodes"] - before, fields["nodes"]
                    found.append(Attempt(fields["depth"], kind, nodes, fields.get("pv", [])))
                mapped = search._replace(attempts=[
                    attempt._replace(score=uci_score(attempt.score)) for attempt in search.attempts])
                self.check(mapped, found, best)

    def test_over_xboard(self):
        with Gui(INI) as gui:
            gui.xboard_protocol()
            gui.send("new", "force", "post", "st 100000")
            for search in read_searches():
                gui.send("force", "option ClearHash", "setboard " + search.fen, "sd %d" % search.depth, "go")
                best = gui.expect(r"move (\S+)").group(1)
                found = []
                for line in gui.skipped:
                    words = line.rstrip("?! ").split()
                    if words and words[0].isdigit():
                        found.append(Attempt(int(words[0]), int(words[1]), int(words[3]), words[4:]))
                mapped = search._replace(attempts=[
                    attempt._replace(score=xboard_score(attempt.score)) for attempt in search.attempts])
                self.check(mapped, found, best)


if __name__ == "__main__":
    unittest.main()
