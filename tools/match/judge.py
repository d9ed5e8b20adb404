"""One game: the moves are checked by the scripts' own rules of chess, each result line against the position, and clocks,
moves out of turn, error lines and exit states are watched."""

import dataclasses
import os
import tempfile

from match.adjudication import Adjudication
from match.players import Fault, LATE, RandomPlayer, make_player
from chess_rules import Game, START_FEN

CASTLING = {"O-O": ("e1g1", "e8g8"), "O-O-O": ("e1c1", "e8c8"), "0-0": ("e1g1", "e8g8"), "0-0-0": ("e1c1", "e8c8")}
# An engine that has neither moved nor lost on time after its clock ran out this long ago hangs.
STALL_SECONDS = 60.0
RESULT_SECONDS = 60.0
# Of what the laws do not end; all else ends a game normally.
ADJUDICATED = ("length", "repetition by tarvelmon's count", "both scores, won", "both scores, drawn")


@dataclasses.dataclass
class Options:
    """How the games are played."""

    seconds: float = 10.0
    increment: float = 0.1
    ponder: str = "none"
    max_plies: int = 400
    ini: str = ""        # text of tarvelmon.ini for engines that have none of their own
    seed: int = 1
    sigint: bool = False
    margin: float = 0.0  # seconds that a clock may run over
    depth: int = 0
    adjudication: Adjudication = Adjudication()
    # The clocks count what the engines use of the processor, whose own clock has to do so too; for games without
    # thinking on the opponent's time.
    processor_time: bool = False

    def ponders(self, player):
        return (self.ponder == "both" or (self.ponder == "first" and player.is_first)
                or (self.ponder == "ours" and player.name.startswith("tarvelmon")))


@dataclasses.dataclass
class GameRecord:
    """How a game ended, and what it cost."""

    white: str
    black: str
    result: str = "*"
    reason: str = ""
    termination: str = "normal"  # in the words of game scores
    moves: list = dataclasses.field(default_factory=list)
    start_fen: str = START_FEN
    fault: Fault = None
    fault_is_ours: bool = False
    untrue_claims: int = 0
    unannounced: int = 0
    overruns: dict = dataclasses.field(default_factory=dict)
    ponder_searches: int = 0
    borrowed: float = 0.0  # the most that a clock ran over within the margin
    logs: list = dataclasses.field(default_factory=list)


class RepetitionCounts:
    """The repetition count as tarvelmon keeps it: by men and squares alone, and a quiet bishop move takes over the
    count of the position before it."""

    def __init__(self, position):
        self.boards = [position.board]
        self.counts = [0]

    def add(self, before, after, origin):
        """Adds the position after a move that came from the square `origin`."""
        if after.clock == 0:
            count = 0
        elif before.board[origin] in "Bb":
            count = self.counts[-1]
        else:
            count = 0
            nearest_first = range(len(self.boards) - 2, -1, -2)
            for distance, index in enumerate(nearest_first, 1):
                if 2 * distance > after.clock:
                    break
                if self.boards[index] == after.board:
                    count = self.counts[index] + 1 & 127
                    break
        self.boards.append(after.board)
        self.counts.append(count)


