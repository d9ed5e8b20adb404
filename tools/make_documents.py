#!/usr/bin/env python3
"""Writes what users read from one source: docs/source.

usage: make_documents.py [--check]

Settings, commands, words of the protocols, options, files, environment variables and exit states stand in the INI files
of docs/source, each once. From them come the manual pages docs/man/*.6 (out of docs/source/*.6.in), the supplied
data/tarvelmon.ini (out of docs/source/tarvelmon.ini.in), and in the other documents whatever stands between
"<!-- begin LIST -->" and "<!-- end LIST -->". With --check nothing is written: status 1, and the names, if a document
is not what this would write.

In the sources `words in backticks` are literal; words in capitals in a "form" stand for something else.
"""
import configparser
import re
import sys
import textwrap
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent
SOURCE = TOP / "docs" / "source"
TEXT_WIDTH = 120
PAGE_WIDTH = 78
GENERATED = "Made by tools/make_documents.py from docs/source: change it there."


# ---- the source --------------------------------------------------------------------------------------------------

def read_source(name, folder=SOURCE):
    """The sections of an INI file in their order, each a dictionary with its name as "name"."""
    parser = configparser.ConfigParser(interpolation=None, delimiters=("=",), comment_prefixes=(";",),
                                       default_section="", empty_lines_in_values=False)
    parser.optionxform = str
    parser.read_string((folder / (name + ".ini")).read_text(encoding="utf-8"))
    return [{"name": section, **{key: " ".join(value.split()) for key, value in parser[section].items()}}
            for section in parser.sections()]


def version():
    """The version as the engine tells it: CMake's project."""
    text = (TOP / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"project\(tarvelmon VERSION (\S+)", text).group(1)


def test_positions():
    """The console's words for test positions, which have no more to tell than their names."""
    text = (TOP / "src/frontend/diagnostics.cpp").read_text(encoding="utf-8")
    rows = text.split("testPositions[] = {", 1)[1].split("\n};", 1)[0]
    return re.findall(r'^    \{"([^"]+)"', rows, re.MULTILINE)


def surroundings(kind, program):
    """(name, text) of the files, variables or states of a program."""
    found = []
    for entry in read_source("surroundings"):
        entry_kind, name = entry["name"].split(" ", 1)
        if entry_kind == kind and program in entry["programs"].split(", "):
            found.append((re.sub(r" \(.*\)$", "", name), entry["does"]))
    return found


def form_of(entry):
    return entry.get("form", entry["name"])


def default_text(setting):
    if setting["accepted"] == "yes or no":
        return "yes" if setting["default"] == "1" else "no"
    return setting["default"] or "empty"


def accepted_of(setting):
    return f"{setting['accepted']}, default {default_text(setting)}"


# ---- Markdown ----------------------------------------------------------------------------------------------------

def table(head, rows):
    def line(cells):
        return "| " + " | ".join(cell.replace("|", "\\|") for cell in cells) + " |"
    return [line(head), "| " + " | ".join("---" for _ in head) + " |", *(line(row) for row in rows)]


def code(text):
    return f"`{text}`"


def typed(entry):
    """A word as it is typed, with a mark if whatever begins so is that word."""
    form = form_of(entry)
    return code(form) + (" ..." if entry["match"] == "start" and form == entry["name"] else "")


def and_beware(entry, does):
    more = [does]
    if "catches" in entry:
        more.append(f"So does {entry['catches']}.")
    if "beware" in entry:
        more.append(f"**Beware:** {entry['beware']}")
    return " ".join(more)


def list_summary(_):
    rows = [[code(s["name"]), s["section"], s["accepted"], default_text(s), s["sample"] or "empty", s["short"]]
            for s in read_source("settings")]
    return table(["key", "section", "accepted", "default", "supplied", "what"], rows)


def list_settings(section):
    lines = []
    for setting in read_source("settings"):
        if setting["section"] == section:
            text = f"**`{setting['name']}`** ({accepted_of(setting)}). {and_beware(setting, setting['effect'])}"
            lines += textwrap.wrap(text, TEXT_WIDTH, break_on_hyphens=False, break_long_words=False) + [""]
    return lines[:-1]


