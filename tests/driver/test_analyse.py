"""Positions in, positions out: tarvelmon-analyse with EPD, JSON and suites."""

import json
import os
import pty
import re
import signal
import subprocess
import time
import unittest

from analyse import AnalyseTest, PROGRAM, SUITES, WELL_KNOWN, chess, children, end, text_of
from engine import PATIENCE
from test_documents import TOP

START = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -"
MATE_IN_ONE = "6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - -"
MIXED = "\n".join(["# a comment", "", START + " 0 1", "rubbish", START.replace(" w ", " b ") + " id \"Black\";",
                   "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", MATE_IN_ONE + " bm Rd8#;", "8/8/8/8/8/8/8/8 w - - 0 1"]) + "\n"
LONG = "r1b2rk1/2q1b1pp/p2ppn2/1p6/3QP3/1BN1B3/PPP3PP/R4RK1 w - -"


def well_known_lines():
    return [line for line in text_of(WELL_KNOWN).splitlines() if not line.startswith("#")]


class Positions(AnalyseTest):

    def test_each_line_is_answered_in_its_place(self):
        lines = self.analyse("--depth", "4", given=MIXED).splitlines()
        self.assertEqual(len(lines), 6)
        self.assertRegex(lines[0], re.escape(START) + r" acd 4; acn \d+; ce -?\d+; pm (\S+); pv \1( \S+)+;$")
        self.assertEqual(lines[1], "# the board is not eight ranks of eight squares: rubbish")
        self.assertIn("id \"Black\";", lines[2])
        self.assertEqual(lines[3], "7k/5Q2/6K1/8/8/8/8/8 b - - acd 0; acn 0; ce 0;")
        self.assertRegex(lines[4], r"acd 4; acn \d+; bm Rd8#; dm 1; pm Rd8#; pv Rd8#;$")
        self.assertEqual(lines[5], "# each side needs one king: 8/8/8/8/8/8/8/8 w - - 0 1")
        self.assertEqual(self.errors, "standard input:4: the board is not eight ranks of eight squares\n"
                                      "standard input:8: each side needs one king\n")

    def test_how_lines_end_and_a_file_begins_makes_no_difference(self):
        lines = f"{START}\n\n{MATE_IN_ONE} id \"a;b\";\n"
        whole = self.analyse("--depth", "2", given=lines)
        self.assertEqual(self.analyse("--depth", "2", given="\ufeff" + lines.replace("\n", "\r\n")), whole)
        first = self.write("first", "\ufeff" + lines)
        self.assertEqual(self.analyse("--depth", "2", first, first), whole * 2)
        self.assertEqual(self.analyse("--depth", "2", given=lines.rstrip("\n")), whole)

    def test_a_line_of_megabytes_is_one_line(self):
        long = "x" * 20_000_000
        output = self.analyse("--depth", "1", given=f"{long}\n{START}\n").splitlines()
        self.assertTrue(output[0].endswith(": " + long))
        self.assertIn(" pm ", output[1])

    def test_the_same_bytes_for_any_number_of_jobs(self):
        whole = self.analyse("--depth", "4", "--jobs", "1", WELL_KNOWN)
        self.assertEqual(len(whole.splitlines()), len(well_known_lines()))
        for jobs in ("2", "5"):
            self.assertEqual(self.analyse("--depth", "4", "--jobs", jobs, WELL_KNOWN), whole)
        self.assertEqual(self.analyse("--depth", "4", given=text_of(WELL_KNOWN)), whole)
        self.assertEqual(self.analyse("--depth", "4", "--nodes", "1000000", WELL_KNOWN), whole)

    def test_ranges_of_lines_make_the_whole(self):
        file = self.write("all.epd", MIXED)
        whole = self.analyse("--depth", "3", file)
        parts = [self.analyse("--depth", "3", "--lines", part, file) for part in ("-3", "4-5", "6-")]
        self.assertEqual("".join(parts), whole)
        self.assertEqual(self.analyse("--depth", "3", "--lines", "3", file).splitlines(), whole.splitlines()[:1])
        self.analyse("--depth", "3", "--lines", "9-", file, status=1)

    def test_several_files_count_their_lines(self):
        first = self.write("first", START + "\nx\n")
        second = self.write("second", "y\n" + MATE_IN_ONE)
        self.assertEqual(len(self.analyse("--depth", "2", first, second).splitlines()), 4)
        self.assertIn(first + ":2: ", self.errors)
        self.assertIn(second + ":1: ", self.errors)

    def test_a_line_comes_out_as_soon_as_it_is_ready(self):
        process = self.start("--depth", "3")
        for _ in range(3):
            process.stdin.write(START + "\n")
            process.stdin.flush()
            self.assertIn(" pm ", process.stdout.readline())
        process.stdin.close()
        self.assertEqual(process.stdout.read(), "")
        self.assertEqual(process.wait(PATIENCE), 0)

    def test_limits_by_time_and_nodes(self):
        begun = time.monotonic()
        line = self.analyse("--time", "0.3", given=START + "\n")
        self.assertGreater(time.monotonic() - begun, 0.25)
        self.assertRegex(line, r" acs \d+;")
        nodes = int(re.search(r" acn (\d+);", self.analyse("--nodes", "20000", given=START + "\n")).group(1))
        self.assertTrue(20000 <= nodes <= 21100, nodes)
        self.assertRegex(self.analyse("--depth", "2", "--acs", given=START + "\n"), r" acs 0;")

    def test_json_says_the_same(self):
        epd = self.analyse("--depth", "4", given=MIXED).splitlines()
        objects = [json.loads(line) for line in self.analyse("--depth", "4", "--json", given=MIXED).splitlines()]
        self.assertEqual(len(objects), len(epd))
        for line, found in zip(epd, objects):
            if line.startswith("#"):
                self.assertEqual(line, f"# {found['error']}: {found['line']}")
                continue
            self.assertTrue(line.startswith(found["epd"][:20]))
            self.assertIn(f" acd {found['depth']}; acn {found['nodes']};", line)
            self.assertEqual(found["pv"], re.findall(r" pv (.*?);", line)[0].split() if " pv " in line else [])
            self.assertIn(f" ce {found['score']};" if "score" in found else f" dm {found['mate']};", line)

    @unittest.skipIf(chess is None, "python-chess cannot be imported")
    def test_another_program_reads_the_lines(self):
        for line in self.analyse("--depth", "5", WELL_KNOWN).splitlines():
            board = chess.Board()
            found = board.set_epd(line)  # plays the line, and so finds a move that is not legal
            self.assertEqual(found["pm"], found["pv"][0])
            self.assertEqual(found["acd"], 5)
            texts = []
            for move in found["pv"]:
                texts.append(board.san(move))
                board.push(move)
            self.assertIn(f" pv {' '.join(texts)};", line)  # written as that program writes it


