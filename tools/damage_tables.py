#!/usr/bin/env python3
"""Probes endgame tables that have been cut or changed at random.

    tools/damage_tables.py build-asan/fuzz/damaged_table FOLDER

The program comes from fuzz/, best of a build with sanitizers. Every table of the folder is cut at --cuts places, has
bytes changed in --changes copies, and bytes taken out or put in as often as it was cut; random positions are probed in
each copy, ranked and searched with the copy among the sound tables, and probed in the sound file, whose values must
stay. Nothing may crash; a copy may take 30 seconds of processor time; no single allocation (under the address
sanitizer) and no process may have more than a gigabyte. Exit status 1 at the first finding, which is told with the
command that repeats it.

Without a folder: the one named by TARVELMON_SYZYGY_PATH, or else the tables of the tests.
"""
import argparse
import concurrent.futures
import os
import pathlib
import re
import resource
import subprocess
import sys
import tempfile

SUMMARY = re.compile(r"(\d+) tried, (\d+) accepted$")
LAST_WORDS = 4000
MEMORY_MB = 1024
TEST_TABLES = pathlib.Path(__file__).resolve().parent.parent / "tests" / "data" / "syzygy"


def damage(arguments, path):
    """(path, copies tried, copies accepted), or ends with what was found."""
    command = [arguments.program, str(path), str(arguments.cuts), str(arguments.changes), str(arguments.seed)]
    options = f"{os.environ.get('ASAN_OPTIONS', '')}:max_allocation_size_mb={MEMORY_MB}"
    environment = {**os.environ, "ASAN_OPTIONS": options.lstrip(":")}
    with tempfile.TemporaryFile() as words:
        try:
            status = subprocess.run(command, stderr=words, timeout=arguments.limit, env=environment).returncode
        except subprocess.TimeoutExpired:
            status = f"none after {arguments.limit} s"
        words.seek(0)
        text = words.read().decode(errors="replace")
    lines = text.splitlines()
    summary = SUMMARY.match(lines[-1]) if lines else None
    if status != 0 or not summary:
        sys.exit(f"{' '.join(command)}\nexit status {status}\n...{text[-LAST_WORDS:]}")
    used = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss // 1024  # the most of all processes so far
    if used > MEMORY_MB:
        sys.exit(f"{' '.join(command)}\n{used} MB of memory")
    tried, accepted = int(summary.group(1)), int(summary.group(2))
    if tried != 2 * arguments.cuts + arguments.changes:
        sys.exit(f"{' '.join(command)}\nonly {tried} copies")
    return path, tried, accepted


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", help="damaged_table")
    parser.add_argument("folder", nargs="?",
                        default=os.environ.get("TARVELMON_SYZYGY_PATH") or TEST_TABLES)
    parser.add_argument("--cuts", type=int, default=64)
    parser.add_argument("--changes", type=int, default=1000)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--limit", type=float, default=3600.0, help="seconds for one table")
    parser.add_argument("--jobs", type=int, default=1)
    arguments = parser.parse_args()
    tables = sorted(path for path in pathlib.Path(arguments.folder).iterdir() if path.suffix in (".rtbw", ".rtbz"))
    if not tables:
        sys.exit(f"no tables in {arguments.folder}")
    copies = 0
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        for path, tried, accepted in pool.map(lambda table: damage(arguments, table), tables):
            print(f"{path.name}: {tried} damaged copies, {accepted} of them accepted and probed, no finding", flush=True)
            copies += tried
    used = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss // 1024
    print(f"{len(tables)} tables, {copies} damaged copies, at most {used} MB of memory, no finding")


if __name__ == "__main__":
    main()
