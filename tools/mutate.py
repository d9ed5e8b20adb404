#!/usr/bin/env python3
"""Measures the tests: changes the engine at one place at a time and looks whether a test fails.

    tools/mutate.py SEED COUNT [FILE...]          COUNT mutants of all folders of src/ (or of the files)
    tools/mutate.py --again RESULTS               those of an earlier run that survived
    tools/mutate.py --list SEED COUNT [FILE...]   only shows what would be changed

Prints each survivor with file, line, before and after, and at the end the score. The same seed gives the same mutants
of the same source. What does not compile, or builds the same program, is no mutant: another is drawn.

The work is done in a copy of the tree, below --build; a later run there builds on the earlier one. Tests run quick ones
first: those of the changed folder, the golden ones, the sessions, all others. Tests that fail without a change are left
out, and told. A test that takes several times its usual processor time has failed. tools/mutation.md lists the mutants
that no test can kill, with reasons: they are told apart from the survivors.
"""
import argparse
import collections
import contextlib
import hashlib
import json
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time

import mutants

TOP = pathlib.Path(__file__).resolve().parent.parent
EQUIVALENTS = TOP / "tools" / "mutation.md"
# Published numbers, and what is not compiled here.
LEFT_OUT = re.compile(r"(?:/random64\.h|_windows\.cpp)$")
# These drive other programs, or play by the clock what others ask for to fixed depths.
DRIVERS_LEFT_OUT = {"test_book_tool", "test_chess_rules", "test_games", "test_gui_clients", "test_gui_same_play",
                    "test_gui_xboard", "test_install", "test_mutate", "test_referee", "test_referee_matches",
                    "test_referee_openings", "test_referee_statistics", "test_two_versions", "test_uci", "test_valgrind"}
DRIVEN_FOLDERS = {"book", "frontend", "platform"}  # sessions notice more of what changes there than golden lists
TOP_FOLDERS = {"book", "frontend"}     # nothing that has tests of its own builds on them
GOLDEN = re.compile(r"olden|ignature")
QUICK = 0.25                   # seconds of one test of the first group
SHORT_DRIVER = 5               # processor seconds of a script
LAST_QUICK_TURN = 4
CPU_LIMIT = (4, 5)             # times the usual processor time, and seconds on top
WALL_LIMIT = (12, 30)          # the same of the clock, for what waits and does not compute
STUCK_SECONDS = 0.1            # processor time within that limit of which less is no computing
FULL_SECONDS = (150, 150)      # for the tests of full depth, which are not timed
MEMORY_LIMIT = 12 << 30
FILE_LIMIT = 16 << 30
GTEST_ARGUMENTS = ["--gtest_fail_fast", "--gtest_brief=1"]


# A test program, or a script that drives the engine; groups: {name: (arguments, processor seconds, clock seconds)}.
Program = collections.namedtuple("Program", "name command target groups")


def fail(text):
    sys.exit(f"mutate: {text}")


def digest(paths):
    """What tells files apart that differ."""
    found = hashlib.sha256()
    for path in paths:
        found.update(path.read_bytes())
    return found.hexdigest()


def session_seconds(session):
    """Processor seconds of all processes of a session that live."""
    ticks = 0
    for path in pathlib.Path("/proc").glob("[0-9]*/stat"):
        with contextlib.suppress(OSError):
            fields = path.read_text().rpartition(") ")[2].split()
            if int(fields[3]) == session:
                ticks += int(fields[11]) + int(fields[12])
    return ticks / os.sysconf("SC_CLK_TCK")


def copy_tree(target):
    """Brings the copy up to what stands in the tree; files that did not change keep their time, for the build."""
    listed = subprocess.run(["git", "ls-files", "-coz", "--exclude-standard"], cwd=TOP, check=True, capture_output=True)
    wanted = {name for name in listed.stdout.decode().split("\0") if name and (TOP / name).is_file()}
    for old in [path for path in target.rglob("*") if path.is_file()]:
        if str(old.relative_to(target)) not in wanted:
            old.unlink()
    for name in wanted:
        new, old = TOP / name, target / name
        if not old.exists() or old.read_bytes() != new.read_bytes():
            old.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(new, old)
            shutil.copymode(new, old)


