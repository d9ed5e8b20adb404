#!/usr/bin/env python3
"""Plays games between engines of the xboard protocol or of UCI, over pipes and with clocks, and judges everything they
say.

    tools/referee.py --games 20 --time 10+0.1 build/tarvelmon fairymax
    tools/referee.py --games 60 --jobs 2 --pgn games.pgn build/tarvelmon phalanx gnuchess sjeng glaurung toga2
    tools/referee.py --games 20 uci:build/companions/gui/tarvelmon-gui build/companions/gui/tarvelmon-gui
    tools/referee.py --games 20 --ponder both build/tarvelmon build/tarvelmon
    tools/referee.py --games 20 "ini=new.ini name=new build/tarvelmon" "ini=old.ini name=old build/tarvelmon"
    tools/referee.py --games 20 build/tarvelmon random

The first engine plays so many games against each of the others. An engine is a command line, the name of an engine that
the referee knows (tools/match/engines.ini, --engines), or "random" for a player of random legal moves. Settings may stand
ahead of the command, each KEY=VALUE:
    protocol=uci          speaks UCI ("uci:" ahead of everything says the same)
    name=TEXT             its name in tables and game scores
    folder=FOLDER         its working directory; otherwise a new one for each game
    ini=FILE              lies there as tarvelmon.ini in the new folder, instead of the text of --ini
    option.NAME=VALUE     sent by "option" or "setoption"
    init=LINE             sent after the options
Files of engines (--engines) have a section [NAME] for each with the same keys and "command".

Games come in pairs: two games with the same opening, colours reversed. Each game has new processes of both engines, whose
HOME is a new folder, so that nothing is learnt from one game for the next. Each move is checked by the scripts' own rules
of chess, each result line against the position, and clocks, error lines, moves out of turn and exit states are watched.
An engine that calls itself tarvelmon must announce exactly the results it is built to announce, and the companion
tarvelmon-gui those of the laws; their faults make the exit status 1. A fault loses the game.
"""

import argparse
import datetime
import os
import sys

from match.engines import EngineError, parse_engine, read_engines
from match.judge import Options
from match.notation import pgn
from match.openings import FileOpenings, OpeningError, RandomOpenings
from match.report import Tally, place
from match.schedule import Match, plan

KNOWN_ENGINES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "match", "engines.ini")
INI = "[ENGINE]\nHashSize=64\nPawnHashSize=16\n[BOOK]\nBook=0\n[TABLEBASE]\nSyzygy=0\n"


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("first")
    parser.add_argument("opponents", nargs="+", metavar="opponent")
    parser.add_argument("--engines", metavar="FILE", help="more engines that may be called by name")
    parser.add_argument("--games", type=int, default=2, help="games against each opponent, an even number")
    parser.add_argument("--time", default="10+0.1", help="seconds on the clock + seconds added for each move")
    parser.add_argument("--jobs", type=int, default=1, help="games that are played at the same time")
    parser.add_argument("--openings", metavar="FILE", help="where the games begin: lines of FEN, EPD or moves, or PGN; "
                        "shuffled by the seed. Without it by random moves")
    parser.add_argument("--opening-plies", type=int, metavar="N",
                        help="random moves (6 by default), or the most that is played of a line of the file")
    parser.add_argument("--seed", type=int, default=1, help="of the random moves or the order of the openings")
    parser.add_argument("--pgn", metavar="FILE", help="the games are added to it")
    parser.add_argument("--ponder", choices=("none", "ours", "first", "both"), default="none")
    parser.add_argument("--max-plies", type=int, default=400, help="a longer game is a draw")
    parser.add_argument("--ini", default=INI, help="text of tarvelmon.ini")
    parser.add_argument("--margin", type=float, default=0.0, help="seconds a clock may run over")
    parser.add_argument("--depth", type=int, default=0, help="plies an engine may search")
    parser.add_argument("--sigint", action="store_true", help="send SIGINT ahead of every command, as interfaces do")
    parser.add_argument("--logs", metavar="FOLDER", help="for the conversations of games with a fault")
    arguments = parser.parse_args()
    if arguments.games < 2 or arguments.games % 2:
        parser.error("--games must be an even number: games come in pairs")
    if arguments.jobs < 1:
        parser.error("--jobs must be 1 or more")
    try:
        seconds, _, increment = arguments.time.partition("+")
        arguments.seconds, arguments.increment = float(seconds), float(increment or 0)
    except ValueError:
        parser.error(f"no time control: {arguments.time}")
    try:
        known = read_engines(KNOWN_ENGINES)
        if arguments.engines:
            known.update(read_engines(arguments.engines))
        arguments.first = parse_engine(arguments.first, known)
        arguments.opponents = [parse_engine(text, known) for text in arguments.opponents]
        arguments.openings = (FileOpenings(arguments.openings, arguments.seed, arguments.opening_plies)
                              if arguments.openings else
                              RandomOpenings(arguments.seed, 6 if arguments.opening_plies is None
                                             else arguments.opening_plies))
    except (EngineError, OpeningError) as error:
        parser.error(str(error))
    return arguments


class Output:
    """Tells of each game as it ends."""

    def __init__(self, arguments):
        self.arguments = arguments
        self.tally = Tally()

    def on_game(self, task, record):
        self.tally.add(task, record)
        print(f"{place(task)}: {record.white} - {record.black} {record.result} {record.fault or record.reason} "
              f"({len(record.moves)} plies)", flush=True)
        if self.arguments.pgn:
            self.write_pgn(task, record)
        if self.arguments.logs and record.fault:
            self.write_logs(task, record)
        return False

    def write_pgn(self, task, record):
        tags = {"Event": "Referee", "Site": "?", "Date": datetime.date.today().strftime("%Y.%m.%d"),
                "Round": f"{task.pair + 1}.{task.leg + 1}", "TimeControl": self.arguments.time}
        with open(self.arguments.pgn, "a", encoding="latin-1", errors="replace") as file:
            file.write(pgn(record, tags))

    def write_logs(self, task, record):
        os.makedirs(self.arguments.logs, exist_ok=True)
        for index, log in enumerate(record.logs):
            name = f"{place(task).replace(' ', '')}-{index + 1}.log"
            with open(os.path.join(self.arguments.logs, name), "w", encoding="latin-1") as file:
                file.write("\n".join(log) + "\n")


def main():
    arguments = parse_arguments()
    options = Options(arguments.seconds, arguments.increment, arguments.ponder, arguments.max_plies,
                      arguments.ini.replace("\\n", "\n"), arguments.seed, arguments.sigint, arguments.margin,
                      arguments.depth)
    output = Output(arguments)
    match = Match(arguments.first, arguments.opponents, options, arguments.openings)
    match.play(plan(len(arguments.opponents), arguments.games), arguments.jobs, output.on_game)
    print(output.tally.report())
    return 1 if output.tally.our_faults else 0


if __name__ == "__main__":
    sys.exit(main())
