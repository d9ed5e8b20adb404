"""Ends games that both players think decided, by the scores that they tell with their moves."""

import dataclasses


@dataclasses.dataclass(frozen=True)
class Adjudication:
    """When a game is ended ahead of its end; 0 moves: never. Scores in hundredths of a pawn."""

    resign_moves: int = 0   # of each player in a row, at which it is ahead or behind by
    resign_score: int = 0   # so much at least
    draw_moves: int = 0  # of each player in a row, at which nobody is ahead by
    draw_score: int = 0  # more than this
    draw_from: int = 0   # the first move of a game, counted from 1, after which it may be drawn

    def outcome(self, scores, moves_played):
        """(result, reason), or None. `scores` are the lists of White's and of Black's, each from the player's own view
        with None for a move without a score; `moves_played` are those of both, the opening's with them."""
        white, black = scores
        if self._all(white, self.resign_moves, self._winning) and self._all(black, self.resign_moves, self._losing):
            return "1-0", "both scores, won"
        if self._all(white, self.resign_moves, self._losing) and self._all(black, self.resign_moves, self._winning):
            return "0-1", "both scores, won"
        if moves_played >= 2 * self.draw_from and all(self._all(own, self.draw_moves, self._even) for own in scores):
            return "1/2-1/2", "both scores, drawn"
        return None

    @staticmethod
    def _all(scores, moves, holds):
        last = scores[-moves:] if moves else []
        return bool(moves) and len(last) == moves and all(score is not None and holds(score) for score in last)

    def _winning(self, score):
        return score >= self.resign_score

    def _losing(self, score):
        return score <= -self.resign_score

    def _even(self, score):
        return abs(score) <= self.draw_score


def read_adjudication(resign_text, draw_text):
    """Of the texts "MOVES,SCORE" and "FROM,MOVES,SCORE", empty for never; raises ValueError."""
    resign_moves, resign_score = _numbers(resign_text, 2)
    draw_from, draw_moves, draw_score = _numbers(draw_text, 3)
    return Adjudication(resign_moves, resign_score, draw_moves, draw_score, draw_from)


def _numbers(text, count):
    if not text:
        return [0] * count
    numbers = [int(word) for word in text.split(",")]
    if len(numbers) != count or min(numbers) < 0 or 0 in numbers[:-1]:
        raise ValueError(text)
    return numbers
