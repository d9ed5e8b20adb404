"""./run builds when something has changed, says so in one line, and starts the engine at once when nothing has.

A tree of a few files stands for the sources and a script for CMake, which keeps CMake's rules: it refuses a build
folder made elsewhere, and compiles what is newer than the program.
"""

import os
import re
import resource
import shutil
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

TOP = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SOURCES = ("CMakeLists.txt", "cmake/options.cmake", "src/engine.cpp", "companions/CMakeLists.txt", "bench/positions.h",
           "packaging/CMakeLists.txt", "data/tarvelmon.ini", "data/book/openings.txt", "tools/CMakeLists.txt",
           "tools/book/main.cpp")
FAKE_CMAKE = r"""#!/bin/bash
echo "$*" >>"$FAKE_LOG"
case $1 in
--version) echo "cmake version 3.25.1" ;;
-S)
    mkdir -p "$4"
    if [ -f "$4/CMakeCache.txt" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$2" "$4/CMakeCache.txt"; then
        echo "CMake Error: The source does not match the source used to generate cache."
        exit 1
    fi
    printf 'CMAKE_HOME_DIRECTORY:INTERNAL=%s\nCMAKE_CACHEFILE_DIR:INTERNAL=%s\n' "$2" "$4" >"$4/CMakeCache.txt"
    ;;
--build)
    sleep "${FAKE_SECONDS:-0}"
    source=${2%/build}/src/engine.cpp
    case $* in *"--target play-tarvelmon-gui "*) program=$2/companions/gui/tarvelmon-gui ;; *) program=$2/tarvelmon ;; esac
    case $* in *--clean-first*) rm -f "$2/tarvelmon" "$2/companions/gui/tarvelmon-gui" ;; esac
    echo "[  5%] Building CXX object"
    if grep -q error "$source"; then
        echo "engine.cpp: error: that is no C++"
        exit 1
    fi
    echo "[ 47%] Building CXX object"
    if [ ! -e "$program" ] || [ "$source" -nt "$program" ]; then
        mkdir -p "${program%/*}"
        printf '#!/bin/sh\necho "%s from %s in $PWD, told $*"\ncat\n' "${program##*/}" "$(cat "$source")" >"$program"
        chmod +x "$program"
    fi
    [ -e "$2/book.bin" ] || echo book >"$2/book.bin"
    echo "[100%] Built target book"
    ;;
esac
"""
FAKE_APT = r"""#!/bin/bash
echo "apt-get $*" >>"$FAKE_LOG"
case $* in
*install*)
    [ -z "$FAKE_APT_FAILS" ] || { echo "E: Unable to locate package cmake"; exit 100; }
    echo "dlstatus:1:60.0:Retrieving file 1 of 1"
    echo "Unpacking cmake"
    echo "pmstatus:cmake:100.0:Installed cmake"
    ln -s "$FAKE_TOOLS/cmake" "${0%/*}/cmake"
    ;;
esac
"""
BUILDING = "tarvelmon: building 10% 20% 30% 40% 50% 60% 70% 80% 90% 100%\n"


def write(path, text, mode=0o644):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)
    os.chmod(path, mode)


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def make_tree(tree):
    os.makedirs(os.path.join(tree, "tools"))
    shutil.copy(os.path.join(TOP, "run"), tree)
    for name in ("run_build.sh", "toolchain.sh"):
        shutil.copy(os.path.join(TOP, "tools", name), os.path.join(tree, "tools"))
    for name in SOURCES:
        write(os.path.join(tree, name), "first\n" if name.endswith("engine.cpp") else name + "\n")


