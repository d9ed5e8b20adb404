"""Start, the wait for a mode, and the end of input in every state."""

import unittest

from engine import BANNER, SMALL_INI, Engine

TABLES = ("Allocated 16 MB for the Hash Table\n"
          "Hash Record allocated: 1048576\n"
          "Allocated 16 MB for the Pawn Hash Table\n")
WELCOME = "\nWelcome in tarvelmon\ntype \"help\" to show commands list\n"


def run(text, **arguments):
    """Sends all of `text`, ends the input, returns the status and the output."""
    with Engine(**arguments) as engine:
        engine.send_raw(text)
        return engine.quit(), engine.text


class WaitingForAMode(unittest.TestCase):
    def test_quit_and_longer_words_end_the_process(self):
        for line in ("quit", "quitting", "quit now"):
            with self.subTest(line):
                self.assertEqual(run(line + "\nconsole\n"), (0, BANNER))

    def test_empty_and_unknown_lines_say_nothing(self):
        self.assertEqual(run("\n\n\nhello\nXboard\n xboard\nxboar\nqui\nbook\n\nquit\n"), (0, BANNER))

    def test_every_line_with_a_c_enters_the_console(self):
        for line in ("c", "console", "cxyz", "c c"):
            with self.subTest(line):
                self.assertEqual(run(line + "\nquit\n"), (0, BANNER + TABLES + WELCOME + "\ntarvelmon> "))

    def test_xboard_and_longer_words_enter_the_protocol(self):
        for line in ("xboard", "xboard2", "xboarding x"):
            with self.subTest(line):
                self.assertEqual(run(line + "\nping 3\nquit\n"), (0, BANNER + TABLES + "pong 3\n"))

    def test_end_of_input_ends_the_process(self):
        for text in ("", "\n", "hello", "hello\n"):
            with self.subTest(text):
                self.assertEqual(run(text), (0, BANNER))

    def test_a_last_line_without_newline_is_acted_on(self):
        self.assertEqual(run("c"), (0, BANNER + TABLES + WELCOME + "\ntarvelmon> "))
        self.assertEqual(run("quit"), (0, BANNER))
        self.assertEqual(run("xboard\nping 9"), (0, BANNER + TABLES + "pong 9\n"))
        self.assertEqual(run("c\nnonsense"), (0, BANNER + TABLES + WELCOME + "\ntarvelmon> "
                                              "Error (unknown command): nonsense\n\ntarvelmon> "))

    def test_a_carriage_return_before_the_newline_is_dropped(self):
        self.assertEqual(run("xboard\r\nping 3\r\nsd 5\r\nnew\r\nquit\r\nping 4\r\n"),
                         (0, BANNER + TABLES + "pong 3\n#DEBUG depth:5\n"))

    def test_a_long_line_is_taken_in_pieces(self):
        # 255 characters, then "ping 7" as a line of its own.
        status, text = run("xboard\n" + "y" * 255 + "ping 7\n" + "z" * 100000 + "\nping 8\n")
        self.assertEqual(status, 0)
        lines = text.splitlines()
        self.assertIn("Error (unknown command): " + "y" * 255, lines)
        self.assertIn("pong 7", lines)
        self.assertEqual(lines.count("Error (unknown command): " + "z" * 255), 100000 // 255)
        self.assertEqual(lines[-1], "pong 8")

    def test_a_nul_byte_cuts_its_line(self):
        self.assertEqual(run("xboard\nping 1\0 2\n\0quit\ntime\0 55\nping 3\n"),
                         (0, BANNER + TABLES + "pong 1\nError (unknown command): \n#DEBUG time:720000\npong 3\n"))


class DefaultsWithoutAConfiguration(unittest.TestCase):
    def test_the_defaults_hold_and_tables_are_announced(self):
        with Engine(ini=None) as engine:
            self.assertEqual(engine.console(),
                             "Allocated 4096 MB for the Hash Table\n"
                             "Hash Record allocated: 268435456\n"
                             "Allocated 256 MB for the Pawn Hash Table\n"
                             "Found 0 tablebases.\n" + WELCOME)
            self.assertEqual(engine.quit(), 0)


class EndOfInput(unittest.TestCase):
    def test_in_the_console_and_in_the_protocol(self):
        for text in ("c\n", "c\nb", "c\nb\n", "xboard\n", "xboard\nnew", "xboard\nnew\nusermove"):
            with self.subTest(text):
                self.assertEqual(run(text)[0], 0)

    def test_during_an_ordinary_think_the_move_comes_first(self):
        status, text = run("xboard\nnew\nsd 4\nusermove e2e4\n")
        self.assertEqual(status, 0)
        self.assertRegex(text, r"\nmove [a-h][1-8][a-h][1-8] \n$")
        status, text = run("c\nsd 4\ngo\n")
        self.assertEqual(status, 0)
        self.assertRegex(text, r"\nmove [a-h][1-8][a-h][1-8] \n")

    def test_short_of_memory_it_goes_on_with_little(self):
        ini = SMALL_INI.replace("HashSize=16", "HashSize=2147483647", 1)
        status, text = run("xboard\nnew\nsd 3\nusermove e2e4\nquit\n", ini=ini)
        self.assertEqual(status, 0)
        self.assertIn("Hash Table Memory Allocation Failed!\n", text)
        self.assertRegex(text, r"\nmove [a-h][1-8][a-h][1-8] \n$")


class SharedInput(unittest.TestCase):
    def test_lines_that_came_together_go_to_whoever_reads_next(self):
        # The command loop, the monitor beside the analysis, the command loop again.
        status, text = run("xboard\nping 1\nanalyze\nping 2\nexit\nping 3\nquit\nping 4\n")
        self.assertEqual((status, [line for line in text.splitlines() if line.startswith("pong")]),
                         (0, ["pong 1", "pong 3"]))

    def test_what_follows_quit_in_a_file_is_left_for_the_next_program(self):
        with Engine(arguments=("sh", "-c", '{ "$0"; cat; } <session'), files={"session": b"\nquit\nthe rest\n"}) as shell:
            self.assertEqual((shell.wait_for_end(), shell.text), (0, BANNER + "the rest\n"))


if __name__ == "__main__":
    unittest.main()
