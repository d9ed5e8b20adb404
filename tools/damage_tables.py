#!/usr/bin/env python3
"""Probes real endgame tables that have been cut, lengthened or changed at random.

usage: damage_tables.py REPLAY_WDL REPLAY_DTZ FOLDER [ROUNDS] [SEED]

REPLAY_WDL and REPLAY_DTZ are the fuzz targets wdl_fuzz and dtz_fuzz, best of a build with sanitizers; FOLDER holds
tables. Each round takes every table that the targets know, damages it and hands it to its target, which must end
without a finding. Prints how many files were tried; exit status 1 at the first finding, whose file is kept.
"""
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile

# In the order of the targets' list: the number goes before the file.
NAMES = ["KQvK", "KRvK", "KBvK", "KPvK", "KNNvK", "KBvKN", "KPvKP", "KPPvKP"]
HEADER_BYTES = 400
BATCH = 40


def cut(data, rng):
    return data[: rng.randrange(len(data))]


def lengthen(data, rng):
    return data + rng.randbytes(rng.randrange(1, 5000))


def change_bytes(data, rng):
    """Some bytes anywhere, the header more often."""
    changed = bytearray(data)
    reach = min(len(data), HEADER_BYTES) if rng.random() < 0.7 else len(data)
    for _ in range(rng.choice((1, 1, 1, 2, 3, 10))):
        changed[rng.randrange(reach)] = rng.randrange(256)
    return bytes(changed)


def drop_bytes(data, rng):
    at = rng.randrange(len(data))
    return data[:at] + data[at + rng.randrange(1, 16):]


DAMAGES = (cut, lengthen, change_bytes, change_bytes, change_bytes, drop_bytes)


def tables(folder, suffix):
    for number, name in enumerate(NAMES):
        path = folder / (name + suffix)
        if path.exists():
            yield bytes([number]), name, path.read_bytes()


def run_batch(target, folder):
    """Whether the target bears all files of the folder. Runs them one by one if not, to find the culprit."""
    files = sorted(folder.iterdir())
    if subprocess.run([target, *files], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode == 0:
        return None
    for path in files:
        result = subprocess.run([target, path], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        if result.returncode != 0:
            return path, result.stderr.decode(errors="replace")
    return files[0], "fails only with others"


def try_damages(target, suffix, folder, rounds, rng):
    """Number of files tried; ends the process at a finding."""
    tried = 0
    for _ in range(rounds):
        with tempfile.TemporaryDirectory() as scratch:
            scratch = pathlib.Path(scratch)
            for number, name, data in tables(folder, suffix):
                for i in range(BATCH):
                    damage = rng.choice(DAMAGES)
                    (scratch / f"{name}-{damage.__name__}-{i}").write_bytes(number + damage(data, rng))
                    tried += 1
            finding = run_batch(target, scratch)
            if finding is not None:
                path, text = finding
                kept = pathlib.Path(tempfile.gettempdir()) / ("damaged-" + path.name + suffix)
                shutil.copy(path, kept)
                sys.exit(f"{kept}:\n{text}")
    return tried


def main():
    if len(sys.argv) not in (4, 5, 6):
        sys.exit(__doc__)
    wdl_target, dtz_target, folder = sys.argv[1:4]
    rounds = int(sys.argv[4]) if len(sys.argv) > 4 else 10
    rng = random.Random(int(sys.argv[5]) if len(sys.argv) > 5 else 1)
    for target, suffix in ((wdl_target, ".rtbw"), (dtz_target, ".rtbz")):
        tried = try_damages(target, suffix, pathlib.Path(folder), rounds, rng)
        if tried == 0:
            sys.exit(f"no tables in {folder}")
        print(f"{tried} damaged {suffix} files, no finding")


if __name__ == "__main__":
    main()
