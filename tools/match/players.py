"""The sides of a game: an engine by the xboard protocol, one by UCI, and a player of random legal moves."""

import os
import queue
import random
import re
import time

from match.engines import EngineError, EngineProcess
from chess_rules import Game, START_FEN

# gnuchess tells its moves in the words of the protocol's first days.
MOVE_LINE = re.compile(r"(?:move|My move is ?:) (\S+)\s*$")
RESULT_LINE = re.compile(r"(1-0|0-1|1/2-1/2)\b")
BUDGET_LINE = re.compile(r"#(?:DEBUG)? moves: (-?\d+) move speed: (-?\d+) +allocated time: (-?\d+)$")
# Depth, score, time and nodes; some engines put a sign behind the depth.
THINKING_LINE = re.compile(r"\s*\d+\S?\s+([+-]?\d+)\s+\d+\s+\d+\b")
UCI_SCORE = re.compile(r"info .*\bscore (cp|mate) ([+-]?\d+)\b")
BEST_MOVE_LINE = re.compile(r"bestmove (\S+)(?: ponder (\S+))?\s*$")
COMPANION = "tarvelmon-gui"
# How long to wait for what is due at once; a machine under load may take its time.
START_SECONDS = 60.0
ANSWER_SECONDS = 60.0
# An engine of others that does not say "done" has told its features after the two seconds that the protocol names.
FEATURE_SECONDS = 2.0
OTHERS_END_SECONDS = 5.0
MATE_SCORE = 30000

ILLEGAL, LATE, GONE = "rules infraction", "time forfeit", "abandoned"


class Fault(Exception):
    """Something an engine must not do. Ends the game, lost for the engine."""

    def __init__(self, player, text, kind=ILLEGAL):
        super().__init__(f"{player.name}: {text}")
        self.player = player
        self.kind = kind


class EngineSide:
    """What engines of both protocols share: the process, its clock, and its end. The time is taken by the clock on the
    wall or by what the engine uses of the processor."""

    budget = None  # centiseconds, of the present move, where the engine tells them
    score = None  # hundredths of a pawn, the last that the engine told of a position; the only legal move may have none
    longest_overrun = 0.0
    ponder_searches = 0

    def __init__(self, engine, folder, options, is_first):
        self.settings = engine
        self.is_first = is_first
        self.options = options
        self.name = os.path.basename(engine.command[0])
        self.engine = EngineProcess(engine.command, engine.folder or folder, folder)
        try:
            self._start()
        except Fault:
            self.engine.kill()
            self.engine.close()
            raise

    @property
    def is_ours(self):
        return self.name.startswith("tarvelmon")

    def _moment(self):
        return self.engine.processor_seconds() if self.options.processor_time else time.monotonic()

    def seconds_used(self, begun, moment):
        """From what start_thinking returned to the move that came at `moment` on the wall."""
        return max(0.0, (self.engine.processor_seconds() if self.options.processor_time else moment) - begun)

    def _lines_until(self, seconds):
        """The lines the engine says until the time is over."""
        end = time.monotonic() + seconds
        while True:
            try:
                moment, line = self.engine.receive(end - time.monotonic())
            except queue.Empty:
                return
            if line is None:
                raise Fault(self, "ended in the game; " + self.last_words(), GONE)
            yield moment, line

    def _ask(self, line, answer, seconds=START_SECONDS):
        """Sends a line and waits for its answer; a name on the way is kept."""
        self.engine.send(line)
        for _, said in self._lines_until(seconds):
            if said.startswith("id name "):
                self.name = said[len("id name "):].strip()
            if said.strip() == answer:
                return
        raise Fault(self, f"does not say {answer}", GONE)

    def last_words(self):
        status = self.engine.process.poll()
        return f"status {status}, " + " / ".join(self.engine.log[-6:] + self.engine.error_output[-5:])

    def finish(self):
        if not self.is_ours:
            self.engine.close(OTHERS_END_SECONDS)
            return
        status = self.engine.close()
        if status != 0:
            raise Fault(self, f"ended with status {status}; " + self.last_words(), GONE)
        if self.engine.error_output:
            raise Fault(self, "wrote to standard error: " + self.engine.error_output[0])


