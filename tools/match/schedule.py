"""Which games a match has, and their playing side by side.

Games come in pairs: both begin with the same opening, with the colours reversed. What is played follows from the place of
a game in the plan alone, so neither the number of jobs nor the order in which games end changes it."""

import collections
import queue
import sys
import threading

from match.engines import kill_all
from match.judge import play_game

# Place of a game: the opponent, the pair and the game of the pair, each from 0.
Task = collections.namedtuple("Task", "opponent pair leg")


def plan(opponents, games):
    """All games against so many opponents, pairs against each in turn, `games` against each."""
    return [Task(opponent, game // 2, game % 2)
            for first in range(0, games, 2) for opponent in range(opponents)
            for game in range(first, min(first + 2, games))]


class Match:
    """The first engine against each of the others."""

    def __init__(self, first, opponents, options, openings):
        self.first = first
        self.opponents = opponents
        self.options = options
        self.openings = openings
        self.stopping = threading.Event()
        self.ended = queue.SimpleQueue()  # (task, record) or (None, what is to be raised)

    def interrupt(self):
        """Ends play() by KeyboardInterrupt, after the games that have ended have been told of. For handlers of signals,
        which must not break in where a game is put on record."""
        self.ended.put((None, KeyboardInterrupt()))

    def play_task(self, task):
        return play_game([self.first, self.opponents[task.opponent]], self.options, self.openings.of_pair(task.pair),
                         2 * task.pair + task.leg)

    def play(self, tasks, jobs, on_game):
        """Plays the tasks, `jobs` at a time, and calls on_game(task, record) in this thread as each ends. Where that
        returns true, or something is raised, the games that are under way are broken off and forgotten."""
        # Of a thread that computes on the rules, those that take the times of the moves need not wait long.
        sys.setswitchinterval(0.0005)
        waiting = queue.SimpleQueue()
        for task in tasks:
            waiting.put(task)

        def work():
            while not self.stopping.is_set():
                try:
                    task = waiting.get_nowait()
                except queue.Empty:
                    return
                try:
                    record = self.play_task(task)
                except Exception as error:  # for the main thread to raise
                    record = error
                if not self.stopping.is_set():
                    self.ended.put((task, record))

        workers = [threading.Thread(target=work) for _ in range(jobs)]
        for worker in workers:
            worker.start()
        try:
            for _ in tasks:
                task, record = self.ended.get()
                if isinstance(record, BaseException):
                    raise record
                if on_game(task, record):
                    break
        finally:
            self.stopping.set()
            while any(worker.is_alive() for worker in workers):
                kill_all()
                for worker in workers:
                    worker.join(0.1)
