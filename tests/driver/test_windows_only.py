"""What is special in the programs for Windows: ends of lines, names beyond the old code pages, processor time, and the
ends that an interface may put to a process there. TARVELMON_PROBE helps from inside, TARVELMON_EXE is the program as
such."""

import os
import re
import shutil
import struct
import subprocess
import unittest

from engine import BANNER, PATIENCE, PROGRAM, SMALL_INI, Engine
from test_tables import TABLES

PROBE = os.environ.get("TARVELMON_PROBE", "")
EXE = os.environ.get("TARVELMON_EXE", "")
TOOL = os.environ.get("TARVELMON_BOOK", "")

START_KEY = 0x463B96181691FC9C
E2E4 = 0o1434  # e2e4
BOOK = struct.pack(">QHHI", START_KEY, E2E4, 1, 0)

# Letters that no single one of the old code pages has.
NAME = "Büch-Ω-книга-棋"


def ini_bytes(text):
    return {"tarvelmon.ini": text.encode("utf-8")}


def in_folder(engine, *names):
    return os.path.join(engine.folder, *names)


class WindowsTest(unittest.TestCase):
    def engine(self, ini=SMALL_INI, files=None):
        engine = Engine(ini=None, files={**ini_bytes(ini), **(files or {})})
        self.addCleanup(engine.close)
        return engine

    def run_probe(self, *arguments, text="", ini=SMALL_INI):
        with Engine(ini=ini) as owner:  # for its folder
            done = subprocess.run([PROBE, *arguments], cwd=owner.folder, input=text.encode(), stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, timeout=PATIENCE, check=False)
        return done.stdout.decode("latin-1")


class Lines(WindowsTest):
    def test_they_end_with_a_newline_alone(self):
        engine = self.engine()
        engine.send("console", "param", "e2e5", "quit")
        self.assertEqual(engine.wait_for_end(), 0)
        self.assertTrue(engine.text.startswith(BANNER))
        self.assertGreater(engine.text.count("\n"), 20)
        self.assertNotIn("\r", engine.text)

    def test_a_byte_that_once_ended_texts_ends_nothing(self):
        engine = self.engine()
        engine.send("xboard", "ping 1\x1a2", "ping 3", "quit")
        self.assertEqual(engine.wait_for_end(), 0)
        self.assertTrue(engine.text.endswith("pong 1\x1a2\npong 3\n"), engine.text)

    def test_the_book_program_ends_them_alike(self):
        done = subprocess.run([TOOL, "help"], stdout=subprocess.PIPE, timeout=PATIENCE, check=True)
        self.assertGreater(done.stdout.count(b"\n"), 20)
        self.assertNotIn(b"\r", done.stdout)


class Names(WindowsTest):
    def test_a_book_named_in_the_ini(self):
        name = "%s/%s.bin" % (NAME, NAME)
        engine = self.engine(SMALL_INI.replace("Book=0", 'BookFile="%s"' % name), {name: BOOK})
        engine.console()
        self.assertEqual(engine.ask("book"), "move=e2e4 weight=100.00%\n")
        self.assertIn("bookFile:           %s\n" % name, engine.ask("param").encode("latin-1").decode("utf-8"))

    def test_a_missing_book_named_in_the_ini(self):
        engine = self.engine(SMALL_INI.replace("Book=0", 'BookFile="%s"' % NAME))
        engine.console()
        engine.ask("book")
        self.assertEqual(engine.quit(), 0)
        self.assertEqual(engine.errors.encode("latin-1").decode("utf-8"), NAME + ": No such file or directory\n")

    def test_tables_in_a_folder_named_in_the_ini(self):
        engine = self.engine(SMALL_INI.replace("Syzygy=0", 'Syzygy=1\nSyzygyPath="%s"' % NAME))
        folder = in_folder(engine, NAME)
        os.mkdir(folder)
        for table in ("KQvK.rtbw", "KQvK.rtbz"):
            shutil.copy(os.path.join(TABLES, table), folder)
        self.assertIn("Found 1 tablebases.\n", engine.console())
        engine.ask("setboard 4k3/8/8/8/8/8/8/3QK3 w - - 0 1")
        self.assertIn("probe ok:       1 ", engine.ask("w"))

    def test_files_on_the_command_line(self):
        with Engine() as owner:
            with open(in_folder(owner, NAME + ".txt"), "w", encoding="ascii") as file:
                file.write("e4 e5\n")
            for _ in range(2):  # the second time it replaces a book
                done = subprocess.run([TOOL, "build", "-o", NAME + ".bin", NAME + ".txt"], cwd=owner.folder,
                                      stdout=subprocess.PIPE, timeout=PATIENCE, check=True)
                self.assertEqual(done.stdout.decode("utf-8"),
                                 "%s.txt: 1 lines, 0 faulty\n%s.bin: 2 records\n" % (NAME, NAME))
            self.assertEqual(os.path.getsize(in_folder(owner, NAME + ".bin")), 32)

    def test_devices_are_no_files(self):
        for name in ("NUL", "CON", "nul.bin", "\\\\.\\NUL"):
            with self.subTest(name):
                engine = self.engine(SMALL_INI.replace("Book=0", "BookFile=" + name))
                engine.console()
                engine.ask("book")
                self.assertEqual(engine.quit(), 0)
                self.assertTrue(engine.errors.startswith(name + ": "), engine.errors)


class Time(WindowsTest):
    def test_processor_time_stands_while_the_process_sleeps(self):
        seen = re.fullmatch(r"slept ([\d.]+) worked ([\d.]+)\n", self.run_probe("processor-time"))
        self.assertLess(float(seen[1]), 0.1)
        self.assertGreaterEqual(float(seen[2]), 0.3)


class Ends(WindowsTest):
    def test_a_job_that_is_closed_ends_a_search(self):
        self.assertEqual(self.run_probe("job", EXE), "ran 1 ended 1\n")

    def test_an_interface_that_is_gone_ends_the_process_at_the_next_line(self):
        with Engine() as owner:
            process = subprocess.Popen([os.path.abspath(PROGRAM)], cwd=owner.folder, stdin=subprocess.PIPE,
                                       stdout=subprocess.PIPE)
            self.addCleanup(process.stdin.close)
            self.assertEqual(process.stdout.readline(), b"tarvelmon chess engine by Ubaldo Merikossa\n")
            process.stdout.close()
            process.stdin.write(b"xboard\n")
            process.stdin.flush()
            self.assertEqual(process.wait(PATIENCE), 1)

    def test_error_text_is_a_comment_where_both_streams_are_one_pipe(self):
        text = self.run_probe("one-pipe", EXE, text="xboard\nnew\nsd 2\ngo\nquit\n",
                              ini=SMALL_INI.replace("Book=0", "Book=1"))
        self.assertIn("\n#DEBUG book.bin: No such file or directory\n", text)
        self.assertTrue(text.endswith("status 0\n"), text)


if __name__ == "__main__":
    unittest.main()
