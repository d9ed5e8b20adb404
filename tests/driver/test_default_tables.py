"""With the default 4096 MB the engine answers at once and holds only the memory that its searches have touched."""

import os
import re
import unittest

from engine import Engine

SANITIZED = bool(os.environ.get("TARVELMON_SANITIZE"))

DEFAULTS = "[BOOK]\nBook=0\n[TABLEBASE]\nSyzygy=0\n"  # the sizes are left as they are

# Far above what is measured (a fraction of a millisecond, 24 MB), far below a pass over the tables.
FIRST_LINE_SECONDS = 0.25
SHALLOW_SEARCH_MEGABYTES = 100


def resident_megabytes(process):
    with open("/proc/%d/status" % process.pid) as status:
        return int(re.search(r"VmRSS:\s+(\d+) kB", status.read())[1]) // 1024


@unittest.skipIf(SANITIZED, "a sanitizer keeps memory of its own")
@unittest.skipUnless(os.path.exists("/proc/self/status"), "the system does not tell resident memory")
class DefaultTables(unittest.TestCase):
    def setUp(self):
        self.engine = Engine(ini=DEFAULTS)
        self.addCleanup(self.engine.close)
        self.engine.xboard()
        self.engine.tell("new", "post", "sd 6", "level 0 60 0", "time 360000", "otim 360000")

    def seconds_to_first_line(self):
        self.engine.tell("force", "new", "sd 6")
        start = self.engine.processor_seconds()  # which tell nothing of the machine's other work
        self.engine.send("go")
        self.engine.expect(r" 1 .*")
        seconds = self.engine.processor_seconds() - start
        self.engine.expect(r"move .*")
        return seconds

    def test_the_first_line_comes_at_once_at_every_think(self):
        # The quickest of a few: on a busy machine the processor itself is slower at times.
        self.assertLess(min(self.seconds_to_first_line() for _ in range(3)), FIRST_LINE_SECONDS)
        self.assertLess(min(self.seconds_to_first_line() for _ in range(3)), FIRST_LINE_SECONDS)

    def test_memory_grows_only_with_what_a_search_touches(self):
        self.assertLess(resident_megabytes(self.engine.process), SHALLOW_SEARCH_MEGABYTES)
        for _ in range(5):
            self.seconds_to_first_line()
        self.assertLess(resident_megabytes(self.engine.process), SHALLOW_SEARCH_MEGABYTES)


if __name__ == "__main__":
    unittest.main()
