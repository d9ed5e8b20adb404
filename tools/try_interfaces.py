#!/usr/bin/env python3
"""Drives real chess interfaces with tarvelmon-gui on a display of its own and leaves pictures.

    tools/try_interfaces.py build/companions/gui/tarvelmon-gui FOLDER [xboard gnome-chess pychess scid]

The Debian packages xboard, gnome-chess, pychess, scid, xvfb, openbox, wmctrl, xdotool and imagemagick are installed where
they are missing (as root). FOLDER gets the pictures and the logs. What the engine was told and said is checked; the
pictures are there to be looked at. Exit status 0 if every check held.
"""

import argparse
import hashlib
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "driver"))
from chess_rules import Game  # noqa: E402

PACKAGES = {
    "xboard": "xboard", "gnome-chess": "gnome-chess", "pychess": "pychess", "scid": "scid", "Xvfb": "xvfb",
    "openbox": "openbox", "wmctrl": "wmctrl", "xdotool": "xdotool", "import": "imagemagick", "dbus-launch": "dbus-x11",
}
INI = "[ENGINE]\nHashSize=64\nPawnHashSize=16\n[BOOK]\nBook=0\n[TABLEBASE]\nSyzygy=0\n"


def install_missing():
    os.environ["PATH"] += ":/usr/games"
    missing = [package for program, package in PACKAGES.items() if not shutil.which(program)]
    if missing:
        subprocess.run(["apt-get", "install", "-y", "--no-install-recommends", *missing], check=True,
                       env={**os.environ, "DEBIAN_FRONTEND": "noninteractive"}, stdout=subprocess.DEVNULL)


class Desk:
    """A display with a window manager, a home of its own, and a folder for the engine."""

    def __init__(self, shots, size="1000x600"):
        self.shots = os.path.abspath(shots)
        os.makedirs(self.shots, exist_ok=True)
        self.home = tempfile.mkdtemp(prefix="tarvelmon-home-")
        with open(os.path.join(self.home, "tarvelmon.ini"), "w", encoding="ascii") as ini:
            ini.write(INI)
        number = next(n for n in range(60, 90) if not os.path.exists("/tmp/.X11-unix/X%d" % n))
        self.environment = {**os.environ, "DISPLAY": ":%d" % number, "HOME": self.home, "LC_ALL": "C.UTF-8",
                            "GSETTINGS_BACKEND": "memory", "NO_AT_BRIDGE": "1"}
        self.processes = [subprocess.Popen(["Xvfb", ":%d" % number, "-screen", "0", size + "x24", "-nolisten", "tcp"],
                                           stderr=subprocess.DEVNULL)]
        time.sleep(2)
        self.start("openbox")
        time.sleep(1)

    def start(self, *command):
        log = open(os.path.join(self.shots, os.path.basename(command[0]) + ".log"), "w", encoding="utf-8")
        process = subprocess.Popen(command, cwd=self.home, env=self.environment, stdout=log, stderr=log)
        self.processes.append(process)
        return process

    def close(self):
        for process in reversed(self.processes):
            process.terminate()
            try:
                process.wait(10)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        shutil.rmtree(self.home, ignore_errors=True)

    def run(self, *command):
        return subprocess.run(command, env=self.environment, stdout=subprocess.PIPE, text=True, check=False).stdout

    def click(self, x, y, button=1):
        self.run("xdotool", "mousemove", str(x), str(y), "sleep", "0.1", "click", str(button))

    def key(self, *keys):
        self.run("xdotool", "key", "--delay", "60", *keys)

    def type(self, text):
        self.run("xdotool", "type", "--delay", "25", text)

    def place(self, name, x, y):
        """Moves the first window whose title holds `name`, for which it waits; returns the window."""
        for _ in range(100):
            for line in self.run("wmctrl", "-l").splitlines():
                if name in line.split(None, 3)[-1]:
                    window = line.split()[0]
                    self.run("wmctrl", "-i", "-r", window, "-e", "0,%d,%d,-1,-1" % (x, y))
                    self.run("wmctrl", "-i", "-a", window)
                    time.sleep(0.3)
                    return window
            time.sleep(0.2)
        return None

    def shot(self, name):
        self.run("import", "-window", "root", "+dither", "-colors", "32", "PNG8:" + os.path.join(self.shots, name + ".png"))


