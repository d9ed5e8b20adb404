"""The referee of the games notices what an engine does wrong, and nothing where it does all right."""

import os
import shlex
import sys
import types
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "..", "tools"))
from match import judge  # noqa: E402
from match.engines import parse_engine  # noqa: E402
from match.judge import Options, RepetitionCounts, play_game  # noqa: E402
from match.openings import RandomOpenings  # noqa: E402
from chess_rules import Game  # noqa: E402

# What the engine does wrong, and a piece of what the referee says of it.
FAULTS = {
    "illegal move": "plays the illegal move a1a1",
    "error line": "said 'Error (unknown command): level'",
    "late": "loses on time",
    "end": "ended in the game",
    "status": "ended with status 4",
    "false result": "says '1/2-1/2 {Draw by repetition}'",
}


# The same of an engine that speaks UCI and ponders.
UCI_FAULTS = {
    "illegal move": "plays the illegal move a1a1",
    "odd line": "said 'Hint: e2e4'",
    "late": "loses on time",
    "end": "ended in the game",
    "status": "ended with status 4",
    "illegal reply": "expects the illegal move a1a1",
}


def fake_command(fault):
    return shlex.join((sys.executable, "-B", os.path.join(HERE, "fake_engine.py"), fault))


def play(commands, options, number=0):
    return play_game([parse_engine(command) for command in commands], options, RandomOpenings().of_pair(number // 2),
                     number)


def play_fake(fault, opponent="random", number=0):
    command = fake_command(fault)
    # Short of time is only who comes too late.
    seconds = 1.0 if fault == "late" else 600.0
    return play([command, opponent], Options(seconds=seconds, increment=0.01, max_plies=60), number)


class Referee(unittest.TestCase):
    def test_every_fault_is_noticed(self):
        for fault, words in FAULTS.items():
            with self.subTest(fault):
                record = play_fake(fault)
                self.assertIn(words, str(record.fault))
                self.assertTrue(record.fault.player.is_ours)

    def test_every_fault_of_uci_is_noticed(self):
        for fault, words in UCI_FAULTS.items():
            with self.subTest(fault):
                record = play(["uci:" + fake_command(fault), "random"],
                                   Options(seconds=1.0 if fault == "late" else 20.0, increment=0.01, max_plies=30,
                                           ponder="first"), 0)
                self.assertIn(words, str(record.fault))
                self.assertTrue(record.fault.player.is_ours)

    def test_a_faultless_game_over_uci_has_no_fault(self):
        for number in range(4):
            record = play(["uci:" + fake_command(""), "uci:" + fake_command("")],
                               Options(seconds=20.0, increment=0.01, max_plies=30, ponder="first"), number)
            self.assertIsNone(record.fault)
            self.assertGreater(record.ponder_searches, 5)

    def test_nobody_can_mate_with_bare_kings_one_knight_or_bishops_of_one_colour(self):
        for men, held in (("4k3/8/8/8/8/8/8/4K3", True), ("4k3/8/8/8/8/8/8/3NK3", True), ("4k3/5b2/8/8/8/8/6B1/4K3", True),
                          ("4k3/5b2/8/8/8/8/7B/4K3", False), ("4k3/8/8/8/8/8/8/3NKN2", False), ("4k3/8/8/8/8/8/P7/4K3", False)):
            self.assertEqual(judge.nobody_can_mate(Game(men + " w - - 0 1").position), held, men)

    def test_others_may_claim_a_draw_where_nobody_can_mate(self):
        stranger, ours = (types.SimpleNamespace(is_ours=own, name="x") for own in (False, True))
        claim = "1/2-1/2 {Drawn game}"

        def claimed(men, player):
            opening = types.SimpleNamespace(fen=men + " w - - 0 1", moves=[])
            game = judge.JudgedGame((player, stranger), Options(seconds=1.0, increment=0.0), opening)
            return game._ended_by_claim(player, 0, claim)

        self.assertEqual(claimed("8/n7/3k4/6K1/8/8/8/8", stranger), ("1/2-1/2", "material"))
        self.assertRaisesRegex(judge.Fault, "claims '1/2", claimed, "8/r7/3k4/6K1/8/8/8/8", stranger)
        self.assertRaisesRegex(judge.Fault, "says '1/2", claimed, "8/n7/3k4/6K1/8/8/8/8", ours)

    def test_a_faultless_game_has_no_fault(self):
        for number in range(4):
            record = play_fake("", number=number)
            self.assertIsNone(record.fault)
            self.assertIn(record.reason, ("length", "checkmate", "stalemate", "repetition", "fifty moves"))

    def test_a_repetition_that_is_not_announced_is_noticed(self):
        self.addCleanup(setattr, judge, "RESULT_SECONDS", judge.RESULT_SECONDS)
        judge.RESULT_SECONDS = 0.5
        record = play_fake("", fake_command(""))  # both step to and fro
        self.assertIn("does not announce ['1/2-1/2 {Draw by repetition}']", str(record.fault))

    def test_repetition_count_takes_over_from_the_parent_at_a_quiet_bishop_move(self):
        game = Game("4k1b1/8/8/8/8/8/8/1B2K1N1 w - - 0 1")
        counts = RepetitionCounts(game.position)
        expected = [0, 0, 0, 1,  # knight out, king aside, both back: the fourth ply repeats
                    1, 1]        # bishop moves reach new positions and take the count along
        for text, count in zip("g1f3 e8e7 f3g1 e7e8 b1c2 g8f7".split(), expected):
            before = game.position
            self.assertTrue(game.play(text))
            counts.add(before, game.position, (ord(text[0]) - 97) + 8 * (int(text[1]) - 1))
            self.assertEqual(counts.counts[-1], count, text)


if __name__ == "__main__":
    unittest.main()
