"""Tests of programs that read and write files: each has a folder of its own, which is gone afterwards."""
import os
import tempfile
import unittest


class ScratchFolderTest(unittest.TestCase):
    encoding = "utf-8"

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        with open(self.path(name), "w", encoding=self.encoding) as file:
            file.write(text)
        return self.path(name)