class Wrapped:
    """The engine behind a script that keeps what is said: for interfaces without a log of their own."""

    def __init__(self, desk, engine):
        self.log = os.path.join(desk.shots, "conversation.log")
        open(self.log, "w", encoding="utf-8").close()
        self.path = os.path.join(desk.home, "tarvelmon-gui")
        with open(self.path, "w", encoding="ascii") as script:
            script.write("#!/bin/sh\ncd %s\ntee -a %s.in | %s | tee -a %s.out\n" % (
                desk.home, self.log, os.path.abspath(engine), self.log))
        os.chmod(self.path, 0o755)
        for name in (".in", ".out"):
            open(self.log + name, "w", encoding="utf-8").close()

    def told(self):
        return read(self.log + ".in")

    def said(self):
        return read(self.log + ".out")


def read(path):
    with open(path, encoding="utf-8", errors="replace") as file:
        return file.read()


def wait_for(what, condition, seconds=30):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.2)
    raise AssertionError("no " + what)


def check(held, what):
    print(("ok      " if held else "FAILED  ") + what, flush=True)
    if not held:
        raise AssertionError(what)


# ---- xboard -----------------------------------------------------------------------------------------------------------

class Xboard:
    """xboard with its own log of the conversation, its board at the left of the screen."""

    def __init__(self, desk, engine, name, *options):
        self.desk = desk
        self.log = os.path.join(desk.shots, name + ".debug")
        self.process = desk.start(
            "xboard", "-fcp", os.path.abspath(engine), "-fd", desk.home, "-debug", "-nameOfDebugFile", self.log,
            "-size", "Small", "-saveSettingsOnExit", "false", "-popupMoveErrors", "true", "-popupExitMessage", "false",
            *options)
        wait_for("ready xboard", lambda: "ping 1" in self.text() and "pong 1" in self.text())
        self.window = desk.place("xboard", 0, 0)
        time.sleep(0.5)

    def key(self, *keys):
        self.desk.run("wmctrl", "-i", "-a", self.window)
        time.sleep(0.3)
        self.desk.key(*keys)
        time.sleep(0.5)

    def text(self):
        return read(self.log) if os.path.exists(self.log) else ""

    def moves(self):
        """The engine's moves so far."""
        return re.findall(r"<first : move (\S+)", self.text())

    def told(self):
        """What was sent to the engine, a line each; commands come in two pieces."""
        return re.sub(r"usermove \d+ >first : ", "usermove ", "\n".join(
            re.findall(r">first : (.*)", self.text().replace("usermove \n", "usermove "))))

    def square(self, name):
        return 23 + 41 * (ord(name[0]) - 97), 123 + 41 * (8 - int(name[1]))

    def play(self, move):
        self.desk.click(*self.square(move[:2]))
        time.sleep(0.3)
        self.desk.click(*self.square(move[2:4]))
        time.sleep(0.5)

    def button(self, name):
        self.desk.click({"back": 578 - 333, "forward": 619 - 333}[name], 150 - 64)
        time.sleep(1.0)

    def answered(self, count):
        wait_for("move %d of the engine" % count, lambda: len(self.moves()) >= count, 60)
        return self.moves()[-1]

    def no_complaint(self):
        bad = re.findall(r"<first : (Error.*|Illegal.*|tellusererror.*)", self.text())
        check(bad == [], "the engine complained of nothing %s" % bad)

    def quit(self):
        self.process.terminate()
        self.process.wait()


