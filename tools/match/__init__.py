"""What tools/referee.py is made of: engines, players, judge, openings, game scores, statistics, the plan of a match."""

import os
import sys

# The scripts' own rules of chess.
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tests", "driver"))