class Runner:
    def __init__(self, folder, jobs, sanitizers, quick):
        self.tree = folder / "tree"
        self.build_folder = folder / ("build-" + sanitizers.replace(",", "-") if sanitizers else "build")
        self.jobs = jobs
        self.quick = quick
        self.sanitizers = sanitizers
        self.programs = []
        self.unchanged = None  # digest of the engine
        self.last_words = folder / "output.txt"
        self.times = folder / f"times-{self.build_folder.name}.json"
        self.environment = {name: value for name, value in os.environ.items() if not name.startswith("TARVELMON_")}
        self.environment.update(
            TARVELMON=str(self.build_folder / "tarvelmon"), TARVELMON_SANITIZE=sanitizers, TARVELMON_PATIENCE="30",
            TARVELMON_BOOK=str(self.build_folder / "tools" / "book" / "tarvelmon-book"),
            TARVELMON_DRIVEN_CLOCK="" if sanitizers else str(self.build_folder / "tests" / "libdriven_clock.so"),
            ASAN_OPTIONS="detect_stack_use_after_return=0")

    def prepare(self):
        self.tree.mkdir(parents=True, exist_ok=True)
        copy_tree(self.tree)
        arguments = ["-DTARVELMON_TESTS=ON", "-DTARVELMON_WERROR=OFF", "-DTARVELMON_LTO=OFF", "-DCMAKE_BUILD_TYPE=Release",
                     "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG", f"-DTARVELMON_SANITIZE={self.sanitizers}"]
        if shutil.which("ccache"):
            arguments.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
        configured = subprocess.run(["cmake", "-S", self.tree, "-B", self.build_folder, "-G", "Ninja"] + arguments,
                                    stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        if configured.returncode != 0:
            fail(configured.stdout.decode(errors="replace"))
        targets = ["tarvelmon", "tarvelmon-book"] + ([] if self.sanitizers else ["driven_clock"])
        if not self.build(self.test_targets() + targets, keep=True):
            fail("the source does not build unchanged:\n" + self.words())
        self.unchanged = self.engine()
        self.find_programs()

    def test_targets(self):
        """The test programs of the folders of src/, and that of the search on material alone."""
        return [f"{path.name}_test" for path in sorted((self.tree / "src").iterdir())
                if (self.tree / "tests" / path.name).is_dir()] + ["material_test"]

    def engine(self):
        """Digest of the program and of the libraries it is made of."""
        return digest([self.build_folder / "tarvelmon", *sorted(self.build_folder.glob("*.a"))])

    def words(self):
        with open(self.last_words, errors="replace") as file:
            return file.read()

    def build(self, targets, keep=False):
        """Whether the targets could be built. What a mutant leaves is not kept by ccache."""
        environment = dict(os.environ, **({} if keep else {"CCACHE_READONLY": "1"}))
        with open(self.last_words, "wb") as output:
            status = self.run(["ninja", "-C", str(self.build_folder), f"-j{self.jobs}"] + targets, environment, output,
                              None)
        return status == 0

    def run(self, command, environment, output, limits):
        """The exit status; None where the time ran out. Whatever the command started is ended with it."""
        def limit():
            signal.signal(signal.SIGINT, signal.SIG_DFL)  # which a shell may have had ignored
            if limits:
                seconds = int(limits[0]) + 1
                resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))
                resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_LIMIT, FILE_LIMIT))
                resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
                if not self.sanitizers:
                    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                                   env=environment, start_new_session=True, preexec_fn=limit)
        used = -1.0
        try:
            while True:
                try:
                    return process.wait(limits[1] if limits else None)
                except subprocess.TimeoutExpired:
                    # Who only waits is stuck; who computes is held by the limit of processor time, and slow where the
                    # machine has much else to do.
                    before, used = used, session_seconds(process.pid)
                    if used - before < STUCK_SECONDS:
                        return None
        finally:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()

    def test(self, command, limits):
        """(passed, name of the test that failed or what ended the program)"""
        with open(self.last_words, "wb") as output, tempfile.TemporaryDirectory() as folder:
            environment = dict(self.environment, TMPDIR=folder)
            status = self.run(command, environment, output, limits)
        if status == 0:
            return True, ""
        words = self.words()[-20000:]
        failed = re.search(r"^\[  FAILED  \] ([\w./]+)", words, re.MULTILINE) or re.search(
            r"^(?:FAIL|ERROR): (\w+)", words, re.MULTILINE)
        if failed:
            return False, failed.group(1)
        if status is None or status in (-signal.SIGXCPU, -signal.SIGKILL):
            return False, "time"
        return False, f"status {status}"

    def find_programs(self):
        """All tests, and how long each group of them takes without a change; from an earlier run where it was the same."""
        known = json.loads(self.times.read_text()) if self.times.exists() else {}
        times = {}
        for target in self.test_targets():
            path = self.build_folder / "tests" / target
            key = digest([path])
            times[key] = known.get(key) or self.time_unit_tests(path)
            self.programs.append(Program(target, [str(path)] + GTEST_ARGUMENTS, target, times[key]))
        driver_folder = self.tree / "tests" / "driver"
        for path in sorted(driver_folder.glob("test_*.py")):
            if path.stem not in DRIVERS_LEFT_OUT:
                command = [sys.executable, "-B", str(path), "-f"]
                key = digest([path, self.build_folder / "tarvelmon", *sorted(driver_folder.glob("[!t]*.py"))])
                times[key] = known.get(key) or self.time_group({}, command, "driver", [])
                self.programs.append(Program(path.stem, command, "tarvelmon", times[key]))
            self.times.write_text(json.dumps(times))

    def time_unit_tests(self, path):
        with tempfile.TemporaryDirectory() as folder:
            report = os.path.join(folder, "times.json")
            with open(self.last_words, "wb") as output:
                self.run([str(path), "--gtest_filter=-*FullDepth*", f"--gtest_output=json:{report}"],
                         dict(self.environment, TMPDIR=folder), output, (600, 1800))
            if not os.path.exists(report):
                fail(f"{path.name} ends without a change:\n{self.words()[-2000:]}")
            with open(report) as file:
                suites = json.load(file)["testsuites"]
        groups = {"golden": [], "quick": [], "slow": []}
        for suite in suites:
            for test in suite["testsuite"]:
                name = f"{suite['name']}.{test['name']}"
                if test.get("failures"):
                    print(f"left out: {path.name} {name} fails without a change", flush=True)
                    continue
                quick = "quick" if float(test["time"].rstrip("s")) <= QUICK else "slow"
                groups["golden" if GOLDEN.search(name) else quick].append(name)
        times = {}
        for group, names in groups.items():
            if names:
                self.time_group(times, [str(path)] + GTEST_ARGUMENTS, group, ["--gtest_filter=" + ":".join(names)])
        times["full"] = (["--gtest_filter=*FullDepth*"], *FULL_SECONDS)
        return times

    def time_group(self, times, command, group, arguments):
        """Adds the time of a group to `times`, and returns these."""
        clock, before = time.monotonic(), resource.getrusage(resource.RUSAGE_CHILDREN)
        passed, by = self.test(command + arguments, (600, 1800))
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        if passed:
            used = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
            times[group] = (arguments, used, time.monotonic() - clock)
        else:
            print(f"left out: {' '.join(command)} {group} fails without a change ({by})", flush=True)
        return times

    def plan(self, folder):
        """All (program, group), those first that most likely notice a change in `folder` of src/."""
        talks = folder in DRIVEN_FOLDERS

        def order(entry):
            program, group = entry
            own = program.name == f"{folder}_test"
            turn = (0 if own and group == "quick" else
                    1 if own and group in ("golden", "slow") else
                    6 if group == "full" or program.name == "test_benchmark" else
                    2 if program.name == "test_transcripts" and talks else
                    3 if group == "quick" and talks else
                    4 if group == "driver" and talks and program.groups[group][1] < SHORT_DRIVER else
                    2 if group == "golden" else
                    3 if program.name == "test_transcripts" else
                    4 if group == "quick" else
                    5)
            return turn, program.groups[group][1]

        def may_notice(program, group):
            own = program.name == f"{folder}_test"
            if self.quick and order((program, group))[0] > LAST_QUICK_TURN:
                return False
            return own or group == "driver" or group != "full" and folder not in TOP_FOLDERS

        return sorted(((program, group) for program in self.programs for group in program.groups
                       if may_notice(program, group)), key=order)

    def killed_by(self, file):
        """What noticed the change of `file`: a test, or "" for none; None where it does not build or changes no code."""
        folder = file.split("/")[1]
        built = set()
        # The program itself need not be linked to see whether its parts are the same.
        parts = ["tarvelmon"] if file.endswith("/main.cpp") else [path.name for path in self.build_folder.glob("*.a")]
        if not self.build(parts) or self.engine() == self.unchanged:
            return None
        for program, group in self.plan(folder):
            if program.target not in built and not self.build([program.target]):
                return None
            built.add(program.target)
            arguments, used, clock = program.groups[group]
            limits = [used * CPU_LIMIT[0] + CPU_LIMIT[1], clock * WALL_LIMIT[0] + WALL_LIMIT[1]]
            passed, by = self.test(program.command + arguments, limits)
            if not passed and by != "time":
                # A test that failed by chance has noticed nothing.
                passed, by = self.test(program.command + arguments, limits)
            if not passed:
                return f"{program.name} {by}"
        return ""