def try_xboard_analysis(desk, engine):
    board = Xboard(desk, engine, "xboard-analysis", "-mode", "analysis")
    desk.place("tarvelmon", 380, 0)
    desk.place("xboard", 0, 0)
    game = Game()
    for move in "e2e4 e7e5 g1f3 b8c6 f1b5 a7a6 b5a4 g8f6 e1g1 f8e7".split():
        board.play(move)
        game.play(move)
        time.sleep(1.0)
    sent = re.findall(r"usermove (\S+)", board.told())
    check(sent == game.moves, "ten moves reach the engine in analysis: %s" % sent)
    time.sleep(2)
    desk.shot("xboard-analysis")
    for _ in range(3):
        board.button("back")
    check(board.told().count("undo") == 3, "three takebacks in analysis")
    wait_for("thinking after the takebacks", lambda: re.search(r"<first : +6 ", board.text().rsplit("undo", 1)[-1]))
    wait_for("status lines", lambda: "<first : stat01: " in board.text().rsplit("undo", 1)[-1])
    check(True, "status lines are answered")
    check(board.moves() == [], "no move of the engine in analysis")
    board.no_complaint()
    board.quit()


def try_xboard_game(desk, engine):
    board = Xboard(desk, engine, "xboard-game", "-tc", "2", "-inc", "2", "-showThinking", "true")
    game = Game()
    for number in range(4):
        move = next(m for m in ("e2e4", "g1f3", "d2d4", "b1c3", "f1e2", "a2a3", "h2h3", "b2b3", "g2g3")
                    if m in game.position.legal_moves())
        game.play(move)
        board.play(move)
        reply = board.answered(number + 1)
        check(game.play(reply), "legal answer " + reply)
    wait_for("pondering", lambda: "Hint: " in board.text())
    check(True, "it ponders")
    time.sleep(1)
    desk.shot("xboard-game")
    board.key("ctrl+x")  # Retract Move
    wait_for("remove", lambda: "remove" in board.told())
    earlier = game.moves[:-2]
    game = Game()
    for move in earlier:
        game.play(move)
    move = next(m for m in ("h2h4", "a2a4", "g2g4", "h2h3") if m in game.position.legal_moves())
    before = len(board.moves())
    board.play(move)
    game.play(move)
    reply = board.answered(before + 1)
    check(game.play(reply), "after Retract Move it answers " + reply)
    board.key("ctrl+w")  # Machine White
    reply = board.answered(before + 2)
    check(game.play(reply), "Machine White moves " + reply)
    board.key("ctrl+e")  # Edit Game
    board.key("ctrl+b")  # Machine Black
    reply = board.answered(before + 3)
    check(game.play(reply), "Machine Black moves " + reply)
    board.no_complaint()
    board.quit()


def try_xboard_move_now(desk, engine):
    board = Xboard(desk, engine, "xboard-move-now", "-st", "60", "-showThinking", "true")
    board.play("e2e4")
    wait_for("thinking", lambda: re.search(r"<first : +6 ", board.text()))
    begun = time.monotonic()
    board.key("ctrl+m")  # Move Now
    board.answered(1)
    check(time.monotonic() - begun < 10, "Move Now moves at once")
    board.no_complaint()
    board.quit()


def try_xboard_load(desk, engine):
    path = os.path.join(desk.home, "game.pgn")
    with open(path, "w", encoding="ascii") as file:
        file.write('[White "A"]\n[Black "B"]\n[Result "*"]\n\n1. e4 c5 2. Nf3 d6 3. d4 cxd4 4. Nxd4 Nf6 5. Nc3 a6 *\n')
    board = Xboard(desk, engine, "xboard-load", "-loadGameFile", path, "-td", "0.2", "-st", "0:01")
    wait_for("the loaded moves", lambda: "usermove a7a6" in board.told())
    time.sleep(1)
    board.key("ctrl+w")
    reply = board.answered(1)
    game = Game()
    for move in "e2e4 c7c5 g1f3 d7d6 d2d4 c5d4 f3d4 g8f6 b1c3 a7a6".split():
        game.play(move)
    check(game.play(reply), "a loaded game goes on with " + reply)
    board.no_complaint()
    board.quit()


