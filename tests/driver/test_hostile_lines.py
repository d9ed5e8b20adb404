"""Lines, numbers, signals and games that no interface should send: everything is answered, nothing breaks."""

import os
import re
import signal
import subprocess
import unittest

from chess_rules import Position
from engine import PATIENCE, PROGRAM, SMALL_INI, Engine

MOVE = r"move (\S+) ?"
THINKING = r" ?\d+ +-?\d+ +\d+ +\d+ .*"
START_BOARD = "8 | t | c | a | d | r | a | c | t |\n"

KNIGHTS_OUT_AND_HOME = ("g1f3", "g8f6", "f3g1", "f6g8")
LONGEST_GAME = 16384  # plies


def waited(process, seconds):
    """The status if the process ends within the time, else None."""
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        return None


class HostileTest(unittest.TestCase):
    def protocol(self, *lines, **arguments):
        engine = Engine(**arguments)
        self.addCleanup(engine.close)
        engine.xboard()
        engine.tell("new", *lines)
        return engine

    def console(self, *lines, **arguments):
        engine = Engine(**arguments)
        self.addCleanup(engine.close)
        engine.console()
        for line in lines:
            engine.ask(line)
        return engine


class Streams(HostileTest):
    def test_streams_that_do_not_block_are_waited_for(self):
        input_read, input_write = os.pipe()
        output_read, output_write = os.pipe()
        os.set_blocking(input_read, False)
        os.set_blocking(output_write, False)
        with Engine() as folder_owner:  # for its folder with a small configuration
            process = subprocess.Popen([os.path.abspath(PROGRAM)], cwd=folder_owner.folder, stdin=input_read,
                                       stdout=output_write, stderr=subprocess.DEVNULL)
            self.addCleanup(process.kill)
            os.close(input_read)
            os.close(output_write)
            with open(input_write, "w", buffering=1) as commands, open(output_read, encoding="latin-1") as output:
                self.assertIsNone(waited(process, 0.2))
                commands.write("con")
                commands.flush()
                self.assertIsNone(waited(process, 0.2))
                # Far more than a pipe holds, and nobody reads yet.
                commands.write("sole\n" + "err\n" * 300)
                self.assertIsNone(waited(process, 0.5))
                commands.write("quit\n")
                text = output.read()
            self.assertEqual(process.wait(PATIENCE), 0)
        self.assertGreater(len(text), 100000)
        self.assertEqual(text.count("tarvelmon> "), 301)


class Games(HostileTest):
    def test_undo_stays_at_the_first_record(self):
        engine = self.protocol("force", *["undo"] * 1000)
        self.assertEqual(engine.tell("usermove e2e4", "usermove e7e5", "undo", "undo", "undo", "usermove d2d4"), [])
        engine = self.console("force", *["undo"] * 100)
        self.assertIn(START_BOARD, engine.ask("undo"))
        self.assertNotIn("Illegal", engine.ask("e2e4"))

    def test_a_game_longer_than_the_stack_is_refused_and_not_thought_about(self):
        engine = self.protocol("force", "sd 2")
        game = [KNIGHTS_OUT_AND_HOME[i % 4] for i in range(LONGEST_GAME + 400)]
        lines = engine.tell(*("usermove " + move for move in game))
        refused = [line for line in lines if line.startswith("Illegal move: ")]
        self.assertEqual(len(refused), len(game) - LONGEST_GAME)
        self.assertEqual(set(lines) - set(refused), {"1/2-1/2 {Draw by repetition}", "1/2-1/2 {Draw by 50 move rule}"})
        self.assertEqual(engine.tell("new", "force", "usermove e2e4"), [])

    def test_a_full_stack_gives_no_answer_and_one_record_less_gives_one(self):
        engine = self.protocol("force", "sd 2")
        engine.tell("setboard 4k3/7p/8/8/8/8/7P/4K3 w - - 0 1")
        kings = ("e1d1", "e8d8", "d1e1", "d8e8")
        engine.tell(*("usermove " + kings[i % 4] for i in range(LONGEST_GAME - 1)))
        # A pawn move, so that neither repetition nor the fifty-move rule stands in the way.
        self.assertEqual(engine.tell("usermove h7h6"), [])
        self.assertEqual(engine.tell("usermove h2h3"), ["Illegal move: h2h3"])
        self.assertEqual(engine.tell("go"), [])
        engine.send("post", "analyze")
        engine.expect(THINKING)
        engine.send("exit")
        self.assertEqual([line for line in engine.sync() if not re.fullmatch(THINKING, line)], [])
        self.assertEqual(engine.tell("undo", "undo", "usermove h2h3"), [])
        engine.send("go")
        engine.expect(MOVE)
        self.assertEqual(engine.tell("go"), [])

    def test_thinking_without_time_still_gives_a_line(self):
        for lines in (("level 0 0 0",), ("time 0", "otim 0"), ("time -5",), ("time -2147483648", "otim 2147483647"),
                      ("st 1", "level 40 357914 357914", "level")):
            with self.subTest(lines):
                engine = self.protocol(*lines, "sd 6")
                engine.send("usermove e2e4")
                engine.expect(MOVE)
                engine.sync()

    def test_a_configuration_without_time_or_depths_still_gives_a_line(self):
        for keys in ("MaxTime=0", "MaxTime=-1", "MinDepth=9\nMaxDepth=3"):
            with self.subTest(keys):
                engine = self.protocol(ini=SMALL_INI.replace("[ENGINE]", "[ENGINE]\n" + keys))
                engine.send("usermove e2e4")
                engine.expect(MOVE)
                engine.sync()

    def test_no_depth_at_all_is_announced_as_the_empty_move(self):
        engine = self.protocol(ini=SMALL_INI.replace("[ENGINE]", "[ENGINE]\nMinDepth=9\nMaxDepth=3"))
        engine.send("usermove e2e4")
        self.assertEqual(engine.expect(MOVE)[1], "a8a8")
        self.assertEqual(engine.tell("undo", "force"), [])

    def test_a_board_that_was_half_read_is_borne(self):
        fens = ("", "x", "8/8/8/8/8/8/8/8 w - - 0 1", "8/8/8/8/8/8/8/8 b - - 0 1", "K7/8/8/8/8/8/8/8 w - - 0 1",
                "kkk5/8/8/8/8/8/8/KKK5 w - - 0 1", "QQQQQQQQ/" * 7 + "QQQQQQQQ w - - 0 1",
                "PPPPPPPP/8/8/8/8/8/8/pppppppp w - - 0 1", "4k3/8/8/8 w - - 0 1",
                "4k3/8/8/8/8/8/8/4K3 w KQkq e6 0 1", "9/8/8/8/8/8/8/8 w - - 0 1", "4k3/8/8/8/8/8/8/4K3 w - - -1 1",
                "8" * 250)
        engine = self.protocol("sd 3", "nopost")
        for fen in fens:
            with self.subTest(fen):
                engine.send("new", "force", "setboard " + fen, "go", "usermove e2e4", "usermove a1a1", "analyze",
                            "exit")
                engine.sync()


