#!/usr/bin/env python3
"""Checks opening lines by search: tells every move to be played after which its side is in trouble or has lost much.

    tools/check_book.py [--results FILE] [--depth N] [--hash MB] [--jobs N] [--only FILE] [OPENINGS]

OPENINGS is a file of opening lines as tarvelmon-book reads them, data/book/openings.txt without it. tarvelmon-analyse
(in build-test or build, or --analyse PROGRAM) searches each position before or after a move to be played once, from empty
tables, to --depth.
A move without "?" is a finding if its side stands worse than --limit pawns afterwards, or if the score has fallen by
more than that against the position before, though the search there held another move for best. Both scores are of the
same depth. What a side only comes to by a move of its own with "?" is not judged: the engine does not play there. A "?" on
a move that another line plays is a finding too.

--results FILE keeps what has been searched, as EPD: it is added to line by line, and a later call searches only what is
new, whatever the lines were before. With --only, only the positions of that file of lines are searched now; what is not
searched is not judged. --write FILE searches nothing and writes the positions as EPD.

Status 0 if nothing is found, 1 if something is, 2 if the check could not be made.
"""
import argparse
import dataclasses
import os
import pathlib
import re
import subprocess
import sys
import tempfile

TOP = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(TOP / "tools"))
from match.notation import NotationError, read_move, san  # noqa: E402
from chess_rules import Position, square_name  # noqa: E402

OPENINGS = TOP / "data" / "book" / "openings.txt"
PROGRAM = pathlib.Path("companions", "analyse", "tarvelmon-analyse")
WEIGHT = re.compile(r"\s*\d+\s*:")
MOVE_NUMBER = re.compile(r"\d+\.+")
OPERATION = re.compile(r" (acd|ce|dm) (-?\d+);")
BEST = re.compile(r" pm ([^;]+);")
MATE = 32767  # hundredths; less for a mate further off
SURELY_MATE = 32000


class CannotCheck(Exception):
    pass


@dataclasses.dataclass
class BookPosition:
    epd: str
    position: Position
    next: dict = dataclasses.field(default_factory=dict)  # position after each move, by the move's text
    words: dict = dataclasses.field(default_factory=dict)  # the move's text by the word it was written as


@dataclasses.dataclass
class Searched:
    score: int  # hundredths for the side to move
    best: str  # the move found, in short notation; empty if there is none


@dataclasses.dataclass
class BookMove:
    """A move that the engine would play, with the lines in which it stands."""

    before: BookPosition
    after: BookPosition
    text: str
    lines: list = dataclasses.field(default_factory=list)


def epd_of(position):
    """The same for all ways to a position: an en passant square only where a pawn can capture on it."""
    ep = position.repetition_key()[3]
    return " ".join((position.placement(), "w" if position.white else "b", position.rights or "-",
                     "-" if ep is None else square_name(ep)))


class Book:
    """The positions of opening lines in the order in which they are met, and the moves to be played."""

    def __init__(self):
        self.positions = {}
        self.moves = {}
        self.marked = []  # the moves with "?": number of the line, position, move's text
        self.start = self.known(Position())

    def known(self, position):
        epd = epd_of(position)
        return self.positions.setdefault(epd, BookPosition(epd, position))

    def move_on(self, book_position, word):
        text = book_position.words.get(word)
        if text is None:
            text = book_position.words[word] = read_move(book_position.position, word)
        if text not in book_position.next:
            book_position.next[text] = self.known(book_position.position.legal_moves()[text])
        return text, book_position.next[text]

    def moves_played(self):
        """The moves to be played that their side comes to without a move of its own that is only answered."""
        played = set()
        for white in (True, False):
            waiting, met = [self.start], {self.start.epd}
            while waiting:
                now = waiting.pop()
                for text, after in now.next.items():
                    if now.position.white == white:
                        if (now.epd, text) not in self.moves:
                            continue
                        played.add((now.epd, text))
                    if after.epd not in met:
                        met.add(after.epd)
                        waiting.append(after)
        return [move for key, move in self.moves.items() if key in played]

    def read_line(self, number, line):
        """Adds a line of play; raises NotationError."""
        now = self.start
        for word in WEIGHT.sub("", line, count=1).split():
            word = MOVE_NUMBER.sub("", word)
            if not word:
                continue
            text, after = self.move_on(now, word)
            if "?" in word:
                self.marked.append((number, now, text))
            else:
                move = self.moves.setdefault((now.epd, text), BookMove(now, after, text))
                move.lines.append(number)
            now = after


