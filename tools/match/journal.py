"""What a match writes down as each game ends, so that it can go on after a stop: the game score, and beside it a file of
JSON lines, the first with the settings of the match, each of the others with a game.

A game is on record when its line is. The line tells where the game scores ended then, so that a score which was written
without its line, or half, is cut off when the match goes on."""

import dataclasses
import fcntl
import json
import os

from match.judge import GameRecord
from match.schedule import Task


class JournalError(Exception):
    """The files are not those of this match."""


class Journal:
    """The two files of one match. To be closed."""

    def __init__(self, pgn_path, settings, resume):
        self.pgn_path = pgn_path
        self.path = pgn_path + ".state"
        self.settings = settings
        begun = os.path.exists(self.path)
        if begun and not resume:
            raise JournalError(f"{self.path}: a match has been begun: --resume goes on with it; remove the file to begin anew")
        self.file = os.open(self.path, os.O_RDWR | os.O_CREAT | os.O_APPEND, 0o644)
        try:
            fcntl.flock(self.file, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except OSError:
            self.close()
            raise JournalError(f"{self.path}: another referee writes to it") from None
        self.pgn = os.open(pgn_path, os.O_WRONLY | os.O_CREAT, 0o644)
        self.played = self._read()
        os.lseek(self.pgn, 0, os.SEEK_END)

    def _read(self):
        """The games on record, as (task, record); what was written half is cut off."""
        with open(self.path, "rb") as file:
            text = file.read()
        whole = text[:text.rfind(b"\n") + 1]
        if whole != text:
            os.ftruncate(self.file, len(whole))
        lines = whole.splitlines()
        if not lines:
            self._write_line({"match": self.settings, "pgn_end": os.fstat(self.pgn).st_size})
            return []
        try:
            entries = [json.loads(line) for line in lines]
            settings, end = entries[0]["match"], entries[-1]["pgn_end"]
            played = [(Task(*entry["task"]), GameRecord(**entry["record"])) for entry in entries[1:]]
        except (ValueError, KeyError, TypeError) as error:
            raise JournalError(f"{self.path}: not a record of games: {error}") from None
        different = sorted(key for key in {**settings, **self.settings}
                           if settings.get(key) != self.settings.get(key))
        if different:
            raise JournalError(f"{self.path}: the match was begun with other settings: {', '.join(different)}")
        if os.fstat(self.pgn).st_size < end:
            raise JournalError(f"{self.pgn_path}: games that {self.path} tells of are missing")
        os.ftruncate(self.pgn, end)
        return played

    def _write_line(self, entry):
        os.write(self.file, json.dumps(entry).encode() + b"\n")
        os.fsync(self.file)

    def add(self, task, record, score):
        """Puts a game on record."""
        os.write(self.pgn, score.encode("latin-1", "replace"))
        os.fsync(self.pgn)
        fields = {**dataclasses.asdict(dataclasses.replace(record, fault=None, logs=[])),
                  "fault": str(record.fault) if record.fault else None}
        self._write_line({"task": task, "record": fields, "pgn_end": os.lseek(self.pgn, 0, os.SEEK_CUR)})

    def close(self):
        for name in ("file", "pgn"):
            if hasattr(self, name):
                os.close(getattr(self, name))
