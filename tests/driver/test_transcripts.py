"""Whole sessions of the console and of the protocol, compared to the byte with those in tests/data/transcripts."""

import unittest

import transcripts


class Transcripts(unittest.TestCase):
    maxDiff = None

    def hold_all(self, mode, at_least):
        names = transcripts.names(mode)
        self.assertGreaterEqual(len(names), at_least)
        for name in names:
            with self.subTest(name):
                self.assertMultiLineEqual(transcripts.hold(name), transcripts.read(name))

    def test_the_console(self):
        self.hold_all("console", 12)

    def test_the_protocol(self):
        self.hold_all("protocol", 8)


if __name__ == "__main__":
    unittest.main()