def sources(files):
    """{file: text} of what can be mutated, by the path from the top."""
    paths = [TOP / file for file in files] or sorted((TOP / "src").rglob("*"))
    names = [path.resolve().relative_to(TOP).as_posix() for path in paths if path.suffix in (".cpp", ".h")]
    return {name: (TOP / name).read_text() for name in names if files or not LEFT_OUT.search(name)}


def known_equivalents(listed):
    """(file, before, after, line above or None) of each mutant of the list that no test can kill."""
    known, file = set(), None
    for line in listed.splitlines():
        heading = re.match(r"#+ `(src/\S+)`", line)
        entry = re.match(r"- `` (.*?) `` becomes `` (.*?) ``(?: below `` (.*?) ``)?:", line)
        if heading:
            file = heading.group(1)
        elif entry and file:
            known.add((file, *entry.groups()))
    return known


def is_among(known, mutant, text):
    """Whether a mutant is one of `known_equivalents`."""
    changed = (mutant.file, *mutants.changed_lines(text, mutant))
    return (*changed, None) in known or (*changed, mutants.line_above(text, mutant)) in known


def survivors_of(path, texts):
    """The survivors of an earlier run, found again by their lines, in the file or where these went."""
    found = []
    with open(path) as file:
        entries = [json.loads(line) for line in file]
    by_lines = collections.defaultdict(list)
    for name, text in texts.items():
        for mutant in mutants.mutants_of(name, text):
            by_lines[mutants.changed_lines(text, mutant)].append(mutant)
    for entry in entries:
        if entry["verdict"] != "survived":
            continue
        same = by_lines[(entry["before"], entry["after"])]
        same = [mutant for mutant in same if mutant.file == entry["file"]] or same
        if not same:
            print(f"gone: {entry['file']}:{entry['line']}: {entry['before']}", flush=True)
            continue
        found.append(min(same, key=lambda mutant: (
            mutants.line_above(texts[mutant.file], mutant) != entry.get("above"),
            abs(mutants.line_number(texts[mutant.file], mutant.start) - entry["line"]))))
    return found


