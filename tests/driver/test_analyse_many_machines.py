"""The recipes of docs/collections.md for many machines, run on this one as they stand there: only the machines, the depth
and the sizes of the pieces are others, which belong to the user's work."""

import os
import shutil
import subprocess
import textwrap
import types
import unittest

from analyse import AnalyseTest, PROGRAM, WELL_KNOWN, children, end, text_of
from engine import PATIENCE
from test_documents import TOP

DEPTH = "5"


def recipe(begin, changes):
    """The indented block of the document that begins so, with each of the changes made at least once."""
    blocks = [block for block in (TOP / "docs/collections.md").read_text(encoding="utf-8").split("\n\n")
              if block.startswith("    " + begin)]
    assert len(blocks) == 1, begin
    text = textwrap.dedent(blocks[0])
    for old, new in changes:
        assert old in text, old
        text = text.replace(old, new)
    return text


def gnu_parallel():
    """Whether there is that program and not another of the name."""
    found = shutil.which("parallel")
    said = found and subprocess.run([found, "--version"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                                    check=False).stdout
    return bool(said) and "GNU parallel" in said


class ManyMachines(AnalyseTest):

    def setUp(self):
        super().setUp()
        shutil.copy(WELL_KNOWN, self.path("positions.epd"))
        self.whole = self.analyse("--depth", DEPTH, "positions.epd")

    def begin(self, script, **variables):
        """Starts a shell with a recipe; the program is found as an installed one is."""
        process = subprocess.Popen(["bash", "-c", script], cwd=self.folder, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True,
                                   env={**os.environ, **variables, "HOME": self.folder,
                                        "PATH": os.path.dirname(PROGRAM) + ":" + os.environ["PATH"]})
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def end_of(self, process):
        """Exit status, and what was said."""
        output, errors = process.communicate(timeout=PATIENCE)
        return process.returncode, output + errors


@unittest.skipUnless(gnu_parallel(), "there is no GNU parallel")
class Parallel(ManyMachines):

    def parallel(self):
        return self.begin(recipe("parallel ", [("8/one.example,8/two.example", "2/:"), ("20k", "600"),
                                               ("--depth 14", "--depth " + DEPTH)]))

    def descendants(self, process):
        """Programs of ours somewhere below a process."""
        found = []
        for child in children(process):
            try:
                if os.readlink(f"/proc/{child}/exe") == os.path.realpath(PROGRAM):
                    found.append(child)
                else:
                    found += self.descendants(types.SimpleNamespace(pid=child))
            except (FileNotFoundError, ProcessLookupError):
                pass
        return found

    def test_blocks_make_the_whole(self):
        self.assertEqual(self.end_of(self.parallel())[0], 0)
        self.assertEqual(text_of(self.path("found.epd")), self.whole)

    def test_after_one_was_killed_on_the_way(self):
        process = self.parallel()
        killed = []
        while not killed and process.poll() is None:
            killed = self.descendants(process)[:1]
            for victim in killed:
                end(victim)
        self.end_of(process)
        self.assertEqual(len(killed), 1)
        self.assertNotEqual(text_of(self.path("found.epd")), self.whole)
        self.assertEqual(self.analyse("--depth", DEPTH, "--resume", "found.epd", "positions.epd"), self.whole)


class ArrayJob(ManyMachines):
    """A batch system gives each task its number in the environment and runs as many at once as there is room for."""

    LINES = 8  # a task

    def task(self, number):
        return self.begin(recipe("#SBATCH ", [("1000", str(self.LINES)), ("999", str(self.LINES - 1)),
                                              ("--jobs 8", "--jobs 1"), ("--depth 14", "--depth " + DEPTH)]),
                          SLURM_ARRAY_TASK_ID=str(number))

    def tasks(self):
        return range(-(-len(text_of(WELL_KNOWN).splitlines()) // self.LINES))

    def joined(self):
        """By the line of the document that puts the parts together."""
        line = "cat part.*.epd"
        self.assertIn(f"`{line}` is then the output of a single run", text_of(TOP / "docs/collections.md"))
        status, said = self.end_of(self.begin(line))
        self.assertEqual(status, 0)
        return said

    def test_parts_make_the_whole(self):
        self.assertGreaterEqual(len(self.tasks()), 4)
        tasks = list(self.tasks())
        for pair in (tasks[i:i + 2] for i in range(0, len(tasks), 2)):
            for running in [self.task(number) for number in reversed(pair)]:
                self.assertEqual(self.end_of(running), (0, ""))
        self.assertEqual(self.joined(), self.whole)

    def test_a_task_behind_the_end_says_so_and_adds_nothing(self):
        for number in self.tasks():
            self.end_of(self.task(number))
        status, said = self.end_of(self.task(len(self.tasks()) + 3))
        self.assertEqual(status, 1)
        self.assertEqual(said, "tarvelmon-analyse: there is no position in the input\n")
        self.assertEqual(self.joined(), self.whole)

    def test_after_a_task_was_lost(self):
        for number in self.tasks():
            if number != 1:
                self.end_of(self.task(number))
        found = self.joined()
        self.assertNotEqual(found, self.whole)
        self.write("found.epd", found)
        self.assertEqual(self.analyse("--depth", DEPTH, "--resume", "found.epd", "positions.epd"), self.whole)


if __name__ == "__main__":
    unittest.main()
