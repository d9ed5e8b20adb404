"""What the referee computes from the results of game pairs, against values worked by hand and against plain search."""

import math
import os
import random
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools"))
from match.statistics import (PAIR_SCORES, Sprt, elo_interval, elo_of_score, elo_text, expected_score,  # noqa: E402
                              likeliest, pair_counts)


def log_likelihood(shares, probabilities):
    return sum(share * math.log(probability) for share, probability in zip(shares, probabilities))


def found_by_search(shares, mean):
    """The likeliest distribution with that mean by plain trying: from the binomial one, which has the mean, weight is moved
    among three results at a time so that sum and mean stay, in ever smaller steps, as long as that makes it likelier."""
    best = [math.comb(4, i) * mean ** i * (1 - mean) ** (4 - i) for i in range(5)]
    step = 0.05
    while step > 1e-9:
        improved = False
        for i, j, k in ((0, 1, 2), (1, 2, 3), (2, 3, 4), (0, 2, 4), (0, 1, 4), (0, 3, 4)):
            # Weight from j to i and k leaves the mean where i takes what the distances say.
            far, near = PAIR_SCORES[k] - PAIR_SCORES[j], PAIR_SCORES[j] - PAIR_SCORES[i]
            for sign in (step, -step):
                tried = best[:]
                tried[j] -= sign
                tried[i] += sign * far / (far + near)
                tried[k] += sign * near / (far + near)
                if min(tried) > 0 and log_likelihood(shares, tried) > log_likelihood(shares, best):
                    best, improved = tried, True
        if not improved:
            step /= 2
    return best


class Elo(unittest.TestCase):
    def test_a_score_of_ten_elevenths_is_400_elo(self):
        self.assertAlmostEqual(elo_of_score(10 / 11), 400.0)
        self.assertAlmostEqual(expected_score(400), 10 / 11)
        self.assertAlmostEqual(elo_of_score(expected_score(-37.5)), -37.5)
        self.assertEqual(elo_of_score(1.0), math.inf)
        self.assertEqual(elo_of_score(0.0), -math.inf)

    def test_only_whole_pairs_count_and_by_their_points(self):
        points = {(0, 0): 0.0, (0, 1): 0.0, (1, 0): 0.5, (1, 1): 0.0, (2, 0): 1.0, (2, 1): 0.0, (3, 0): 0.5, (3, 1): 0.5,
                  (4, 0): 1.0, (4, 1): 0.5, (5, 0): 1.0, (5, 1): 1.0, (6, 0): 1.0, (7, 1): 1.0}
        self.assertEqual(pair_counts(points), [1, 1, 2, 1, 1])

    def test_the_interval_is_that_worked_by_hand(self):
        # 100 pairs: mean (0*10 + 20/4 + 40/2 + 20*3/4 + 10)/100 = 0.5; variance (2*10*0.25 + 2*20*0.0625)/100 = 0.075;
        # error 1.959964*sqrt(0.075/100) = 0.053676, so the bounds are the Elo of 0.446324 and 0.553676: 37.442.
        elo, low, high = elo_interval([10, 20, 40, 20, 10])
        self.assertAlmostEqual(elo, 0.0)
        self.assertAlmostEqual(high, 37.442, places=3)
        self.assertAlmostEqual(low, -high)
        self.assertEqual(elo_text([10, 20, 40, 20, 10]), "+0 ± 37")

    def test_pairs_that_ended_alike_have_no_error(self):
        self.assertEqual(elo_text([0, 0, 0, 3, 0]), "+191")  # three of four points: 400*log10(3)
        self.assertEqual(elo_text([0, 0, 0, 0, 2]), "+inf")
        self.assertEqual(elo_text([0, 0, 0, 0, 0]), "-")


class TestOfStrength(unittest.TestCase):
    def test_the_bounds_are_those_of_wald(self):
        # ln(0.95/0.05) = 2.944439; with errors of 0.1 and 0.02: ln(0.02/0.9) = -3.806662, ln(0.98/0.1) = 2.282382.
        self.assertAlmostEqual(Sprt(0, 5).upper, 2.944439, places=6)
        self.assertAlmostEqual(Sprt(0, 5).lower, -2.944439, places=6)
        self.assertAlmostEqual(Sprt(0, 5, 0.1, 0.02).lower, -3.806662, places=6)
        self.assertAlmostEqual(Sprt(0, 5, 0.1, 0.02).upper, 2.282382, places=6)

    def test_the_likeliest_distribution_is_the_one_that_search_finds(self):
        chance = random.Random(17)
        for _ in range(12):
            weights = [chance.random() + 0.02 for _ in PAIR_SCORES]
            shares = [weight / sum(weights) for weight in weights]
            mean = chance.uniform(0.3, 0.7)
            by_formula, by_search = likeliest(shares, mean), found_by_search(shares, mean)
            self.assertAlmostEqual(sum(by_formula), 1.0)
            self.assertAlmostEqual(sum(p * s for p, s in zip(by_formula, PAIR_SCORES)), mean)
            for one, other in zip(by_formula, by_search):
                self.assertAlmostEqual(one, other, places=4)

    def test_the_ratio_is_that_of_the_distributions_that_search_finds(self):
        for counts in ([10, 20, 40, 25, 15], [3, 50, 200, 61, 4], [1, 2, 3, 4, 5]):
            sprt, total = Sprt(0, 10), sum(counts)
            shares = [count / total for count in counts]
            best = [found_by_search(shares, expected_score(elo)) for elo in (0, 10)]
            expected = total * (log_likelihood(shares, best[1]) - log_likelihood(shares, best[0]))
            self.assertAlmostEqual(sprt.llr(counts), expected, places=4)

    def test_where_wins_and_losses_are_all_the_ratio_is_that_of_two_coins(self):
        # With pairs won or lost alone the likeliest distribution has no freedom: 60 ln(s1/s0) + 40 ln((1-s1)/(1-s0)).
        sprt = Sprt(0, 50)
        s1 = expected_score(50)
        expected = 60 * math.log(s1 / 0.5) + 40 * math.log((1 - s1) / 0.5)
        self.assertAlmostEqual(sprt.llr([40, 0, 0, 0, 60]), expected, places=2)

    def test_the_ratio_counts_nothing_halfway_between_the_bounds(self):
        self.assertAlmostEqual(Sprt(-5, 5).llr([10, 20, 40, 20, 10]), 0.0)
        self.assertEqual(Sprt(0, 5).llr([0] * 5), 0.0)
        self.assertAlmostEqual(Sprt(0, 5).llr([10, 20, 40, 25, 15]), -Sprt(-5, 0).llr([15, 25, 40, 20, 10]))

    def test_it_seldom_decides_wrongly(self):
        chance = random.Random(5)
        sprt = Sprt(0, 60)
        for elo, right in ((0, "H0"), (60, "H1")):
            shares = likeliest([0.1, 0.2, 0.4, 0.2, 0.1], expected_score(elo))
            wrong, runs = 0, 60
            for _ in range(runs):
                counts = [0] * 5
                while sprt.verdict(counts) is None:
                    self.assertLess(sum(counts), 3000)
                    counts[chance.choices(range(5), shares)[0]] += 1
                wrong += sprt.verdict(counts) != right
            self.assertLess(wrong, 10)  # 3 are to be expected

    def test_bounds_that_make_no_test_are_refused(self):
        for numbers in ((5, 0), (0, 0), (0, 5, 0.0, 0.05), (0, 5, 0.5, 0.5)):
            with self.assertRaises(ValueError):
                Sprt(*numbers)


if __name__ == "__main__":
    unittest.main()