def list_console(_):
    return table(["typed", "what it does"],
                 [[typed(entry), and_beware(entry, entry["does"])] for entry in read_source("console")])


def list_positions(_):
    return textwrap.wrap(" ".join(code(name) for name in test_positions()), TEXT_WIDTH)


def list_protocol(_):
    return table(["word", "in the main loop", "while it ponders or analyses"],
                 [[typed(entry), entry["main"], entry.get("beside", "dropped")] for entry in read_source("protocol")])


def list_words(source):
    return table(["word", "what it does"],
                 [[code(form_of(entry)), entry["does"]] for entry in read_source(source)])


def default_of(option):
    if "from" in option:
        return f"the file's `{option['from']}`"
    return option.get("default", "")


def list_options(_):
    rows = [[code(o["name"]), o["accepted"], default_of(o), o["does"], o["uci"], in_xboard(o)]
            for o in read_source("options")]
    return table(["option", "accepted", "default", "what", "UCI", "xboard"], rows)


def in_xboard(option):
    """Whether the xboard protocol has the option, or the words that stand for it."""
    word = option["xboard"]
    return word if word in ("yes", "no") else ", ".join(code(each) for each in word.split(", "))


def list_surroundings(argument):
    kind, program = argument.split()
    return table(["name", "what"], [[code(name), does] for name, does in surroundings(kind, program)])


# Name of a list, as it stands between the marks, to what makes it of the words behind the name.
LISTS = {
    "summary": list_summary, "settings": list_settings, "console": list_console, "positions": list_positions,
    "protocol": list_protocol, "words": list_words, "options": list_options, "surroundings": list_surroundings,
}


def fill_marks(text):
    """A document with its lists made anew."""
    def made(match):
        name, _, argument = match.group(1).partition(" ")
        return "\n".join([f"<!-- begin {match.group(1)} -->", *LISTS[name](argument), f"<!-- end {name} -->"])
    return re.sub(r"<!-- begin ([^>]*?) -->\n(?:.*?\n)??<!-- end [^>]*? -->", made, text, flags=re.DOTALL)


# ---- manual pages ------------------------------------------------------------------------------------------------

def roff(text):
    text = text.replace("\\", "\\e")
    return re.sub(r"`([^`]*)`", lambda match: r"\fB" + match.group(1).replace("-", r"\-") + r"\fR", text)


def roff_form(form):
    """Words in capitals stand for something."""
    marked = re.sub(r"[A-Z]{2,}(\.\.\.)?|\b[A-Z]\b", lambda match: rf"\fI{match.group(0)}\fB", form.replace("-", r"\-"))
    return rf"\fB{marked}\fR"


def wrapped(text):
    """Lines of a page. A sentence begins a line, as is the custom there."""
    lines = []
    for sentence in re.split(r"(?<=[.!:]) (?=[A-Z`])", text):
        lines += textwrap.wrap(roff(sentence), PAGE_WIDTH, break_on_hyphens=False, break_long_words=False)
    return [r"\&" + line if line[0] in ".'" else line for line in lines]


def paragraph(head, *texts):
    lines = [".TP", head, *wrapped(texts[0])]
    for text in texts[1:]:
        lines += [".IP", *wrapped(text)]
    return lines


def roff_typed(entry):
    more = r" \fI...\fR" if entry["match"] == "start" and "form" not in entry else ""
    return roff_form(form_of(entry)) + more


def more_of(entry):
    texts = []
    if "catches" in entry:
        texts.append(f"So does {entry['catches']}.")
    if "beware" in entry:
        texts.append("Beware: " + entry["beware"])
    return texts


def joined(paragraphs):
    return [line for lines in paragraphs for line in lines]


# These take the words behind the list's name, and the program whose page it is.

def page_settings(section, _):
    return joined(paragraph(rf"\fB{setting['name']}\fR ({accepted_of(setting)})", setting["effect"], *more_of(setting))
                  for setting in read_source("settings") if setting["section"] == section)


def page_console(_, __):
    return joined(paragraph(roff_typed(entry), entry["does"], *more_of(entry)) for entry in read_source("console"))


def page_positions(_, __):
    return [".PP", *(rf"\fB{name}\fR" for name in test_positions())]


