"""Moves and games as game scores have them: standard algebraic notation and PGN."""

import re

from chess_rules import START_FEN, Position, square_name, square_number

SAN_MOVE = re.compile(r"([KQRBN])?([a-h])?([1-8])?[x:]?([a-h][1-8])(?:=?([QRBN]))?$")
CASTLING_MOVE = re.compile(r"[O0]-[O0](-[O0])?$")
LINE_LENGTH = 79


class NotationError(Exception):
    """A word that is no legal move of its position."""


def read_move(position, word):
    """The coordinate text of a move in algebraic or coordinate notation; raises NotationError."""
    bare = word.rstrip("+#!?")
    castling = CASTLING_MOVE.match(bare)
    if castling:
        home = 0 if position.white else 56
        wanted = [(home + 4, home + (2 if castling.group(1) else 6), "")]
        fits = [move for move in position.pseudo_legal_moves() if move in wanted
                and position.board[move[0]] in "Kk"]
    elif re.match(r"[a-h][1-8][a-h][1-8][qrbn]?$", bare):
        wanted = (square_number(bare[:2]), square_number(bare[2:4]), bare[4:])
        fits = [move for move in position.pseudo_legal_moves() if move == wanted]
    else:
        fits = _fits_of_san(position, bare)
    legal = [move for move in fits if not position.after(move).in_check(position.white)]
    if len(legal) != 1:
        raise NotationError(f"{'ambiguous' if legal else 'no legal'} move: {word}")
    return square_name(legal[0][0]) + square_name(legal[0][1]) + legal[0][2]


def _fits_of_san(position, bare):
    parts = SAN_MOVE.match(bare)
    if not parts:
        return []
    man, file, rank, target, promotion = parts.groups()
    target, promotion = square_number(target), (promotion or "").lower()
    return [move for move in position.pseudo_legal_moves()
            if move[1] == target and move[2] == promotion and position.board[move[0]].upper() == (man or "P")
            and file in (None, square_name(move[0])[0]) and rank in (None, square_name(move[0])[1])
            and not (man == "K" and abs(move[1] - move[0]) == 2)]


def san(position, text):
    """A move in the notation of game scores."""
    moves = position.legal_moves()
    after = moves[text]
    origin, target = square_number(text[:2]), square_number(text[2:4])
    man = position.board[origin].upper()
    if man == "K" and abs(target - origin) == 2:
        body = "O-O" if target > origin else "O-O-O"
    else:
        takes = position.board[target] != "." or (man == "P" and text[0] != text[2])
        if man == "P":
            body = (text[0] + "x" if takes else "") + text[2:4] + ("=" + text[4].upper() if text[4:] else "")
        else:
            rivals = [m for m in moves if m[2:4] == text[2:4] and m[:2] != text[:2]
                      and position.board[square_number(m[:2])].upper() == man]
            which = ""
            if rivals:
                if all(m[0] != text[0] for m in rivals):
                    which = text[0]
                elif all(m[1] != text[1] for m in rivals):
                    which = text[1]
                else:
                    which = text[:2]
            body = man + which + ("x" if takes else "") + text[2:4]
    if after.in_check():
        body += "+" if after.has_legal_move() else "#"
    return body


def _quoted(text):
    return text.replace("\\", "\\\\").replace('"', '\\"')


def _in_lines(words):
    lines, line = [], ""
    for word in words:
        if line and len(line) + 1 + len(word) > LINE_LENGTH:
            lines.append(line)
            line = ""
        line += (" " if line else "") + word
    return "\n".join(lines + [line])


def pgn(record, tags):
    """A game score: the tags given, those of the record, and the moves with the reason of the end as a comment."""
    position = Position(record.start_fen)
    words = []
    for text in record.moves:
        if position.white:
            words.append(f"{position.number}.")
        elif not words:
            words.append(f"{position.number}...")
        words.append(san(position, text))
        position = position.legal_moves()[text]
    reason = record.reason.translate({ord("{"): "(", ord("}"): ")"})
    words += f"{{{reason}}}".split() + [record.result]
    every = {**tags, "White": record.white, "Black": record.black, "Result": record.result}
    order = ["Event", "Site", "Date", "Round", "White", "Black", "Result"]
    every.update({"PlyCount": len(record.moves), "Termination": record.termination})
    if record.start_fen != START_FEN:
        every.update({"SetUp": "1", "FEN": record.start_fen})
    order += [name for name in every if name not in order]
    return "".join(f'[{name} "{_quoted(str(every.get(name, "?")))}"]\n' for name in order) + \
        "\n" + _in_lines(words) + "\n\n"