class Accidents(AnalyseTest):

    def busy(self, *arguments):
        process = self.start(*arguments)
        process.stdin.write("\n".join([LONG, START, MATE_IN_ONE]) + "\n")
        process.stdin.flush()
        deadline = time.monotonic() + PATIENCE
        while not children(process) and time.monotonic() < deadline:
            time.sleep(0.01)
        return process

    def test_a_worker_that_dies_is_told_on_its_line_and_replaced(self):
        process = self.busy("--jobs", "1", "--time", "2")
        time.sleep(0.3)
        end(children(process)[0])
        output, errors = process.communicate(timeout=PATIENCE)
        lines = output.splitlines()
        self.assertEqual(lines[0], f"# the worker was ended by signal 9: {LONG}")
        self.assertIn(" pm ", lines[1])
        self.assertIn(" pm Rd8#; ", lines[2])
        self.assertEqual(errors, "standard input:1: the worker was ended by signal 9\n")
        self.assertEqual(process.returncode, 0)

    def test_signals_end_it_and_its_workers(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            process = self.busy("--jobs", "2", "--time", "600")
            time.sleep(0.2)
            workers = children(process)
            self.assertGreater(len(workers), 0)
            process.send_signal(number)
            self.assertEqual(process.wait(PATIENCE), 128 + number)
            for worker in workers:
                with self.assertRaises(ProcessLookupError):
                    os.kill(worker, 0)

    def test_workers_end_with_a_program_that_was_killed(self):
        process = self.busy("--jobs", "1", "--time", "600")
        time.sleep(0.2)
        worker = children(process)[0]
        process.kill()
        process.wait()
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            try:
                with open(f"/proc/{worker}/stat", encoding="ascii") as file:
                    if file.read().rsplit(")", 1)[1].split()[0] == "Z":
                        return
            except FileNotFoundError:
                return
            time.sleep(0.05)
        self.fail("the worker is still there")

    def test_a_reader_that_goes_away_ends_it(self):
        done = subprocess.run(f"'{PROGRAM}' --depth 3 '{WELL_KNOWN}' | head -n 2", shell=True, cwd=self.folder,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=PATIENCE, check=True)
        self.assertEqual(len(done.stdout.splitlines()), 2)
        self.assertEqual(done.stderr, "")

    def test_a_full_disk_is_told(self):
        with open("/dev/full", "w", encoding="ascii") as full:
            done = subprocess.run([PROGRAM, "--depth", "2", WELL_KNOWN], stdout=full, stderr=subprocess.PIPE,
                                  text=True, timeout=PATIENCE, check=False)
        self.assertEqual(done.returncode, 1)
        self.assertIn("No space left on device", done.stderr)

    def test_bad_command_lines(self):
        for arguments in (["--depth", "0"], ["--depth", "65"], ["--depth", "x"], ["--unknown"], ["--time", "-1"],
                          ["--nodes", "0"], ["--jobs", "0"], ["--hash", "0"], ["--lines", "x"], ["--lines", "5-4"],
                          ["--lines", "0-4"], ["--lines", "-"], ["--lines", "1-2-3"], ["--time", "nan"],
                          ["--threshold", "nan"], ["--resume", ""], ["--suite", "--html", ""]):
            with self.subTest(arguments):
                self.assertEqual(self.analyse(*arguments, status=2), "")
                self.assertRegex(self.errors, r"^tarvelmon-analyse: .+\nTry: tarvelmon-analyse --help\n$")

    def test_the_manual_page_has_the_options_of_the_help_text(self):
        page = text_of(TOP / "docs/man/tarvelmon-analyse.6").replace("\\-", "-")
        helped = self.analyse("--help")
        options = set(re.findall(r"(--\w+)", helped))
        self.assertGreaterEqual(len(options), 15)
        for option in options:
            self.assertRegex(page, rf"(?m)^\.(B|BI|BR) {option}\b")
        for limit in ("64", "0.5", "12"):
            self.assertIn(limit, helped)
            self.assertIn(limit, page)
        self.assertRegex(self.analyse("--version"), r"^tarvelmon-analyse \d+\.\d+\n$")

    def test_nothing_usable(self):
        self.analyse(status=1)
        self.assertEqual(self.errors, "tarvelmon-analyse: there is no position in the input\n")
        self.analyse("--depth", "2", given="x\n", status=1)
        self.analyse("nosuchfile", status=1)
        self.assertEqual(self.errors, "nosuchfile: No such file or directory\n")
        self.analyse(".", status=1)
        self.assertEqual(self.errors, ".: Is a directory\n")
        self.analyse("--resume", "nosuchfile", status=1)
        self.assertEqual(self.errors, "nosuchfile: No such file or directory\n")

    def test_a_file_is_not_input_and_output(self):
        file = self.write("all.epd", START + "\n")
        page = self.write("page.html", "kept")
        for command, told in (("--depth 1 all.epd >>all.epd", "all.epd: it is the output as well"),
                              ("--depth 1 <all.epd >>all.epd", "standard input: it is the output as well"),
                              ("--depth 1 --resume all.epd page.html >>all.epd", "all.epd: it is the output as well"),
                              ("--suite --html ./all.epd all.epd", "./all.epd: it is an input as well"),
                              ("--suite --html all.epd --resume all.epd page.html", "all.epd: it is an input as well"),
                              ("--suite --html page.html all.epd >>page.html", "page.html: it is the output as well")):
            with self.subTest(command):
                done = subprocess.run(f"'{PROGRAM}' {command}", shell=True, cwd=self.folder, stdout=subprocess.PIPE,
                                      stderr=subprocess.PIPE, text=True, timeout=PATIENCE, check=False)
                self.assertEqual((done.returncode, done.stdout, done.stderr), (1, "", told + "\n"))
                self.assertEqual((text_of(file), text_of(page)), (START + "\n", "kept"))

    def test_a_page_that_cannot_be_written_is_told_before_the_work(self):
        for page, told in (("none/x", "No such file or directory"), (".", "Is a directory")):
            self.assertEqual(self.analyse("--suite", "--html", page, WELL_KNOWN, status=1), "")
            self.assertEqual(self.errors, f"{page}: {told}\n")

    def test_named_pipes_are_read_once(self):
        for arguments in ([], ["--pgn"]):
            pipe = self.path("pipe" + "".join(arguments))
            os.mkfifo(pipe)
            writer = subprocess.Popen(["sh", "-c", 'echo "$0" >"$1"', "1. e4 *" if arguments else START, pipe])
            self.addCleanup(writer.kill)
            self.assertRegex(self.analyse("--depth", "2", *arguments, pipe), r"acd 2;|%depth 2\]")
            self.assertEqual(writer.wait(PATIENCE), 0)

    def run_under(self, limits, *arguments):
        done = subprocess.run(["bash", "-c", f"{limits}; exec \"$0\" \"$@\"", PROGRAM, *arguments], cwd=self.folder,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              timeout=PATIENCE, check=False)
        return done.returncode, done.stdout, done.stderr

    def test_streams_that_are_closed(self):
        file = self.write("five.epd", (START + "\n") * 5)
        bad = "Bad file descriptor\n"
        status, output, errors = self.run_under("exec >&-", "--depth", "2", "--jobs", "2", file)
        self.assertEqual((status, output, errors), (1, "", "tarvelmon-analyse: standard output: " + bad))
        self.assertEqual(self.run_under("exec <&-", "--depth", "2"), (1, "", "standard input: " + bad))
        status, output, _ = self.run_under("exec 2>&-", "--depth", "2", "--jobs", "2", file, self.write("bad", "x\n"))
        self.assertEqual((status, output.count(" pm "), output.count("# ")), (0, 5, 1))
        self.assertEqual(self.run_under("exec <&- >&- 2>&-", "--depth", "2", file), (1, "", ""))

    def test_a_file_that_may_not_grow_is_told(self):
        self.write("many.epd", (START + "\n") * 30)
        done = self.run_under("ulimit -f 1; exec >found", "--depth", "1", "many.epd")
        self.assertEqual(done, (1, "", "tarvelmon-analyse: standard output: File too large\n"))

    @unittest.skipIf(bool(os.environ.get("TARVELMON_SANITIZE")), "a sanitizer reserves more")
    def test_a_table_that_cannot_be_had_is_told_on_the_line(self):
        told = "there is not enough memory for the hash table"
        status, output, errors = self.run_under("ulimit -v 400000", "--hash", "4000", "--jobs", "1",
                                                self.write("one.epd", START + "\n"))
        self.assertEqual((status, output), (1, f"# {told}: {START}\n"))
        self.assertTrue(errors.startswith(self.path("one.epd") + ":1: " + told + "\n"))

    def test_bytes_of_any_kind_are_no_position(self):
        with open(self.path("bytes"), "wb") as file:
            file.write(bytes(range(256)) * 40 + b"\n" + b"\xff\"" * 5000 + b"\n" + START.encode() + b" id \"\xe9\"")
        done = subprocess.run([PROGRAM, "--json", "--depth", "2", self.path("bytes")], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, timeout=PATIENCE, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        for line in done.stdout.splitlines():
            json.loads(line)


class Resume(AnalyseTest):

    def test_what_stands_in_an_earlier_output_is_not_searched_again(self):
        for form in ([], ["--json"], ["--suite"], ["--suite", "--json"]):
            with self.subTest(form):
                command = ["--depth", "4", *form, WELL_KNOWN]
                whole = self.analyse(*command)
                lines = [line for line in whole.splitlines() if not line.startswith("#")]
                # Cut in the middle of a line; one answer is another's, so that it shows where it was taken from.
                marked = lines[1].replace("acn ", "acn 99").replace('"nodes":', '"nodes":99')
                self.assertNotEqual(marked, lines[1])
                self.write("earlier", "\n".join([lines[0], marked, *lines[2:9], lines[9][:40]]))
                again = self.analyse("--resume", self.path("earlier"), *command)
                expected = whole.replace(lines[1], marked).splitlines()
                if form == ["--suite"]:  # its table tells times, which the lines do not
                    self.assertEqual(again.splitlines()[-1], expected[-1])
                    expected = expected[:len(lines)]
                    again = "\n".join(again.splitlines()[:len(lines)])
                self.assertEqual(again.splitlines(), expected)

    def test_an_answer_of_less_depth_and_a_worker_that_died_are_searched_again(self):
        shallow = self.analyse("--depth", "2", given=START + "\n")
        deep = self.analyse("--depth", "3", given=START + "\n" + MATE_IN_ONE + "\n")
        self.write("earlier", shallow + f"# the worker was ended by signal 9: {MATE_IN_ONE}\n")
        self.assertEqual(self.analyse("--depth", "3", "--resume", self.path("earlier"),
                                      given=START + "\n" + MATE_IN_ONE + "\n"), deep)

    def test_an_earlier_output_of_any_kind_does_no_harm(self):
        command = ["--depth", "2", "--suite", "--json", "--lines", "3-5", WELL_KNOWN]
        whole = self.analyse(*command)
        first = json.loads(whole.splitlines()[0])
        for name, value in (("solved_depth", "x"), ("solved_depth", None), ("epd", 3), ("depth", {}), ("pv", "x")):
            self.write("earlier", json.dumps({**first, name: value}) + "\n" + "[" * 10000 + "\n\0\xff\n{}\n3\n")
            self.assertEqual(self.analyse("--resume", self.path("earlier"), *command), whole)
        self.write("earlier", json.dumps({**first, "solved_seconds": "x"}) + "\n")
        self.assertEqual(len(self.analyse("--resume", self.path("earlier"), *command).splitlines()), 4)

    def test_after_a_kill_on_the_way_the_whole_is_the_same(self):
        whole = self.analyse("--depth", "6", WELL_KNOWN)
        with open(self.path("part"), "w", encoding="ascii") as part:
            process = subprocess.Popen([PROGRAM, "--depth", "6", WELL_KNOWN], stdout=part)
            deadline = time.monotonic() + PATIENCE
            while os.path.getsize(self.path("part")) < 500 and time.monotonic() < deadline:
                time.sleep(0.005)
            process.kill()
            process.wait()
        self.assertEqual(self.analyse("--depth", "6", "--resume", self.path("part"), WELL_KNOWN), whole)


class ProgressLine(AnalyseTest):

    @staticmethod
    def all_of(terminal):
        """What was written to it; nobody has its other end any more."""
        seen = b""
        while True:
            try:
                seen += os.read(terminal, 1 << 16)
            except OSError:
                return seen.decode()

    def test_a_terminal_sees_how_far_it_is(self):
        master, slave = pty.openpty()
        process = subprocess.Popen([PROGRAM, "--jobs", "1", "--time", "0.3", "--lines", "-8", WELL_KNOWN],
                                   stdout=subprocess.PIPE, stderr=slave)
        os.close(slave)
        lines = process.stdout.read().splitlines()
        self.assertEqual(process.wait(PATIENCE), 0)
        seen = self.all_of(master)
        os.close(master)
        process.stdout.close()
        self.assertEqual(len(lines), 6)
        self.assertRegex(seen, r"\r[1-5] of 6, \d+\.\d a second, 0:00:0\d left\x1b\[K")
        self.assertTrue(seen.endswith("\r\x1b[K"))

    def test_nobody_else_does(self):
        self.analyse("--depth", "2", WELL_KNOWN)
        self.assertEqual(self.errors, "")


class Suites(AnalyseTest):

    def test_the_well_known_positions(self):
        output = self.analyse("--suite", "--depth", "7", WELL_KNOWN).splitlines()
        lines = [line for line in output if not line.startswith("#")]
        table = [line for line in output if line.startswith("#")]
        self.assertEqual(lines, text_of(os.path.join(SUITES, "well_known.depth7.epd")).splitlines())
        self.assertEqual(table[0].split(), ["#", "id", "depth", "seconds"])
        self.assertEqual(table[-1], f"# solved 20 of {len(lines)}")
        for line, row in zip(lines, table[1:-1]):
            name = re.search(r' id "(.*?)";', line).group(1)
            solved = re.search(r'c9 "solved at depth (\d+)"', line)
            self.assertTrue(row.startswith("# " + name + " "))
            self.assertEqual(row[2 + len(name):].split()[0], solved.group(1) if solved else "-")

    def test_the_first_moves_are_those_of_the_verdicts(self):
        for line in text_of(os.path.join(SUITES, "well_known.depth7.epd")).splitlines():
            best = re.search(r" bm (.*?);", line).group(1).split()
            chosen = re.search(r" pm (.*?);", line).group(1)
            self.assertEqual(chosen.rstrip("+#") in [move.rstrip("+#") for move in best], "not solved" not in line)

    def test_moves_to_avoid_and_lines_that_ask_nothing(self):
        output = self.analyse("--suite", "--depth", "3", given=f"{MATE_IN_ONE} am Rd8#; id \"a\";\n{START}\n"
                              f"{MATE_IN_ONE} am Kf1; id \"b\";\n{START} bm Ke7; id \"c\";\n").splitlines()
        self.assertIn("c9 \"not solved\"", output[0])
        self.assertEqual(output[1], f"# neither bm nor am: {START}")
        self.assertIn("c9 \"solved at depth ", output[2])
        self.assertTrue(output[3].startswith("# \"Ke7\" is not a legal move here: "))
        self.assertEqual(output[-1], "# solved 1 of 2")

    def test_json_ends_with_the_count(self):
        output = [json.loads(line) for line in
                  self.analyse("--suite", "--json", "--depth", "4", "--acs", WELL_KNOWN).splitlines()]
        self.assertEqual(output[-1]["positions"], len(output) - 1)
        self.assertEqual(output[-1]["solved"], sum(found["solved"] for found in output[:-1]))
        for found in output[:-1]:
            self.assertEqual(found["solved"], found["solved_depth"] > 0)
            self.assertEqual(found["solved"], "solved_seconds" in found)


if __name__ == "__main__":
    unittest.main()
