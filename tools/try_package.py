#!/usr/bin/env python3
"""Installs the Debian package in a minimal Debian and has xboard play a game with the engines that it finds there.

    tools/try_package.py PACKAGE FOLDER

Makes a Debian by debootstrap in FOLDER/debian (as root; one that is there already is used again), installs PACKAGE and
xboard there, has xboard show its list of engines and play the companion against the engine on a display of its own, and
purges the package. Then nothing may be left of it but the player's own files. FOLDER gets the pictures and the game, to be
looked at. The Debian packages debootstrap, xvfb, openbox, wmctrl, xdotool and imagemagick are installed where they are
missing. Exit status 0 if every check held.
"""

import argparse
import os
import shutil
import subprocess
import time

import try_interfaces
from try_interfaces import Desk, check, read, wait_for

MIRROR = "http://deb.debian.org/debian"
RELEASE = "bookworm"
PLAYER = "player"
OWN = "/home/%s/" % PLAYER
ENGINES = ("tarvelmon", "tarvelmon-gui")
# What apt, dpkg and running programs keep for themselves.
UNWATCHED = ("/proc", "/sys", "/dev", "/run", "/tmp", "/var/cache", "/var/log", "/var/lib/apt", "/var/lib/dpkg/lock",
             "/var/lib/dpkg/triggers", "/var/lib/dpkg/status-old", "/root")


class Debian:
    """A minimal Debian in a folder."""

    def __init__(self, folder):
        self.root = os.path.join(folder, "debian")
        if not os.path.exists(self.root + "/etc/debian_version"):
            subprocess.run(["debootstrap", "--variant=minbase", RELEASE, self.root, MIRROR], check=True,
                           stdout=subprocess.DEVNULL)
        else:
            self.clean()
        self.run("useradd", "-m", PLAYER)
        self.path = self.as_player("echo $PATH").strip()

    def clean(self):
        """What an earlier trial, perhaps one that failed, has left."""
        for command in (["apt-get", "-y", "purge", "tarvelmon"], ["userdel", "-r", PLAYER]):
            subprocess.run(["chroot", self.root, *command], capture_output=True, check=False)
        shutil.rmtree(self.root + "/tmp")
        os.mkdir(self.root + "/tmp")
        os.chmod(self.root + "/tmp", 0o1777)

    def run(self, *command, **options):
        return subprocess.run(["chroot", self.root, *command], check=True, text=True, stdout=subprocess.PIPE,
                              env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "DEBIAN_FRONTEND": "noninteractive"},
                              **options).stdout

    def apt(self, *words):
        return self.run("apt-get", "-q", "-y", "--no-install-recommends", *words)

    def as_player(self, command, **options):
        return self.run("su", "-", PLAYER, "-c", command, **options)

    def start_as_player(self, log, *command, **environment):
        variables = {"PATH": self.path, "HOME": OWN, **environment}
        with open(log, "w", encoding="utf-8") as file:
            return subprocess.Popen(["chroot", "--userspec=" + PLAYER, self.root, "env", "-i",
                                     *("%s=%s" % pair for pair in variables.items()), *command],
                                    stdout=file, stderr=file, stdin=subprocess.DEVNULL)

    def files(self):
        found = set()
        for folder, folders, names in os.walk(self.root):
            inside = folder[len(self.root):]
            folders[:] = [name for name in folders if inside + "/" + name not in UNWATCHED]
            found.update(inside + "/" + name for name in folders + names)
        return {path for path in found if path not in UNWATCHED}


class PlayersXboard:
    """xboard as the player starts it, on the desk's display."""

    def __init__(self, debian, desk, name, options):
        self.desk = desk
        self.debug = debian.root + "/tmp/" + name + ".debug"
        self.process = debian.start_as_player(
            os.path.join(desk.shots, name + ".log"), "xboard", "-debug", "-nameOfDebugFile", "/tmp/%s.debug" % name,
            "-soundProgram", "", "-xpopup", *options.split(), DISPLAY=desk.environment["DISPLAY"])
        self.desk.processes.append(self.process)

    def text(self):
        return read(self.debug) if os.path.exists(self.debug) else ""


