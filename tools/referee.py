#!/usr/bin/env python3
"""Plays games between two engines of the xboard protocol or of UCI, over pipes and with clocks, and judges everything
they say.

    tools/referee.py --games 20 --time 10+0.1 build/tarvelmon /usr/games/fairymax
    tools/referee.py --games 20 uci:build/companions/gui/tarvelmon-gui build/companions/gui/tarvelmon-gui
    tools/referee.py --games 20 --ponder both build/tarvelmon build/tarvelmon
    tools/referee.py --games 20 build/tarvelmon random

An engine is a command line, one that begins with "uci:" for an engine that is to speak UCI, or "random" for a player of
random legal moves. The engines take turns with the colours,
and every two games begin with the same random opening moves. Each move is checked by the scripts' own rules of chess,
each result line against the position, and clocks, error lines, moves out of turn and exit states are watched.
An engine that calls itself tarvelmon must announce exactly the results it is built to announce, and the companion
tarvelmon-gui those of the laws; their faults make the exit status 1. Faults of other engines are told and end their game.
"""

import argparse
import collections
import os
import queue
import random
import re
import shlex
import signal
import subprocess
import sys
import tempfile
import threading
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "driver"))
from chess_rules import Game, Position, START_FEN  # noqa: E402

MOVE_LINE = re.compile(r"move (\S+)\s*$")
CASTLING = {"O-O": ("e1g1", "e8g8"), "O-O-O": ("e1c1", "e8c8")}
RESULT_LINE = re.compile(r"(1-0|0-1|1/2-1/2)\b")
BUDGET_LINE = re.compile(r"#(?:DEBUG)? moves: (-?\d+) move speed: (-?\d+) +allocated time: (-?\d+)$")
BEST_MOVE_LINE = re.compile(r"bestmove (\S+)(?: ponder (\S+))?$")
COMPANION = "tarvelmon-gui"
# How long to wait for what is due at once; a machine under load may take its time. An engine that has neither moved nor
# lost on time after its clock ran out this long ago hangs.
STALL_SECONDS = 60.0
RESULT_SECONDS = 60.0
START_SECONDS = 60.0
END_SECONDS = 60.0


class Fault(Exception):
    """Something an engine must not do. Ends the game."""

    def __init__(self, player, text):
        super().__init__(f"{player.name}: {text}")
        self.player = player


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


