"""What users read: the documents are what their source makes of them, and the source knows every setting, command, word,
option and variable that the programs know, with the same defaults and ranges."""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from engine import SMALL_INI, Engine
from gui import Gui

TOP = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(TOP / "tools"))

import make_documents  # noqa: E402 (the folder of tools is known only now)

BOOK_TOOL = os.environ.get("TARVELMON_BOOK", "")

ROW = re.compile(r'\{"([^"]+)", (isWord|hasPrefix), \w+\}')


def source(path):
    return (TOP / path).read_text(encoding="utf-8")


def rows(text):
    """(word, "word" or "start") of a table of commands, in its order."""
    return [(word, {"isWord": "word", "hasPrefix": "start"}[match]) for word, match in ROW.findall(text)]


def told(name):
    return [(entry["name"], entry["match"]) for entry in make_documents.read_source(name)]


class Documents(unittest.TestCase):

    def test_they_are_what_the_source_makes_of_them(self):
        stale = [str(path) for path, text in make_documents.documents().items()
                 if not path.exists() or path.read_text(encoding="utf-8") != text]
        self.assertEqual(stale, [], "run tools/make_documents.py")

    def test_a_document_that_is_not_made_of_the_source_is_found(self):
        with tempfile.TemporaryDirectory() as folder:
            for name in ("CMakeLists.txt", "README.md", "tools/make_documents.py", "data/tarvelmon.ini",
                         "src/frontend/diagnostics.cpp"):
                copy = Path(folder, name)
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(TOP / name, copy)
            shutil.copytree(TOP / "docs", Path(folder, "docs"))

            def check(*arguments):
                return subprocess.run([sys.executable, "-B", Path(folder, "tools/make_documents.py"), *arguments],
                                      stdout=subprocess.PIPE, text=True, check=False)

            self.assertEqual(check("--check").returncode, 0)
            settings = Path(folder, "docs/source/settings.ini")
            settings.write_text(settings.read_text().replace("accepted = 2 to 64", "accepted = 3 to 64", 1))
            done = check("--check")
            self.assertEqual(done.returncode, 1)
            for name in ("data/tarvelmon.ini", "docs/man/tarvelmon.6", "docs/settings.md"):
                self.assertIn(name + " is not what", done.stdout)
            self.assertEqual(check().returncode, 0)
            self.assertEqual(check("--check").returncode, 0)
            self.assertIn("3 to 64", Path(folder, "docs/man/tarvelmon.6").read_text())


    def test_every_link_leads_somewhere(self):
        count = 0
        for path in [*TOP.glob("*.md"), *TOP.glob("docs/*.md")]:
            for link in re.findall(r"\]\(([^)#:]+)\)", path.read_text(encoding="utf-8")):
                count += 1
                self.assertTrue((path.parent / link).exists(), f"{path.name}: {link}")
        self.assertGreater(count, 20)

    def test_tools_that_are_told_as_commands_can_be_started(self):
        told = {name for path in [*TOP.glob("*.md"), *TOP.glob("docs/*.md")]
                for name in re.findall(r"(?:^    |`)(tools/\w+\.(?:py|sh))\b", path.read_text("utf-8"), re.MULTILINE)}
        self.assertGreater(len(told), 12)
        self.assertEqual([name for name in sorted(told) if not os.access(TOP / name, os.X_OK)], [])

    def test_the_changes_are_told_of_this_version_and_signature(self):
        newest = re.search(r"^## (\S+)\n\nSignature (\d+)\.$", source("CHANGELOG.md"), re.MULTILINE).groups()
        signature = re.search(r"searchSignature = ([\d']+)", source("bench/search_set.h")).group(1)
        self.assertEqual(newest, (make_documents.version(), signature.replace("'", "")))


