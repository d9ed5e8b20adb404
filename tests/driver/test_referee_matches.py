"""Whole matches by the referee: pairs of games, tables, the sequential test, and going on after a stop. The players are
scripted; which games they resign follows from the openings."""

import json
import os
import re
import shlex
import shutil
import signal
import subprocess
import sys
import time
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
TOOLS = os.path.join(HERE, "..", "..", "tools")
sys.path.insert(0, TOOLS)
from match.engines import EngineError, parse_engine  # noqa: E402
from match.judge import Options, play_game  # noqa: E402
from match.openings import RandomOpenings  # noqa: E402
from match.statistics import Sprt  # noqa: E402
from driven_clock import PATIENCE  # noqa: E402
from scratch_folder import ScratchFolderTest  # noqa: E402

RECORD = re.compile(r"pairs ([\d ]+), LLR ([+-][\d.]+) \(-2.94, \+2.94\)")


def fake(fault):
    return shlex.join((sys.executable, "-BSE", os.path.join(HERE, "fake_engine.py"), fault))


def is_running(process):
    """Whether the process does anything still (Linux)."""
    try:
        with open(f"/proc/{process}/stat", encoding="ascii") as file:
            return file.read().rpartition(")")[2].split()[0] not in "ZX"
    except FileNotFoundError:
        return False


class MatchTest(ScratchFolderTest):
    def start(self, *arguments):
        process = subprocess.Popen([sys.executable, "-B", os.path.join(TOOLS, "referee.py"), "--time", "600+1",
                                    "--max-plies", "12", *arguments], cwd=self.folder, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True,
                                   env={**os.environ, "TMPDIR": self.folder})  # for what a killed referee leaves
        self.addCleanup(self.end, process)
        return process

    @staticmethod
    def end(process):
        process.kill()
        process.wait()
        process.stdout.close()
        process.stderr.close()

    def play(self, *arguments, status=0):
        """What the referee prints; `errors` is what it says beside."""
        process = self.start(*arguments)
        output, self.errors = process.communicate(timeout=PATIENCE)
        self.assertEqual(process.returncode, status, output + self.errors)
        return output

    def records(self, name):
        """The games on record by their place: (players, result, moves)."""
        with open(self.path(name + ".state"), encoding="utf-8") as file:
            entries = [json.loads(line) for line in file][1:]
        games = {tuple(entry["task"]): tuple(entry["record"][key] for key in ("white", "black", "result", "moves"))
                 for entry in entries}
        self.assertEqual(len(games), len(entries), "a game was played twice")
        return games


class Pairs(MatchTest):
    def test_two_games_share_an_opening_with_colours_reversed_whatever_the_jobs(self):
        engines = fake("weak 20"), fake("weak 40"), fake("weak 60")
        for jobs in ("1", "3"):
            self.play("--games", "4", "--jobs", jobs, "--pgn", jobs, *engines)
        games = self.records("1")
        self.assertEqual(games, self.records("3"))
        self.assertEqual(len(games), 8)
        for opponent, name in ((0, "weak 40"), (1, "weak 60")):
            for pair in (0, 1):
                first, second = games[opponent, pair, 0], games[opponent, pair, 1]
                self.assertEqual((first[:2], second[:2]), (("weak 20", name), (name, "weak 20")))
                self.assertEqual(first[3][:6], second[3][:6])
                self.assertEqual(first[3][:6], games[0, pair, 0][3][:6])
        self.assertNotEqual(games[0, 0, 0][3][:6], games[0, 1, 0][3][:6])

    def test_the_table_counts_every_opponent_and_all(self):
        output = self.play("--games", "2", fake("weak 0"), fake("weak 100"), fake("weak 0"))
        rows = [line.split() for line in output.splitlines() if line.startswith(("weak 100  ", "weak 0 #2  ", "all  "))]
        self.assertEqual(rows, ["weak 100 2 2 0 0 2.0 100.0 +inf 0 0 0 0 1".split(),
                                "weak 0 #2 2 0 2 0 1.0 50.0 +0 0 0 1 0 0".split(),
                                "all 4 2 2 0 3.0 75.0 +191 ± inf 0 0 1 0 1".split()])

    def test_a_fault_loses_and_is_told_in_the_score(self):
        output = self.play("--games", "2", "--pgn", "pgn", "--logs", "logs", fake("illegal move"), fake("weak 0"), status=1)
        self.assertIn("faults of tarvelmon: 2, of others: 0", output)
        self.assertIn("against weak 0: games 2 +0 =0 -2, ", output)
        with open(self.path("pgn"), encoding="utf-8") as file:
            text = file.read()
        for words in ('[Result "0-1"]', '[Result "1-0"]', '[Termination "rules infraction"]', '[TimeControl "600+1"]',
                      "plays the illegal move a1a1"):
            self.assertIn(words, " ".join(text.split()))
        self.assertEqual(len(os.listdir(self.path("logs"))), 4)


    def test_an_engine_that_cannot_set_up_the_openings_ends_the_match_without_a_result(self):
        openings = self.write("openings", "4k3/8/8/8/8/8/4P3/4K3 w - - 0 1\n")
        output = self.play("--openings", openings, fake("weak 0"), fake("old words"), status=2)
        self.assertIn("old words cannot set up a position", self.errors)
        self.assertNotIn("1-0", output)


