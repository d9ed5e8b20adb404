"""The engine as a child process whose lines can be waited for.

Every wait has a deadline, and nothing sleeps for a fixed time where it can wait for a line. The program is the one
named by the environment variable TARVELMON.
"""

import os
import re
import signal
import subprocess
import tempfile
import threading
import time

PROGRAM = os.environ.get("TARVELMON", "")
PROMPT = "\ntarvelmon> "
BANNER = ("tarvelmon chess engine by Ubaldo Merikossa\n"
          "version 0.12\n"
          "\n"
          "enter 'console' for console mode...")

# Seconds after which a wait counts as failed: long, for machines with much else to do and for sanitizers.
PATIENCE = float(os.environ.get("TARVELMON_PATIENCE", "120"))

# Threads of a process that does not search beside its input: the thread sanitizer has one of its own.
OWN_THREADS = 2 if "thread" in os.environ.get("TARVELMON_SANITIZE", "") else 1

# A small table and no book, so that tests neither take much memory nor depend on a file.
SMALL_INI = "[ENGINE]\nHashSize=16\nPawnHashSize=16\n[BOOK]\nBook=0\n[TABLEBASE]\nSyzygy=0\n"


class EngineError(AssertionError):
    """The engine did not do what was waited for; the text holds what it said last."""


