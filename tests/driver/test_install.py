"""An installed engine starts by its script in a folder of the user's own, which the first start fills."""

import gzip
import os
import re
import subprocess
import tempfile
import unittest

TOP = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUILD = os.path.dirname(os.environ["TARVELMON"])
# One of them is built only where its libraries are.
PROGRAMS = ["tarvelmon", "tarvelmon-gui", "tarvelmon-book",
            *(["tarvelmon-analyse"] if os.environ.get("TARVELMON_ANALYSE") else [])]


def read(path):
    with open(path, "rb") as file:
        return file.read()


def install(prefix, *components):
    """All that is installed by default, or the named sets of files."""
    for choice in [["--component", component] for component in components] or [[]]:
        subprocess.run(["cmake", "--install", BUILD, "--prefix", prefix, *choice], check=True, stdout=subprocess.DEVNULL)


def files_below(folder):
    return {os.path.relpath(os.path.join(path, name), folder) for path, _, names in os.walk(folder) for name in names}


def write(path, content):
    with open(path, "wb") as file:
        file.write(content)


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="tarvelmon-install-")
        cls.addClassCleanup(folder.cleanup)
        cls.prefix = os.path.join(folder.name, "a prefix")
        install(cls.prefix)

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="tarvelmon-home-")
        self.addCleanup(folder.cleanup)
        self.home = folder.name
        self.folder = os.path.join(self.home, ".local", "share", "tarvelmon")
        self.share = os.path.join(self.prefix, "share", "games", "tarvelmon")

    def start(self, text, program="tarvelmon", cwd=None, prefix=None, **environment):
        """Output of an installed script for an input; it must end with status 0 and an empty error output."""
        variables = {"PATH": os.environ["PATH"], "HOME": self.home, **environment}
        done = subprocess.run([os.path.join(prefix or self.prefix, "bin", program)], input=text, text=True, timeout=120,
                              cwd=cwd, capture_output=True,
                              env={name: value for name, value in variables.items() if value is not None})
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def test_first_start_fills_the_users_folder(self):
        self.assertIn("pong 1\n", self.start("xboard\nping 1\nquit\n"))
        self.assertEqual(sorted(os.listdir(self.folder)), ["book.bin", "syzygy", "tarvelmon.ini"])
        self.assertEqual(read(self.folder + "/book.bin"), read(self.share + "/book.bin"))

    def test_engine_reads_the_users_settings_and_leaves_them_alone(self):
        self.start("quit\n")
        write(self.folder + "/tarvelmon.ini", b"[ENGINE]\nHashSize=5\n")
        self.assertIn("Allocated 5 MB for the Hash Table\n", self.start("xboard\nquit\n"))
        self.assertEqual(read(self.folder + "/tarvelmon.ini"), b"[ENGINE]\nHashSize=5\n")

    def test_engine_plays_from_the_installed_book(self):
        self.assertIn("(move from book)\n", self.start("xboard\nnew\ngo\nquit\n"))

    def test_a_home_that_cannot_be_written_does_not_matter(self):
        self.assertIn("(move from book)\n", self.start("xboard\nnew\ngo\nquit\n", TARVELMON_HOME="/dev/null/nowhere"))

    def test_no_home_does_not_matter(self):
        self.assertIn("(move from book)\n", self.start("xboard\nnew\ngo\nquit\n", HOME=None))
        self.assertEqual(sorted(os.listdir(self.share)), ["book.bin", "tarvelmon.ini"])

    def test_installing_again_leaves_the_users_files_alone_in_the_same_prefix(self):
        prefix = os.path.join(self.home, ".local")
        install(prefix)
        self.start("quit\n", prefix=prefix)
        os.remove(self.folder + "/book.bin")
        for name in ("tarvelmon.ini", "book.bin", "syzygy/KRvK.rtbw"):
            write(os.path.join(self.folder, name), b"the user's own\n")
        install(prefix)
        self.start("quit\n", prefix=prefix)
        self.start("quit\n", "tarvelmon-gui", prefix=prefix)
        self.assertEqual(sorted(os.listdir(self.folder)), ["book.bin", "syzygy", "tarvelmon.ini"])
        for name in ("tarvelmon.ini", "book.bin", "syzygy/KRvK.rtbw"):
            self.assertEqual(read(os.path.join(self.folder, name)), b"the user's own\n", name)

    def test_a_new_version_brings_its_book(self):
        prefix = os.path.join(self.home, ".local")
        install(prefix)
        self.start("quit\n", prefix=prefix)
        write(prefix + "/share/games/tarvelmon/book.bin", b"a newer book")
        self.start("quit\n", prefix=prefix)
        self.assertEqual(read(self.folder + "/book.bin"), b"a newer book")

    def test_a_book_of_an_installation_that_is_gone_is_replaced(self):
        os.makedirs(self.folder)
        os.symlink(self.home + "/gone/book.bin", self.folder + "/book.bin")
        self.assertIn("(move from book)\n", self.start("xboard\nnew\ngo\nquit\n"))

    def test_a_link_to_a_book_of_the_users_own_stays(self):
        os.makedirs(self.folder)
        write(self.home + "/own.bin", b"")
        os.symlink(self.home + "/own.bin", self.folder + "/book.bin")
        self.start("quit\n")
        self.assertEqual(os.readlink(self.folder + "/book.bin"), self.home + "/own.bin")

    def test_what_is_missing_of_the_users_files_comes_back(self):
        self.start("quit\n")
        os.remove(self.folder + "/tarvelmon.ini")
        write(self.folder + "/notes", b"mine")
        self.start("quit\n")
        self.assertEqual(read(self.folder + "/tarvelmon.ini"), read(self.share + "/tarvelmon.ini"))
        self.assertEqual(read(self.folder + "/notes"), b"mine")

    def test_the_companion_plays_with_the_same_settings_and_book(self):
        said = self.start("uci\nposition startpos\ngo movetime 10\nquit\n", "tarvelmon-gui")
        self.assertIn("option name Hash type spin default 128 ", said)
        self.assertIn("info string move from book\n", said)
        self.assertEqual(sorted(os.listdir(self.folder)), ["book.bin", "syzygy", "tarvelmon.ini"])

    def test_the_companion_prefers_settings_where_it_is_started(self):
        write(os.path.join(self.home, "tarvelmon.ini"), b"[ENGINE]\nHashSize=5\n")
        said = self.start("uci\nquit\n", "tarvelmon-gui", cwd=self.home)
        self.assertIn("option name Hash type spin default 5 ", said)

    def test_pages_and_what_interfaces_look_for_are_installed(self):
        files = files_below(self.prefix)
        for program in PROGRAMS:
            self.assertTrue({f"bin/{program}", f"share/man/man6/{program}.6.gz"} <= files, files)
            with gzip.open(os.path.join(self.prefix, f"share/man/man6/{program}.6.gz"), "rt") as page:
                self.assertTrue(f"\n.TH {program.upper()} 6 " in page.read().replace("\\-", "-"), program)
        for program in ("tarvelmon", "tarvelmon-gui"):
            plugin = read(os.path.join(self.prefix, f"share/games/plugins/xboard/{program}.eng")).decode()
            self.assertEqual(plugin, f"plugin spec 0.0\n{program}\nchess\n")
            self.assertIn(f"share/games/plugins/logos/{program}.png", files)
        self.assertIn("share/icons/hicolor/scalable/apps/tarvelmon.svg", files)
        collections = "share/doc/tarvelmon/docs/collections.md"
        self.assertEqual(collections in files, "tarvelmon-analyse" in PROGRAMS)

    def test_the_debian_package_has_the_programs_among_the_games(self):
        prefix = os.path.join(self.home, "usr")
        install(prefix, "shared", "debian")
        here, there = files_below(self.prefix), files_below(prefix)
        documents = "share/doc/tarvelmon/"
        self.assertEqual(here - there, {"bin/" + name for name in PROGRAMS} | {documents + "LICENSE"})
        self.assertEqual(there - here, {"games/" + name for name in PROGRAMS} |
                         {documents + "changelog.gz", documents + "copyright"})
        done = subprocess.run([prefix + "/games/tarvelmon"], input="xboard\nnew\ngo\nquit\n", text=True, timeout=120,
                              capture_output=True, env={"PATH": os.environ["PATH"], "HOME": self.home})
        self.assertIn("(move from book)\n", done.stdout)

    def test_the_debian_changelog_begins_with_the_version_of_the_program(self):
        with open(os.path.join(TOP, "debian", "changelog"), encoding="utf-8") as file:
            version = re.match(r"tarvelmon \((\S+)\) ", file.readline()).group(1)
        self.assertIn(f"version {version}\n", self.start("quit\n"))

    def test_engine_starts_through_a_link(self):
        link = os.path.join(self.home, "engine")
        os.symlink(os.path.join(self.prefix, "bin", "tarvelmon"), link)
        done = subprocess.run([link], input="quit\n", text=True, capture_output=True, timeout=120,
                              env={"PATH": os.environ["PATH"], "HOME": self.home})
        self.assertEqual(done.returncode, 0)
        self.assertTrue(done.stdout.startswith("tarvelmon chess engine"))


if __name__ == "__main__":
    unittest.main()