class EngineProcess:
    """An engine behind pipes. Every line it says is kept with the time it came."""

    def __init__(self, command, folder):
        self.log = []
        self.lines = queue.Queue()
        self.process = subprocess.Popen(shlex.split(command), cwd=folder, stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.error_output = []
        self.readers = []
        for stream, keep in ((self.process.stdout, self._keep_line), (self.process.stderr, self._keep_error)):
            reader = threading.Thread(target=self._read, args=(stream, keep), daemon=True)
            reader.start()
            self.readers.append(reader)

    def _read(self, stream, keep):
        with stream:
            for raw in stream:
                keep(raw.decode("latin-1").rstrip("\r\n"))
        keep(None)

    def _keep_line(self, line):
        self.lines.put((time.monotonic(), line))

    def _keep_error(self, line):
        if line is not None:
            self.error_output.append(line)

    def send(self, line):
        self.log.append("> " + line)
        try:
            self.process.stdin.write(line.encode("latin-1") + b"\n")
            self.process.stdin.flush()
        except (BrokenPipeError, OSError):
            pass  # the reader sees the end

    def receive(self, seconds):
        """(time, line), line None at the end of output. Raises queue.Empty when none came in time."""
        moment, line = self.lines.get(timeout=max(0.0, seconds))
        self.log.append("< " + ("(end)" if line is None else line))
        return moment, line

    def interrupt(self):
        self.process.send_signal(signal.SIGINT)

    def processor_seconds(self):
        """What all threads of the process have used so far (Linux)."""
        return time.clock_gettime(~self.process.pid << 3 | 2)

    def close(self, seconds=END_SECONDS):
        """Says quit, closes the pipe, and returns the exit status; None if the process had to be killed."""
        self.send("quit")
        try:
            self.process.stdin.close()
        except (BrokenPipeError, OSError):
            pass
        try:
            status = self.process.wait(seconds)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            status = None
        for reader in self.readers:
            reader.join(1.0)
        return status


class ClockedPlayer:
    """An engine whose time is taken, by the clock on the wall or by what it uses of the processor."""

    def _moment(self):
        return self.engine.processor_seconds() if self.options.processor_time else time.monotonic()

    def seconds_used(self, begun, moment):
        """From what start_thinking returned to the move that came at `moment` on the wall."""
        return max(0.0, (self.engine.processor_seconds() if self.options.processor_time else moment) - begun)


class EnginePlayer(ClockedPlayer):
    """An engine as one side of a game, by the xboard protocol."""

    def __init__(self, command, folder, options, is_first=True):
        self.command = command
        self.is_first = is_first
        self.claims_by_laws = os.path.basename(shlex.split(command)[0]) == COMPANION
        self.announces = True
        self.options = options
        self.name = os.path.basename(shlex.split(command)[0])
        self.features = {"usermove": "0", "ping": "0", "setboard": "0"}
        self.engine = EngineProcess(command, folder)
        self.started = False
        self.budget = None       # centiseconds, of the present move
        self.longest_overrun = 0.0
        self.ponder_searches = 0
        self._negotiate()
        self.is_ours = self.name.startswith("tarvelmon")

    def _negotiate(self):
        self.engine.send("xboard")
        self.engine.send("protover 2")
        end = time.monotonic() + START_SECONDS
        while True:
            try:
                _, line = self.engine.receive(end - time.monotonic())
            except queue.Empty:
                return
            if line is None:
                raise Fault(self, "ended at its start")
            if line.startswith("feature"):
                for key, quoted, plain in re.findall(r'(\w+)=(?:"([^"]*)"|(\S+))', line):
                    self.features[key] = quoted or plain
                self.name = self.features.get("myname", self.name)
                if self.features.get("done") == "1":
                    return

    def new_game(self, fen, seconds, increment):
        self.engine.send("new")
        self.engine.send("force")
        self.engine.send(exact_level_command(seconds, increment) if self.claims_by_laws
                         else level_command(seconds, increment))
        self.engine.send("post")
        self.engine.send("hard" if self.options.ponders(self) else "easy")
        if self.options.depth:
            self.engine.send(f"sd {self.options.depth}")
        if fen != START_FEN:
            self.engine.send("setboard " + fen)

    def _command(self, line):
        if self.options.sigint:
            self.engine.interrupt()
        self.engine.send(line)

    def tell_move(self, text):
        self._command(("usermove " if self.features["usermove"] == "1" else "") + text)

    def start_thinking(self, game, own_clock, other_clock, opponent_move):
        """Hands over the clocks and the turn. Returns the moment."""
        self.budget = None
        self._command(f"time {int(own_clock * 100)}")
        self._command(f"otim {int(other_clock * 100)}")
        moment = self._moment()
        if opponent_move is not None:
            self.tell_move(opponent_move)
        if not self.started:
            self.started = True
            moment = self._moment()
            self._command("go")
        return moment

    def next_event(self, seconds):
        """("move", time, text) or ("result", time, line); what else the engine says is looked at on the way. None if
        nothing of the two came in time."""
        end = time.monotonic() + seconds
        while True:
            try:
                moment, line = self.engine.receive(end - time.monotonic())
            except queue.Empty:
                return None
            if line is None:
                raise Fault(self, "ended in the game; " + self.last_words())
            event = self._judge_line(moment, line)
            if event:
                return event

    def _judge_line(self, moment, line):
        move = MOVE_LINE.match(line)
        if move:
            return "move", moment, move.group(1)
        if RESULT_LINE.match(line) or line.startswith("resign"):
            return "result", moment, line
        budget = BUDGET_LINE.match(line)
        if budget:
            self.budget = int(budget.group(3))
        if line.startswith("Hint: "):
            self.ponder_searches += 1
        if line.startswith(("Error", "Illegal move", "tellusererror")):
            raise Fault(self, f"said '{line}'")
        return None

    def last_words(self):
        status = self.engine.process.poll()
        return f"status {status}, " + " / ".join(self.engine.log[-6:] + self.engine.error_output[-5:])

    def finish(self):
        status = self.engine.close()
        if self.is_ours and status != 0:
            raise Fault(self, f"ended with status {status}; " + self.last_words())
        if self.is_ours and self.engine.error_output:
            raise Fault(self, "wrote to standard error: " + self.engine.error_output[0])


class UciPlayer(ClockedPlayer):
    """An engine as one side of a game, by UCI."""

    announces = False
    claims_by_laws = True

    def __init__(self, command, folder, options, is_first=True):
        self.options = options
        self.is_first = is_first
        self.name = os.path.basename(shlex.split(command)[0])
        self.engine = EngineProcess(command, folder)
        self.budget = None
        self.longest_overrun = 0.0
        self.ponder_searches = 0
        self.ponder_hits = 0
        self.moves = []
        self.expected = None  # the opponent's move that the engine ponders on
        self._ask("uci", "uciok")
        self.is_ours = self.name.startswith("tarvelmon")

    def _ask(self, line, answer):
        """Sends a line and waits for its answer; a name on the way is kept."""
        self.engine.send(line)
        end = time.monotonic() + START_SECONDS
        while True:
            try:
                _, said = self.engine.receive(end - time.monotonic())
            except queue.Empty:
                raise Fault(self, f"does not say {answer}") from None
            if said is None:
                raise Fault(self, f"ended instead of saying {answer}; " + self.last_words())
            if said.startswith("id name "):
                self.name = said[8:]
            if said == answer:
                return

    def new_game(self, fen, seconds, increment):
        self.increment = increment
        self.position = "startpos" if fen == START_FEN else "fen " + fen
        self.engine.send("ucinewgame")
        self._ask("isready", "readyok")

    def tell_move(self, text):
        self.moves.append(text)

    def _send_position(self, moves):
        self.engine.send(f"position {self.position}" + (" moves " + " ".join(moves) if moves else ""))

    def _clock_words(self):
        white, black = self.clocks if self.is_white else self.clocks[::-1]
        milliseconds = max(1, int(white * 1000)), max(1, int(black * 1000)), int(self.increment * 1000)
        words = "wtime {} btime {} winc {} binc {}".format(*milliseconds, milliseconds[2])
        return words + (f" depth {self.options.depth}" if self.options.depth else "")

    def start_thinking(self, game, own_clock, other_clock, opponent_move):
        if opponent_move is not None:
            self.moves.append(opponent_move)
        self.is_white = len(self.moves) % 2 == 0
        self.clocks = [own_clock, other_clock]
        moment = self._moment()
        self.begun = moment
        if self.expected is not None and self.expected == opponent_move:
            self.expected = None
            self.ponder_hits += 1
            self.engine.send("ponderhit")
            return moment
        if self.expected is not None:
            self.expected = None
            self.engine.send("stop")
            self._best_move(RESULT_SECONDS)
        self._send_position(self.moves)
        self.engine.send("go " + self._clock_words())
        return moment

    def _best_move(self, seconds):
        """(time, move, reply); None if it does not come in time."""
        end = time.monotonic() + seconds
        while True:
            try:
                moment, line = self.engine.receive(end - time.monotonic())
            except queue.Empty:
                return None
            if line is None:
                raise Fault(self, "ended in the game; " + self.last_words())
            best = BEST_MOVE_LINE.match(line)
            if best:
                return moment, best.group(1), best.group(2)
            if not line.startswith("info "):
                raise Fault(self, f"said '{line}'")

    def next_event(self, seconds):
        answer = self._best_move(seconds)
        if answer is None:
            return None
        moment, text, reply = answer
        self.moves.append(text)
        if self.options.ponders(self) and reply:
            self._ponder(moment, reply)
        return "move", moment, text

    def _ponder(self, moment, reply):
        game = Game()
        for move in self.moves:
            if not game.play(move):
                return  # the match tells of it
        if not game.position.has_legal_move():
            raise Fault(self, f"expects {reply} where the game has ended")
        if reply not in game.position.legal_moves():
            raise Fault(self, f"expects the illegal move {reply} in {game.position.fen()}")
        self.expected = reply
        self.ponder_searches += 1
        self.clocks[0] += self.increment - self.seconds_used(self.begun, moment)
        self._send_position(self.moves + [reply])
        self.engine.send("go ponder " + self._clock_words())

    def last_words(self):
        status = self.engine.process.poll()
        return f"status {status}, " + " / ".join(self.engine.log[-6:] + self.engine.error_output[-5:])

    def finish(self):
        status = self.engine.close()
        if self.is_ours and status != 0:
            raise Fault(self, f"ended with status {status}; " + self.last_words())
        if self.is_ours and self.engine.error_output:
            raise Fault(self, "wrote to standard error: " + self.engine.error_output[0])


class RandomPlayer:
    """Plays any legal move at once."""

    announces = False
    claims_by_laws = False

    is_ours = False
    name = "random"
    longest_overrun = 0.0
    ponder_searches = 0
    budget = None

    def __init__(self, seed):
        self.random = random.Random(seed)

    def new_game(self, fen, seconds, increment):
        pass

    def tell_move(self, text):
        pass

    def start_thinking(self, game, own_clock, other_clock, opponent_move):
        self.reply = self.random.choice(sorted(game.position.legal_moves()))
        return time.monotonic()

    def seconds_used(self, begun, moment):
        return max(0.0, moment - begun)

    def next_event(self, seconds):
        reply, self.reply = self.reply, None
        return ("move", time.monotonic(), reply) if reply else None

    def finish(self):
        pass


def level_command(seconds, increment):
    """The clock as whole minutes and seconds; the exact time comes with each "time"."""
    return f"level 0 {max(1, int(seconds // 60))} {int(increment)}"


def exact_level_command(seconds, increment):
    return f"level 0 {int(seconds // 60)}:{seconds % 60:04.1f} {increment}"


class Options:
    """How the games are played."""

    def __init__(self, seconds=10.0, increment=0.1, ponder="none", opening_plies=6, max_plies=400, ini="", seed=1,
                 sigint=False, margin=0.0, depth=0, processor_time=False):
        self.seconds = seconds
        self.increment = increment
        self.ponder = ponder
        self.opening_plies = opening_plies
        self.max_plies = max_plies
        self.ini = ini
        self.seed = seed
        self.sigint = sigint
        self.margin = margin
        self.depth = depth
        # The clocks count what the engines use of the processor, whose own clock has to do so too; for games without
        # thinking on the opponent's time.
        self.processor_time = processor_time

    def ponders(self, player):
        return (self.ponder == "both" or (self.ponder == "first" and player.is_first)
                or (self.ponder == "ours" and player.name.startswith("tarvelmon")))


# How a game ended, and what it cost.
GameRecord = collections.namedtuple(
    "GameRecord", "white black result reason moves fault untrue_claims unannounced overruns ponder_searches start_fen logs borrowed")


class Match:
    """One game between two players, white first."""

    def __init__(self, players, options, opening):
        self.players = players
        self.options = options
        self.game = Game()
        self.counts = RepetitionCounts(self.game.position)
        self.clocks = [options.seconds, options.seconds]
        self.untrue_claims = 0
        self.unannounced = 0
        self.borrowed = 0.0  # the most that a clock ran over within the margin
        self.opening = opening

    def play(self):
        """Returns (result, reason)."""
        for player in self.players:
            player.new_game(START_FEN, self.options.seconds, self.options.increment)
        for text in self.opening:
            self._put_on_board(text)
            for player in self.players:
                player.tell_move(text)
        last_move = None
        while True:
            side = len(self.game.moves) % 2
            mover, other = self.players[side], self.players[1 - side]
            outcome = self._take_move(mover, other, side, last_move)
            if outcome:
                return outcome
            last_move = self.game.moves[-1]
            outcome = self._end_after(mover, other, last_move)
            if outcome:
                return outcome

    def _put_on_board(self, text):
        before = self.game.position
        if not self.game.play(text):
            return False
        self.counts.add(before, self.game.position, (ord(text[0]) - 97) + 8 * (int(text[1]) - 1))
        return True

    def _take_move(self, mover, other, side, last_move):
        begun = mover.start_thinking(self.game, self.clocks[side], self.clocks[1 - side], last_move)
        event = mover.next_event(self.clocks[side] + STALL_SECONDS)
        if event is None:
            raise Fault(mover, "does not move; " + " / ".join(mover.engine.log[-6:]))
        kind, moment, text = event
        if kind == "result":
            return self._ended_by_claim(mover, side, text)
        used = mover.seconds_used(begun, moment)
        if mover.budget is not None:
            mover.longest_overrun = max(mover.longest_overrun, used - mover.budget / 100)
        self.clocks[side] -= used
        if self.clocks[side] < -self.options.margin:
            raise Fault(mover, f"loses on time by {-self.clocks[side]:.3f} s, budget {mover.budget}, used {used:.3f}")
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


def make_player(command, folder, options, is_first, seed):
    if command == "random":
        return RandomPlayer(seed)
    if command.startswith("uci:"):
        return UciPlayer(command[4:], folder, options, is_first)
    return EnginePlayer(command, folder, options, is_first)


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
            return game.moves


def play_game(commands, options, number):
    """Plays game `number` (from 0) of a match between two commands, the first as White in even games."""
    opening = random_opening(options.seed * 1000003 + number // 2, options.opening_plies)
    order = [0, 1] if number % 2 == 0 else [1, 0]
    with tempfile.TemporaryDirectory(prefix="referee-") as folder:
        with open(os.path.join(folder, "tarvelmon.ini"), "w", encoding="latin-1") as ini:
            ini.write(options.ini)
        players = []
        match = None
        result, reason, fault = "*", "", None
        try:
            for index in order:
                command = commands[index]
                players.append(make_player(command, folder, options, index == 0, options.seed * 7919 + number))
            match = Match(players, options, opening)
            result, reason = match.play()
        except Fault as caught:
            fault = caught
        for player in players:
            try:
                player.finish()
            except Fault as caught:
                fault = fault or caught
        names = [player.name for player in players] + ["?"] * (2 - len(players))
        logs = [player.engine.log for player in players if not isinstance(player, RandomPlayer)]
        overruns = {player.name: player.longest_overrun for player in players}
        return GameRecord(names[0], names[1], result, reason, match.game.moves if match else [], fault,
                          match.untrue_claims if match else 0, match.unannounced if match else 0, overruns,
                          sum(player.ponder_searches for player in players), START_FEN, logs, match.borrowed if match else 0.0)


def san(game_position, text):
    """A move in the notation of game scores."""
    moves = game_position.legal_moves()
    after = moves[text]
    origin = (ord(text[0]) - 97) + 8 * (int(text[1]) - 1)
    target = (ord(text[2]) - 97) + 8 * (int(text[3]) - 1)
    man = game_position.board[origin].upper()
    if man == "K" and abs(target - origin) == 2:
        body = "O-O" if target > origin else "O-O-O"
    else:
        takes = game_position.board[target] != "." or (man == "P" and text[0] != text[2])
        if man == "P":
            body = (text[0] + "x" if takes else "") + text[2:4] + ("=" + text[4].upper() if text[4:] else "")
        else:
            rivals = [m for m in moves if m[2:4] == text[2:4] and m[:2] != text[:2]
                      and game_position.board[(ord(m[0]) - 97) + 8 * (int(m[1]) - 1)].upper() == man]
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


def pgn(record, number):
    position = Position(record.start_fen)
    words = []
    for text in record.moves:
        if position.white:
            words.append(f"{position.number}.")
        words.append(san(position, text))
        position = position.legal_moves()[text]
    words.append(f"{{{record.fault or record.reason}}} {record.result}")
    lines, line = [], ""
    for word in words:
        if len(line) + len(word) > 78:
            lines.append(line.rstrip())
            line = ""
        line += word + " "
    lines.append(line.rstrip())
    return (f'[Event "Referee"]\n[Round "{number + 1}"]\n[White "{record.white}"]\n[Black "{record.black}"]\n'
            f'[Result "{record.result}"]\n\n' + "\n".join(lines) + "\n\n")


class Tally:
    """What came of all games."""

    def __init__(self):
        self.results = collections.Counter()
        self.reasons = collections.Counter()
        self.overruns = collections.Counter()
        self.plies = 0
        self.ponder_searches = 0
        self.untrue_claims = 0
        self.unannounced = 0
        self.borrowers = []  # seconds that a clock ran over, a game
        self.our_faults = []
        self.other_faults = []

    def add(self, record, number):
        if record.fault:
            own = getattr(record.fault.player, "is_ours", False)
            (self.our_faults if own else self.other_faults).append((number, str(record.fault)))
        else:
            winner = {"1-0": record.white, "0-1": record.black}.get(record.result, "draw")
            self.results[winner] += 1
            self.reasons[record.reason] += 1
        self.plies += len(record.moves)
        self.ponder_searches += record.ponder_searches
        self.untrue_claims += record.untrue_claims
        self.unannounced += record.unannounced
        if record.borrowed > 0:
            self.borrowers.append(record.borrowed)
        for name, seconds in record.overruns.items():
            self.overruns[name] = max(self.overruns[name], seconds)

    def report(self):
        lines = [f"games {sum(self.results.values()) + len(self.our_faults) + len(self.other_faults)}, "
                 f"plies {self.plies}"]
        lines += [f"won by {name}: {count}" if name != "draw" else f"drawn: {count}"
                  for name, count in self.results.most_common()]
        lines += [f"ended by {reason}: {count}" for reason, count in self.reasons.most_common()]
        lines += [f"longest overrun of a budget, {name}: {seconds * 1000:.0f} ms"
                  for name, seconds in self.overruns.items() if seconds > 0]
        if self.borrowers:
            lines.append(f"games in which a clock ran over within the margin: {len(self.borrowers)}, "
                         f"by {max(self.borrowers) * 1000:.0f} ms at the most")
        lines.append(f"ponder searches: {self.ponder_searches}")
        lines.append(f"draws claimed by count that the laws do not see: {self.untrue_claims}")
        lines.append(f"ends not announced while pondering: {self.unannounced}")
        lines.append(f"faults of tarvelmon: {len(self.our_faults)}, of others: {len(self.other_faults)}")
        lines += [f"game {number + 1}: {text}" for number, text in self.our_faults + self.other_faults]
        return "\n".join(lines)


def play_match(commands, options, games, concurrency=1, on_game=None):
    """Plays the games, several at once, and returns the tally."""
    tally = Tally()
    numbers = iter(range(games))
    lock = threading.Lock()

    def work():
        while True:
            with lock:
                number = next(numbers, None)
            if number is None:
                return
            record = play_game(commands, options, number)
            with lock:
                tally.add(record, number)
                if on_game:
                    on_game(record, number)

    workers = [threading.Thread(target=work) for _ in range(concurrency)]
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()
    return tally


def with_absolute_path(command):
    """The games are played in folders of their own."""
    if command == "random":
        return command
    prefix = "uci:" if command.startswith("uci:") else ""
    words = shlex.split(command[len(prefix):])
    return prefix + " ".join([os.path.abspath(words[0])] + words[1:])


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("first")
    parser.add_argument("second")
    parser.add_argument("--games", type=int, default=2)
    parser.add_argument("--time", default="10+0.1", help="seconds on the clock + seconds added for each move")
    parser.add_argument("--ponder", choices=("none", "ours", "first", "both"), default="none")
    parser.add_argument("--opening-plies", type=int, default=6)
    parser.add_argument("--max-plies", type=int, default=400)
    parser.add_argument("--ini", default="[ENGINE]\nHashSize=64\nPawnHashSize=16\n[BOOK]\nBook=0\n"
                                         "[TABLEBASE]\nSyzygy=0\n", help="text of tarvelmon.ini")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--sigint", action="store_true", help="send SIGINT ahead of every command, as interfaces do")
    parser.add_argument("--margin", type=float, default=0.0, help="seconds a clock may run over")
    parser.add_argument("--depth", type=int, default=0, help="plies an engine may search, sent as sd")
    parser.add_argument("--concurrency", type=int, default=1)
    parser.add_argument("--pgn", help="file for the games")
    parser.add_argument("--logs", help="folder for the conversations of games with a fault")
    arguments = parser.parse_args()
    seconds, _, increment = arguments.time.partition("+")
    options = Options(float(seconds), float(increment or 0), arguments.ponder, arguments.opening_plies,
                      arguments.max_plies, arguments.ini.replace("\\n", "\n"), arguments.seed, arguments.sigint,
                      arguments.margin, arguments.depth)
    commands = [with_absolute_path(command) for command in (arguments.first, arguments.second)]

    def on_game(record, number):
        print(f"game {number + 1}: {record.white} - {record.black} {record.result} "
              f"{record.fault or record.reason} ({len(record.moves)} plies)", flush=True)
        if arguments.pgn:
            with open(arguments.pgn, "a", encoding="latin-1") as file:
                file.write(pgn(record, number))
        if arguments.logs and record.fault:
            os.makedirs(arguments.logs, exist_ok=True)
            for index, log in enumerate(record.logs):
                with open(os.path.join(arguments.logs, f"game{number + 1}-{index}.log"), "w") as file:
                    file.write("\n".join(log) + "\n")

    tally = play_match(commands, options, arguments.games, arguments.concurrency, on_game)
    print(tally.report())
    return 1 if tally.our_faults else 0


if __name__ == "__main__":
    sys.exit(main())
