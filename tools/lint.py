#!/usr/bin/env python3
"""Checks the source itself: form, clang-tidy, the scripts and the manual pages.

usage: lint.py BUILD_FOLDER

clang-format over every C++ file, clang-tidy over the sources of src/, tools/ and companions/, shellcheck over the
scripts, groff and mandoc over the manual pages. BUILD_FOLDER holds compile_commands.json. Sources that clang-tidy has
passed are not looked at again until they, what they include or the checks change: notes of that are kept in
BUILD_FOLDER/lint. Status 1 if anything is found.
"""
import collections
import concurrent.futures
import hashlib
import json
import os
import re
import shlex
import subprocess
import sys
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent
TIDIED = ("src/", "tools/", "companions/")
CLANG_ALONE = "-fconstexpr-steps=20000000"  # as cmake/options.cmake has it; the commands are GCC's
FORM_VERSION = "14."  # other versions of clang-format break lines elsewhere


def tracked(*patterns):
    listed = subprocess.run(["git", "-C", TOP, "ls-files", "--", *patterns], capture_output=True, text=True, check=True)
    return [TOP / name for name in listed.stdout.splitlines() if (TOP / name).exists()]


def run(command):
    """Whether the command found nothing, and what it said."""
    done = subprocess.run(command, cwd=TOP, capture_output=True, text=True, check=False)
    return done.returncode == 0, done.stdout + done.stderr


def check_form():
    version = run(["clang-format", "--version"])[1]
    if f"version {FORM_VERSION}" not in version:
        print(f"lint: form is checked by clang-format {FORM_VERSION}x alone, here is {version.strip()}")
        return []
    clean, text = run(["clang-format", "--dry-run", "-Werror", *tracked("*.cpp", "*.h")])
    return [] if clean else [text]


def is_shell_script(path):
    with path.open("rb") as file:
        return file.readline().startswith((b"#!/usr/bin/env bash", b"#!/bin/sh", b"#!/bin/bash"))


def check_scripts():
    scripts = [path for path in tracked() if path.suffix == ".sh" or is_shell_script(path)]
    clean, text = run(["shellcheck", "-x", "-P", "SCRIPTDIR", "-s", "bash", *scripts])
    return [] if clean else [text]


def check_pages():
    pages = tracked("docs/man/*")
    found = [run(["groff", "-man", "-Tutf8", "-ww", "-z", *pages])[1], run(["mandoc", "-Tlint", *pages])[1]]
    return [text for text in found if text]


def arguments_of(entry):
    """How the file is compiled, without the compiler's launcher, the file itself and where the result goes."""
    words = shlex.split(entry["command"])
    words = words[next(i for i, word in enumerate(words) if not word.endswith("ccache")):]
    output = words.index("-o")
    words = words[:output] + words[output + 2:]
    source = words.index("-c")
    return words[:source] + words[source + 2:]


class Unit:
    """Some sources of one folder, looked at as one file: most of the time goes into the headers that they share."""

    def __init__(self, entries, build):
        self.sources = sorted(entry["file"] for entry in entries)
        self.arguments = [*arguments_of(entries[0]), "-iquote", os.path.dirname(self.sources[0])]
        self.folder = entries[0]["directory"]
        self.path = build / "lint" / ("_".join(Path(self.sources[0]).relative_to(TOP).with_suffix("").parts) + "_etc.cpp")

    def write(self):
        self.path.write_text("".join(Path(source).read_text(encoding="utf-8") for source in self.sources),
                             encoding="utf-8")

    def in_sources(self, text):
        """The text with the lines of the sources where it tells those of the unit."""
        places = [f"{source}:{line + 1}" for source in self.sources
                  for line in range(len(Path(source).read_text(encoding="utf-8").splitlines()))]
        return re.sub(re.escape(str(self.path)) + r":(\d+)", lambda found: places[int(found[1]) - 1], text)

    def compile(self, *words):
        self.write()
        return subprocess.run([*self.arguments, *words, self.path], cwd=self.folder, capture_output=True, text=True,
                              check=False)

    def tidy(self, build, settings):
        """What clang-tidy says, empty if nothing."""
        seen = self.compile("-E", "-P")
        note = build / "lint" / hashlib.sha256((seen.stdout + settings).encode()).hexdigest()
        if seen.returncode == 0 and note.exists():
            return ""
        clean, text = run(["clang-tidy", "--quiet", "--warnings-as-errors=*", f"--config-file={TOP / '.clang-tidy'}",
                           self.path, "--", *self.arguments[1:], CLANG_ALONE])
        if clean and seen.returncode == 0:
            note.write_text("\n".join(self.sources), encoding="utf-8")
        return "" if clean else self.in_sources(text)


def first_misfit(unit, text):
    """The source with the first error, None if it is in none."""
    for line in unit.in_sources(text).splitlines():
        name = line.partition(":")[0]
        if ": error: " in line and name in unit.sources:
            return name
    return None


def units_of(entries, build):
    """The sources of a folder in as few units as compile: file-local names may be those of another file."""
    units = []
    while entries:
        unit, left = Unit(entries, build), []
        while True:
            compiled = unit.compile("-fsyntax-only")
            misfit = first_misfit(unit, compiled.stderr) if compiled.returncode != 0 else None
            if misfit is None or len(unit.sources) == 1:
                break
            left.append(misfit)
            unit.sources.remove(misfit)
        units.append(unit)
        entries = [entry for entry in entries if entry["file"] in left]
    return units


def check_tidy(build):
    (build / "lint").mkdir(exist_ok=True)
    folders = collections.defaultdict(dict)
    for entry in json.loads((build / "compile_commands.json").read_text(encoding="utf-8")):
        entry["file"] = os.path.realpath(os.path.join(entry["directory"], entry["file"]))
        name = os.path.relpath(entry["file"], TOP)
        if name.startswith(TIDIED):
            folders[os.path.dirname(name)][name] = entry
    settings = (TOP / ".clang-tidy").read_text() + run(["clang-tidy", "--version"])[1]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        units = sum(pool.map(lambda files: units_of(list(files.values()), build), folders.values()), [])
        return [text for text in pool.map(lambda unit: unit.tidy(build, settings), units) if text]


def main():
    if len(sys.argv) != 2:
        print(__doc__.split("\n\n")[1], file=sys.stderr)
        return 2
    build = Path(sys.argv[1]).resolve()
    faults = check_form() + check_scripts() + check_pages() + check_tidy(build)
    print("\n".join(faults) if faults else "lint: nothing found")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
