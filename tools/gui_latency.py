#!/usr/bin/env python3
"""Measures how quickly tarvelmon-gui answers, against what is asked of it.

    tools/gui_latency.py build/companions/gui/tarvelmon-gui build/tarvelmon

"stop" to "bestmove" over UCI and "?" to "move" over the xboard protocol, "isready" to "readyok" while a search runs, each
200 times at random moments of a search; and the start of the process to "uciok" against the engine's start to its feature
line. Prints median and worst. Exit status 0 if they are within bounds. For a machine with nothing else to do.
"""

import argparse
import os
import random
import statistics
import subprocess
import sys
import tempfile
import time

POSITIONS = (
    "startpos",
    "fen r1bqkb1r/pppp1ppp/2n2n2/4p3/2B1P3/5N2/PPPP1PPP/RNBQK2R w KQkq - 4 4",
    "fen 2rr2k1/pp3ppp/1qn1p3/8/3P4/P3PN2/1Q3PPP/2R2RK1 b - - 0 20",
    "fen 8/5pk1/R5p1/7p/1p5P/r5P1/5PK1/8 w - - 0 40",
)
INI = "[ENGINE]\nHashSize=128\nPawnHashSize=16\n[BOOK]\nBook=0\n[TABLEBASE]\nSyzygy=0\n"


class Program:
    def __init__(self, path, folder):
        self.process = subprocess.Popen([path], cwd=folder, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=subprocess.DEVNULL, bufsize=0)
        self.lines = self.process.stdout

    def send(self, *lines):
        self.process.stdin.write("".join(line + "\n" for line in lines).encode())

    def wait(self, start):
        """Milliseconds until a line that begins with `start`."""
        begun = time.perf_counter()
        wanted = start.encode()
        for line in iter(self.lines.readline, b""):
            if line.startswith(wanted):
                return (time.perf_counter() - begun) * 1000
        raise SystemExit("the program ended before " + start)

    def quit(self):
        self.send("quit")
        self.process.stdin.close()
        self.process.wait(20)


def stops(path, folder, tries):
    program = Program(path, folder)
    program.send("uci", "isready")
    program.wait("readyok")
    answers, ready = [], []
    generator = random.Random(1)
    for number in range(tries):
        program.send("position " + POSITIONS[number % len(POSITIONS)], "go infinite")
        time.sleep(0.02 + generator.random() * 0.3)
        program.send("isready")
        ready.append(program.wait("readyok"))
        program.send("stop")
        answers.append(program.wait("bestmove"))
    program.quit()
    return answers, ready


def move_nows(path, folder, tries):
    program = Program(path, folder)
    program.send("xboard", "protover 2")
    program.wait("feature done=1")
    program.send("new", "force", "nopost", "level 0 600 0")
    answers = []
    generator = random.Random(2)
    for number in range(tries):
        position = POSITIONS[number % len(POSITIONS)]
        fen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1" if position == "startpos" else position[4:]
        program.send("force", "setboard " + fen, "time 3600000", "otim 3600000", "go")
        time.sleep(0.02 + generator.random() * 0.3)
        program.send("?")
        answers.append(program.wait("move "))
    program.quit()
    return answers


def starts(path, folder, lines, answer, tries):
    times = []
    for _ in range(tries):
        begun = time.perf_counter()
        program = Program(path, folder)
        program.send(*lines)
        program.wait(answer)
        times.append((time.perf_counter() - begun) * 1000)
        program.quit()
    return times


def report(name, times, median, worst):
    held = statistics.median(times) <= median and max(times) <= worst
    print("%-44s median %7.2f ms  worst %7.2f ms  (%d tries)%s" % (
        name, statistics.median(times), max(times), len(times), "" if held else "  TOO SLOW"), flush=True)
    return held


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("companion")
    parser.add_argument("engine")
    parser.add_argument("--tries", type=int, default=200)
    arguments = parser.parse_args()
    companion, engine = os.path.abspath(arguments.companion), os.path.abspath(arguments.engine)
    with tempfile.TemporaryDirectory() as folder:
        with open(os.path.join(folder, "tarvelmon.ini"), "w", encoding="ascii") as ini:
            ini.write(INI)
        answers, ready = stops(companion, folder, arguments.tries)
        held = [report("stop to bestmove", answers, 20, 100),
                report("isready to readyok while searching", ready, 20, 100),
                report("? to move", move_nows(companion, folder, arguments.tries), 20, 100)]
        # In turn, so that both meet the same machine.
        own, others = [], []
        for _ in range(20):
            own += starts(companion, folder, ["uci"], "uciok", 1)
            others += starts(engine, folder, ["xboard", "protover 2"], "feature", 1)
        limit = statistics.median(others) * 1.2
        held.append(report("start to uciok", own, limit, float("inf")))
        report("the engine's start to its features", others, float("inf"), float("inf"))
    return 0 if all(held) else 1


if __name__ == "__main__":
    sys.exit(main())
