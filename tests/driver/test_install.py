"""An installed engine starts by its script in a folder of the user's own, which the first start fills."""

import os
import subprocess
import tempfile
import unittest

BUILD = os.path.dirname(os.environ["TARVELMON"])


def read(path):
    with open(path, "rb") as file:
        return file.read()


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="tarvelmon-install-")
        cls.addClassCleanup(folder.cleanup)
        cls.prefix = os.path.join(folder.name, "a prefix")
        subprocess.run(["cmake", "--install", BUILD, "--prefix", cls.prefix], check=True, stdout=subprocess.DEVNULL)

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="tarvelmon-home-")
        self.addCleanup(folder.cleanup)
        self.home = folder.name
        self.folder = os.path.join(self.home, ".local", "share", "tarvelmon")
        self.share = os.path.join(self.prefix, "share", "tarvelmon")

    def start(self, text, program="tarvelmon", cwd=None, **environment):
        """Output of an installed script for an input; it must end with status 0 and an empty error output."""
        done = subprocess.run([os.path.join(self.prefix, "bin", program)], input=text, text=True, timeout=120, cwd=cwd,
                              capture_output=True, env={"PATH": os.environ["PATH"], "HOME": self.home, **environment})
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def test_first_start_fills_the_users_folder(self):
        self.assertIn("pong 1\n", self.start("xboard\nping 1\nquit\n"))
        self.assertEqual(sorted(os.listdir(self.folder)), ["book.bin", "syzygy", "tarvelmon.ini"])
        self.assertEqual(read(self.folder + "/book.bin"), read(self.share + "/book.bin"))

    def test_engine_reads_the_users_settings_and_leaves_them_alone(self):
        self.start("quit\n")
        with open(self.folder + "/tarvelmon.ini", "w") as file:
            file.write("[ENGINE]\nHashSize=5\n")
        self.assertIn("Allocated 5 MB for the Hash Table\n", self.start("xboard\nquit\n"))
        self.assertEqual(read(self.folder + "/tarvelmon.ini"), b"[ENGINE]\nHashSize=5\n")

    def test_engine_plays_from_the_installed_book(self):
        self.assertIn("(move from book)\n", self.start("xboard\nnew\ngo\nquit\n"))

    def test_a_home_that_cannot_be_written_does_not_matter(self):
        self.assertIn("(move from book)\n", self.start("xboard\nnew\ngo\nquit\n", TARVELMON_HOME="/dev/null/nowhere"))

    def test_the_companion_plays_with_the_same_settings_and_book(self):
        said = self.start("uci\nposition startpos\ngo movetime 10\nquit\n", "tarvelmon-gui")
        self.assertIn("option name Hash type spin default 128 ", said)
        self.assertIn("info string move from book\n", said)
        self.assertEqual(sorted(os.listdir(self.folder)), ["book.bin", "syzygy", "tarvelmon.ini"])

    def test_the_companion_prefers_settings_where_it_is_started(self):
        with open(os.path.join(self.home, "tarvelmon.ini"), "w") as file:
            file.write("[ENGINE]\nHashSize=5\n")
        said = self.start("uci\nquit\n", "tarvelmon-gui", cwd=self.home)
        self.assertIn("option name Hash type spin default 5 ", said)

    def test_engine_starts_through_a_link(self):
        link = os.path.join(self.home, "engine")
        os.symlink(os.path.join(self.prefix, "bin", "tarvelmon"), link)
        done = subprocess.run([link], input="quit\n", text=True, capture_output=True, timeout=120,
                              env={"PATH": os.environ["PATH"], "HOME": self.home})
        self.assertEqual(done.returncode, 0)
        self.assertTrue(done.stdout.startswith("tarvelmon chess engine"))


if __name__ == "__main__":
    unittest.main()
