"""The rules of chess for the test scripts: positions, legal moves, results.

Written plainly from the laws and apart from the engine, so that it can judge the engine's moves and claims. Squares
count from a1 = 0 to h8 = 63; a board is a list of 64 piece letters, capitals for White, '.' for an empty square.
Moves are coordinate text as the protocol has it: "e2e4", "e7e8q".
"""

START_FEN = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"

KNIGHT_STEPS = ((1, 2), (2, 1), (2, -1), (1, -2), (-1, -2), (-2, -1), (-2, 1), (-1, 2))
KING_STEPS = ((0, 1), (1, 1), (1, 0), (1, -1), (0, -1), (-1, -1), (-1, 0), (-1, 1))
ROOK_STEPS = ((0, 1), (1, 0), (0, -1), (-1, 0))
BISHOP_STEPS = ((1, 1), (1, -1), (-1, -1), (-1, 1))


def square_name(square):
    return "abcdefgh"[square & 7] + "12345678"[square >> 3]


def square_number(name):
    return "abcdefgh".index(name[0]) + 8 * "12345678".index(name[1])


def _jumps(steps):
    """For each square the squares one step away."""
    table = []
    for square in range(64):
        file, rank = square & 7, square >> 3
        table.append([
            (rank + dr) * 8 + file + df for df, dr in steps
            if 0 <= file + df < 8 and 0 <= rank + dr < 8
        ])
    return table


def _rays(steps):
    """For each square, for each direction, the squares on the way to the rim, nearest first."""
    table = []
    for square in range(64):
        rays = []
        for df, dr in steps:
            file, rank, ray = (square & 7) + df, (square >> 3) + dr, []
            while 0 <= file < 8 and 0 <= rank < 8:
                ray.append(rank * 8 + file)
                file, rank = file + df, rank + dr
            if ray:
                rays.append(ray)
        table.append(rays)
    return table


KNIGHT_JUMPS = _jumps(KNIGHT_STEPS)
KING_JUMPS = _jumps(KING_STEPS)
ROOK_RAYS = _rays(ROOK_STEPS)
BISHOP_RAYS = _rays(BISHOP_STEPS)
# Squares from which a pawn of the colour attacks the square.
PAWN_ATTACKERS = {
    "P": _jumps(((-1, -1), (1, -1))),
    "p": _jumps(((-1, 1), (1, 1))),
}
PAWN_TARGETS = {"P": PAWN_ATTACKERS["p"], "p": PAWN_ATTACKERS["P"]}

# Squares whose men keep the castling rights: a move from or to one of them ends the right.
RIGHTS_ENDED_BY = {0: "Q", 7: "K", 4: "KQ", 56: "q", 63: "k", 60: "kq"}