class Engine:
    """One process. `ini` is the text of its configuration file, None for no file; `files` more files by name."""

    def __init__(self, ini=SMALL_INI, files=None, program=None, arguments=()):
        self._folder = tempfile.TemporaryDirectory(prefix="tarvelmon-")
        self.folder = self._folder.name
        if ini is not None:
            self._write("tarvelmon.ini", ini.encode("latin-1"))
        for name, content in (files or {}).items():
            self._write(name, content)
        self.process = subprocess.Popen(
            [*arguments, os.path.abspath(program or PROGRAM)], cwd=self.folder, stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.text = ""        # all of its output so far
        self.errors = ""      # all of its error output so far
        self.position = 0     # up to where the output has been taken
        self._closed = False  # end of its output
        self._news = threading.Condition()
        self._readers = [
            threading.Thread(target=self._read_output, daemon=True),
            threading.Thread(target=self._read_errors, daemon=True),
        ]
        for reader in self._readers:
            reader.start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def _write(self, name, content):
        path = os.path.join(self.folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)

    def _read_output(self):
        while True:
            piece = os.read(self.process.stdout.fileno(), 65536)
            with self._news:
                self.text += piece.decode("latin-1")
                self._closed = not piece
                self._news.notify_all()
            if not piece:
                return

    def _read_errors(self):
        while True:
            piece = os.read(self.process.stderr.fileno(), 65536)
            if not piece:
                return
            self.errors += piece.decode("latin-1")

    # ---- talking ----

    def send(self, *lines):
        """Sends each line with a newline."""
        self.send_raw("".join(line + "\n" for line in lines))

    def send_raw(self, text):
        self.process.stdin.write(text.encode("latin-1"))
        self.process.stdin.flush()

    def end_input(self):
        self.process.stdin.close()

    def _wait(self, condition, what, patience):
        deadline = time.monotonic() + (patience or PATIENCE)
        with self._news:
            while True:
                found = condition()
                if found:
                    return found
                left = deadline - time.monotonic()
                if left <= 0 or self._closed:
                    state = "ended with %s" % self.process.poll() if self._closed else "is silent"
                    raise EngineError("waiting for %s, but the engine %s. It said:\n%s\n%s" % (
                        what, state, self.text[max(0, self.position - 2000):], self.errors))
                self._news.wait(left)

    def expect(self, pattern, patience=None):
        """Waits for a whole line that fits `pattern` from its start to its end. Returns the match; `skipped` then
        holds the lines before it."""
        wanted = re.compile(r"^(?:%s)\n" % pattern, re.MULTILINE)
        match = self._wait(lambda: wanted.search(self.text, self.position), repr(pattern), patience)
        self.skipped = self.text[self.position:match.start()].split("\n")[:-1]
        self.position = match.end()
        return match

    def expect_text(self, text, patience=None):
        """Waits for `text`, anywhere in a line. Returns what stood before it."""
        end = self._wait(lambda: self.text.find(text, self.position) + 1, repr(text), patience) - 1
        before = self.text[self.position:end]
        self.position = end + len(text)
        return before

    # ---- modes ----

    def xboard(self):
        """Enters the protocol; returns what was printed on entering, without the banner."""
        self.expect_text(BANNER)
        self.send("xboard", "ping 0")
        return self.expect_text("pong 0\n")

    def sync(self):
        """Waits until every line sent so far has been dealt with; returns the lines printed meanwhile. Not while
        the engine ponders or analyses, which drops the question."""
        self._pings = getattr(self, "_pings", 0) + 1
        self.send("ping %d" % self._pings)
        return self.expect_text("pong %d\n" % self._pings).split("\n")[:-1]

    def tell(self, *lines):
        """Sends lines of the protocol and returns the lines they led to."""
        self.send(*lines)
        return self.sync()

    def console(self):
        """Enters the console; returns what was printed on entering, without the banner and the prompt."""
        self.expect_text(BANNER)
        self.send("console")
        return self.expect_text(PROMPT)

    def ask(self, line):
        """Sends a line at the console's prompt and returns what is printed before the next prompt."""
        self.send(line)
        return self.expect_text(PROMPT)

    # ---- the process ----

    def thread_count(self):
        """Threads of the process at this moment (Linux)."""
        return len(os.listdir("/proc/%d/task" % self.process.pid))

    def wait_for_end_of_search(self, end=lambda: None, patience=None):
        """Waits until a search beside the input has ended by itself and the monitor alone is left. The monitor is
        asked for a sign of life first, which it gives as long as the search's time is not over; `end` then makes it
        end. Then asks the system again and again: nothing tells of the end."""
        self.send("time 2500")
        self.expect("#DEBUG time:2500", patience)
        end()
        deadline = time.monotonic() + (patience or PATIENCE)
        while self.thread_count() > OWN_THREADS + 1:
            if time.monotonic() > deadline:
                raise EngineError("still %d threads" % self.thread_count())
            time.sleep(0.005)

    def wait_for_end(self, patience=None):
        """Waits until the process has ended and all its output is here; returns its status."""
        status = self.process.wait(patience or PATIENCE)
        for reader in self._readers:
            reader.join(PATIENCE)
        return status

    def processor_seconds(self):
        """What all threads of the process have used so far (Linux)."""
        return time.clock_gettime(~self.process.pid << 3 | 2)

    def seconds_to_end(self, action, patience=None):
        """Does `action`, which ends the process, while the process is stopped. Returns the status and the processor time
        that the process then used to its end, which unlike the time on the wall tells nothing of the machine's other
        work."""
        pid = self.process.pid
        os.kill(pid, signal.SIGSTOP)
        os.waitid(os.P_PID, pid, os.WSTOPPED | os.WNOWAIT)
        before = self.processor_seconds()
        action()
        os.kill(pid, signal.SIGCONT)
        deadline = time.monotonic() + (patience or PATIENCE)
        while True:
            ended, status, usage = os.wait4(pid, os.WNOHANG)
            if ended:
                break
            if time.monotonic() > deadline:
                raise EngineError("the process does not end. It said:\n" + self.text[-2000:])
            time.sleep(0.005)
        self.process.returncode = os.waitstatus_to_exitcode(status)
        self.wait_for_end()
        return self.process.returncode, usage.ru_utime + usage.ru_stime - before

    def rest(self):
        """The output that has not been taken yet."""
        return self.text[self.position:]

    def quit(self):
        """Ends the input and returns the status."""
        self.end_input()
        return self.wait_for_end()

    def close(self):
        """Ends the process in whatever state it is."""
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        for reader in self._readers:
            reader.join(PATIENCE)
        for stream in (self.process.stdin, self.process.stdout, self.process.stderr):
            try:
                stream.close()
            except BrokenPipeError:
                pass
        self._folder.cleanup()
