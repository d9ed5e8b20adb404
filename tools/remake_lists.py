#!/usr/bin/env python3
"""Remakes the golden lists with what the engine says today, and shows what differs from the lists in the tree.

    tools/remake_lists.py [--write] [--build FOLDER] [LIST...]

For whoever changes play on purpose; tests/data/golden/README.md tells what the lists hold and what goes with such a
change. Without LIST (a file's name in tests/data/golden) all of them. Builds the programs of tests/lists first, in
build-test or the FOLDER given. Shows the beginning of each difference and how many lines differ; --write also puts the
new lists in place. Status 0 if nothing differs, 1 if something does, 2 if a list could not be made.
"""
import argparse
import difflib
import pathlib
import subprocess
import sys

TOP = pathlib.Path(__file__).resolve().parent.parent
LISTS = TOP / "tests" / "data" / "golden"

# For each list the program that writes it, and the file that holds its positions.
SOURCES = {
    "moves.txt": ("list_writer", "moves.txt"),
    "see.txt": ("list_writer", "see.txt"),
    "user.txt": ("list_writer", "user.in"),
    "eval.txt": ("list_writer", "eval.txt"),
    "search-material.txt": ("material_list_writer", "search-material.txt"),
    "search-full.txt": ("list_writer", "search-full.txt"),
    "search-full-syzygy-on-no-files.txt": ("list_writer", "search-full-syzygy-on-no-files.txt"),
    "games-depth5.txt": ("list_writer", "games-depth5.txt"),
}

SHOWN_LINES = 40  # of the difference of one list

WARNING = """\
Lists written from the engine no longer come from a second implementation: they prove that play stays as it is, not that
it is right. Look at each line that changed, be able to tell why it did, and tell it in the commit."""


class CannotRemake(Exception):
    pass


def build(folder):
    """Builds the programs: stale ones would find that nothing differs. Returns their folder."""
    if not (folder / "CMakeCache.txt").exists():
        raise CannotRemake(f"{folder} is no build folder; make one with: "
                           "cmake -S . -B build-test -G Ninja -DTARVELMON_TESTS=ON")
    command = ["cmake", "--build", str(folder), "--target",
               *sorted({program for program, _ in SOURCES.values()})]
    built = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if built.returncode != 0:
        raise CannotRemake(f"{' '.join(command)} failed:\n{built.stdout}")
    return folder / "tests"


def remade(programs, lists, name):
    """The text of the list as the engine makes it."""
    program, positions = SOURCES[name]
    try:
        with open(lists / positions, "rb") as old:
            made = subprocess.run([programs / program, name], stdin=old, capture_output=True, check=False)
    except OSError as error:
        raise CannotRemake(str(error)) from error
    if made.returncode != 0:
        reason = made.stderr.decode("utf-8", "replace").strip()
        raise CannotRemake(f"{name}: status {made.returncode} {reason}")
    return made.stdout


def lines_of(text):
    return text.decode("latin-1").splitlines(keepends=True)


def show_difference(name, old, new):
    """Prints the head of the difference. Blanks at the end of lines count, and are seen by the line's two forms."""
    difference = list(difflib.unified_diff(lines_of(old), lines_of(new), name, f"{name} remade", n=2))
    for line in difference[:SHOWN_LINES]:
        print(line, end="" if line.endswith("\n") else "\n\\ no newline at the end\n")
    if len(difference) > SHOWN_LINES:
        print(f"... {len(difference) - SHOWN_LINES} more lines of this difference")
    gone = sum(line.startswith("-") for line in difference[2:])
    came = sum(line.startswith("+") for line in difference[2:])
    print(f"{name}: {gone} of {len(lines_of(old))} lines gone, {came} come")


def remake(programs, lists, name, write):
    """True if the list differs. A list that is not there differs in all its lines."""
    path = lists / name
    old = path.read_bytes() if path.exists() else b""
    new = remade(programs, lists, name)
    if new == old:
        print(f"{name}: the same, {len(lines_of(old))} lines")
        return False
    show_difference(name, old, new)
    if write:
        path.write_bytes(new)
        print(f"{name}: written")
    return True


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("names", metavar="LIST", nargs="*", help="a file's name in tests/data/golden; all without")
    parser.add_argument("--write", action="store_true", help="put the new lists in place")
    parser.add_argument("--build", metavar="FOLDER", type=pathlib.Path, default=TOP / "build-test",
                        help="build folder, configured with TARVELMON_TESTS")
    parser.add_argument("--programs", metavar="FOLDER", type=pathlib.Path,
                        help="use the programs in this folder as they are, build nothing")
    parser.add_argument("--lists", metavar="FOLDER", type=pathlib.Path, default=LISTS,
                        help="where the lists are, if not in tests/data/golden")
    arguments = parser.parse_args()
    names = arguments.names or list(SOURCES)
    for name in names:
        if name not in SOURCES:
            parser.error(f"no list {name}; the lists are {', '.join(SOURCES)}")
    try:
        programs = arguments.programs or build(arguments.build)
        differing = [name for name in names if remake(programs, arguments.lists, name, arguments.write)]
    except CannotRemake as error:
        print(f"remake_lists: {error}", file=sys.stderr)
        return 2
    if differing:
        print(WARNING)
    return 1 if differing else 0


if __name__ == "__main__":
    sys.exit(main())
