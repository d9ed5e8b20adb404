"""Endgame tables that are missing, damaged or no files, in both modes and beside a monitor that waits for input: some end
the process at once, with words that say why; the others are left out, and the game goes on."""

import os
import re
import tempfile
import unittest

from chess_rules import Position
from engine import SMALL_INI, Engine

# Seconds of its own that an engine may take to end; a sanitizer needs longer.
SOON = 10.0 if os.environ.get("TARVELMON_SANITIZE") else 1.0

TABLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir, "data", "syzygy")
QUEEN_ENDING = "4k3/8/8/8/8/8/8/3QK3 w - - 0 1"
THINKING = r" ?\d+ +-?\d+ +\d+ +\d+ .*"

CANNOT_OPEN = "Could not open %s for reading.\n"
CANNOT_MAP = "CreateFileMapping() failed.\n"
CORRUPTED = "Corrupted table."


def table(name):
    with open(os.path.join(TABLES, name), "rb") as file:
        return file.read()


WDL = table("KQvK.rtbw")
DTZ = table("KQvK.rtbz")
ROOK_WDL = table("KRvK.rtbw")
ROOK_DTZ = table("KRvK.rtbz")
DAMAGED_WDL = {"another magic": DTZ, "cut": WDL[:40], "no index bits": WDL[:14] + b"\0" + WDL[15:]}


def in_console(engine):
    engine.console()
    engine.ask("setboard " + QUEEN_ENDING)


def in_protocol(engine):
    engine.xboard()
    engine.tell("new", "sd 4", "force", "setboard " + QUEEN_ENDING)


# name: (the way there, the line that probes). The input stays open: the monitor of an analysis waits for a line.
PROBES = {
    "in the console": (in_console, "w"),
    "at the root of a move": (in_protocol, "go"),
    "beside a monitor": (in_protocol, "analyze"),
}


class TablesTest(unittest.TestCase):
    def folder(self, wdl=None, dtz=None, material="KQvK"):
        """A new folder with these files for the material; its path."""
        folder = tempfile.TemporaryDirectory(prefix="tarvelmon-tables-")
        self.addCleanup(folder.cleanup)
        for suffix, content in (("rtbw", wdl), ("rtbz", dtz)):
            if content is not None:
                with open(os.path.join(folder.name, material + "." + suffix), "wb") as file:
                    file.write(content)
        return folder.name

    def start(self, folder):
        engine = Engine(ini=SMALL_INI.replace("Syzygy=0", "Syzygy=1\nSyzygyPath=" + folder))
        self.addCleanup(engine.close)
        return engine


class TablesThatEndTheProcess(TablesTest):
    def assert_every_probe_ends(self, folder, words):
        for name, (enter, line) in PROBES.items():
            with self.subTest(name):
                engine = self.start(folder)
                enter(engine)
                self.assertIn("Found 1 tablebases.\n", engine.text)
                status, seconds = engine.seconds_to_end(lambda: engine.send(line))
                self.assertEqual(status, 1)
                self.assertLess(seconds, SOON)
                self.assertTrue(engine.rest().endswith(words), engine.rest())
                self.assertEqual(engine.text.count(words), 1)
                self.assertEqual(engine.errors, "")

    def test_no_table_of_distances(self):
        folder = self.folder(wdl=WDL)
        self.assert_every_probe_ends(folder, CANNOT_OPEN % os.path.join(folder, "KQvK.rtbz"))

    def test_a_pipe_for_a_table_of_distances(self):
        folder = self.folder(wdl=WDL)
        os.mkfifo(os.path.join(folder, "KQvK.rtbz"))
        self.assert_every_probe_ends(folder, CANNOT_OPEN % os.path.join(folder, "KQvK.rtbz"))

    def test_an_empty_table(self):
        self.assert_every_probe_ends(self.folder(wdl=b"", dtz=DTZ), CANNOT_MAP)

    def test_an_empty_table_of_distances(self):
        self.assert_every_probe_ends(self.folder(wdl=WDL, dtz=b""), CANNOT_MAP)


