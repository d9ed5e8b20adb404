"""The engines of a match: how they are described on the command line or in a file, and their processes behind pipes."""

import configparser
import dataclasses
import os
import queue
import shlex
import shutil
import signal
import subprocess
import threading
import time
import zlib

PROTOCOLS = ("xboard", "uci")
GAMES_FOLDER = "/usr/games"  # where Debian puts engines, often not on the path of root
END_SECONDS = 60.0
# What has the system kill an engine when the referee is killed itself.
END_WITH_REFEREE = ["setpriv", "--pdeathsig", "KILL", "--"] if shutil.which("setpriv") else []


class EngineError(Exception):
    """An engine is described wrongly."""


@dataclasses.dataclass
class Engine:
    """How an engine is started and set up. Without words in its command it is the player of random moves."""

    command: list
    protocol: str = "xboard"
    name: str = ""      # of the engine's own telling if empty
    folder: str = ""    # working directory; a new one for each game if empty
    ini: str = ""       # text of tarvelmon.ini in the new folder
    init: list = dataclasses.field(default_factory=list)     # lines sent ahead of the first game, after the options
    options: list = dataclasses.field(default_factory=list)  # (name, value)

    @property
    def is_random(self):
        return not self.command

    def description(self):
        """The program and all that it is told, for comparing one match with another."""
        checksum = 0
        if self.command:
            with open(shutil.which(self.command[0]), "rb") as program:
                checksum = zlib.crc32(program.read())
        return {**dataclasses.asdict(self), "options": [list(option) for option in self.options], "checksum": checksum}


def program_path(word):
    """Where the program lies: a path, a program of the search path, or one of the folder of games."""
    if os.sep in word or os.path.exists(word):
        return os.path.abspath(word)
    return shutil.which(word) or shutil.which(word, path=GAMES_FOLDER) or word


def _apply(engine, key, value):
    """Sets one key of an engine; False if there is no such key."""
    if key.startswith("option."):
        engine.options.append((key[len("option."):], value))
    elif key == "init":
        engine.init += [line.strip() for line in value.splitlines() if line.strip()]
    elif key == "folder":
        engine.folder = os.path.abspath(value)
        if not os.path.isdir(value):
            raise EngineError(f"no such folder: {value}")
    elif key == "ini":
        try:
            with open(value, encoding="latin-1") as file:
                engine.ini = file.read()
        except OSError as error:
            raise EngineError(f"{value}: {error.strerror}") from None
    elif key == "name":
        engine.name = value
    elif key == "protocol":
        if value not in PROTOCOLS:
            raise EngineError(f"no such protocol: {value}")
        engine.protocol = value
    elif key == "command":
        words = shlex.split(value)
        engine.command = [program_path(words[0])] + words[1:]
    else:
        return False
    return True


def read_engines(path):
    """The engines of a file, as {name: [(key, value)]}."""
    parser = configparser.ConfigParser(interpolation=None)
    parser.optionxform = str
    try:
        with open(path, encoding="utf-8") as file:
            parser.read_file(file)
    except (OSError, configparser.Error, UnicodeDecodeError) as error:
        raise EngineError(f"{path}: {error}") from None
    return {section: list(parser.items(section)) for section in parser.sections()}


def parse_engine(text, known=None):
    """An engine of the command line: [uci:][KEY=VALUE ...] and a command, a name out of `known`, or "random"."""
    engine = Engine([])
    if text.startswith("uci:"):
        engine.protocol, text = "uci", text[len("uci:"):]
    words = shlex.split(text)
    settings = []
    while words and "=" in words[0] and _is_key(words[0].partition("=")[0]):
        key, _, value = words.pop(0).partition("=")
        settings.append((key, value))
    if not words:
        raise EngineError(f"no command in '{text}'")
    if words != ["random"]:
        name = _known_name(words, known or {})
        if name:
            settings = known[name] + settings
        else:
            engine.command = [program_path(words[0])] + words[1:]
    for key, value in settings:
        if not _apply(engine, key, value):
            raise EngineError(f"no such key of an engine: {key}")
    if engine.command and not shutil.which(engine.command[0]):
        raise EngineError(f"no such program: {engine.command[0]}")
    return engine


def _known_name(words, known):
    """The known engine that a single word means, by its name or by the path of its program."""
    if len(words) > 1:
        return None
    name = os.path.basename(words[0])
    if name not in known or (words[0] != name and program_path(name) != words[0]):
        return None
    return name


def _is_key(word):
    return word in ("protocol", "name", "folder", "ini", "init") or word.startswith("option.")


class EngineProcess:
    """An engine behind pipes. Every line it says is kept with the time it came."""

    running = set()  # of all processes that have not been closed

    def __init__(self, command, folder, home=None):
        self.log = []
        self.lines = queue.Queue()
        # In a group of its own: an interrupt at the terminal is for the referee alone, and all that the engine starts
        # ends with it. Not all engines end when their pipe does.
        self.process = subprocess.Popen(END_WITH_REFEREE + command, cwd=folder, stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, start_new_session=True,
                                        env={**os.environ, "HOME": home} if home else None)
        EngineProcess.running.add(self)
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
        except (BrokenPipeError, OSError, ValueError):
            pass  # the reader sees the end

    def receive(self, seconds):
        """(time, line), line None at the end of output. Raises queue.Empty when none came in time."""
        moment, line = self.lines.get(timeout=max(0.0, seconds))
        self.log.append("< " + ("(end)" if line is None else line))
        return moment, line

    def interrupt(self):
        self.process.send_signal(signal.SIGINT)

    def kill(self):
        """Ends the engine and all that it has started."""
        try:
            os.killpg(self.process.pid, signal.SIGKILL)
        except (ProcessLookupError, PermissionError):
            pass

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
            self.kill()
            self.process.wait()
            status = None
        for reader in self.readers:
            reader.join(1.0)
        EngineProcess.running.discard(self)
        return status


def kill_all():
    """Ends all engines at once."""
    for process in list(EngineProcess.running):
        process.kill()
