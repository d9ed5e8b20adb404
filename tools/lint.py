#!/usr/bin/env python3
"""Checks the source itself: form, clang-tidy, the scripts and the manual pages.

usage: lint.py BUILD_FOLDER

clang-format over every C++ file, clang-tidy over the sources of src/, tools/ and companions/, shellcheck over the
scripts, groff and mandoc over the manual pages. BUILD_FOLDER holds compile_commands.json. A file that clang-tidy has passed is not looked at again until it,
what it includes or the checks change: notes of that are kept in BUILD_FOLDER/lint. Status 1 if anything is found.
"""
import concurrent.futures
import hashlib
import json
import os
import shlex
import subprocess
import sys
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent
TIDIED = ("src/", "tools/", "companions/")
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


def fingerprint(entry, settings):
    """What clang-tidy would see of the file, in a few bytes; None if it does not compile."""
    arguments = shlex.split(entry["command"])
    output = arguments.index("-o")
    command = arguments[:output] + arguments[output + 2:]
    command = [word for word in command if word not in ("-c", "ccache") and not word.endswith("/ccache")]
    done = subprocess.run([*command, "-E", "-P"], cwd=entry["directory"], capture_output=True, check=False)
    if done.returncode != 0:
        return None
    return hashlib.sha256(done.stdout + settings).hexdigest()


def tidy(entry, build, settings):
    """What clang-tidy says of one file, empty if nothing."""
    name = os.path.relpath(entry["file"], TOP)
    mark = fingerprint(entry, settings)
    note = build / "lint" / str(mark)
    if mark is not None and note.exists():
        return ""
    clean, text = run(["clang-tidy", "-p", build, "--quiet", "--warnings-as-errors=*", entry["file"]])
    if clean and mark is not None:
        note.write_text(name, encoding="utf-8")
    return "" if clean else f"{name}:\n{text}"


def check_tidy(build):
    (build / "lint").mkdir(exist_ok=True)
    entries = {}
    for entry in json.loads((build / "compile_commands.json").read_text(encoding="utf-8")):
        name = os.path.relpath(os.path.join(entry["directory"], entry["file"]), TOP)
        if name.startswith(TIDIED):
            entries[name] = entry
    settings = (TOP / ".clang-tidy").read_bytes() + run(["clang-tidy", "--version"])[1].encode()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        return [text for text in pool.map(lambda entry: tidy(entry, build, settings), entries.values()) if text]


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