class SequentialTest(MatchTest):
    def decide(self, first, second, games, words, low=0):
        """Plays until the test has decided; each line tells the ratio of the pairs that it tells."""
        output = self.play("--games", str(games), "--jobs", "2", f"--sprt={low},400", fake(first), fake(second))
        sprt, told = Sprt(low, 400), RECORD.findall(output)
        for pairs, llr in told:
            self.assertEqual(f"{sprt.llr([int(count) for count in pairs.split()]):+.2f}", llr)
        self.assertIn(words, output.splitlines()[-1])
        return len(told)

    def test_it_stops_for_the_stronger(self):
        self.assertLess(self.decide("weak 0", "weak 100", 40, "SPRT: H1 accepted: Elo 400 rather than 0;"), 10)

    def test_it_stops_for_the_weaker(self):
        self.assertLess(self.decide("weak 70", "weak 30", 40, "SPRT: H0 accepted: Elo 0 rather than 400;"), 10)

    def test_the_lower_bound_may_be_negative(self):
        self.assertLess(self.decide("weak 0", "weak 100", 40, "SPRT: H1 accepted: Elo 400 rather than -50;", low=-50), 10)

    def test_it_stays_undecided_when_the_games_are_over(self):
        self.assertEqual(self.decide("weak 0", "weak 100", 4, "SPRT: undecided; LLR +"), 2)


class GoingOn(MatchTest):
    ENGINES = fake("weak 30"), fake("weak 50")

    def wait_for(self, what, has_come):
        deadline = time.monotonic() + PATIENCE
        while not has_come():
            self.assertLess(time.monotonic(), deadline, f"waited for {what}")
            time.sleep(0.01)

    def wait_for_games(self, name, count):
        def has_come():
            if not os.path.exists(self.path(name + ".state")):
                return False
            with open(self.path(name + ".state"), "rb") as file:
                return file.read().count(b"\n") > count

        self.wait_for("games", has_come)

    def stop(self, process, with_signal):
        process.send_signal(with_signal)
        output, _ = process.communicate(timeout=PATIENCE)
        return output

    def test_after_a_kill_the_same_games_come_of_it_and_none_twice(self):
        plan = "--games", "8", "--jobs", "2"
        self.play(*plan, "--pgn", "whole", *self.ENGINES)
        process = self.start(*plan, "--pgn", "parts", *self.ENGINES)
        self.wait_for_games("parts", 3)
        self.stop(process, signal.SIGKILL)
        # As if it had been killed in the middle of both: a game score without its line, and half a line.
        for name, text in (("parts", '[Event "x"]\n\n1. e4 *\n\n[Ev'), ("parts.state", '{"task": [0, 4')):
            with open(self.path(name), "a", encoding="utf-8") as file:
                file.write(text)
        output = self.play(*plan, "--pgn", "parts", "--resume", *self.ENGINES)
        self.assertRegex(output, r"\n\d games are on record, \d are to be played\n")
        self.assertEqual(self.records("parts"), self.records("whole"))
        self.assertEqual(self.scores("parts"), self.scores("whole"))
        self.assertRegex(output, r"\nweak 50 +8 ")

    def scores(self, name):
        with open(self.path(name), encoding="utf-8") as file:
            return sorted(file.read().split("[Event ")[1:])

    def test_an_interrupt_ends_with_the_table_and_more_games_may_be_asked_for(self):
        process = self.start("--games", "100", "--pgn", "pgn", *self.ENGINES)
        self.wait_for_games("pgn", 2)
        output = self.stop(process, signal.SIGINT)
        self.assertEqual(process.returncode, 130)
        self.assertIn("stopped; the same command with --resume goes on", output)
        played = len(self.records("pgn"))
        self.assertIn(f"games {played}, ", output)
        self.play("--games", str(played + 4 - played % 2), "--jobs", "2", "--pgn", "pgn", "--resume", *self.ENGINES)
        self.assertEqual(len(self.records("pgn")), played + 4 - played % 2)

    def begin_and_stop(self, with_signal):
        """Stops a game with an engine that thinks for ever; returns the engine's process."""
        process = self.start("--pgn", "pgn", fake("thinks " + self.path("pid")), "random")
        self.wait_for("the engine", lambda: os.path.exists(self.path("pid")) and os.path.getsize(self.path("pid")))
        self.play("--pgn", "pgn", "--resume", fake("thinks " + self.path("pid")), "random", status=2)
        self.assertIn("another referee writes to it", self.errors)
        self.stop(process, with_signal)
        with open(self.path("pid"), encoding="ascii") as file:
            return int(file.read())

    def test_engines_end_with_the_referee(self):
        signals = [signal.SIGTERM] + ([signal.SIGKILL] if shutil.which("setpriv") else [])
        for with_signal in signals:
            with self.subTest(with_signal):
                engine = self.begin_and_stop(with_signal)
                self.wait_for("the engine's end", lambda: not is_running(engine))
            for name in ("pid", "pgn", "pgn.state"):
                os.remove(self.path(name))

    def test_only_the_same_match_goes_on(self):
        self.play("--games", "2", "--pgn", "pgn", *self.ENGINES)
        for arguments, words in (
                (["--pgn", "pgn"], "a match has been begun"),
                (["--pgn", "pgn", "--resume", "--seed", "2"], "begun with other settings: openings, seed"),
                (["--pgn", "pgn", "--resume", "--time", "9+1"], "begun with other settings: seconds"),
                (["--pgn", "pgn", "--resume", "name=other " + self.ENGINES[0]], "begun with other settings: first, opponents"),
                (["--resume"], "--resume needs --pgn")):
            self.play("--games", "2", *arguments, *self.ENGINES, status=2)
            self.assertIn(words, self.errors)
        with open(self.path("pgn"), "r+", encoding="utf-8") as file:
            file.truncate(100)
        self.play("--games", "2", "--pgn", "pgn", "--resume", *self.ENGINES, status=2)
        self.assertIn("games that pgn.state tells of are missing", self.errors)