def try_xboard_edit(desk, engine):
    board = Xboard(desk, engine, "xboard-edit", "-st", "0:01")
    board.key("ctrl+shift+e")  # Edit Position
    time.sleep(1)
    # A man is dragged from the board and dropped beside it: White gives a queen's rook.
    x, y = board.square("a1")
    desk.run("xdotool", "mousemove", str(x), str(y), "mousedown", "1", "mousemove", str(x + 10), str(y - 45),
             "mousemove", "450", str(y), "mouseup", "1")
    time.sleep(1)
    desk.shot("xboard-edit")
    board.key("ctrl+w")
    reply = board.answered(1)
    position = re.findall(r"setboard (.*)", board.told())
    check(position != [] and "/1NBQKBNR w" in position[-1], "Edit Position reaches the engine: %s" % position)
    check(reply in Game(position[-1]).position.legal_moves(), "and it moves there: " + reply)
    board.no_complaint()
    board.quit()


def try_xboard(engine, shots):
    for part in (try_xboard_load, try_xboard_edit, try_xboard_analysis, try_xboard_game, try_xboard_move_now):
        desk = Desk(shots)
        try:
            part(desk, engine)
        finally:
            desk.close()


# ---- GNOME Chess ------------------------------------------------------------------------------------------------------

GNOME_ENGINES = """[Tarvelmon]
protocol={protocol}
binary={binary}
delay-before-move=0
option-easy-0=sd 4
option-normal-0=sd 6
option-hard-0=hard
uci-go-option-easy-0=depth 4
uci-go-option-normal-0=depth 6
"""
QUIET_MOVES = ("e2e4", "g1f3", "d2d3", "b1c3", "f1e2", "a2a3", "h2h3", "b2b3", "g2g3", "c1d2", "e2d1", "a1b1", "h1g1")


def play_against(engine_moves, play, count):
    """Plays `count` quiet moves and takes the answers, which must be legal. `engine_moves()` are all of them so far."""
    game = Game()
    for number in range(count):
        move = next(m for m in QUIET_MOVES if m in game.position.legal_moves())
        game.play(move)
        play(move)
        answers = wait_for("answer to " + move, lambda: engine_moves()[number:number + 1], 60)
        check(game.play(answers[0]), "legal answer to %s: %s" % (move, answers[0]))
        time.sleep(1.0)
    return game


def try_gnome_chess(engine, shots):
    for protocol, pattern in (("cecp", r"(?m)^move (\S+)"), ("uci", r"(?m)^bestmove (\S+)")):
        desk = Desk(shots)
        try:
            wrapped = Wrapped(desk, engine)
            folder = os.path.join(desk.home, ".config", "gnome-chess")
            os.makedirs(folder)
            with open(os.path.join(folder, "engines.conf"), "w", encoding="ascii") as file:
                file.write(GNOME_ENGINES.format(protocol=protocol, binary=wrapped.path))
            desk.start("dbus-run-session", "--", "gnome-chess")
            desk.place("White to Move", 0, 0)
            time.sleep(3)

            def play(move):
                for square in (move[:2], move[2:4]):
                    desk.click(182 + 48 * (ord(square[0]) - 97), 106 + 48 * (8 - int(square[1])))
                    time.sleep(0.5)

            play_against(lambda: re.findall(pattern, wrapped.said()), play, 5)
            desk.shot("gnome-chess-" + protocol)
            check(not re.search(r"(?m)^(Error|Illegal)", wrapped.said()), "no complaint over " + protocol)
        finally:
            desk.close()


# ---- PyChess ----------------------------------------------------------------------------------------------------------

GAME = ('[White "A"]\n[Black "B"]\n[Result "*"]\n\n'
        "1. e4 c5 2. Nf3 d6 3. d4 cxd4 4. Nxd4 Nf6 5. Nc3 a6 *\n")


