"""A tiny xboard engine that plays the first legal move in alphabetical order and, if told so by its argument, does one
thing wrong: what the referee must notice."""

import sys
import time

from chess_rules import Game


def say(line):
    print(line, flush=True)


def announce(game, fault):
    if game.is_checkmate():
        say(game.mate_result() + (" {White mates}" if game.mate_result() == "1-0" else " {Black mates}"))
        return True
    if game.is_stalemate():
        say("1/2-1/2 {Stalemate}")
        return True
    if fault == "false result" and len(game.moves) > 8:
        say("1/2-1/2 {Draw by repetition}")
    return False


def reply(game, fault):
    if len(game.moves) > 8:
        if fault == "illegal move":
            say("move a1a1")
            return
        if fault == "error line":
            say("Error (unknown command): level")
        if fault == "late":
            time.sleep(1.5)
        if fault == "end":
            sys.exit(3)
    say("#DEBUG moves: 1 move speed: 20  allocated time: 10")
    move = min(game.position.legal_moves())
    game.play(move)
    say("move " + move + " ")
    announce(game, fault)


def main():
    fault = sys.argv[1] if len(sys.argv) > 1 else ""
    game, side = Game(), None
    for line in sys.stdin:
        word, _, rest = line.strip().partition(" ")
        if word == "protover":
            say('feature ping=1 usermove=1 setboard=1 myname="tarvelmon 0.12" done=1')
        elif word == "new":
            game, side = Game(), False
        elif word == "force":
            side = None
        elif word == "go":
            side = game.position.white
            reply(game, fault)
        elif word == "usermove":
            game.play(rest)
            if not announce(game, fault) and side == game.position.white:
                reply(game, fault)
        elif word == "quit":
            return 4 if fault == "status" else 0
    return 0


if __name__ == "__main__":
    sys.exit(main())