def try_programs(debian):
    said = debian.as_player("tarvelmon", input="xboard\nnew\ngo\nquit\n")
    check("(move from book)\n" in said, "the engine plays from its book")
    said = debian.as_player("tarvelmon-gui", input="uci\nquit\n")
    check("uciok\n" in said, "the companion speaks UCI")
    debian.as_player("tarvelmon-book check .local/share/tarvelmon/book.bin")
    check(True, "the book program is content with the book")
    check(os.readlink(debian.root + OWN + ".local/share/tarvelmon/book.bin") == "/usr/share/games/tarvelmon/book.bin",
          "the player's book is a link to the installed one")


def try_list(debian, shots):
    """The dialogue of the first engine: the companion is the last of its list, and is chosen with two clicks."""
    desk = Desk(shots, "1100x700")
    try:
        board = PlayersXboard(debian, desk, "list", "-ncp")
        desk.place("xboard", 0, 0)
        time.sleep(1)
        desk.click(268, 34)  # Engine
        time.sleep(1)
        desk.click(340, 88)  # Load New 1st Engine
        time.sleep(2)
        desk.shot("engine-list")

        def started():
            desk.run("xdotool", "mousemove", "60", "267", "sleep", "0.2", "click", "--repeat", "2", "--delay", "120", "1")
            time.sleep(2)
            return 'myname="tarvelmon' in board.text()

        wait_for("the companion", started)
        check(') tarvelmon-gui\n' in board.text(), "xboard starts the companion from its list")
    finally:
        desk.close()


def try_game(debian, shots):
    desk = Desk(shots, "1100x700")
    try:
        board = PlayersXboard(
            debian, desk, "game", "-fe tarvelmon-gui -se tarvelmon -mode TwoMachines -mg 1 -tc 0:15 -inc 0 "
            "-autoLogo true -logoSize 100 -testClaims true -popupExitMessage false -sgf /tmp/game.pgn")
        wait_for("ten moves", lambda: board.text().count("usermove") >= 20, 120)
        desk.shot("game")
        board.process.wait(300)
        game = read(debian.root + "/tmp/game.pgn")
        shutil.copy(debian.root + "/tmp/game.pgn", shots)
        result = game.split()[-1]
        check(result in ("1-0", "0-1", "1/2-1/2"), "a game comes to its end: " + result)
        for fault in ("forfeit", "illegal", "Illegal", "False", "exited", "Exited"):
            check(fault not in game, "nobody lost by '%s'" % fault)
    finally:
        desk.close()


def try_purge(debian, before):
    debian.apt("purge", ENGINES[0])
    left = sorted(debian.files() - before)
    print("left: " + " ".join(left))
    check(left != [] and all(path.startswith(OWN) for path in left), "purged, nothing is left but the player's own files")


def main():
    words = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    words.add_argument("package")
    words.add_argument("folder")
    arguments = words.parse_args()
    try_interfaces.PACKAGES = {name: try_interfaces.PACKAGES[name]
                               for name in ("Xvfb", "openbox", "wmctrl", "xdotool", "import")}
    try_interfaces.PACKAGES["debootstrap"] = "debootstrap"
    try_interfaces.install_missing()
    folder = os.path.abspath(arguments.folder)
    os.makedirs(folder, exist_ok=True)

    debian = Debian(folder)
    debian.apt("update")
    debian.apt("install", "xboard", "fonts-dejavu-core")
    shutil.copy(arguments.package, debian.root + "/root/tarvelmon.deb")
    before = debian.files()
    debian.apt("install", "/root/tarvelmon.deb")
    check("ii  tarvelmon" in debian.run("dpkg", "-l", "tarvelmon"), "the package is installed by apt")
    try_programs(debian)
    try_list(debian, folder)
    try_game(debian, folder)
    try_purge(debian, before)


if __name__ == "__main__":
    main()
