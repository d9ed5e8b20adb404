"""The configuration file of the running program: hostile sizes, reloading, what is no file."""

import os
import unittest

from engine import Engine

HEAD = "[BOOK]\nBook=0\n[TABLEBASE]\nSyzygy=0\n"


def with_sizes(hash_size, pawn_hash_size, more=""):
    return "[ENGINE]\nHashSize=%s\nPawnHashSize=%s\n%s%s" % (hash_size, pawn_hash_size, more, HEAD)


class ConfigTest(unittest.TestCase):

    def console(self, ini):
        engine = Engine(ini=ini)
        self.addCleanup(engine.close)
        return engine, engine.console()

    def rewrite(self, engine, ini):
        with open(os.path.join(engine.folder, "tarvelmon.ini"), "w", encoding="latin-1") as file:
            file.write(ini)

    def plays(self, engine):
        """Whether the engine finds a move, table clears and full evaluation included."""
        engine.ask("sd 4")
        engine.ask("new")
        engine.ask("init")
        return "\nmove " in "\n" + engine.ask("e2e4")

    def test_param_shows_the_file(self):
        engine, _ = self.console(with_sizes(8, 8, "MaxDepth=9\nMaxTime=6000\n"))
        self.assertEqual(engine.ask("param").splitlines(), [
            "", "[ENGINE]", "MaxDepht:           9", "MinDepht:           1", "postThinking:       1",
            "hashSize:           8 MB", "safePly:            10",
            "", "[BOOK]", "bookFile:           book.bin", "book:               0", "randBook:           1",
            "", "[TABLEBASE]", "Sygyzy:             0", "SyzygyPath:         ", "SyzygyMen:          5",
            "", "[TIME]", "MaxTime:            60 s", "moveTime:           60 s", "suddenDeath:        20",
            "moreTime:           5", "lessTime:           5", "fastGame:           5", ""])

    def test_hostile_sizes_play_on(self):
        for size in ("0", "-1", "-2147483648", "2147483647", "99999999999999", "0x7fffffff", "nonsense"):
            with self.subTest(size):
                engine, entering = self.console(with_sizes(size, size))
                self.assertTrue("MB for" in entering or "Memory Allocation Failed!" in entering, entering)
                self.assertTrue(self.plays(engine))
                engine.ask("hash")
                engine.send("quit")
                self.assertEqual(engine.wait_for_end(), 0)

    def test_hostile_sizes_play_on_under_the_protocol(self):
        for size in ("0", "-1", "2147483647"):
            with self.subTest(size):
                engine = Engine(ini=with_sizes(size, size))
                self.addCleanup(engine.close)
                engine.xboard()
                self.assertTrue(engine.tell("new", "sd 4", "usermove e2e4")[-1].startswith("move "))
                engine.tell("new", "init", "memory 4", "sd 4")
                self.assertTrue(engine.tell("usermove d2d4")[-1].startswith("move "))
                self.assertEqual(engine.quit(), 0)

    def test_reload_with_other_sizes_keeps_the_tables_that_stand(self):
        for size in ("4096", "1", "0", "-1", "2147483647"):
            with self.subTest(size):
                engine, _ = self.console(with_sizes(8, 8))
                self.assertTrue(self.plays(engine))
                self.rewrite(engine, with_sizes(size, size))
                engine.ask("ini")
                self.assertIn("hashSize:           %s MB\n" % size, engine.ask("param"))
                self.assertTrue(self.plays(engine))
                engine.ask("hash")
                engine.ask("memory 16")
                self.assertIn("hashSize:           16 MB\n", engine.ask("param"))
                self.assertTrue(self.plays(engine))
                engine.send("quit")
                self.assertEqual(engine.wait_for_end(), 0)

    def test_reload_overwrites_what_commands_set(self):
        engine, _ = self.console(with_sizes(8, 8, "MaxTime=3000\nMaxDepth=7\nPostThinking=0\n"))
        engine.ask("sd 3")
        engine.ask("st 2")
        engine.ask("post")
        changed = engine.ask("param")
        for line in ("MaxDepht:           3\n", "moveTime:           2 s\n", "postThinking:       1\n"):
            self.assertIn(line, changed)
        engine.ask("ini")
        reloaded = engine.ask("param")
        for line in ("MaxDepht:           7\n", "moveTime:           30 s\n", "postThinking:       0\n"):
            self.assertIn(line, reloaded)

    def test_reload_leaves_the_game_alone(self):
        engine, _ = self.console(with_sizes(8, 8))
        engine.ask("force")
        engine.ask("e2e4")
        before = engine.ask("b")
        engine.ask("ini")
        self.assertEqual(engine.ask("b"), before)

    def test_file_that_goes_away_means_defaults(self):
        engine, _ = self.console(with_sizes(8, 8, "MaxDepth=7\n"))
        os.remove(os.path.join(engine.folder, "tarvelmon.ini"))
        engine.ask("ini")
        self.assertIn("MaxDepht:           64\n", engine.ask("param"))
        self.assertTrue(self.plays(engine), "still with the table of 8 MB")

    def test_what_is_no_file_means_defaults(self):
        engine, _ = self.console(with_sizes(8, 8, "MaxDepth=7\n"))
        path = os.path.join(engine.folder, "tarvelmon.ini")
        os.remove(path)
        os.mkdir(path)
        engine.ask("ini")
        self.assertIn("MaxDepht:           64\n", engine.ask("param"))
        os.rmdir(path)
        os.mkfifo(path)
        engine.ask("sd 5")
        engine.ask("ini")
        self.assertIn("MaxDepht:           64\n", engine.ask("param"))
        os.remove(path)
        os.symlink("/dev/zero", path)
        engine.ask("ini")
        self.assertIn("bookFile:           book.bin\n", engine.ask("param"))

    def test_long_names_are_cut(self):
        engine, _ = self.console("[ENGINE]\nHashSize=8\nPawnHashSize=8\n[BOOK]\nBookFile=%s\n[TABLEBASE]\nSyzygyPath=%s\n"
                                 % ("b" * 400, "s" * 400))
        shown = engine.ask("param")
        self.assertIn("bookFile:           %s\n" % ("b" * 99), shown)
        self.assertIn("SyzygyPath:         %s\n" % ("s" * 255), shown)
        self.assertTrue(self.plays(engine))

    def test_long_line_is_passed_over(self):
        engine, _ = self.console("x" * (16 << 20) + "\n" + with_sizes(8, 8, "MaxDepth=7\n"))
        self.assertIn("MaxDepht:           7\n", engine.ask("param"))

    def test_values_are_never_formats(self):
        engine, _ = self.console("[ENGINE]\nHashSize=8\nPawnHashSize=8\n[BOOK]\nBookFile=%s%n%d\n"
                                 "[TABLEBASE]\nSyzygyPath=%s%n%d\n")
        shown = engine.ask("param")
        self.assertIn("bookFile:           %s%n%d\n", shown)
        self.assertIn("SyzygyPath:         %s%n%d\n", shown)
        engine.ask("book")
        self.assertEqual(engine.quit(), 0)
        self.assertIn("%s%n%d: ", engine.errors)

    def test_depths_that_exclude_each_other_end(self):
        engine, _ = self.console(with_sizes(8, 8, "MaxDepth=2\nMinDepth=5\n"))
        engine.ask("new")
        engine.ask("e2e4")
        engine.send("quit")
        self.assertEqual(engine.wait_for_end(), 0)


if __name__ == "__main__":
    unittest.main()
