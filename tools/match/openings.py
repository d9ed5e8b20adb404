"""Where the games of a match begin: random moves, or positions and lines of play out of a file."""

import dataclasses
import random
import re
import zlib

from match.notation import NotationError, read_move
from chess_rules import START_FEN, Game, Position

MOVE_NUMBER = re.compile(r"\d+\.+")
TAG = re.compile(r'\[\s*(\w+)\s+"((?:[^"\\]|\\.)*)"\s*\]')
RESULTS = ("1-0", "0-1", "1/2-1/2", "*")


class OpeningError(Exception):
    """A file of openings that cannot be used; tells file and line."""


@dataclasses.dataclass
class Opening:
    """A position and the moves that are played from it before the engines think."""

    fen: str = START_FEN
    moves: list = dataclasses.field(default_factory=list)
    ends_at: str = ""  # the position after the moves, without its counters


def random_opening(seed, plies):
    """Random legal moves after which nobody is mated."""
    generator = random.Random(seed)
    while True:
        game = Game()
        for _ in range(plies):
            moves = sorted(game.position.legal_moves())
            if not moves:
                break
            game.play(generator.choice(moves))
        if game.position.has_legal_move() and len(game.moves) == plies:
            return Opening(moves=game.moves)


class RandomOpenings:
    """An endless supply: pair after pair of games begins with other random moves."""

    def __init__(self, seed=1, plies=6):
        self.seed = seed
        self.plies = plies

    def of_pair(self, pair):
        return random_opening(self.seed * 1000003 + pair, self.plies)

    def description(self):
        return f"{self.plies} random plies, seed {self.seed}"


class FileOpenings:
    """The openings of a file, shuffled by the seed, again from the first when all have been played. Of those that lead to
    one position only the first counts: equal games would be taken for independent ones."""

    def __init__(self, path, seed=1, plies=None):
        self.path = path
        self.seed = seed
        self.openings = list({opening.ends_at: opening
                              for opening in reversed(read_openings(path, plies))}.values())[::-1]
        random.Random(seed).shuffle(self.openings)

    def of_pair(self, pair):
        return self.openings[pair % len(self.openings)]

    def description(self):
        checksum = zlib.crc32(repr(self.openings).encode())
        return f"{len(self.openings)} different ones of {self.path} (checksum {checksum:08x}), seed {self.seed}"


def read_openings(path, plies=None):
    """All openings of a file in their order, lines cut after `plies` moves; raises OpeningError.

    A file with PGN tags is read game by game. Any other has an opening in each line: a position (FEN or EPD) or moves.
    Lines that are empty or begin with "#", "[" or ";" count for nothing."""
    try:
        with open(path, encoding="utf-8", errors="replace") as file:
            lines = file.read().splitlines()
    except OSError as error:
        raise OpeningError(f"{path}: {error.strerror}") from None
    if any(TAG.match(line) for line in lines):
        openings = [_read_game(path, *game, plies) for game in _games(lines)]
    else:
        openings = [_read_line(path, number, line.strip(), plies) for number, line in enumerate(lines, 1)
                    if line.strip() and line.strip()[0] not in "#[;"]
    if not openings:
        raise OpeningError(f"{path}: no openings in it")
    return openings


def _read_line(path, number, line, plies):
    if line.split()[0].count("/") == 7:
        fen = _checked_fen(f"{path}:{number}", line)
        opening = Opening(fen, [], _without_counters(fen))
    else:
        opening = _read_moves(f"{path}:{number}", START_FEN, line, plies)
    return opening


def _games(lines):
    """(number of the first line, tags, text of the moves) of each game."""
    games, tags, text, first = [], {}, [], 1
    for number, line in enumerate(lines, 1):
        tag = TAG.match(line)
        if tag and text:
            games.append((first, tags, "\n".join(text)))
            tags, text = {}, []
        if tag:
            first = first if tags else number
            tags[tag.group(1)] = tag.group(2)
        elif line.strip() and not line.startswith("%"):
            text.append(line)
    return games + ([(first, tags, "\n".join(text))] if tags else [])


def _read_game(path, number, tags, text, plies):
    place = f"{path}:{number}"
    fen = _checked_fen(place, tags["FEN"]) if "FEN" in tags else START_FEN
    return _read_moves(place, fen, text, plies)


def _read_moves(place, fen, text, plies):
    text = re.sub(r"\{[^}]*\}|;[^\n]*|\$\d+", " ", text)
    while re.search(r"\([^()]*\)", text):
        text = re.sub(r"\([^()]*\)", " ", text)
    game = Game(fen)
    for word in MOVE_NUMBER.sub(" ", text).split():
        if word in RESULTS or (plies is not None and len(game.moves) >= plies):
            break
        try:
            game.play(read_move(game.position, word))
        except NotationError as error:
            raise OpeningError(f"{place}: {error}") from None
    if not game.position.has_legal_move():
        raise OpeningError(f"{place}: the game has ended already")
    return Opening(fen, game.moves, _without_counters(game.position.fen()))


def _without_counters(fen):
    return " ".join(fen.split()[:4])


def _checked_fen(place, line):
    """The six fields of a FEN or EPD line if they are a position to play on from."""
    fields = line.split()
    clocks = [word for word in fields[4:6] if word.isdigit()]
    fen = " ".join(fields[:4] + (clocks if len(clocks) == 2 else ["0", "1"]))
    try:
        position = Position(fen)
        rows = fields[0].split("/")
        well_formed = (len(rows) == 8 and all(sum(int(c) if c.isdigit() else 1 for c in row) == 8 for row in rows)
                       and re.match(r"[1-8pnbrqkPNBRQK/]+$", fields[0]) and fields[1] in ("w", "b")
                       and re.match(r"-$|K?Q?k?q?$", fields[2]) and re.match(r"-$|[a-h][36]$", fields[3]))
    except (ValueError, IndexError):
        well_formed = False
    if not well_formed or not _is_possible(position):
        raise OpeningError(f"{place}: no position to play from: {line}")
    if not position.has_legal_move():
        raise OpeningError(f"{place}: the game has ended already")
    return position.fen()


def _is_possible(position):
    """One king each, the other side's not attacked; pawns not on the last ranks; king and rook where they may castle."""
    board = position.board
    homes = {"K": ("K", 4, 7), "Q": ("K", 4, 0), "k": ("k", 60, 63), "q": ("k", 60, 56)}
    return (sorted(man for man in board if man in "Kk") == ["K", "k"]
            and not any(man in "Pp" for man in board[:8] + board[56:])
            and all(board[king_square] == king and board[rook_square] == ("R" if king == "K" else "r")
                    for king, king_square, rook_square in (homes[right] for right in position.rights))
            and not position.in_check(not position.white))
