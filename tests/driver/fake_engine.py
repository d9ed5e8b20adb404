"""A tiny engine of the xboard protocol or of UCI that plays the first legal move in alphabetical order and, if told so by
its argument, does one thing wrong: what the referee must notice. Some arguments make it another engine of that name:

weak NUMBER    resigns so many of a hundred games; which, is a matter of the opening and of its colour alone
old words      tells moves as engines once did, and sets up no positions
settings       tells what it was set up with
sees NUMBER    tells this score with each of its moves, as hundredths of a pawn or ("mate NUMBER") as moves to mate
slow start     needs a second and a half for a new game
thinks FILE    writes the number of its process into the file, thinks for ever, and outlives its pipe
"""

import os
import sys
import time
import zlib

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


def gives_up(game, fault):
    return fault.startswith("weak ") and zlib.crc32(" ".join(game.moves[:7]).encode()) % 100 < int(fault[5:])


def reply(game, fault):
    if fault.startswith("thinks "):
        with open(fault[len("thinks "):], "w", encoding="ascii") as file:
            file.write(str(os.getpid()))
        time.sleep(1000)
    if gives_up(game, fault):
        say("resign")
        return
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
    if fault.startswith("sees "):
        say(f"  7. {fault[5:]:>6} 12 3456 {move}")
    game.play(move)
    say(("My move is : " if fault == "old words" else "move ") + move + " ")
    announce(game, fault)


def uci_answer(game, fault):
    move = min(game.position.legal_moves())
    if len(game.moves) > 8:
        if fault == "illegal move":
            move = "a1a1"
        if fault == "odd line":
            say("Hint: e2e4")
        if fault == "late":
            time.sleep(1.5)
        if fault == "end":
            sys.exit(3)
    score = fault[5:] if fault.startswith("sees ") else "0"
    say(f"info depth 1 score {score if ' ' in score else 'cp ' + score} nodes 1 time 0 pv {move}")
    ahead = Game()
    for played in game.moves + [move]:
        ahead.play(played)
    replies = sorted(ahead.position.legal_moves())
    reply = "a1a1" if fault == "illegal reply" and len(game.moves) > 8 else (replies or [""])[0]
    say("bestmove " + move + (" ponder " + reply if reply else ""))


def speak_uci(fault):
    """The answer to "go ponder" waits for "ponderhit" or "stop"."""
    game, waiting = Game(), False
    for line in sys.stdin:
        words = line.split()
        if words[:1] == ["isready"]:
            say("readyok")
        elif words[:1] == ["position"]:
            game = Game()
            for move in words[3:]:
                game.play(move)
        elif words[:2] == ["go", "ponder"]:
            waiting = True
        elif words[:1] == ["go"] or (waiting and words[:1] in (["ponderhit"], ["stop"])):
            waiting = False
            uci_answer(game, fault)
        elif words[:1] == ["quit"]:
            return 4 if fault == "status" else 0
    return 0


def main():
    fault = sys.argv[1] if len(sys.argv) > 1 else ""
    name = fault if fault.split(" ")[0] in ("weak", "old", "sees", "settings", "slow", "thinks") else "tarvelmon 0.12"
    game, side = Game(), None
    for line in sys.stdin:
        word, _, rest = line.strip().partition(" ")
        if word == "uci":
            say("id name " + name)
            say("uciok")
            return speak_uci(fault)
        if word == "protover":
            say('feature ping=1 usermove=1 setboard=%d myname="%s" done=1' % (fault != "old words", name))
            if fault == "settings":
                with open("tarvelmon.ini", encoding="latin-1") as ini:
                    say("# " + ini.read().replace("\n", "|"))
        elif word == "new":
            game, side = Game(), False
            time.sleep(1.5 if fault == "slow start" else 0.0)
        elif word == "force":
            side = None
        elif word == "ping":
            say("pong " + rest)
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
