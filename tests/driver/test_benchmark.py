"""The console's "perft": the benchmark at full depth, its counts and its report."""

import re
import unittest

from engine import Engine

EXPECTED = (119060324, 193690690, 178633661, 706045033, 53392, 164075551)


class Benchmark(unittest.TestCase):
    def test_the_counts_are_right_and_the_last_position_stays(self):
        with Engine() as engine:
            engine.console()
            engine.send("perft")
            output = engine.expect_text("\ntarvelmon> ", 1800)
            report = "Running benchmark. . .\n" + "".join(
                "Expected value:         %10d\nCalculated value:       %10d\n\n" % (count, count) for count in EXPECTED)
            self.assertEqual(output[:len(report)], report)
            self.assertRegex(output[len(report):],
                             r"^\nTotal nodes:            1361558651 \nRaw nodes per second:   +\d+\n"
                             r"Total elapsed time:     +\d+\.\d\d\n$")
            board = engine.ask("b")
            self.assertIn("8 | t |   |   |   |   | t | r |   |\n", board)
            self.assertIsNotNone(re.search(r"New method  Hash key", engine.ask("hash")))


if __name__ == "__main__":
    unittest.main()
