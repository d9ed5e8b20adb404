"""The companion for collections on its command line: what its scripts share.

The program is the one named by the environment variable TARVELMON_ANALYSE; without it there is none in this build.
"""

import os
import signal
import subprocess
import sys
import unittest

from engine import PATIENCE
from scratch_folder import ScratchFolderTest

PROGRAM = os.path.abspath(os.environ.get("TARVELMON_ANALYSE") or "/nonexistent")
SUITES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "data", "suites")
WELL_KNOWN = os.path.join(SUITES, "well_known.epd")

sys.path.insert(0, os.environ.get("TARVELMON_CLIENTS", "/nonexistent"))
try:
    import chess
    import chess.pgn
except ImportError:
    chess = None


def text_of(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def children(process):
    with open(f"/proc/{process.pid}/task/{process.pid}/children", encoding="ascii") as file:
        return [int(word) for word in file.read().split()]


@unittest.skipUnless(os.path.isfile(PROGRAM), "tarvelmon-analyse is not built")
class AnalyseTest(ScratchFolderTest):

    def analyse(self, *arguments, given="", status=0):
        """Runs the program to its end; returns what it writes. `errors` is what it says beside."""
        done = subprocess.run([PROGRAM, *arguments], cwd=self.folder, input=given, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, timeout=PATIENCE, check=False)
        self.errors = done.stderr
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout

    def start(self, *arguments):
        process = subprocess.Popen([PROGRAM, *arguments], cwd=self.folder, stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(self.finish, process)
        return process

    @staticmethod
    def finish(process):
        process.kill()
        process.wait()
        for stream in (process.stdin, process.stdout, process.stderr):
            try:
                stream.close()
            except BrokenPipeError:
                pass


def end(pid):
    os.kill(pid, signal.SIGKILL)
