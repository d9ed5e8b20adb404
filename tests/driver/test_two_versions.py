"""The programs hold code for older and for newer processors, take what the processor at hand can run, and say the same
with both. QEMU stands for processors of both kinds."""

import os
import re
import subprocess
import tempfile
import unittest
from unittest import mock

import transcripts
from engine import PROGRAM, SMALL_INI, Engine
from gui import PROGRAM as GUI
from test_repeatable import golden_fens
from transcripts import CLOCK, mask

BUILD = os.path.dirname(os.path.abspath(PROGRAM))
TABLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir, "data", "syzygy")
# Processors by the version that they run: the first of them knows x86-64-v2 and no more.
PROCESSORS = {"V2": "Nehalem", "V3": "max"}

# What x86-64-v2 lacks, as objdump writes it: vectors of three operands, bits, loads of another byte order. One that
# older processors take for another, with the same result where a compiler uses it, is left out (tzcnt).
NEWER = re.compile(r"v[a-z]\w*|andn|bextr|blsi|blsmsk|blsr|bzhi|lzcnt|movbe|mulx|pdep|pext|rorx|sarx|shlx|shrx")

TABLE_POSITIONS = ["8/8/8/8/8/4k3/7R/4K3 w - - 0 1", "4k3/8/4K3/4P3/8/8/8/8 b - - 0 1", "8/1k6/8/8/3Q4/8/8/K7 b - - 7 60"]


def emulated(version):
    """Arguments for engines that run on a processor of the version, with a clock that stands still."""
    return ("qemu-x86_64", "-cpu", PROCESSORS[version], *(word for pair in CLOCK[1:] for word in ("-E", pair)))


def instructions(version):
    text = subprocess.run(["objdump", "--disassemble", "--no-show-raw-insn", f"{BUILD}/tarvelmon-{version.lower()}.o"],
                          capture_output=True, text=True, check=True).stdout
    return set(re.findall(r"^ *[0-9a-f]+:\t(\w+)", text, re.MULTILINE))


def searches():
    lines = ["post", "easy", "st 1000"]
    for fen in golden_fens("search-full.txt", 25) + TABLE_POSITIONS:
        lines += ["new", "sd 5", "setboard " + fen, "go", "force"]
    return lines


class TwoVersions(unittest.TestCase):
    maxDiff = None

    def entered(self, program, text, version):
        """The versions whose `main` has run on the processor."""
        with tempfile.TemporaryDirectory(prefix="tarvelmon-") as folder:
            log = os.path.join(folder, "log")
            done = subprocess.run([*emulated(version), "-d", "in_asm", "-D", log, os.path.abspath(program)], input=text,
                                  text=True, cwd=folder, capture_output=True, timeout=120, check=True)
            self.assertEqual(done.stderr, "")
            with open(log, encoding="latin-1") as file:
                return set(re.findall(r"^IN: mainFor(\w+)$", file.read(), re.MULTILINE))

    def test_each_processor_gets_its_version(self):
        for version in PROCESSORS:
            self.assertEqual(self.entered(PROGRAM, "xboard\nquit\n", version), {version})
            self.assertEqual(self.entered(GUI, "uci\nquit\n", version), {version})

    def test_only_one_version_has_instructions_that_older_processors_lack(self):
        self.assertEqual([name for name in instructions("V2") if NEWER.fullmatch(name)], [])
        newer = {name for name in instructions("V3") if NEWER.fullmatch(name)}
        self.assertLess({"andn", "blsr", "shlx", "vpand"}, newer)

    def test_whole_transcripts_on_both(self):
        for version in PROCESSORS:
            with mock.patch("transcripts.CLOCK", emulated(version)):
                for name in transcripts.names("console") + transcripts.names("protocol"):
                    with self.subTest(version + " " + name):
                        self.assertMultiLineEqual(transcripts.hold(name), transcripts.read(name))

    def test_searches_and_tables_on_both_and_here(self):
        texts = []
        for arguments in (emulated("V2"), emulated("V3"), CLOCK):
            with Engine(ini=SMALL_INI.replace("Syzygy=0", "Syzygy=1\nSyzygyPath=" + TABLES), arguments=arguments) as engine:
                engine.xboard()
                texts.append(mask("\n".join(engine.tell(*searches()))))
        self.assertGreater(len(re.findall("^move ", texts[0], re.MULTILINE)), 25)
        self.assertIn(" 10000 ", texts[0])  # the score of a win by the tables
        for other in texts[1:]:
            self.assertMultiLineEqual(texts[0], other)


if __name__ == "__main__":
    unittest.main()