def page_protocol(_, __):
    def beside(entry):
        return ["While it ponders or analyses: " + entry["beside"]] if "beside" in entry else []
    return joined(paragraph(roff_typed(entry), entry["main"], *beside(entry)) for entry in read_source("protocol"))


def page_words(source, _):
    return joined(paragraph(roff_form(form_of(entry)), entry["does"]) for entry in read_source(source))


def where_it_is(option):
    """A sentence on an option that is not the same in both protocols."""
    if option["xboard"] == "yes":
        return "" if option["uci"] == "yes" else "Only in the xboard protocol."
    if option["xboard"] == "no":
        return "Only in UCI."
    return f"In the xboard protocol this is {in_xboard(option)}."


def page_options(_, __):
    def described(option):
        facts = ", ".join([option["accepted"], *(f"default {value}" for value in [default_of(option)] if value)])
        does = option["does"][0].upper() + option["does"][1:] + "."
        return paragraph(rf"\fB{option['name']}\fR ({roff(facts)})", f"{does} {where_it_is(option)}".strip())
    return joined(described(option) for option in read_source("options"))


def page_surroundings(kind):
    return lambda _, program: joined(paragraph(rf"\fB{roff(name)}\fR", does)
                                     for name, does in surroundings(kind, program))


PAGE_LISTS = {
    "settings": page_settings, "console": page_console, "positions": page_positions, "protocol": page_protocol,
    "words": page_words, "options": page_options, "variables": page_surroundings("variable"),
    "files": page_surroundings("file"), "statuses": page_surroundings("status"),
}


def make_page(template):
    program = template.name[:-len(".6.in")]
    lines = [rf'.\" {GENERATED}']
    for line in template.read_text(encoding="utf-8").replace("@version@", version()).splitlines():
        match = re.fullmatch(r'\.\\" @(\S+)(?: (\S+))?@', line)
        lines += PAGE_LISTS[match.group(1)](match.group(2), program) if match else [line]
    return "\n".join(lines) + "\n"


# ---- the supplied INI file ---------------------------------------------------------------------------------------

def sample_settings(section):
    lines = []
    for setting in read_source("settings"):
        if setting["section"] == section:
            accepted = accepted_of(setting)
            text = " ".join([setting["effect"], setting.get("beware", ""), accepted[0].upper() + accepted[1:] + "."])
            plain = re.sub(r"`([^`]*)`", r'"\1"', " ".join(text.split()))
            lines += textwrap.wrap(plain, TEXT_WIDTH, initial_indent="; ", subsequent_indent="; ",
                                   break_on_hyphens=False)
            lines += [f"{setting['name']}={setting['sample']}", ""]
    return lines[:-1]


def make_sample(template):
    lines = []
    for line in template.read_text(encoding="utf-8").splitlines():
        match = re.fullmatch(r"@settings (\w+)@", line)
        lines += sample_settings(match.group(1)) if match else [line]
    return "\n".join(lines) + "\n"


# ---- all of them -------------------------------------------------------------------------------------------------

def documents():
    """Path of each document to the text that it should have."""
    made = {TOP / "docs" / "man" / template.name[:-len(".in")]: make_page(template)
            for template in sorted(SOURCE.glob("*.6.in"))}
    made[TOP / "data" / "tarvelmon.ini"] = make_sample(SOURCE / "tarvelmon.ini.in")
    for path in [TOP / "README.md", *sorted((TOP / "docs").glob("*.md"))]:
        text = path.read_text(encoding="utf-8")
        if "<!-- begin " in text:
            made[path] = fill_marks(text)
    return made


def main():
    if sys.argv[1:] not in ([], ["--check"]):
        print(__doc__.split("\n\n")[1], file=sys.stderr)
        return 2
    stale = [(path, text) for path, text in documents().items()
             if not path.exists() or path.read_text(encoding="utf-8") != text]
    for path, text in stale:
        name = path.relative_to(TOP)
        if sys.argv[1:]:
            print(f"{name} is not what tools/make_documents.py makes of docs/source")
        else:
            path.parent.mkdir(exist_ok=True)
            path.write_text(text, encoding="utf-8")
            print(f"{name} written")
    return 1 if stale and sys.argv[1:] else 0


if __name__ == "__main__":
    sys.exit(main())