def try_pychess(engine, shots):
    for protocol in ("uci", "xboard"):
        desk = Desk(shots)
        try:
            wrapped = Wrapped(desk, engine)
            folder = os.path.join(desk.home, ".config", "pychess")
            os.makedirs(folder)
            with open(os.path.join(folder, "engines.json"), "w", encoding="ascii") as file:
                json.dump([{"name": "tarvelmon", "protocol": protocol, "command": wrapped.path, "recheck": True,
                            "workingDirectory": desk.home, "country": "unknown", "comment": "", "level": 20}], file)
            with open(wrapped.path, "rb") as file:
                fingerprint = hashlib.md5(file.read()).hexdigest()
            with open(os.path.join(folder, "config"), "w", encoding="ascii") as file:
                file.write("[General]\nshow_tip_at_startup = False\ndont_show_externals_at_startup = True\n"
                           "analyzer_check = True\nana_combobox = %s\n" % fingerprint)
            game = os.path.join(desk.home, "game.pgn")
            with open(game, "w", encoding="ascii") as file:
                file.write(GAME)
            desk.start("dbus-run-session", "--", "pychess", game)
            desk.place("PyChess", 0, 0)
            time.sleep(20)
            desk.run("xdotool", "mousemove", "150", "168", "sleep", "0.3", "click", "--repeat", "2", "--delay", "80", "1")
            desk.place("Enter Game", 0, 0)
            desk.click(527, 425)  # Start Game
            thought = r"(?m)^ *6 +-?\d+ .*" if protocol == "xboard" else r"(?m)^info depth 6 score .*"
            wait_for("analysis over " + protocol, lambda: re.search(thought, wrapped.said()), 60)
            desk.click(60, 325)  # the tab of the hints
            time.sleep(4)
            desk.shot("pychess-" + protocol)
            check(True, "PyChess analyses over " + protocol)
            check(not re.search(r"(?m)^(Error|Illegal)", wrapped.said()), "no complaint over " + protocol)
        finally:
            desk.close()


# ---- Scid -------------------------------------------------------------------------------------------------------------

def try_scid(engine, shots):
    for protocol, uci, thought in (("uci", 1, r"(?m)^info depth 6 score .*"), ("xboard", 0, r"(?m)^ *6 +-?\d+ .*")):
        desk = Desk(shots, "1030x600")
        try:
            wrapped = Wrapped(desk, engine)
            folder = os.path.join(desk.home, ".scid4.7", "config")
            os.makedirs(folder)
            with open(os.path.join(folder, "engines.dat"), "w", encoding="ascii") as file:
                file.write("engine {\n  Name tarvelmon\n  Cmd %s\n  Args {}\n  Dir %s\n  Elo 0\n  Time 0\n"
                           "  URL {}\n  UCI %d\n  UCIoptions {}\n}\n" % (wrapped.path, desk.home, uci))
            game = os.path.join(desk.home, "game.pgn")
            with open(game, "w", encoding="ascii") as file:
                file.write(GAME)
            desk.start("scid", game)
            window = desk.place("Scid", 0, 0)
            time.sleep(8)
            desk.run("wmctrl", "-i", "-a", window)
            desk.key("F2")
            time.sleep(4)
            desk.place("Scid - ", 0, 0)
            desk.click(515, 64)   # the tab of the analysis
            desk.click(437, 303)  # its start button
            wait_for("analysis over " + protocol, lambda: re.search(thought, wrapped.said()), 60)
            desk.click(366, 513)  # a move on
            desk.click(366, 513)
            time.sleep(4)
            desk.shot("scid-" + protocol)
            check(True, "Scid analyses over " + protocol)
            check(not re.search(r"(?m)^(Error|Illegal)", wrapped.said()), "no complaint over " + protocol)
        finally:
            desk.close()


INTERFACES = {"xboard": try_xboard, "gnome-chess": try_gnome_chess, "pychess": try_pychess, "scid": try_scid}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("engine")
    parser.add_argument("folder")
    parser.add_argument("interfaces", nargs="*", help="all without a name")
    arguments = parser.parse_args()
    install_missing()
    failed = []
    for name in arguments.interfaces or INTERFACES:
        try:
            INTERFACES[name](arguments.engine, arguments.folder)
        except AssertionError as fault:
            print("FAILED  %s: %s" % (name, fault), flush=True)
            failed.append(name)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
