"""What came of the games: points by opponent, and what the referee has noticed."""

import collections

from match.schedule import Task
from match.statistics import elo_text, pair_counts

HEADINGS = ("opponent", "games", "won", "drawn", "lost", "points", "%", "Elo", "LL", "LD", "DD/WL", "WD", "WW")


class Score:
    """The first engine's results against one opponent."""

    def __init__(self):
        self.name = ""
        self.points = {}  # by (pair, leg)

    def add(self, task, record):
        whites_points = {"1-0": 1.0, "0-1": 0.0}.get(record.result, 0.5)
        self.points[task.pair, task.leg] = whites_points if task.leg == 0 else 1.0 - whites_points
        self.name = record.black if task.leg == 0 else record.white

    def count(self, points):
        return sum(value == points for value in self.points.values())

    def total(self):
        return sum(self.points.values())

    def pairs(self):
        return pair_counts(self.points)

    def row(self):
        """The cells of the table."""
        return _row(self.name, [self.count(points) for points in (1.0, 0.5, 0.0)], self.pairs())

    def line(self):
        """The same for one line of running text."""
        won, drawn, lost = (self.count(points) for points in (1.0, 0.5, 0.0))
        return (f"against {self.name}: games {len(self.points)} +{won} ={drawn} -{lost}, points {self.total():.1f} "
                f"({100 * self.total() / len(self.points):.1f} %), Elo {elo_text(self.pairs())}, "
                f"pairs {' '.join(str(count) for count in self.pairs())}")


def _row(name, counts, pairs):
    games = sum(counts)
    points = counts[0] + counts[1] / 2
    return [name, *(str(number) for number in (games, *counts)), f"{points:.1f}", f"{100 * points / games:.1f}",
            elo_text(pairs), *(str(count) for count in pairs)]


class Tally:
    """What came of all games."""

    def __init__(self):
        self.scores = collections.defaultdict(Score)
        self.first = ""
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

    def add(self, task, record):
        self.scores[task.opponent].add(task, record)
        self.first = record.white if task.leg == 0 else record.black
        if record.fault:
            (self.our_faults if record.fault_is_ours else self.other_faults).append((task, str(record.fault)))
        winner = {"1-0": record.white, "0-1": record.black}.get(record.result, "draw")
        self.results[winner] += 1
        self.reasons[record.reason if not record.fault else "a fault"] += 1
        self.plies += len(record.moves)
        self.ponder_searches += record.ponder_searches
        self.untrue_claims += record.untrue_claims
        self.unannounced += record.unannounced
        if record.borrowed > 0:
            self.borrowers.append(record.borrowed)
        for name, seconds in record.overruns.items():
            self.overruns[name] = max(self.overruns[name], seconds)

    def table(self):
        """Points by opponent, and of all when there are several."""
        scores = [self.scores[opponent] for opponent in sorted(self.scores)]
        rows = [list(HEADINGS)] + [score.row() for score in scores]
        if len(scores) > 1:
            rows.append(_row("all", [sum(score.count(points) for score in scores) for points in (1.0, 0.5, 0.0)],
                             [sum(counts) for counts in zip(*(score.pairs() for score in scores))]))
        widths = [max(len(row[column]) for row in rows) for column in range(len(HEADINGS))]
        lines = ["  ".join([row[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])])
                 for row in rows]
        return "\n".join([f"{self.first} (W: it won a game of the pair, D: drew, L: lost)"] + lines)

    def report(self):
        lines = [self.table()] if self.scores else []
        lines += [f"games {sum(self.results.values())}, plies {self.plies}"]
        lines += [f"ended by {reason}: {count}" for reason, count in self.reasons.most_common()]
        lines += [f"longest overrun of a budget, {name}: {seconds * 1000:.0f} ms"
                  for name, seconds in self.overruns.items() if seconds > 0]
        if self.borrowers:
            lines.append(f"games in which a clock ran over within the margin: {len(self.borrowers)}, "
                         f"by {max(self.borrowers) * 1000:.0f} ms at the most")
        lines += [f"{words}: {count}" for words, count in (
            ("ponder searches", self.ponder_searches),
            ("draws claimed by count that the laws do not see", self.untrue_claims),
            ("ends not announced while pondering", self.unannounced)) if count]
        lines.append(f"faults of tarvelmon: {len(self.our_faults)}, of others: {len(self.other_faults)}")
        lines += [f"{place(task)}: {text}" for task, text in self.our_faults + self.other_faults]
        return "\n".join(lines)


def place(task: Task):
    """How the output names a game: opponent, pair and game of the pair, from 1."""
    return f"game {task.opponent + 1}.{task.pair + 1}.{task.leg + 1}"
