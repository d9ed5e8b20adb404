"""The companion for interfaces as a child process, in both of its protocols.

The program is the one named by the environment variable TARVELMON_GUI.
"""

import os
import re

from engine import Engine, SMALL_INI

PROGRAM = os.environ.get("TARVELMON_GUI", "")

MATE = 20000
LOWEST_MATE = 19000


class Gui(Engine):
    """One process of the companion. The user's own folder is out of its sight."""

    def __init__(self, ini=SMALL_INI, files=None, arguments=()):
        super().__init__(ini, files, PROGRAM, ("env", "TARVELMON_HOME=/nonexistent", *arguments))

    def uci(self):
        """Begins in UCI; returns the lines before "uciok"."""
        self.send("uci")
        self.expect("uciok")
        return self.skipped

    def is_ready(self, patience=None):
        """Waits until everything sent has been dealt with; returns the lines printed meanwhile."""
        self.send("isready")
        self.expect("readyok", patience)
        return self.skipped

    def go(self, words, patience=None):
        """Sends "go" and waits for the answer; returns (best move, expected reply or None, info lines)."""
        self.send(("go " + words).strip())
        return self.best_move(patience)

    def best_move(self, patience=None):
        match = self.expect(r"bestmove (\S+)(?: ponder (\S+))?", patience)
        return match.group(1), match.group(2), self.skipped

    def xboard_protocol(self, version=2):
        """Begins in the xboard protocol; returns the lines of the greeting."""
        self.send("xboard")
        self.expect("")
        if version >= 2:
            self.send("protover %d" % version)
            self.expect("feature done=1")
        return self.skipped if version >= 2 else []


def info_fields(line):
    """The words of an info line as a dictionary: numbers, "score" as (kind, number, bound), "pv" as a list."""
    words = line.split()
    fields = {"bound": ""}
    index = 1
    while index < len(words):
        word = words[index]
        if word == "pv":
            fields["pv"] = words[index + 1:]
            break
        if word == "score":
            fields["score"] = (words[index + 1], int(words[index + 2]))
            index += 3
        elif word in ("lowerbound", "upperbound"):
            fields["bound"] = word
            index += 1
        elif word in ("currmove", "string"):
            fields[word] = words[index + 1]
            index += 2
        else:
            fields[word] = int(words[index + 1])
            index += 2
    return fields


def findings(lines):
    """The info lines that tell a score, as fields."""
    return [info_fields(line) for line in lines if re.match(r"info depth \d+ score ", line)]


def uci_score(score):
    """The engine's score as UCI has it."""
    if score >= LOWEST_MATE:
        return "mate", (MATE + 1 - score) // 2
    if score <= -LOWEST_MATE:
        return "mate", -((MATE + score) // 2)
    return "cp", score


def xboard_score(score):
    """The engine's score as the xboard protocol has it."""
    if score >= LOWEST_MATE:
        return 100000 + (MATE + 1 - score) // 2
    if score <= -LOWEST_MATE:
        return -100000 - (MATE + score) // 2
    return score