class Engines(ScratchFolderTest):
    def test_settings_stand_ahead_of_a_command_or_belong_to_a_name(self):
        known = {"sh": [("command", "sh -c true"), ("protocol", "uci"), ("option.Hash", "64")]}
        engine = parse_engine("name='The first' option.Own\\ Book=false sh", known)
        self.assertEqual((engine.name, engine.protocol), ("The first", "uci"))
        self.assertEqual(engine.options, [("Hash", "64"), ("Own Book", "false")])
        self.assertEqual(engine.command[1:], ["-c", "true"])
        self.assertEqual(parse_engine("sh -c false", known).protocol, "xboard")
        self.assertEqual(parse_engine("uci:sh -x", known).command[1:], ["-x"])
        self.assertEqual(parse_engine("env A=b sh").command[1:], ["A=b", "sh"])
        self.assertTrue(parse_engine("random").is_random)

    def test_what_is_no_engine_is_told(self):
        for text, words in (("no-such-program", "no such program"), ("protocol=x sh", "no such protocol: x"),
                            (f"ini={HERE}/none sh", "none: No such file"), (f"folder={HERE}/none sh", "no such folder"),
                            ("name=x", "no command")):
            with self.subTest(text), self.assertRaisesRegex(EngineError, words):
                parse_engine(text)

    def test_each_engine_has_its_own_settings(self):
        os.mkdir(self.path("folder"))
        self.write("folder/tarvelmon.ini", "[C]")
        ini = self.write("file", "[B]")
        for settings, line in (("", "[A]"), (f"ini={ini} option.Level=3", "[B]"), (f"folder={self.path('folder')}", "[C]")):
            record = self.play_one(f"{settings} init='memory 64' {fake('settings')}", Options(max_plies=8, ini="[A]"))
            self.assertIn("< # " + line, record.logs[0])
            self.assertIn("> memory 64", record.logs[0])
            self.assertEqual("> option Level=3" in record.logs[0], "Level" in settings)

    @staticmethod
    def play_one(command, options):
        return play_game([parse_engine(command), parse_engine("random")], options, RandomOpenings().of_pair(0), 0)

    def test_getting_ready_is_not_on_the_clock(self):
        record = self.play_one(fake("slow start"), Options(seconds=1.3, max_plies=8))
        self.assertEqual(record.reason, "length")

    def test_moves_in_the_words_of_old_engines_are_heard(self):
        record = self.play_one(fake("old words"), Options(max_plies=20))
        self.assertIsNone(record.fault)
        self.assertEqual(record.reason, "length")


if __name__ == "__main__":
    unittest.main()
