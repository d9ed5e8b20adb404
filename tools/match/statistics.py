"""What the results of game pairs say of strength: Elo with its error, and the sequential probability ratio test.

A pair of games with one opening has five results: 0, 1/2, 1, 3/2 or 2 points ("pentanomial"). The games of a pair depend
on each other by their opening, pairs do not; so errors and likelihoods are those of pairs. Elo is logistic: d Elo mean an
expected score of 1 / (1 + 10^(-d/400)) a game."""

import math

PAIR_SCORES = (0.0, 0.25, 0.5, 0.75, 1.0)  # points of a pair by game
NORMAL_95 = 1.959964
# What is taken for the number of pairs of a result that has not come up: none would forbid it.
UNSEEN = 1e-3


def pair_counts(points):
    """How many pairs ended with each result, of points by (pair, leg); a pair counts when both games have ended."""
    counts = [0] * 5
    for (pair, leg), first in points.items():
        if leg == 0 and (pair, 1) in points:
            counts[int(2 * (first + points[pair, 1]))] += 1
    return counts


def expected_score(elo):
    return 1.0 / (1.0 + 10.0 ** (-elo / 400.0))


def elo_of_score(score):
    if score <= 0.0 or score >= 1.0:
        return math.copysign(math.inf, score - 0.5)
    return -400.0 * math.log10(1.0 / score - 1.0)


def elo_interval(counts):
    """(Elo, its lower and its upper bound at 95 %) of the pairs; None without pairs."""
    total = sum(counts)
    if total == 0:
        return None
    mean = sum(count * score for count, score in zip(counts, PAIR_SCORES)) / total
    variance = sum(count * (score - mean) ** 2 for count, score in zip(counts, PAIR_SCORES)) / total
    error = NORMAL_95 * math.sqrt(variance / total)
    return elo_of_score(mean), elo_of_score(mean - error), elo_of_score(mean + error)


def elo_text(counts):
    """Elo and half the width of its interval; the width is left out where all pairs ended alike and tell nothing of it."""
    interval = elo_interval(counts)
    if interval is None:
        return "-"
    text = f"{round(interval[0]):+d}" if math.isfinite(interval[0]) else f"{interval[0]:+}"
    if max(counts) == sum(counts):
        return text
    return f"{text} ± {(interval[2] - interval[1]) / 2:.0f}"


def likeliest(shares, mean):
    """The distribution over PAIR_SCORES with the given mean under which the observed shares, all above 0, are likeliest.

    By Lagrange it is shares / (1 + t (score - mean)), with the t at which its mean is right."""
    def excess(t):
        return sum(share * (score - mean) / (1.0 + t * (score - mean)) for share, score in zip(shares, PAIR_SCORES))

    low, high = -1.0 / (1.0 - mean), 1.0 / mean  # where one of the probabilities grows beyond all bounds
    for _ in range(100):
        middle = (low + high) / 2
        if excess(middle) > 0.0:
            low = middle
        else:
            high = middle
    return [share / (1.0 + low * (score - mean)) for share, score in zip(shares, PAIR_SCORES)]


class Sprt:
    """The generalised sequential probability ratio test of H0, "the difference is elo0", against H1, "it is elo1"."""

    def __init__(self, elo0, elo1, alpha=0.05, beta=0.05):
        if not (elo0 < elo1 and 0 < alpha < 1 and 0 < beta < 1 and alpha + beta < 1):
            raise ValueError("wants elo0 below elo1 and errors above 0 that make less than 1")
        self.elo0, self.elo1 = elo0, elo1
        self.lower = math.log(beta / (1.0 - alpha))
        self.upper = math.log((1.0 - beta) / alpha)

    def llr(self, counts):
        """The logarithm of the likelihood ratio: how much likelier the pairs are under the likeliest distribution with
        the mean of elo1 than under that with the mean of elo0."""
        if sum(counts) == 0:
            return 0.0
        counts = [count or UNSEEN for count in counts]
        shares = [count / sum(counts) for count in counts]
        under0, under1 = (likeliest(shares, expected_score(elo)) for elo in (self.elo0, self.elo1))
        return sum(count * math.log(one / zero) for count, one, zero in zip(counts, under1, under0))

    def verdict(self, counts):
        """"H0", "H1", or None while neither bound is reached."""
        llr = self.llr(counts)
        return "H1" if llr >= self.upper else "H0" if llr <= self.lower else None

    def state_text(self, counts):
        return f"LLR {self.llr(counts):+.2f} ({self.lower:+.2f}, {self.upper:+.2f}) of Elo {self.elo0:g} or {self.elo1:g}"

    def verdict_text(self, counts):
        words = {"H1": f"H1 accepted: Elo {self.elo1:g} rather than {self.elo0:g}",
                 "H0": f"H0 accepted: Elo {self.elo0:g} rather than {self.elo1:g}",
                 None: "undecided"}[self.verdict(counts)]
        return f"SPRT: {words}; {self.state_text(counts)} after {sum(counts)} pairs"