class TablesThatAreLeftOut(TablesTest):
    def take_move(self, engine, position):
        """The position after the engine's move, which must be legal."""
        move = engine.expect(r"move (\S+) ?")[1]
        self.assertIn(move, position.legal_moves())
        return position.legal_moves()[move]

    def plays(self, folder, found):
        """A session that has played two moves of the queen ending."""
        engine = self.start(folder)
        in_protocol(engine)
        self.assertIn("Found %d tablebases.\n" % found, engine.text)
        engine.send("go")
        position = self.take_move(engine, Position(QUEEN_ENDING))
        move = min(position.legal_moves())
        engine.send("usermove " + move)
        self.take_move(engine, position.legal_moves()[move])
        return engine

    def assert_ends_well(self, engine):
        self.assertEqual(engine.quit(), 0)
        self.assertEqual(engine.errors, "")

    def test_a_damaged_table_is_told_once(self):
        for name, content in DAMAGED_WDL.items():
            with self.subTest(name):
                engine = self.plays(self.folder(wdl=content, dtz=DTZ), 1)
                engine.tell("force")
                engine.send("analyze")
                engine.expect(THINKING)
                engine.send("exit")
                engine.sync()
                self.assertEqual(engine.text.count(CORRUPTED + "\n"), 1)
                self.assert_ends_well(engine)

    def test_a_damaged_table_is_told_once_beside_a_monitor(self):
        engine = self.start(self.folder(wdl=DAMAGED_WDL["cut"], dtz=DTZ))
        in_protocol(engine)
        engine.send("analyze")
        engine.expect(CORRUPTED)
        engine.expect(THINKING)
        engine.send("exit")
        engine.sync()
        self.assertEqual(engine.text.count(CORRUPTED), 1)
        self.assert_ends_well(engine)

    def test_a_damaged_table_is_told_once_in_the_console(self):
        engine = self.start(self.folder(wdl=DAMAGED_WDL["cut"], dtz=DTZ))
        in_console(engine)
        self.assertTrue(engine.ask("w").startswith(CORRUPTED + "\n- Syzygy WDL probe test -\nprobe ok:       0 "))
        self.assertTrue(engine.ask("w").startswith("- Syzygy WDL probe test -\nprobe ok:       0 "))
        self.assert_ends_well(engine)

    def test_a_damaged_table_of_distances_is_told_once(self):
        engine = self.plays(self.folder(wdl=WDL, dtz=DTZ[:1000]), 1)
        self.assertEqual(engine.text.count(CORRUPTED + "\n"), 1)
        self.assert_ends_well(engine)

    def test_a_failed_table_of_distances_hands_on_the_least_distance(self):
        magic = bytes(byte ^ 0xFF for byte in ROOK_DTZ[:4])
        engine = self.start(self.folder(wdl=ROOK_WDL, dtz=magic + ROOK_DTZ[4:], material="KRvK"))
        engine.console()
        for side, dtz, wdl in (("w", 1, 2), ("b", -1, -2)):
            with self.subTest(side):
                engine.ask("setboard 4k3/8/4K3/8/8/8/8/7R %s - - 0 1" % side)
                self.assertIn("probe ok:       0  (1=true, 0=false)\n"
                              "DTZ:            %d\n"
                              "WDL:            %d\n"
                              "TBScore:        0\n" % (dtz, wdl), engine.ask("w"))
        self.assert_ends_well(engine)

    def test_what_is_no_file_is_absent(self):
        for make in (os.mkdir, os.mkfifo):
            with self.subTest(make.__name__):
                folder = self.folder(dtz=DTZ)
                make(os.path.join(folder, "KQvK.rtbw"))
                engine = self.plays(folder, 0)
                self.assertNotIn(CORRUPTED, engine.text)
                self.assert_ends_well(engine)


# FEN, then what the report says: DTZ, WDL, score, moves generated and kept. The values are plain chess: a mate in one,
# the lost opposition, the opposition that one move alone holds, the same mate with three plies left by the rule.
REPORTS = {
    "7k/8/6K1/8/8/8/8/R7 w - - 0 1": (1, 2, 10000, 20, 20),
    "5k2/8/4PK2/8/8/8/8/8 b - - 0 1": (-2, -2, -10000, 2, 2),
    "8/8/3k4/8/3PK3/8/8/8 b - - 0 1": (0, 0, 0, 5, 1),
    "7k/8/6K1/8/8/8/8/R7 w - - 97 1": (1, 2, 10000, 20, 1),
    "8/8/8/8/3k4/8/8/KR6 w - - 90 1": (None, 2, 2, 15, 2),
}


class TablesThatAnswer(TablesTest):
    def report(self, engine, fen):
        """The report on a position: its head, and the listed moves with their ranks."""
        engine.ask("setboard " + fen)
        head, _, moves = engine.ask("w").partition("\n\n")
        return head + "\n", re.findall(r"^Mossa: (\S+) +DTZ50: (-?\d+)$", moves, re.MULTILINE)

    def test_the_console_reports_value_score_and_ranks(self):
        engine = self.start(TABLES)
        self.assertIn("Found 10 tablebases.\n", engine.console())
        for fen, (dtz, wdl, score, generated, kept) in REPORTS.items():
            with self.subTest(fen):
                head, moves = self.report(engine, fen)
                found = re.search(r"^DTZ: +(\d+)$", head, re.MULTILINE)
                self.assertEqual(head, "- Syzygy WDL probe test -\n"
                                       "probe ok:       1  (1=true, 0=false)\n"
                                       "DTZ:            %d\n"
                                       "WDL:            %d\n"
                                       "TBScore:        %d\n"
                                       "mosse generate: %d\n"
                                       "mosse filtrate: %d\n" % (
                                           int(found[1]) if dtz is None else dtz, wdl, score, generated, kept))
                self.assertEqual(len(moves), kept)
                self.assertLessEqual({move for move, _ in moves}, set(Position(fen).legal_moves()))
                ranks = [int(rank) for _, rank in moves]
                self.assertEqual(ranks, sorted(ranks))
        self.assertEqual(engine.quit(), 0)

    def test_the_listed_moves_are_the_right_ones(self):
        engine = self.start(TABLES)
        engine.console()
        # A mate that is first in the list before it is sorted, and one that is not.
        self.assertEqual(self.report(engine, "7k/8/6K1/8/8/8/8/R7 w - - 0 1")[1][0], ("a1a8", "1"))
        self.assertEqual(self.report(engine, "8/8/8/8/8/5K1k/8/R7 w - - 0 1")[1][0], ("a1h1", "1"))
        self.assertEqual(self.report(engine, "8/8/3k4/8/3PK3/8/8/8 b - - 0 1")[1], [("d6e6", "0")])


if __name__ == "__main__":
    unittest.main()