class Settings(unittest.TestCase):

    def setUp(self):
        self.told = make_documents.read_source("settings")

    def test_every_key_of_the_engine_with_default_and_range(self):
        text = source("src/frontend/config.cpp")
        sections = dict(re.findall(r'constexpr const char\* (\w+Section) = "(\w+)";', text))
        known = {}
        for section, name, default, low, high in re.findall(
                r'IntKey \w+ = \{(\w+), "(\w+)", (\d+), (\d+), (\w+)\}', text):
            high = {"probeMenMax": "7"}.get(high, high)
            known[name] = (sections[section], default, f"{low} to {high}")
        for section, name, default in re.findall(r'= unlimited\((\w+), "(\w+)", (\d+)\)', text):
            known[name] = (sections[section], default, "any number")
        for section, name, default in re.findall(r'BoolKey \w+ = \{(\w+), "(\w+)", (\d)\}', text):
            known[name] = (sections[section], default, "yes or no")
        for field, section, name, default in re.findall(
                r'readText\(EngineOptions\.(\w+), (\w+), "(\w+)", "([^"]*)", fileName\)', text):
            size = re.search(r"char %s\[(\d+)\]" % field, source("src/frontend/frontend.h")).group(1)
            known[name] = (sections[section], default, f"up to {int(size) - 1} characters")
        # Every look-up of the file has been recognised above.
        self.assertEqual(len(known), len(re.findall(r"= read(?:Int|Bool|FastOpening)\(|readText\(EngineOptions", text)))
        self.assertIn("constexpr i32 probeMenMax = 7;", source("src/tablebase/tablebase.h"))
        self.assertEqual({s["name"]: (s["section"], s["default"], s["accepted"]) for s in self.told}, known)

    def shown_by(self, engine):
        """What "param" prints, by its own names."""
        return dict(re.findall(r"^(\w+): +(.*)$", engine.ask("param"), re.MULTILINE))

    def shown(self, ini):
        with Engine(ini) as engine:
            engine.console()
            return self.shown_by(engine)

    def as_shown(self, setting, value):
        if setting["name"] == "MaxTime":
            return f"{int(value) // 100} s"
        if setting["name"] == "HashSize":
            return f"{value} MB"
        return {"yes": "1", "no": "0"}.get(value, value)

    def test_defaults_are_what_param_prints_without_a_file(self):
        shown = self.shown(None)
        for setting in self.told:
            if "param" in setting:
                with self.subTest(setting["name"]):
                    self.assertEqual(shown.pop(setting["param"]), self.as_shown(setting, setting["default"]))
        self.assertEqual(shown, {"moveTime": "7200 s"})

    def test_the_supplied_file_gives_what_it_says(self):
        shown = self.shown(source("data/tarvelmon.ini"))
        for setting in self.told:
            if "param" in setting:
                with self.subTest(setting["name"]):
                    self.assertEqual(shown[setting["param"]], self.as_shown(setting, setting["sample"]))

    def test_numbers_at_the_limits_are_accepted_and_beyond_are_not(self):
        numbers = [s for s in self.told if "param" in s and " to " in s["accepted"] and "up" not in s["accepted"]]
        self.assertGreaterEqual(len(numbers), 8)
        with Engine() as engine:
            engine.console()
            for setting in numbers:
                low, high = (int(number) for number in setting["accepted"].split(" to "))
                for value, counts in ((low, True), (high, True), (low - 1, False), (high + 1, False)):
                    with self.subTest(setting["name"], value=value):
                        Path(engine.folder, "tarvelmon.ini").write_text(
                            f"[{setting['section']}]\n{setting['name']}={value}\n")
                        engine.ask("ini")
                        self.assertEqual(self.shown_by(engine)[setting["param"]],
                                         str(value) if counts else setting["default"])


class Commands(unittest.TestCase):

    def test_every_command_of_the_console_in_its_order(self):
        known = rows(source("src/frontend/console.cpp")) + rows(source("src/frontend/diagnostics.cpp"))
        self.assertGreater(len(known), 35)
        self.assertEqual(told("console"), known)

    def test_a_test_position_for_each_of_its_words(self):
        names = make_documents.test_positions()
        self.assertGreaterEqual(len(names), 39)
        with Engine() as engine:
            engine.console()
            engine.ask("sd 1")  # one of them has the engine answer
            for name in names:
                with self.subTest(name):
                    engine.ask("new")
                    start = engine.ask("b")
                    self.assertNotIn("Error", engine.ask(name))
                    self.assertNotEqual(engine.ask("b"), start)

    def test_what_help_lists(self):
        with Engine() as engine:
            engine.console()
            listed = re.findall(r"^(\w+)[^-\n]* - ", engine.ask("help"), re.MULTILINE)
        self.assertGreater(len(listed), 12)
        self.assertLessEqual(set(listed), {word for word, _ in told("console")})

    def test_every_word_of_the_protocol_in_its_order(self):
        known = rows(source("src/frontend/xboard.cpp"))
        self.assertGreater(len(known), 20)
        self.assertEqual(told("protocol"), known)

    def test_every_word_that_is_read_beside_a_search(self):
        known = re.findall(r'if \((isWord|hasPrefix)\(line, "(\w+)"\)\)', source("src/frontend/ponder.cpp"))
        beside = [(e["name"], e["match"]) for e in make_documents.read_source("protocol") if "beside" in e]
        self.assertEqual(sorted(beside), sorted((word, {"isWord": "word", "hasPrefix": "start"}[m]) for m, word in known))
        self.assertEqual(len(beside), 7)

    def words_told(self, name):
        return [entry["name"] for entry in make_documents.read_source(name)]

    def words_known(self, path):
        table = source(path).split("Command commands[] = {", 1)[1].split("\n};", 1)[0]
        return re.findall(r'\{"([^"]+)", \w+\}', table) + ["quit"]

    def test_every_word_of_the_companion(self):
        self.assertEqual(self.words_told("uci"), self.words_known("companions/gui/uci.cpp"))
        self.assertEqual(self.words_told("gui_xboard"), self.words_known("companions/gui/xboard_side.cpp"))

    def test_every_limit_of_go(self):
        text = source("companions/gui/uci_go.cpp")
        known = re.findall(r'\{"(\w+)", &GoLimits::', text) + re.findall(r'word == "(\w+)"', text)
        go = next(entry for entry in make_documents.read_source("uci") if entry["name"] == "go")
        self.assertGreater(len(known), 11)
        for word in known:
            self.assertIn(f"`{word}`", go["does"])