class Lines(HostileTest):
    def test_lines_of_other_threads_stay_whole(self):
        engine = self.protocol()
        engine.send("analyze")
        engine.expect(THINKING)
        count = 3000
        engine.send(*("time %d" % number for number in range(count)))
        engine.expect("#DEBUG time:%d" % (count - 1))
        whole = re.compile(r"%s|#DEBUG time:\d+|Mate(d to|  ?in).*" % THINKING)
        self.assertEqual([line for line in engine.skipped if not whole.fullmatch(line)], [])
        times = [line for line in engine.skipped if line.startswith("#DEBUG time")]
        self.assertEqual(times, ["#DEBUG time:%d" % number for number in range(count - 1)])
        engine.send("exit")
        engine.sync()

    def test_new_while_the_search_unwinds(self):
        engine = self.protocol("hard", "level 0 5 0")
        for _ in range(100):
            engine.send("analyze", "new")
        engine.sync()
        position = Position()
        engine.send("usermove d2d4")
        move = engine.expect(MOVE)[1]
        self.assertIn(move, position.legal_moves()["d2d4"].legal_moves())

    def test_new_during_pondering_again_and_again(self):
        engine = self.protocol("sd 5")
        for _ in range(25):
            engine.send("level 0 5 0", "hard", "usermove e2e4")
            engine.expect(MOVE)
            engine.send("usermove a2a3")
            engine.expect("Hint: .*")
            engine.send("new")
            engine.expect(MOVE)
            self.assertEqual(engine.tell("new"), [])

    def test_formats_in_lines_are_text(self):
        engine = self.protocol()
        for line in ("%s%s%s%n", "%100000d", "usermove %n%n", "name %s%n", "ping %n%s", "setvalue %s %n"):
            engine.send(line)
        lines = engine.sync()
        self.assertIn("Error (unknown command): %s%s%s%n", lines)
        self.assertIn("Illegal move: %n%n", lines)
        self.assertIn("pong %n%s", lines)

    def test_every_byte_is_borne(self):
        engine = self.protocol("force")
        for byte in (chr(number) for number in range(256) if chr(number) != "\n"):
            engine.send(byte, byte * 300, "usermove " + byte * 4, "usermove e2e5" + byte * 3, "setboard " + byte * 20)
        for line in engine.sync():
            self.assertTrue(line.startswith(("Error (unknown command): ", "Illegal move: ", "#DEBUG stat")), line)


class Signals(HostileTest):
    def test_the_protocol_outlives_interrupts(self):
        engine = self.protocol("sd 5", "force")
        for _ in range(1000):
            engine.process.send_signal(signal.SIGINT)
        engine.send("new", "usermove e2e4")
        for _ in range(50):
            engine.process.send_signal(signal.SIGINT)
        engine.expect(MOVE)
        self.assertEqual(engine.quit(), 0)

    def test_the_console_is_ended_by_an_interrupt(self):
        engine = self.console()
        engine.process.send_signal(signal.SIGINT)
        self.assertEqual(engine.wait_for_end(), -signal.SIGINT)

    def test_a_termination_ends_every_state(self):
        for mode, lines in ((None, ()), ("console", ()), ("console", ("analyze",)), ("xboard", ("new",)),
                            ("xboard", ("analyze",)), ("xboard", ("new", "go"))):
            with self.subTest(mode=mode, lines=lines):
                engine = Engine()
                self.addCleanup(engine.close)
                if mode == "console":
                    engine.console()
                elif mode == "xboard":
                    engine.xboard()
                engine.send(*lines)
                if "analyze" in lines or "go" in lines:
                    engine.expect(THINKING)
                engine.process.terminate()
                self.assertEqual(engine.wait_for_end(), -signal.SIGTERM)

    def test_an_interface_that_is_gone_ends_the_process_at_the_next_line(self):
        process = subprocess.Popen([os.path.abspath(PROGRAM)], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.addCleanup(process.stdin.close)
        self.assertEqual(process.stdout.readline(), b"tarvelmon chess engine by Ubaldo Merikossa\n")
        process.stdout.close()
        process.stdin.write(b"xboard\n")
        process.stdin.flush()
        self.assertEqual(process.wait(PATIENCE), -signal.SIGPIPE)


if __name__ == "__main__":
    unittest.main()