NOT_TRIED = object()


class Score:
    """Counts the mutants, and keeps what became of each in a file."""

    def __init__(self, path, resume):
        self.equivalent = known_equivalents(EQUIVALENTS.read_text())
        self.counts = collections.Counter()
        self.by_folder = collections.defaultdict(collections.Counter)
        self.results = {}
        if path and resume and os.path.exists(path):
            with open(path) as file:
                entries = [json.loads(line) for line in file]
            self.results = {(entry["file"], entry["line"], entry["before"], entry["after"]): entry["by"]
                            for entry in entries}
        self.file = open(path, "a" if resume else "w") if path else None

    def known_result(self, mutant, text):
        """What an interrupted run found."""
        key = (mutant.file, mutants.line_number(text, mutant.start), *mutants.changed_lines(text, mutant))
        return self.results.get(key, NOT_TRIED)

    def verdict(self, mutant, text, by):
        if by is None:
            return "no mutant"
        if by:
            return "killed"
        return "equivalent" if is_among(self.equivalent, mutant, text) else "survived"

    def write(self, mutant, text, by, seconds):
        if self.file:
            before, after = mutants.changed_lines(text, mutant)
            entry = {"verdict": self.verdict(mutant, text, by), "file": mutant.file,
                     "line": mutants.line_number(text, mutant.start), "above": mutants.line_above(text, mutant),
                     "before": before, "after": after, "by": by, "seconds": round(seconds, 1)}
            print(json.dumps(entry), file=self.file, flush=True)

    def add(self, mutant, text, by):
        verdict = self.verdict(mutant, text, by)
        self.counts[verdict] += 1
        self.by_folder[mutant.file.split("/")[1]][verdict] += 1
        if verdict == "survived":
            before, after = mutants.changed_lines(text, mutant)
            print(f"survived: {mutant.file}:{mutants.line_number(text, mutant.start)}\n    {before}\n    {after}",
                  flush=True)

    def print(self):
        for folder, counts in sorted(self.by_folder.items()):
            print(f"{folder:10} {counts['killed']:4} killed {counts['survived']:3} survived "
                  f"{counts['equivalent']:3} equivalent")
        killed, survived = self.counts["killed"], self.counts["survived"]
        if killed + survived:
            print(f"score: {killed} of {killed + survived} killed, {100 * killed / (killed + survived):.1f} %; "
                  f"{self.counts['equivalent']} more are equivalent", flush=True)