class Position:
    """A position and what the laws need of its past but repetition, which a Game knows."""

    __slots__ = ("board", "white", "rights", "ep", "clock", "number")

    def __init__(self, fen=START_FEN):
        fields = fen.split()
        self.board = ["."] * 64
        for rank, row in zip(range(7, -1, -1), fields[0].split("/")):
            file = 0
            for letter in row:
                if letter.isdigit():
                    file += int(letter)
                else:
                    self.board[rank * 8 + file] = letter
                    file += 1
        self.white = fields[1] == "w"
        self.rights = fields[2].replace("-", "")
        self.ep = None if fields[3] == "-" else square_number(fields[3])
        self.clock = int(fields[4]) if len(fields) > 4 else 0
        self.number = int(fields[5]) if len(fields) > 5 else 1

    def copy(self):
        other = Position.__new__(Position)
        other.board = self.board[:]
        other.white, other.rights, other.ep = self.white, self.rights, self.ep
        other.clock, other.number = self.clock, self.number
        return other

    def placement(self):
        rows = []
        for rank in range(7, -1, -1):
            row = "".join(self.board[rank * 8:rank * 8 + 8])
            for count in range(8, 0, -1):
                row = row.replace("." * count, str(count))
            rows.append(row)
        return "/".join(rows)

    def fen(self):
        return " ".join((self.placement(), "w" if self.white else "b", self.rights or "-",
                         "-" if self.ep is None else square_name(self.ep), str(self.clock), str(self.number)))

    def attacked(self, square, by_white):
        """Whether a man of the colour attacks the square."""
        board = self.board
        pawn, knight, king = ("P", "N", "K") if by_white else ("p", "n", "k")
        straight, slanting = ("RQ", "BQ") if by_white else ("rq", "bq")
        if any(board[s] == knight for s in KNIGHT_JUMPS[square]):
            return True
        if any(board[s] == pawn for s in PAWN_ATTACKERS[pawn][square]):
            return True
        if any(board[s] == king for s in KING_JUMPS[square]):
            return True
        for rays, letters in ((ROOK_RAYS, straight), (BISHOP_RAYS, slanting)):
            for ray in rays[square]:
                for s in ray:
                    man = board[s]
                    if man != ".":
                        if man in letters:
                            return True
                        break
        return False

    def in_check(self, white=None):
        """Whether the colour's king (the side to move's, if not said) is attacked."""
        white = self.white if white is None else white
        return self.attacked(self.board.index("K" if white else "k"), not white)

    def _is_own(self, man):
        return man != "." and man.isupper() == self.white

    def _is_enemy(self, man):
        return man != "." and man.isupper() != self.white

    def _pawn_moves(self, square):
        pawn = self.board[square]
        ahead = square + (8 if self.white else -8)
        home_rank, last_rank = (1, 7) if self.white else (6, 0)
        targets = []
        if self.board[ahead] == ".":
            targets.append(ahead)
            twice = 2 * ahead - square
            if square >> 3 == home_rank and self.board[twice] == ".":
                targets.append(twice)
        targets += [s for s in PAWN_TARGETS[pawn][square] if self._is_enemy(self.board[s]) or s == self.ep]
        for target in targets:
            if target >> 3 == last_rank:
                for letter in "qrbn":
                    yield square, target, letter
            else:
                yield square, target, ""

    def _castlings(self):
        home = 0 if self.white else 56
        short, long = ("K", "Q") if self.white else ("k", "q")
        for right, empty, passed, target in ((short, (5, 6), (4, 5, 6), 6), (long, (1, 2, 3), (4, 3, 2), 2)):
            if right in self.rights and all(self.board[home + s] == "." for s in empty):
                if not any(self.attacked(home + s, not self.white) for s in passed):
                    yield home + 4, home + target, ""

    def pseudo_legal_moves(self):
        """(from, to, promotion letter) of every move that may leave the own king attacked."""
        board = self.board
        for square in range(64):
            man = board[square]
            if not self._is_own(man):
                continue
            kind = man.lower()
            if kind == "p":
                yield from self._pawn_moves(square)
                continue
            if kind in "nk":
                for s in (KNIGHT_JUMPS if kind == "n" else KING_JUMPS)[square]:
                    if not self._is_own(board[s]):
                        yield square, s, ""
            rays = (ROOK_RAYS[square] if kind in "rq" else []) + (BISHOP_RAYS[square] if kind in "bq" else [])
            for ray in rays:
                for s in ray:
                    if not self._is_own(board[s]):
                        yield square, s, ""
                    if board[s] != ".":
                        break
        yield from self._castlings()

    def after(self, move):
        """The position after a pseudo-legal move (from, to, promotion letter)."""
        origin, target, promotion = move
        new = self.copy()
        board = new.board
        man = board[origin]
        is_pawn = man in "Pp"
        new.clock = 0 if is_pawn or board[target] != "." else self.clock + 1
        if is_pawn and target == self.ep:
            board[target - 8 if self.white else target + 8] = "."
        board[origin] = "."
        board[target] = (promotion.upper() if self.white else promotion) if promotion else man
        if man in "Kk" and abs(target - origin) == 2:
            rook_from, rook_to = (target + 1, target - 1) if target > origin else (target - 2, target + 1)
            board[rook_to], board[rook_from] = board[rook_from], "."
        for square in (origin, target):
            for right in RIGHTS_ENDED_BY.get(square, ""):
                new.rights = new.rights.replace(right, "")
        new.ep = (origin + target) // 2 if is_pawn and abs(target - origin) == 16 else None
        new.white = not self.white
        new.number += 0 if self.white else 1
        return new

    def legal_moves(self):
        """Text of every legal move mapped to the position after it."""
        moves = {}
        for move in self.pseudo_legal_moves():
            new = self.after(move)
            if not new.in_check(self.white):
                moves[square_name(move[0]) + square_name(move[1]) + move[2]] = new
        return moves

    def has_legal_move(self):
        return any(not self.after(move).in_check(self.white) for move in self.pseudo_legal_moves())

    def repetition_key(self):
        """What must be equal for a repetition by the laws: an en passant square counts only if it can be used."""
        ep = self.ep
        if ep is not None:
            captures = (m for m in self.pseudo_legal_moves() if m[1] == ep and self.board[m[0]] in "Pp")
            if not any(not self.after(m).in_check(self.white) for m in captures):
                ep = None
        return "".join(self.board), self.white, self.rights, ep


def perft(position, depth):
    """Number of legal move sequences of `depth` plies."""
    if depth == 0:
        return 1
    return sum(perft(new, depth - 1) for new in position.legal_moves().values())


class Game:
    """A game from a position on: moves played, repetitions, result."""

    def __init__(self, fen=START_FEN):
        self.start_fen = fen
        self.position = Position(fen)
        self.moves = []
        self.positions = [self.position]
        self._counts = {self.position.repetition_key(): 1}

    def play(self, text):
        """Plays a legal move. False, and nothing changed, if it is not legal."""
        new = self.position.legal_moves().get(text.strip())
        if new is None:
            return False
        self.moves.append(text.strip())
        self.position = new
        self.positions.append(new)
        key = new.repetition_key()
        self._counts[key] = self._counts.get(key, 0) + 1
        return True

    def occurrences(self):
        """How often the present position has stood, by the laws."""
        return self._counts[self.position.repetition_key()]

    def placements_alike(self):
        """How often the present men have stood on the present squares with the same side to move, since the last
        capture or pawn move, whatever the rights."""
        now = self.position
        past = self.positions[::-1][:now.clock + 1]
        return sum(p.white == now.white and p.board == now.board for p in past)

    def is_checkmate(self):
        return not self.position.has_legal_move() and self.position.in_check()

    def is_stalemate(self):
        return not self.position.has_legal_move() and not self.position.in_check()

    def is_fifty_moves(self):
        return self.position.clock >= 100

    def mate_result(self):
        """The result if the side to move is mated."""
        return "0-1" if self.position.white else "1-0"

    def has_bare_kings(self):
        return all(man in ".Kk" for man in self.position.board)

    def cannot_be_won(self):
        """Bare kings, or a single minor piece: no series of moves mates."""
        men = sorted(man.lower() for man in self.position.board if man not in ".Kk")
        return men in ([], ["b"], ["n"])
