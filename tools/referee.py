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
import dataclasses
import datetime
import os
import signal
import sys

from match.adjudication import read_adjudication
from match.engines import EngineError, parse_engine, read_engines
from match.journal import Journal, JournalError
from match.judge import Options
from match.notation import pgn
from match.openings import FileOpenings, OpeningError, RandomOpenings
from match.report import Tally, place
from match.schedule import Match, plan
from match.statistics import Sprt

KNOWN_ENGINES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "match", "engines.ini")
INI = "[ENGINE]\nHashSize=64\nPawnHashSize=16\n[BOOK]\nBook=0\n[TABLEBASE]\nSyzygy=0\n"


def argument_parser():
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
    parser.add_argument("--pgn", metavar="FILE", help="the games are added to it, and FILE.state keeps record of them")
    parser.add_argument("--resume", action="store_true", help="go on with the match on record, without repeating a game; "
                        "--games and --jobs may differ")
    parser.add_argument("--sprt", dest="sprt_text", metavar="ELO0,ELO1[,ALPHA,BETA]", help="stop when the "
                        "generalised sequential probability ratio test on the results of pairs (pentanomial, logistic "
                        "Elo) has decided between a difference of ELO0 and one of ELO1, with these errors (0.05 each); "
                        "--sprt=ELO0,... where ELO0 is negative")
    parser.add_argument("--ponder", choices=("none", "ours", "first", "both"), default="none",
                        help="who thinks in the opponent's time; \"ours\" are those that call themselves tarvelmon")
    parser.add_argument("--max-plies", type=int, default=400, help="a longer game is a draw")
    parser.add_argument("--resign", metavar="MOVES,SCORE", default="", help="a game is lost when for so many moves in a row "
                        "both engines see one side behind by SCORE hundredths of a pawn")
    parser.add_argument("--draw", metavar="FROM,MOVES,SCORE", default="", help="from move FROM on a game is drawn when "
                        "for so many moves in a row neither engine sees more than SCORE hundredths of a pawn")
    parser.add_argument("--ini", default=INI, help="text of tarvelmon.ini")
    parser.add_argument("--margin", type=float, default=0.0, help="seconds a clock may run over")
    parser.add_argument("--depth", type=int, default=0, help="plies an engine may search")
    parser.add_argument("--sigint", action="store_true", help="send SIGINT ahead of every command, as interfaces do")
    parser.add_argument("--logs", metavar="FOLDER", help="for the conversations of games with a fault")
    return parser


def parse_arguments(parser):
    """The arguments, with the engines, openings and times read; ends the process where one cannot be."""
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
        arguments.adjudication = read_adjudication(arguments.resign, arguments.draw)
    except ValueError as error:
        parser.error(f"--resign or --draw: {error}")
    arguments.sprt = None
    if arguments.sprt_text:
        if len(arguments.opponents) > 1:
            parser.error("--sprt is for two engines")
        try:
            arguments.sprt = Sprt(*(float(number) for number in arguments.sprt_text.split(",")))
        except (ValueError, TypeError) as error:
            parser.error(f"--sprt {arguments.sprt_text}: {error}")
    if arguments.resume and not arguments.pgn:
        parser.error("--resume needs --pgn")
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


def match_settings(arguments, options):
    """All that must be the same when a match goes on."""
    return {"first": arguments.first.description(),
            "opponents": [engine.description() for engine in arguments.opponents],
            "openings": arguments.openings.description(), "sprt": arguments.sprt and arguments.sprt_text,
            **{key: value for key, value in dataclasses.asdict(options).items() if key != "processor_time"}}


class Referee:
    """Plays a match, and tells of each game as it ends."""

    def __init__(self, arguments, options, journal):
        self.arguments = arguments
        self.options = options
        self.journal = journal
        self.tally = Tally()

    def play(self):
        """Plays what is not on record yet."""
        tasks = plan(len(self.arguments.opponents), self.arguments.games)
        print(f"openings: {self.arguments.openings.description()}", flush=True)
        if self.journal and self.journal.played:
            for task, record in self.journal.played:
                self.tally.add(task, record)
            played = {task for task, _ in self.journal.played}
            tasks = [task for task in tasks if task not in played]
            print(f"{len(played)} games are on record, {len(tasks)} are to be played", flush=True)
            if self.has_verdict():
                return
        match = Match(self.arguments.first, self.arguments.opponents, self.options, self.arguments.openings)
        for number in (signal.SIGINT, signal.SIGTERM):
            signal.signal(number, lambda *_: match.interrupt())
        match.play(tasks, self.arguments.jobs, self.on_game)

    def on_game(self, task, record):
        """Takes note of a game; true when the match is decided."""
        self.tally.add(task, record)
        print(f"{place(task)}: {record.white} - {record.black} {record.result} {record.fault or record.reason} "
              f"({len(record.moves)} plies)", flush=True)
        if self.journal:
            self.journal.add(task, record, pgn(record, self.tags(task)))
        if self.arguments.logs and record.fault:
            self.write_logs(task, record)
        score = self.tally.scores[task.opponent]
        if (task.pair, 1 - task.leg) not in score.points:
            return False
        line = score.line()
        if self.arguments.sprt:
            line += ", " + self.arguments.sprt.state_text(score.pairs())
        print(line, flush=True)
        return self.has_verdict()

    def has_verdict(self):
        return bool(self.arguments.sprt and self.arguments.sprt.verdict(self.tally.scores[0].pairs()))

    def tags(self, task):
        return {"Event": "Referee", "Site": "?", "Date": datetime.date.today().strftime("%Y.%m.%d"),
                "Round": f"{task.pair + 1}.{task.leg + 1}", "TimeControl": time_control_tag(self.options)}

    def write_logs(self, task, record):
        os.makedirs(self.arguments.logs, exist_ok=True)
        for index, log in enumerate(record.logs):
            name = f"{place(task).replace(' ', '')}-{index + 1}.log"
            with open(os.path.join(self.arguments.logs, name), "w", encoding="latin-1") as file:
                file.write("\n".join(log) + "\n")

    def report(self):
        print(self.tally.report())
        if self.arguments.sprt:
            print(self.arguments.sprt.verdict_text(self.tally.scores[0].pairs()), flush=True)


def time_control_tag(options):
    return f"{options.seconds:g}" + (f"+{options.increment:g}" if options.increment else "")


def main():
    parser = argument_parser()
    arguments = parse_arguments(parser)
    options = Options(arguments.seconds, arguments.increment, arguments.ponder, arguments.max_plies,
                      arguments.ini.replace("\\n", "\n"), arguments.seed, arguments.sigint, arguments.margin,
                      arguments.depth, arguments.adjudication)
    try:
        journal = Journal(arguments.pgn, match_settings(arguments, options), arguments.resume) if arguments.pgn else None
    except (JournalError, OSError) as error:
        parser.error(str(error))
    referee = Referee(arguments, options, journal)
    stopped = False
    try:
        referee.play()
    except KeyboardInterrupt:
        stopped = True
    except EngineError as error:
        print(f"referee.py: {error}", file=sys.stderr)
        return 2
    referee.report()
    if stopped:
        print("stopped" + ("; the same command with --resume goes on" if journal else ""))
        return 130
    return 1 if referee.tally.our_faults else 0


if __name__ == "__main__":
    sys.exit(main())