class Options(unittest.TestCase):

    def setUp(self):
        self.told = make_documents.read_source("options")
        settings = {s["name"]: s for s in make_documents.read_source("settings")}
        self.defaults = {o["name"]: self.without_file(settings[o["from"]]) if "from" in o else o.get("default", "")
                         for o in self.told}

    @staticmethod
    def without_file(setting):
        """Numbers and truths of the supplied file, but none of its names."""
        return setting["default" if setting["accepted"].startswith("up to") else "sample"]

    def accepted(self, kind, low, high):
        return {"spin": f"{low} to {high}", "check": "yes or no", "button": "a button"}.get(kind)

    def holds(self, name, kind, default, low="", high=""):
        option = next(o for o in self.told if o["name"] == name)
        said = self.accepted(kind, low, high)
        self.assertEqual(option["accepted"], said or option["accepted"])
        if kind != "button":
            mean = {"false": "0", "true": "1", "no": "0", "yes": "1", "<empty>": ""}
            self.assertEqual(mean.get(default, default), mean.get(self.defaults[name], self.defaults[name]), name)

    def test_every_option_of_uci(self):
        with Gui(ini=None) as gui:
            lines = [line for line in gui.uci() if line.startswith("option ")]
        names = []
        for line in lines:
            name, kind, default, low, high = re.fullmatch(
                r"option name (.+?) type (\w+)(?: default (\S*))?(?: min (\S+) max (\S+))?", line).groups("")
            names.append(name)
            with self.subTest(name):
                self.holds(name, kind, default, low, high)
        self.assertEqual(names, [o["name"] for o in self.told if o["uci"] == "yes"])

    def test_every_option_of_the_xboard_protocol(self):
        with Gui(ini=None) as gui:
            features = re.findall(r'option="([^"]*)"', "\n".join(gui.xboard_protocol()))
        names = []
        for text in features:
            name, kind, rest = re.fullmatch(r"(.+?) -(\w+) ?(.*)", text).groups()
            names.append(name)
            with self.subTest(name):
                self.holds(name, kind, *(rest.split() if kind == "spin" else [rest]))
        self.assertEqual(names, [o["name"] for o in self.told if o["xboard"] == "yes"])
        words = {entry["name"] for entry in make_documents.read_source("gui_xboard")}
        for option in self.told:
            if option["xboard"] not in ("yes", "no"):
                self.assertLessEqual(set(option["xboard"].split(", ")), words)


class Surroundings(unittest.TestCase):

    def test_every_environment_variable(self):
        known = set()
        for path in [*TOP.glob("src/**/*.cpp"), *TOP.glob("companions/**/*.cpp"), *TOP.glob("tools/book/*.cpp")]:
            known |= set(re.findall(r'(?:getenv|variable|replace)\((?:\w+, )?"([A-Z_]+)"', path.read_text("utf-8")))
        self.assertLessEqual({"RTBWDIR", "HOME"}, known)
        named = {name for program in ("tarvelmon", "tarvelmon-gui", "tarvelmon-book")
                 for name, _ in make_documents.surroundings("variable", program)}
        # The home folder goes without saying.
        self.assertEqual(named, known - {"HOME"})

    def test_the_book_programs_page_knows_its_arguments(self):
        help_text = subprocess.run([BOOK_TOOL, "help"], stdout=subprocess.PIPE, text=True, check=True).stdout
        page = source("docs/source/tarvelmon-book.6.in").replace("\\-", "-")
        commands = re.findall(r"^tarvelmon-book (\w+)", help_text, re.MULTILINE)
        self.assertEqual(sorted(commands), ["build", "check", "merge", "show"])
        for command in commands:
            self.assertRegex(page, rf"\.TP\n\.B {command}\n")
        options = set(re.findall(r'word == "(-[\w-]+)"', source("tools/book/main.cpp")))
        self.assertEqual(options, {"-o", "--max-ply", "--min-count"})
        for option in options:
            self.assertIn(f".TP\n.BI {option} ", page)
        for fact in ("1 to 400", "40"):
            self.assertIn(fact, help_text)
            self.assertIn(fact, page)


if __name__ == "__main__":
    unittest.main()