class Run(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="tarvelmon-run-")
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        os.chmod(self.folder, 0o755)
        self.tree = os.path.join(self.folder, "a tree")
        make_tree(self.tree)
        self.tools = os.path.join(self.folder, "tools")
        write(os.path.join(self.tools, "cmake"), FAKE_CMAKE, 0o755)
        write(os.path.join(self.tools, "c++"), "#!/bin/sh\nexec cat >/dev/null\n", 0o755)
        write(os.path.join(self.tools, "apt-get"), "#!/bin/sh\nexit 1\n", 0o755)  # nothing is installed on this machine
        self.log = os.path.join(self.folder, "log")
        write(self.log, "")

    def path(self, *names):
        return os.path.join(self.tree, *names)

    def environment(self, **changes):
        return {**os.environ, "PATH": self.tools + ":" + os.environ["PATH"], "CXX": os.path.join(self.tools, "c++"),
                "FAKE_LOG": self.log, "FAKE_TOOLS": self.tools, **changes}

    def run_it(self, *arguments, text="quit\n", user=None, **changes):
        return subprocess.run([self.path("run"), *arguments], input=text, text=True, capture_output=True, timeout=60,
                              user=user, env=self.environment(**changes), check=False)

    def started(self, version="first", program="tarvelmon", arguments="", text="quit\n"):
        return "%s from %s in %s, told %s\n%s" % (program, version, self.path("build/play"), arguments, text)

    def assert_builds(self, version="first"):
        done = self.run_it()
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, self.started(version), BUILDING))

    def assert_starts_at_once(self, *arguments, **expected):
        write(self.log, "")
        done = self.run_it(*arguments)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, self.started(**expected), ""))
        self.assertEqual(read(self.log), "")

    def assert_asks_the_build(self, message):
        write(self.log, "")
        self.run_it()
        self.assertIn("--build", read(self.log), message)

    # ---- building -----------------------------------------------------------------------------------------------

    def test_the_first_start_builds_and_says_so_in_one_line(self):
        self.assert_builds()
        self.assertEqual(sorted(os.listdir(self.path("build/play"))), ["book.bin", "syzygy", "tarvelmon.ini"])

    def test_ninja_tells_its_progress_too(self):
        ninja = FAKE_CMAKE.replace("[ 47%]", "[7/14]").replace("[  5%]", "[1/14]").replace("[100%]", "[14/14]")
        write(os.path.join(self.tools, "cmake"), ninja, 0o755)
        self.assert_builds()

    def test_the_companion_is_built_and_started_with_its_arguments(self):
        done = self.run_it("gui", "bench", text="")
        self.assertEqual(done.stdout, self.started(program="tarvelmon-gui", arguments="bench", text=""))
        self.assertEqual(done.stderr, BUILDING)
        self.assert_starts_at_once("gui", program="tarvelmon-gui")
        self.assert_builds()
        self.assert_starts_at_once("gui", program="tarvelmon-gui")

    def test_a_build_that_fails_is_shown_and_ends_it(self):
        write(self.path("src/engine.cpp"), "error")
        done = self.run_it()
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("engine.cpp: error: that is no C++\n", done.stderr)
        self.assertTrue(done.stderr.endswith("tarvelmon: the build failed\n"))
        write(self.path("src/engine.cpp"), "second\n")
        self.assert_builds("second")

    def test_two_at_once_build_once(self):
        first = subprocess.Popen([self.path("run")], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True,
                                 stderr=subprocess.DEVNULL, env=self.environment(FAKE_SECONDS="5"))
        while "--build" not in read(self.log) and first.poll() is None:
            time.sleep(0.02)
        second = self.run_it(text="")
        self.assertEqual(first.communicate()[0], self.started(text=""))
        self.assertEqual(second.stdout, self.started(text=""))
        self.assertEqual(second.stderr, "tarvelmon: waiting for another build in %s\n" % self.path("build"))
        self.assertEqual(read(self.log).count("--build"), 1)

    # ---- starting -----------------------------------------------------------------------------------------------

    def test_nothing_changed_starts_at_once(self):
        self.assert_builds()
        self.assert_starts_at_once()
        used = []
        for _ in range(5):
            before = resource.getrusage(resource.RUSAGE_CHILDREN)
            self.run_it()
            after = resource.getrusage(resource.RUSAGE_CHILDREN)
            used.append(after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime)
        self.assertLess(min(used), 0.1)

    def test_any_changed_added_or_removed_source_is_built(self):
        self.assert_builds()
        write(self.path("src/engine.cpp"), "second\n")
        self.assert_builds("second")
        for name in (*SOURCES, "src/folder/new.cpp", "tools/book/new.cpp"):
            write(self.path(name), "more\n")
            self.assert_asks_the_build(name)
        os.remove(self.path("tools/book/new.cpp"))
        self.assert_asks_the_build("removed")

    def test_every_header_that_the_programs_include_is_watched(self):
        watched = {name.split("/")[0] for name in SOURCES}
        for folder in ("src", "companions", "tools/book"):
            for source in Path(TOP, folder).rglob("*.*"):
                for name in re.findall(r'^#include "([^"]*)"', source.read_text(encoding="utf-8"), re.MULTILINE):
                    if Path(TOP, name).exists():
                        self.assertIn(name.split("/")[0], watched, source)

    def test_an_older_file_in_the_place_of_a_newer_is_built(self):
        older = os.stat(self.path("src/engine.cpp"))
        write(self.path("src/engine.cpp"), "second\n")
        self.assert_builds("second")
        write(self.path("src/engine.cpp"), "first\n")
        os.utime(self.path("src/engine.cpp"), ns=(older.st_mtime_ns, older.st_mtime_ns))
        self.assert_builds("first")
        self.assert_starts_at_once()

    def test_a_clock_set_back_after_the_build_does_not_hide_a_change(self):
        self.assert_builds()
        tomorrow = time.time() + 86400
        for name in ("build/tarvelmon", "build/.tarvelmon.files"):
            os.utime(self.path(name), (tomorrow, tomorrow))
        write(self.path("src/engine.cpp"), "second\n")
        self.assert_builds("second")
        self.assert_starts_at_once(version="second")

    def test_what_is_missing_of_the_build_is_made(self):
        self.assert_builds()
        for name in ("build/tarvelmon", "build/book.bin", "build/play/tarvelmon.ini", "build/play/book.bin"):
            os.remove(self.path(name))
            self.assert_builds()
            self.assertTrue(os.path.exists(self.path(name)), name)

    def test_what_a_player_has_put_there_stays(self):
        self.assert_builds()
        os.remove(self.path("build/play/book.bin"))
        write(self.path("build/play/book.bin"), "own")
        write(self.path("build/play/tarvelmon.ini"), "[ENGINE]\n")
        write(self.path("src/engine.cpp"), "second\n")
        self.assert_builds("second")
        self.assertEqual(read(self.path("build/play/book.bin")), "own")
        self.assertEqual(read(self.path("build/play/tarvelmon.ini")), "[ENGINE]\n")

    def test_a_new_book_is_played_from(self):
        self.assert_builds()
        os.remove(self.path("build/book.bin"))
        write(self.path("build/book.bin"), "newer")
        self.run_it()
        self.assertEqual(read(self.path("build/play/book.bin")), "newer")

    # ---- other places -------------------------------------------------------------------------------------------

    def test_a_tree_that_was_moved_builds_again_and_keeps_the_players_files(self):
        self.assert_builds()
        write(self.path("build/play/tarvelmon.ini"), "[ENGINE]\n")
        os.rename(self.tree, self.tree + " moved")
        self.tree += " moved"
        self.assert_builds()
        self.assertEqual(read(self.path("build/play/tarvelmon.ini")), "[ENGINE]\n")
        self.assertEqual(read(self.path("build/play/book.bin")), "book\n")
        self.assert_starts_at_once()

    def test_a_tree_that_was_copied_builds_its_own_sources(self):
        self.assert_builds()
        original = self.tree
        self.tree += " copied"
        subprocess.run(["cp", "-a", original, self.tree], check=True)
        write(self.path("src/engine.cpp"), "second\n")
        self.assert_builds("second")
        self.tree = original
        self.assert_starts_at_once()

    def test_a_build_folder_of_another_tree_is_emptied_and_ones_own_is_not(self):
        folder = self.path("build-test")
        for tree, kept in ((self.tree, True), (self.tree + " before", False)):
            write(folder + "/CMakeCache.txt", "CMAKE_HOME_DIRECTORY:INTERNAL=%s\nCMAKE_CACHEFILE_DIR:INTERNAL=%s\n" % (
                tree, tree + "/build-test"))
            write(folder + "/CMakeFiles/a.o", "")
            subprocess.run(["bash", "-c", '. "$1/tools/toolchain.sh" && dropMovedBuild "$1" "$2"', "bash", self.tree,
                            folder], check=True)
            self.assertEqual(os.path.exists(folder + "/CMakeFiles/a.o"), kept)

    def as_stranger(self):
        """What makes ./run run without leave to write in the tree: the administrator's own leave has no end."""
        if os.geteuid() == 0:
            return {"user": 65534}
        for folder in (self.path("build"), self.tree):
            if os.path.exists(folder):
                os.chmod(folder, 0o555)
                self.addCleanup(os.chmod, folder, 0o755)
        return {}

    def test_a_tree_of_somebody_else_is_told_in_one_line(self):
        done = self.run_it(**self.as_stranger())
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertRegex(done.stderr, r"\Atarvelmon: cannot build: \w+ cannot write to %s, which belongs to \w+ "
                         r"\(Permission denied\)\. Copy the sources to a folder of your own and start \./run there\.\n\Z"
                         % self.tree)

    def test_a_build_of_somebody_else_starts_and_is_not_built_anew(self):
        self.assert_builds()
        stranger = self.as_stranger()
        done = self.run_it(**stranger)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, self.started(), ""))
        write(self.path("src/engine.cpp"), "second\n")
        done = self.run_it(**stranger)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertRegex(done.stderr, r"\Atarvelmon: cannot build: \w+ cannot write to %s/build, .*\n\Z" % self.tree)

    # ---- installing ---------------------------------------------------------------------------------------------

    def without_cmake(self):
        """A folder with every program of this machine but CMake, an apt-get that brings it, and an administrator."""
        folder = os.path.join(self.folder, "programs")
        os.mkdir(folder)
        for source in ("/bin", "/usr/bin"):
            for name in os.listdir(source):
                if not os.path.lexists(os.path.join(folder, name)) and name not in ("cmake", "apt-get", "id"):
                    os.symlink(os.path.join(source, name), os.path.join(folder, name))
        write(os.path.join(folder, "apt-get"), FAKE_APT, 0o755)
        write(os.path.join(folder, "id"), "#!/bin/sh\necho 0\n", 0o755)
        return folder

    def test_what_is_missing_is_installed_with_progress(self):
        done = self.run_it(PATH=self.without_cmake())
        installing = "tarvelmon: installing cmake 10% 20% 30% 40% 50% 60% 70% 80% 90% 100%\n"
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, self.started(), installing + BUILDING))

    def test_what_cannot_be_installed_is_told(self):
        done = self.run_it(PATH=self.without_cmake(), FAKE_APT_FAILS="1")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("E: Unable to locate package cmake\n", done.stderr)
        self.assertTrue(done.stderr.endswith("tarvelmon: apt-get install failed. Needed are: cmake\n"), done.stderr)


if __name__ == "__main__":
    unittest.main()