def read_openings(path):
    try:
        text = pathlib.Path(path).read_text(encoding="utf-8")
    except (OSError, UnicodeDecodeError) as error:
        raise CannotCheck(f"{path}: {getattr(error, 'strerror', None) or error}") from None
    book = Book()
    for number, line in enumerate(text.split("\n"), 1):
        line = line.split("#")[0].strip()
        if line and line[0] != "[":
            try:
                book.read_line(number, line)
            except NotationError as error:
                raise CannotCheck(f"{path}:{number}: {error}") from None
    if not book.moves:
        raise CannotCheck(f"{path}: no moves to be played in it")
    return book


def searched_in(line, depth):
    """(position, Searched) of a line of results; None if it is cut off or not of this depth."""
    operations = dict(OPERATION.findall(line))
    if not line.endswith(";\n") or int(operations.get("acd", 0)) < depth:
        return None
    if "dm" in operations:
        score = MATE - 2 * int(operations["dm"])
    elif "ce" in operations:
        score = int(operations["ce"])
    else:
        return None
    best = BEST.search(line)
    return " ".join(line.split()[:4]), Searched(score, best[1] if best else "")


class Results:
    """What has been searched, by position, and the file that keeps it."""

    def __init__(self, path, depth):
        self.path = path
        self.depth = depth
        self.searched = {}
        if path is not None and path.exists():
            text = path.read_text(encoding="utf-8")
            self.searched = dict(filter(None, (searched_in(line, depth) for line in text.splitlines(keepends=True))))
            if text and not text.endswith("\n"):
                self.keep("\n")

    def keep(self, text):
        if self.path is not None:
            with open(self.path, "a", encoding="utf-8") as file:
                file.write(text)

    def search(self, command, epds):
        """Searches what has no score yet; every line is kept as soon as it comes."""
        wanted = [epd for epd in epds if epd not in self.searched]
        if not wanted:
            return
        print(f"check_book: {len(wanted)} position{'s' * (len(wanted) > 1)} to search", file=sys.stderr, flush=True)
        with tempfile.TemporaryFile("w+", encoding="utf-8") as positions:
            positions.write("".join(epd + "\n" for epd in wanted))
            positions.seek(0)
            try:
                process = subprocess.Popen(command, stdin=positions, stdout=subprocess.PIPE, encoding="utf-8")
            except OSError as error:
                raise CannotCheck(f"{command[0]}: {error.strerror}") from None
            with process:
                for line in process.stdout:
                    found = searched_in(line, self.depth)
                    if found is not None:
                        self.keep(line)
                        self.searched.update([found])
        missing = sum(epd not in self.searched for epd in wanted)
        if process.returncode != 0 or missing:
            raise CannotCheck(f"{command[0]} ended with status {process.returncode}; {missing} positions without a score")


def pawns(score):
    return f"{score / 100:+.2f}" if abs(score) < SURELY_MATE else "+mate" if score > 0 else "-mate"


def is_best(move, before):
    return before.best.rstrip("+#") == san(move.before.position, move.text).rstrip("+#")


def faults_of(move, searched, limit):
    """What is wrong with a move, in words; nothing where its positions have not been searched."""
    if move.after.epd not in searched:
        return []
    after = -searched[move.after.epd].score
    before = searched.get(move.before.epd)
    faults = []
    if after < -limit:
        faults.append(f"stands at {pawns(after)}")
    if before is not None and before.score - after > limit and not is_best(move, before):
        faults.append(f"had {pawns(before.score)} before" if faults
                      else f"falls from {pawns(before.score)} to {pawns(after)}")
    return faults


