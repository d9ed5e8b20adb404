#!/usr/bin/env python3
"""Judges a match played by xboard: judge_xboard_match.py GAMES.PGN DEBUG.TXT EXPECTED_GAMES XBOARD_STATUS.

The first engine of the match is the one judged. Every move of every game is checked by the scripts' own rules of
chess, and each result against the position in which its game ended.
"""

import os
import re
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
from match.notation import san  # noqa: E402
from chess_rules import Game  # noqa: E402

# Words that interfaces send and the engine does not know; it answers each with this line, which interfaces expect.
UNKNOWN_COMMANDS = ("accepted", "rejected", "random", "computer", "result", "hint", "draw", "bk", "rating", "variant",
                    "option", "cores", "egtpath")
UNKNOWN_LINE = re.compile(r"Error \(unknown command\): (\w+)")


def read_games(path):
    """(tags, moves in SAN, last comment, result) of each game."""
    with open(path, encoding="latin-1") as file:
        text = file.read()
    games = []
    for part in re.split(r"\n(?=\[Event )", text):
        tags = dict(re.findall(r'\[(\w+) "([^"]*)"\]', part))
        if not tags:
            continue
        body = part[part.rindex("]\n") + 2:] if "]\n" in part else ""
        comments = re.findall(r"\{([^}]*)\}", body)
        words = re.sub(r"\{[^}]*\}", " ", body).split()
        moves = [w for w in words if not re.match(r"\d+\.", w) and w not in ("1-0", "0-1", "1/2-1/2", "*")]
        games.append((tags, moves, comments[-1].replace("\n", " ") if comments else "", tags["Result"]))
    return games


def replay(moves):
    """The game, and a fault or None."""
    game = Game()
    for written in moves:
        fits = [text for text in game.position.legal_moves()
                if san(game.position, text).rstrip("+#") == written.rstrip("+#")]
        if len(fits) != 1:
            return game, f"move {written} is not legal in {game.position.fen()}"
        game.play(fits[0])
    return game, None


def fault_of_result(game, comment, result):
    if "forfeits on time" in comment or "illegal" in comment.lower() or "exited" in comment:
        return comment
    if game.is_checkmate():
        return None if result == game.mate_result() else f"{result}, but the last move mated"
    drawn = (game.is_stalemate() or game.is_fifty_moves() or game.occurrences() >= 3 or game.cannot_be_won())
    if drawn:
        return None if result == "1/2-1/2" else f"{result} in a drawn position ({comment})"
    if "resign" in comment.lower():
        return None
    return f"{result} ({comment}) in {game.position.fen()}"


def error_lines(path):
    """Lines of the engine that tell of an error, without answers to words of the interface that it does not know."""
    found, unknown = [], 0
    with open(path, encoding="latin-1") as file:
        for line in file:
            said = re.match(r"\d+ <first : (.*)", line)
            if not said or not said.group(1).startswith(("Error", "Illegal", "tellusererror")):
                continue
            word = UNKNOWN_LINE.match(said.group(1))
            if word and word.group(1) in UNKNOWN_COMMANDS:
                unknown += 1
            else:
                found.append(said.group(1))
    return found, unknown


def main():
    pgn_path, debug_path, expected, status = sys.argv[1], sys.argv[2], int(sys.argv[3]), int(sys.argv[4])
    faults = []
    games = read_games(pgn_path) if os.path.exists(pgn_path) else []
    for number, (tags, moves, comment, result) in enumerate(games, 1):
        game, fault = replay(moves)
        fault = fault or fault_of_result(game, comment, result)
        print(f"game {number}: {tags['White']} - {tags['Black']} {result} {{{comment}}} ({len(moves)} plies, "
              f"{tags.get('TimeControl', '')})")
        if fault:
            faults.append(f"game {number}: {fault}")
    if len(games) != expected:
        faults.append(f"{len(games)} games instead of {expected}")
    if status:
        faults.append(f"xboard ended with status {status}")
    errors, unknown = error_lines(debug_path)
    faults += [f"the engine said '{line}'" for line in errors]
    print(f"answers to words the engine does not know: {unknown}")
    print(f"faults: {len(faults)}")
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