class JudgedGame:
    """One game between two players, white first."""

    def __init__(self, players, options, opening):
        self.players = players
        self.options = options
        self.opening = opening
        self.game = Game(opening.fen)
        self.counts = RepetitionCounts(self.game.position)
        self.clocks = [options.seconds, options.seconds]
        self.scores = [[], []]
        self.untrue_claims = 0
        self.unannounced = 0
        self.borrowed = 0.0

    def play(self):
        """Returns (result, reason)."""
        for player in self.players:
            player.new_game(self.opening.fen, self.options.seconds, self.options.increment)
        for text in self.opening.moves:
            self._put_on_board(text)
            for player in self.players:
                player.tell_move(text)
        last_move = None
        while True:
            side = 0 if self.game.position.white else 1
            mover, other = self.players[side], self.players[1 - side]
            outcome = self._take_move(mover, side, last_move)
            if outcome:
                return outcome
            last_move = self.game.moves[-1]
            self.scores[side].append(mover.score)
            outcome = (self._end_after(mover, other, last_move)
                       or self.options.adjudication.outcome(self.scores, len(self.game.moves)))
            if outcome:
                return outcome

    def _put_on_board(self, text):
        before = self.game.position
        if not self.game.play(text):
            return False
        self.counts.add(before, self.game.position, (ord(text[0]) - 97) + 8 * (int(text[1]) - 1))
        return True

    def _take_move(self, mover, side, last_move):
        begun = mover.start_thinking(self.game, self.clocks[side], self.clocks[1 - side], last_move)
        event = mover.next_event(self.clocks[side] + STALL_SECONDS)
        if event is None:
            raise Fault(mover, "does not move; " + " / ".join(mover.engine.log[-6:]), LATE)
        kind, moment, text = event
        if kind == "result":
            return self._ended_by_claim(mover, side, text)
        used = mover.seconds_used(begun, moment)
        if mover.budget is not None:
            mover.longest_overrun = max(mover.longest_overrun, used - mover.budget / 100)
        self.clocks[side] -= used
        if self.clocks[side] < -self.options.margin:
            raise Fault(mover, f"loses on time by {-self.clocks[side]:.3f} s, budget {mover.budget}, used {used:.3f}",
                        LATE)
        self.borrowed = max(self.borrowed, -self.clocks[side])
        self.clocks[side] += self.options.increment
        text = CASTLING[text][side] if text in CASTLING else text.lower()
        if not self._put_on_board(text):
            raise Fault(mover, f"plays the illegal move {text} in {self.game.position.fen()}")
        return None

    def _ended_by_claim(self, player, side, line):
        """A result line where a move was due."""
        if player.is_ours:
            raise Fault(player, f"says '{line}' in {self.game.position.fen()}")
        if line.startswith("resign") or line.startswith("0-1" if side == 0 else "1-0"):
            return ("0-1" if side == 0 else "1-0"), "resignation"
        if line.startswith("1/2-1/2") and nobody_can_mate(self.game.position):
            return "1/2-1/2", "material"
        raise Fault(player, f"claims '{line}' in {self.game.position.fen()}")

    def _expected_lines(self, player):
        """The result lines that belong to the present position."""
        if player.claims_by_laws:
            return self._lawful_lines()
        lines = []
        if self.counts.counts[-1] == 2:
            lines.append("1/2-1/2 {Draw by repetition}")
        if not self.game.position.has_legal_move():
            if self.game.position.in_check():
                lines.append("0-1 {Black mates}" if self.game.position.white else "1-0 {White mates}")
            else:
                lines.append("1/2-1/2 {Stalemate}")
        if self.game.is_fifty_moves():
            lines.append("1/2-1/2 {Draw by 50 move rule}")
        return lines

    def _lawful_lines(self):
        """The one line that tells how the laws end the game here."""
        game = self.game
        if game.is_checkmate():
            return ["0-1 {Black mates}" if game.position.white else "1-0 {White mates}"]
        for ended, words in ((game.is_stalemate(), "Stalemate"),
                             (nobody_can_mate(game.position), "Draw by insufficient material"),
                             (game.is_fifty_moves(), "Draw by 50 move rule"),
                             (game.occurrences() >= 3, "Draw by repetition")):
            if ended:
                return ["1/2-1/2 {%s}" % words]
        return []

    def _must_announce(self, player):
        """A move of the engine from a book or out of a ponder search is not looked at for the end of the game; the
        companion looks at every move."""
        return player.is_ours and player.announces and (player.budget is not None or player.claims_by_laws)

    def _end_after(self, mover, other, last_move):
        """The outcome if the last move ended the game, by the laws or by a claim of ours; checks what was said."""
        expected = self._expected_lines(mover)
        expected_of_other = self._expected_lines(other)
        outcome = self._outcome_by_laws()
        if not outcome and not expected and not expected_of_other:
            return None
        announced = self._must_announce(mover)
        if announced:
            self._hear_results(mover, expected, must=True)
        if outcome is None and not announced and not (other.is_ours and other.announces):
            return None  # an end only in the count of tarvelmon, which has not noticed
        if other.is_ours and other.announces:
            other.tell_move(last_move)
            # An expected move that was on the board already may not be looked at either.
            self._hear_results(other, expected_of_other,
                               must=other.claims_by_laws or not self.options.ponders(other))
        if outcome:
            return outcome
        self.untrue_claims += 1
        return "1/2-1/2", "repetition by tarvelmon's count"

    def _outcome_by_laws(self):
        if self.game.is_checkmate():
            return self.game.mate_result(), "checkmate"
        if self.game.is_stalemate():
            return "1/2-1/2", "stalemate"
        if self.game.is_fifty_moves():
            return "1/2-1/2", "fifty moves"
        if self.game.occurrences() >= 3:
            return "1/2-1/2", "repetition"
        if self.game.has_bare_kings():
            return "1/2-1/2", "bare kings"
        if any(player.claims_by_laws for player in self.players) and nobody_can_mate(self.game.position):
            return "1/2-1/2", "material"
        if len(self.game.moves) >= self.options.max_plies:
            return "1/2-1/2", "length"
        return None

    def _hear_results(self, player, expected, must):
        heard = []
        while len(heard) < len(expected):
            event = player.next_event(RESULT_SECONDS if must else 1.0)
            if event is None:
                if must:
                    raise Fault(player, f"does not announce {expected} in {self.game.position.fen()}")
                self.unannounced += 1
                return
            kind, _, line = event
            if kind == "result":
                heard.append(line)
            elif must:
                raise Fault(player, f"moves {line} after the end")
            else:
                return
        if heard != expected:
            raise Fault(player, f"announces {heard} instead of {expected} in {self.game.position.fen()}")