def written(position, text):
    return f"{position.number}{'.' if position.white else '...'} {san(position, text)}"


def report_marks(path, book):
    """Prints the moves that are both marked and played; their number."""
    findings = 0
    for number, before, text in book.marked:
        played = book.moves.get((before.epd, text))
        if played is not None:
            findings += 1
            print(f"{path}:{number}: {written(before.position, text)}? is played in line {played.lines[0]}")
    return findings


def report_faults(path, moves, searched, limit):
    """Prints the moves to be played that are found faulty; their number."""
    findings = 0
    for move in moves:
        faults = faults_of(move, searched, limit)
        if faults:
            findings += 1
            others = f" (and in {len(move.lines) - 1} more)" if len(move.lines) > 1 else ""
            print(f"{path}:{move.lines[0]}: {written(move.before.position, move.text)} {'; '.join(faults)}{others}")
    return findings


def analyse_program():
    for folder in ("build-test", "build"):
        if (TOP / folder / PROGRAM).exists():
            return TOP / folder / PROGRAM
    raise CannotCheck("no tarvelmon-analyse in build-test or build: build it with -DTARVELMON_ANALYSE=ON, or name it by --analyse")


def read_arguments():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("openings", metavar="OPENINGS", nargs="?", type=pathlib.Path, default=OPENINGS,
                        help="file of opening lines; data/book/openings.txt without")
    parser.add_argument("--results", metavar="FILE", type=pathlib.Path, help="EPD file that keeps what has been searched")
    parser.add_argument("--only", metavar="FILE", type=pathlib.Path,
                        help="search only the positions of these lines; judge what has a score")
    parser.add_argument("--write", metavar="FILE", type=pathlib.Path, help="write the positions as EPD, search nothing")
    parser.add_argument("--depth", metavar="N", type=int, default=12, help="depth of each search; 12 without")
    parser.add_argument("--limit", metavar="PAWNS", type=float, default=0.6, help="what may be lost; 0.6 without")
    parser.add_argument("--hash", metavar="MB", type=int, default=64, help="hash table of each process; 64 without")
    parser.add_argument("--jobs", metavar="N", type=int, default=os.cpu_count(),
                        help="processes that search; as many as there are cores without")
    parser.add_argument("--analyse", metavar="PROGRAM", type=pathlib.Path, help="the tarvelmon-analyse to use")
    arguments = parser.parse_args()
    if min(arguments.depth, arguments.hash, arguments.jobs) < 1 or not arguments.limit > 0:
        parser.error("--depth, --hash, --jobs and --limit are above nothing")
    return arguments


def check(arguments):
    book = read_openings(arguments.openings)
    if arguments.write:
        arguments.write.write_text("".join(epd + "\n" for epd in book.positions), encoding="utf-8")
        return 0
    moves = book.moves_played()
    judged = {position.epd for move in moves for position in (move.before, move.after)}
    among = read_openings(arguments.only).positions if arguments.only else book.positions
    wanted = [epd for epd in among if epd in judged]
    results = Results(arguments.results, arguments.depth)
    if any(epd not in results.searched for epd in wanted):
        command = [str(arguments.analyse or analyse_program()), "--depth", str(arguments.depth),
                   "--hash", str(arguments.hash), "--jobs", str(arguments.jobs)]
        results.search(command, wanted)
    findings = report_marks(arguments.openings, book)
    findings += report_faults(arguments.openings, moves, results.searched, round(arguments.limit * 100))
    known = sum(move.after.epd in results.searched and move.before.epd in results.searched for move in moves)
    print(f"{len(judged)} positions, {len(moves)} moves to be played, {known} of them judged; {findings} findings")
    return 1 if findings else 0


def main():
    try:
        return check(read_arguments())
    except CannotCheck as error:
        print(f"check_book: {error}", file=sys.stderr)
    except OSError as error:
        print(f"check_book: {error.filename}: {error.strerror}", file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main())
