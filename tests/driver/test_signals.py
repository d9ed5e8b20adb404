"""Signals and the end of input in every state: interrupts do nothing in the protocol, a termination ends the process at
once, and so does the end of input, with status 0."""

import os
import random
import signal
import unittest

from chess_rules import Game
from engine import SMALL_INI, Engine

# Seconds of its own that an engine may take to end; a sanitizer looks for leaks first. The searches that it ends may take
# two hours.
SOON = 10.0 if os.environ.get("TARVELMON_SANITIZE") else 1.0
# Above the minute below which pondering is switched off.
CLOCKS = ("time 7000", "otim 7000")


def at_start(engine):
    engine.expect_text("console mode...")


def in_console(engine):
    engine.console()


def in_protocol(engine):
    engine.xboard()
    engine.tell("new")


def in_console_analysis(engine):
    engine.console()
    engine.send("analyze")
    engine.expect(r" ?2 .*")


def in_analysis(engine):
    engine.xboard()
    engine.tell("new", "post")
    engine.send("analyze")
    engine.expect(r" ?1 .*")


def in_pondering(engine):
    """Plays until the engine thinks on the opponent's time."""
    engine.xboard()
    engine.tell("new", "level 0 5 0", "hard", "post")
    game = Game()
    while True:
        move = min(game.position.legal_moves())
        game.play(move)
        engine.send(*CLOCKS, "sd 5", "usermove " + move)
        if not game.play(engine.expect(r"move (\S+) ?")[1]):
            raise AssertionError("an illegal move")
        if len(game.moves) > 2:
            break
    engine.expect(r"Hint: .*")
    engine.expect(r" ?1 .*")


STATES = {
    "at the start": at_start,
    "in the console": in_console,
    "in the protocol": in_protocol,
    "in the protocol's analysis": in_analysis,
    "in pondering": in_pondering,
}


class Signals(unittest.TestCase):
    def start(self):
        engine = Engine(ini=SMALL_INI)
        self.addCleanup(engine.close)
        return engine

    def test_termination_ends_the_process_within_a_second(self):
        for name, enter in {**STATES, "in the console's analysis": in_console_analysis}.items():
            with self.subTest(name):
                engine = self.start()
                enter(engine)
                status, seconds = engine.seconds_to_end(engine.process.terminate)
                self.assertEqual(status, -signal.SIGTERM)
                self.assertLess(seconds, SOON)

    def test_end_of_input_ends_the_process_within_a_second(self):
        for name, enter in STATES.items():
            with self.subTest(name):
                engine = self.start()
                enter(engine)
                status, seconds = engine.seconds_to_end(engine.end_input)
                self.assertEqual(status, 0)
                self.assertLess(seconds, SOON)

    def test_a_thousand_interrupts_in_games_do_nothing(self):
        engine = self.start()
        engine.xboard()
        opponent = random.Random(4)
        interrupts = 0
        game = None
        while interrupts < 1000:
            if game is None or not game.position.has_legal_move() or len(game.moves) > 100:
                game = Game()
                engine.tell("new", "sd 4", "st 1", "easy")
            move = opponent.choice(sorted(game.position.legal_moves()))
            game.play(move)
            for line in (*CLOCKS, "usermove " + move):
                for _ in range(5):
                    engine.process.send_signal(signal.SIGINT)
                    interrupts += 1
                engine.send(line)
            answers = engine.sync()
            if any(line.startswith(("1-0", "0-1", "1/2")) for line in answers):
                game = None
                continue
            replies = [line.split()[1] for line in answers if line.startswith("move ")]
            self.assertEqual(len(replies), 1, answers)
            self.assertTrue(game.play(replies[0]), replies)
        self.assertEqual(engine.quit(), 0)
        self.assertEqual(engine.errors, "")


if __name__ == "__main__":
    unittest.main()