def nobody_can_mate(position):
    """Bare kings, one knight, or bishops that all stand on squares of one colour."""
    men = [(man.lower(), square) for square, man in enumerate(position.board) if man not in ".Kk"]
    if [man for man, _ in men] in ([], ["n"]):
        return True
    colours = {(square + (square >> 3)) % 2 for man, square in men if man == "b"}
    return all(man == "b" for man, _ in men) and len(colours) == 1


def _new_folder(top, name, engine, options):
    """The working directory of an engine for one game, with its settings in it."""
    folder = os.path.join(top, name)
    os.mkdir(folder)
    with open(os.path.join(folder, "tarvelmon.ini"), "w", encoding="latin-1") as ini:
        ini.write(engine.ini or options.ini)
    return folder


def _display_names(engines, players, order):
    """The names of White and Black; engines of one name are told apart by their places in the match."""
    names = [engine.name or (player.name if player else os.path.basename((engine.command or ["random"])[0]))
             for engine, player in zip(engines, players)]
    if names[0] == names[1]:
        names = [f"{name} #{place + 1}" for name, place in zip(names, order)]
    return names


def play_game(engines, options, opening, number):
    """Plays game `number` (from 0) between two engines, the first as White in even games."""
    order = [0, 1] if number % 2 == 0 else [1, 0]
    engines = [engines[place] for place in order]
    players, judged, fault, result, reason = [], None, None, "*", ""
    with tempfile.TemporaryDirectory(prefix="referee-", ignore_cleanup_errors=True) as top:
        try:
            for place, engine in zip(order, engines):
                folder = _new_folder(top, ("first", "second")[place], engine, options)
                players.append(make_player(engine, folder, options, place == 0, options.seed * 7919 + number))
            judged = JudgedGame(players, options, opening)
            result, reason = judged.play()
        except Fault as caught:
            fault = caught
            # If it is none of the players, it did not start and would have been the next.
            loser = players.index(fault.player) if fault.player in players else len(players)
            result = ("0-1", "1-0")[loser]
        for player in players:
            try:
                player.finish()
            except Fault as caught:
                fault = fault or caught
    names = _display_names(engines, players + [None] * (2 - len(players)), order)
    return _record(names, players, judged, opening, (result, reason), fault)


def _record(names, players, judged, opening, outcome, fault):
    """The record of a game; a fault without an outcome is what ended it."""
    result, reason = outcome
    record = GameRecord(*names, result, reason, start_fen=opening.fen)
    if fault:
        record.fault, record.fault_is_ours = fault, fault.player.is_ours
    if not reason:
        record.reason, record.termination = str(fault), fault.kind
    elif reason in ADJUDICATED:
        record.termination = "adjudication"
    record.ponder_searches = sum(player.ponder_searches for player in players)
    record.overruns = {player.name: player.longest_overrun for player in players}
    record.logs = [player.engine.log for player in players if not isinstance(player, RandomPlayer)]
    if judged:
        record.moves, record.borrowed = judged.game.moves, judged.borrowed
        record.untrue_claims, record.unannounced = judged.untrue_claims, judged.unannounced
    return record
