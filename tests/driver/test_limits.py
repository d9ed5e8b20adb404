"""Little memory and few file handles: the engine says what it lacks and plays on."""

import os
import re
import struct
import unittest

from chess_rules import Position
from engine import SMALL_INI, Engine

# A sanitizer's own memory does not fit into these limits.
SANITIZED = bool(os.environ.get("TARVELMON_SANITIZE"))

# The key of the start position in the book format, and e2e4: from and to by file and row of three bits each.
START_KEY = 0x463B96181691FC9C
E2E4 = 4 | 3 << 3 | 4 << 6 | 1 << 9
BOOK = struct.pack(">QHHI", START_KEY, E2E4, 1, 0)
BOOK_INI = SMALL_INI.replace("Book=0", "Book=1")

HASH_FAILED = "Hash Table Memory Allocation Failed!\n"
PAWN_HASH_FAILED = "Pawn " + HASH_FAILED


class Limits(unittest.TestCase):
    @unittest.skipIf(SANITIZED, "the sanitizer takes more memory than the limit")
    def test_the_default_tables_do_not_fit_into_256_mb_and_the_engine_plays(self):
        with Engine(ini=None, arguments=("prlimit", "--as=%d" % (256 << 20))) as engine:
            self.assertEqual(engine.xboard(), HASH_FAILED + PAWN_HASH_FAILED + "Found 0 tablebases.\n")
            position = Position()
            engine.tell("new", "sd 5")
            for move in ("e2e4", "g1f3", "b1c3"):
                position = position.legal_moves()[move]
                answers = engine.tell("usermove " + move)
                reply = re.fullmatch(r"move (\S+) ", answers[-1])
                self.assertIsNotNone(reply, answers)
                position = position.legal_moves()[reply[1]]
            self.assertEqual(engine.quit(), 0)

    def entering_console(self, megabytes, hash_size, pawn_hash_size):
        """What the console says on entering, of its records and of its configured size."""
        ini = SMALL_INI.replace("HashSize=16\nPawnHashSize=16", "HashSize=%s\nPawnHashSize=%s" % (
            hash_size, pawn_hash_size))
        with Engine(ini=ini, arguments=("prlimit", "--as=%d" % (megabytes << 20))) as engine:
            said = engine.console().partition("\nWelcome")[0]
            records = int(re.search(r"Hash records: +(\d+) \n", engine.ask("hash"))[1])
            size = re.search(r"hashSize: +(\S+) MB\n", engine.ask("param"))[1]
            self.assertRegex(engine.ask("setboard 7k/8/5K2/6R1/8/8/8/8 w - - 0 1") + engine.ask("go"), "\nmove ")
            return said, records, size

    @unittest.skipIf(SANITIZED, "the sanitizer takes more memory than the limit")
    def test_a_table_that_cannot_be_had_is_told_in_one_line(self):
        for size in ("-1", "100000"):
            with self.subTest(size):
                self.assertEqual(self.entering_console(8192, size, size),
                                 (HASH_FAILED + PAWN_HASH_FAILED, 4096 << 16, size))

    @unittest.skipIf(SANITIZED, "the sanitizer takes more memory than the limit")
    def test_one_table_may_fail_alone(self):
        said, records, size = self.entering_console(256, 16, 4096)
        self.assertEqual(said, "Allocated 16 MB for the Hash Table\nHash Record allocated: 1048576\n" + PAWN_HASH_FAILED)
        self.assertEqual((records, size), (1048576, "16"))
        said, records, size = self.entering_console(256, 4096, 16)
        self.assertEqual(said, HASH_FAILED + "Allocated 16 MB for the Pawn Hash Table\n")
        self.assertEqual((records, size), (128 << 16, "4096"))

    @unittest.skipIf(SANITIZED, "a sanitizer needs more stack")
    def test_a_low_limit_of_the_stack_does_not_end_deep_searches(self):
        # 96 kB hold some ten plies.
        with Engine(arguments=("prlimit", "--stack=98304:")) as engine:
            engine.xboard()
            engine.tell("new", "force", "sd 9", "post",
                        "setboard r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1")
            engine.send("analyze")
            engine.expect(r" ?9 .*")
            engine.send("exit", "go")
            engine.expect(r" ?9 .*")
            engine.expect(r"move .*")
            self.assertEqual(engine.quit(), 0)

    def probe_book(self, files):
        """Plays the first move of a thousand games with 32 file handles; returns the moves."""
        with Engine(ini=BOOK_INI, files=files, arguments=("prlimit", "--nofile=32")) as engine:
            engine.xboard()
            answers = engine.tell("sd 2", *["new", "go"] * 1000)
            moves = [line.split()[1] for line in answers if line.startswith("move ")]
            self.assertEqual(engine.quit(), 0)
            return moves, engine.errors

    def test_a_thousand_book_moves_need_few_file_handles(self):
        moves, errors = self.probe_book({"book.bin": BOOK})
        self.assertEqual(moves, ["e2e4"] * 1000)
        self.assertEqual(errors, "")

    def test_a_thousand_missed_books_need_few_file_handles(self):
        moves, errors = self.probe_book({})
        self.assertEqual(len(moves), 1000)
        self.assertEqual(errors, "book.bin: No such file or directory\n" * 1000)


if __name__ == "__main__":
    unittest.main()