def run(runner, queues, count, texts, score):
    """Tries mutants of each queue until `count` of them were built; those of headers, which cost most, last."""
    shares = [count // len(queues) + (place < count % len(queues)) for place in range(len(queues))]
    waiting = [(queue.popleft(), queue) for queue, share in zip(queues, shares) for _ in range(min(share, len(queue)))]
    waiting.sort(key=lambda entry: entry[0].file.endswith(".h"))
    for mutant, queue in waiting:
        text = texts[mutant.file]
        by = score.known_result(mutant, text)
        if by is NOT_TRIED:
            started = time.monotonic()
            place = runner.tree / mutant.file
            try:
                place.write_text(mutant.apply(text))
                by = runner.killed_by(mutant.file)
            finally:
                place.write_text(text)
            score.write(mutant, text, by, time.monotonic() - started)
        if by is not None:
            score.add(mutant, text, by)
        elif queue:
            waiting.append((queue.popleft(), queue))


def show(queues, count, texts):
    for queue in queues:
        for mutant in list(queue)[:-(-count // len(queues))]:
            before, after = mutants.changed_lines(texts[mutant.file], mutant)
            line = mutants.line_number(texts[mutant.file], mutant.start)
            print(f"{mutant.file}:{line}\n    {before}\n    {after}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("seed", nargs="?")
    parser.add_argument("count", nargs="?", type=int)
    parser.add_argument("files", nargs="*", metavar="file")
    parser.add_argument("--again", metavar="RESULTS", help="only the survivors of these results")
    parser.add_argument("--quick", action="store_true", help="without what takes long: find candidates, try them again later")
    parser.add_argument("--list", action="store_true", help="build and test nothing")
    parser.add_argument("--results", help="where each mutant is written, a line of JSON each")
    parser.add_argument("--resume", action="store_true", help="what stands in the results is not tried again")
    parser.add_argument("--build", type=pathlib.Path, default=TOP / "build-mutate", help="folder of the copy and its build")
    parser.add_argument("--sanitize", default="", help="sanitizers to build and test with, e.g. address,undefined")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    arguments = parser.parse_args()
    if not arguments.again and arguments.count is None:
        parser.error("a seed and a count, or --again")
    texts = sources(arguments.files)
    if arguments.again:
        queues = [collections.deque([mutant]) for mutant in survivors_of(arguments.again, texts)]
        count = len(queues)
    else:
        queues, count = mutants.drawn(texts, arguments.seed), arguments.count
    if arguments.list:
        return show(queues, count, texts)
    runner = Runner(arguments.build.resolve(), arguments.jobs, arguments.sanitize, arguments.quick)
    runner.prepare()
    score = Score(arguments.results, arguments.resume)
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    signal.signal(signal.SIGINT, signal.default_int_handler)
    try:
        run(runner, queues, count, texts, score)
    except KeyboardInterrupt:
        print("stopped", flush=True)
    finally:
        score.print()


if __name__ == "__main__":
    main()