class XboardPlayer(EngineSide):
    """An engine as one side of a game, by the xboard protocol."""

    announces = True

    def _start(self):
        self.claims_by_laws = self.name == COMPANION
        self.features = {"usermove": "0", "ping": "0", "setboard": "0"}
        self.started = False
        self.engine.send("xboard")
        self.engine.send("protover 2")
        begun = time.monotonic()
        for _, line in self._lines_until(START_SECONDS):
            for key, quoted, plain in re.findall(r'(\w+)=(?:"([^"]*)"|(\S+))', line if "feature" in line else ""):
                self.features[key] = quoted or plain
            self.name = self.features.get("myname", self.name)
            if self.features.get("done") == "1":
                break
            if "done" not in self.features and time.monotonic() - begun > FEATURE_SECONDS:
                break
        for option in self.settings.options:
            self.engine.send("option {}={}".format(*option))
        for line in self.settings.init:
            self.engine.send(line)

    def new_game(self, fen, seconds, increment):
        self.engine.send("new")
        self.engine.send("force")
        self.engine.send(whole_level_command(seconds, increment) if self.is_ours and not self.claims_by_laws
                         else exact_level_command(seconds, increment))
        self.engine.send("post")
        self.engine.send("hard" if self.options.ponders(self) else "easy")
        if self.options.depth:
            self.engine.send(f"sd {self.options.depth}")
        if fen != START_FEN:
            if self.features["setboard"] != "1":
                raise EngineError(f"{self.name} cannot set up a position: openings must be moves from the start")
            self.engine.send("setboard " + fen)
        if self.features["ping"] == "1":
            # What the engine does before it is ready is not on its clock.
            self._ask("ping 1", "pong 1")

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
        for moment, line in self._lines_until(seconds):
            event = self._judge_line(moment, line)
            if event:
                return event
        return None

    def _judge_line(self, moment, line):
        move = MOVE_LINE.match(line)
        if move:
            return "move", moment, move.group(1)
        if RESULT_LINE.match(line) or line.startswith("resign"):
            return "result", moment, line
        budget = BUDGET_LINE.match(line)
        if budget:
            self.budget = int(budget.group(3))
        thinking = THINKING_LINE.match(line)
        if thinking:
            self.score = int(thinking.group(1))
        if line.startswith("Hint: "):
            self.ponder_searches += 1
        if line.startswith(("Illegal move", "tellusererror")) or (self.is_ours and line.startswith("Error")):
            raise Fault(self, f"said '{line}'")
        return None


class UciPlayer(EngineSide):
    """An engine as one side of a game, by UCI."""

    announces = False
    claims_by_laws = True

    def _start(self):
        self.ponder_hits = 0
        self.moves = []
        self.expected = None  # the opponent's move that the engine ponders on
        self._ask("uci", "uciok")
        for name, value in self.settings.options:
            self.engine.send(f"setoption name {name} value {value}")
        for line in self.settings.init:
            self.engine.send(line)

    def new_game(self, fen, seconds, increment):
        self.increment = increment
        self.fen = fen
        self.engine.send("ucinewgame")
        self._ask("isready", "readyok")

    def tell_move(self, text):
        self.moves.append(text)

    def _send_position(self, moves):
        position = "startpos" if self.fen == START_FEN else "fen " + self.fen
        self.engine.send(f"position {position}" + (" moves " + " ".join(moves) if moves else ""))

    def _clock_words(self):
        white, black = self.clocks if self.is_white else self.clocks[::-1]
        milliseconds = max(1, int(white * 1000)), max(1, int(black * 1000)), int(self.increment * 1000)
        words = "wtime {} btime {} winc {} binc {}".format(*milliseconds, milliseconds[2])
        return words + (f" depth {self.options.depth}" if self.options.depth else "")

    def start_thinking(self, game, own_clock, other_clock, opponent_move):
        if opponent_move is not None:
            self.moves.append(opponent_move)
        self.is_white = game.position.white
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
            self._best_move(ANSWER_SECONDS)
        self._send_position(self.moves)
        self.engine.send("go " + self._clock_words())
        return moment

    def _best_move(self, seconds):
        """(time, move, reply); None if it does not come in time."""
        for moment, line in self._lines_until(seconds):
            best = BEST_MOVE_LINE.match(line)
            if best:
                return moment, best.group(1), best.group(2)
            score = UCI_SCORE.match(line)
            if score:
                self.score = read_uci_score(*score.groups())
            if self.is_ours and not line.startswith("info "):
                raise Fault(self, f"said '{line}'")
        return None

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
        game = Game(self.fen)
        for move in self.moves:
            if not game.play(move):
                return  # the judge tells of it
        if not game.position.has_legal_move():
            raise Fault(self, f"expects {reply} where the game has ended")
        if reply not in game.position.legal_moves():
            raise Fault(self, f"expects the illegal move {reply} in {game.position.fen()}")
        self.expected = reply
        self.ponder_searches += 1
        self.clocks[0] += self.increment - self.seconds_used(self.begun, moment)
        self._send_position(self.moves + [reply])
        self.engine.send("go ponder " + self._clock_words())


class RandomPlayer:
    """Plays any legal move at once."""

    announces = False
    claims_by_laws = False
    is_ours = False
    name = "random"
    longest_overrun = 0.0
    ponder_searches = 0
    budget = None
    score = None

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


def make_player(engine, folder, options, is_first, seed):
    if engine.is_random:
        return RandomPlayer(seed)
    return (UciPlayer if engine.protocol == "uci" else XboardPlayer)(engine, folder, options, is_first)


def read_uci_score(kind, number):
    """In hundredths of a pawn; a mate in 0 is against the engine."""
    value = int(number)
    if kind == "mate":
        value = MATE_SCORE if value > 0 else -MATE_SCORE
    return value


def whole_level_command(seconds, increment):
    """The clock as tarvelmon reads it, in whole minutes and seconds; the exact time comes with each "time"."""
    return f"level 0 {max(1, int(seconds // 60))} {int(increment)}"


def exact_level_command(seconds, increment):
    minutes, rest = divmod(seconds, 60)
    rest = f":{rest:04.1f}" if rest % 1 else f":{int(rest):02d}" if rest else ""
    return f"level 0 {int(minutes)}{rest} {increment:g}"
