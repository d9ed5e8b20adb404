"""Whole sessions under valgrind: no error and no definite leak."""

import os
import shutil
import unittest

from engine import SMALL_INI, Engine

VALGRIND = ("valgrind", "--quiet", "--error-exitcode=99", "--leak-check=full", "--show-leak-kinds=definite",
            "--errors-for-leak-kinds=definite")

# Every command of the console but the benchmark, which takes ten minutes here.
CONSOLE = """help new time|5000 otim|5000 otim|900 post mate mate8 killer hang test clear good nopost post undo force sd|3 st|5
new e2e4 go go undo e9e9 e2e5 setboard|8/8/8/8/8/8/8/8|w|-|-|0|1 go b score setboard|bad new hard easy memory|8 memory|1 .
analyze init exit b c c param book ini sd|2 bug bug2 bug5 113 cazz score val draw size k1 k2 t1 t2 w1 w2 p1 p2 p3 p4 err all
wac2 tatt patta tre ava icheck wac002 wac141 diag ps cw end bh7 rip xray trap b1 int w wxyz p catt hash s unknown""".split()

PROTOCOL = """protover|2 new level|40|5|0 level|40|0:30|0 post nopost post sd|3 sd|9999 sd|70 st|5 st|0 memory|8 memory|3 hard
easy time|30000 otim|30000 otim|900 ping|7 name|somebody setvalue|x|1 setboard|8/8/8/8/8/8/8/8|w|-|-|0|1 go new usermove|e2e4
usermove|e2e5 undo undo force usermove|e2e4 white black . go computer new exit setboard usermove name level unknown""".split()


@unittest.skipIf(os.environ.get("TARVELMON_SANITIZE"), "a sanitized program does not run under valgrind")
@unittest.skipUnless(shutil.which("valgrind"), "valgrind is not installed")
class Valgrind(unittest.TestCase):
    def start(self):
        engine = Engine(ini=SMALL_INI.replace("Book=0", "Book=1"), arguments=VALGRIND, files={
            "book.bin": bytes(range(64)),
            # For "s", which ends the process without it.
            "TestSyzygy/TestCase_09.txt": b"4k3/8/8/8/8/8/8/4K3 w - - 0 1,0,0\nnonsense,0,0\n"})
        self.addCleanup(engine.close)
        return engine

    def assert_clean(self, engine):
        status = engine.wait_for_end()
        self.assertEqual((status, engine.errors), (0, ""))

    def test_a_console_session_with_every_command(self):
        engine = self.start()
        engine.console()
        for word in CONSOLE:
            engine.ask(word.replace("|", " "))
        engine.send("quit")
        self.assert_clean(engine)

    def test_a_protocol_session_with_every_command(self):
        engine = self.start()
        engine.xboard()
        engine.tell(*(word.replace("|", " ") for word in PROTOCOL))
        engine.send("quit")
        self.assert_clean(engine)

    def test_analysis_and_pondering(self):
        engine = self.start()
        engine.xboard()
        engine.tell("new", "sd 64", "st 100")
        engine.send("analyze")
        engine.expect(r" ?3 .*")
        engine.send("time 100", "exit")
        engine.tell("new", "sd 3", "hard", "level 0 5 0")
        for move in ("e2e4", "d2d4"):
            engine.send("time 7000", "otim 7000", "usermove " + move)
            engine.expect(r"move .*")
        engine.expect(r"Hint: .*")
        engine.send("usermove a2a3")
        engine.expect(r"move .*")
        engine.expect(r"Hint: .*")
        engine.end_input()
        self.assert_clean(engine)


if __name__ == "__main__":
    unittest.main()
