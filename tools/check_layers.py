#!/usr/bin/env python3
"""Checks that the folders of src/ include each other downwards only, and draws the picture of them.

usage: check_layers.py [--draw | --self-test] [SOURCE_FOLDER]

Without an option: status 1, and a line for each fault, if a file includes a header of a folder above its own that is
not listed below, if a listed header includes more than it may, or if docs/folders.svg is not the picture of what is
there; --draw writes that picture. --self-test checks that such faults are found.
"""
import re
import sys
import tempfile
from pathlib import Path

# From the bottom up: a folder includes itself and those before it.
ORDER = ["platform", "board", "hash", "eval", "book", "tablebase", "search", "frontend"]

# What may be included from below: records, constants, one or two declarations, each for its reason. Such a header
# includes no more than the platform's types, the board's, and others of these.
VOCABULARY = {
    "eval/psq.h": "make-move keeps the score of material and placement, of which the evaluation owns the tables",
    "search/search_info.h": "make-move counts the nodes",
    "search/root_list.h": "the root probe ranks and filters the moves that the search goes through",
    "frontend/frontend.h": "the options and clocks, which every part reads and the front end owns",
    "frontend/thinking_output.h": "a think tells what it finds to the program around it",
}
VOCABULARY_MAY_INCLUDE = {"platform/bits.h", "platform/relaxed.h", "board/board.h"} | VOCABULARY.keys()

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


def read_includes(source):
    """(file, included header) for all files of the source folder, names relative to it."""
    pairs = []
    for path in sorted(source.rglob("*")):
        if path.suffix in (".cpp", ".h"):
            name = path.relative_to(source).as_posix()
            pairs += [(name, header) for header in INCLUDE.findall(path.read_text(encoding="utf-8"))]
    return pairs


def folder_of(name):
    return name.split("/")[0]


def is_upward(name, header):
    return ORDER.index(folder_of(header)) > ORDER.index(folder_of(name))


def find_faults(pairs):
    faults = []
    for name, header in pairs:
        if folder_of(name) not in ORDER or folder_of(header) not in ORDER:
            faults.append(f"{name} includes {header}: a folder that has no place in the order")
        elif is_upward(name, header) and header not in VOCABULARY:
            faults.append(f"{name} includes {header}: upwards, and not one of the headers that may be")
        elif name in VOCABULARY and header not in VOCABULARY_MAY_INCLUDE:
            faults.append(f"{name} includes {header}: more than a header for all may")
    used = {header for name, header in pairs if is_upward_known(name, header)}
    faults += [f"{header} is listed, but nobody below includes it" for header in VOCABULARY if header not in used]
    return faults


def is_upward_known(name, header):
    return folder_of(name) in ORDER and folder_of(header) in ORDER and is_upward(name, header)


# ---- the picture -------------------------------------------------------------------------------------------------

BOX_WIDTH, BOX_HEIGHT, ROW = 150, 36, 84
LEFT, TOP = 300, 56
WIDTH = 860


def row_of(folder):
    return TOP + (len(ORDER) - 1 - ORDER.index(folder)) * ROW


def arc(start_y, end_y, x, bulge, style):
    return (f'<path d="M {x} {start_y} C {x + bulge} {start_y}, {x + bulge} {end_y}, {x} {end_y}" '
            f'fill="none" {style}/>')


def draw_arrows(pairs):
    parts = []
    for lower, upper in sorted({(folder_of(name), folder_of(header)) for name, header in pairs}):
        steps = ORDER.index(upper) - ORDER.index(lower)
        start, end = row_of(lower) + BOX_HEIGHT / 2 - 6, row_of(upper) + BOX_HEIGHT / 2 + 6
        if steps < 0:
            style = 'stroke="#456990" stroke-width="1.4" marker-end="url(#down)"'
            parts.append(arc(start, end, LEFT, 34 * steps, style))
        elif steps > 0:
            style = 'stroke="#b8432f" stroke-width="1.2" stroke-dasharray="5 3" marker-end="url(#up)"'
            parts.append(arc(start, end, LEFT + BOX_WIDTH, 20 * steps, style))
    return parts


def draw_boxes():
    parts = []
    for folder in ORDER:
        y = row_of(folder)
        parts.append(f'<rect x="{LEFT}" y="{y}" width="{BOX_WIDTH}" height="{BOX_HEIGHT}" rx="6" fill="#eef2f6" '
                     f'stroke="#2f4358"/>')
        parts.append(f'<text x="{LEFT + BOX_WIDTH / 2}" y="{y + 23}" text-anchor="middle" font-weight="bold">'
                     f'{folder}/</text>')
        headers = [header.split("/")[1] for header in VOCABULARY if folder_of(header) == folder]
        for i, header in enumerate(headers):
            parts.append(f'<text x="{LEFT + BOX_WIDTH + 150}" y="{y + 16 + 18 * i}" fill="#b8432f">{header}</text>')
    return parts


def marker(name, colour):
    return (f'<marker id="{name}" viewBox="0 0 8 8" refX="7" refY="4" markerWidth="8" markerHeight="8" '
            f'markerUnits="userSpaceOnUse" orient="auto"><path d="M 0 0 L 8 4 L 0 8 z" fill="{colour}"/></marker>')


def draw(pairs):
    height = TOP + len(ORDER) * ROW
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" '
             f'viewBox="0 0 {WIDTH} {height}" font-family="sans-serif" font-size="14">',
             '<title>The folders of src/ and who includes whom</title>',
             f'<rect width="{WIDTH}" height="{height}" fill="white"/>',
             f'<defs>{marker("down", "#456990")}{marker("up", "#b8432f")}</defs>',
             '<text x="24" y="28" fill="#456990">includes, downwards</text>',
             f'<text x="{WIDTH - 24}" y="28" fill="#b8432f" text-anchor="end">headers that lower folders may include</text>']
    lines += draw_arrows(pairs) + draw_boxes() + ['</svg>']
    return "\n".join(lines) + "\n"


# ---- the self-test -----------------------------------------------------------------------------------------------

def faults_of(files):
    """The faults of a small source folder, besides those of listed headers that it does not use."""
    with tempfile.TemporaryDirectory() as folder:
        for name, text in files.items():
            path = Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        return [fault for fault in find_faults(read_includes(Path(folder))) if "is listed" not in fault]


def self_test():
    allowed = {
        "board/a.cpp": '#include "board/b.h"\n#include "platform/bits.h"\n#include "eval/psq.h"\n#include <array>\n',
        "eval/psq.h": '#include "platform/bits.h"\n',
    }
    cases = [
        ("downward, own folder and listed", allowed, None),
        ("upward", {"board/a.cpp": '#include "search/search.h"\n'}, "board/a.cpp includes search/search.h: upwards"),
        ("upward from a header", {"hash/a.h": '  #  include "eval/eval.h"\n'}, "hash/a.h includes eval/eval.h"),
        ("a listed header with more", {"eval/psq.h": '#include "eval/internal.h"\n'}, "more than a header for all may"),
        ("an unknown folder", {"extra/a.cpp": '#include "board/board.h"\n'}, "no place in the order"),
    ]
    for name, files, expected in cases:
        faults = faults_of(files)
        found = not faults if expected is None else len(faults) == 1 and expected in faults[0]
        if not found:
            sys.exit(f"self-test: {name}: {faults}")
    if not any("is listed, but nobody" in fault for fault in find_faults([])):
        sys.exit("self-test: a listed header without use was not found")
    if draw([("search/a.cpp", "board/board.h")]) == draw([("search/a.cpp", "hash/hash.h")]):
        sys.exit("self-test: the picture does not depend on the includes")


def main():
    arguments = sys.argv[1:]
    if "--self-test" in arguments:
        self_test()
        return 0
    top = Path(__file__).resolve().parent.parent
    folders = [argument for argument in arguments if not argument.startswith("--")]
    pairs = read_includes(Path(folders[0]) if folders else top / "src")
    picture = top / "docs" / "folders.svg"
    if "--draw" in arguments:
        picture.write_text(draw(pairs), encoding="utf-8")
    faults = find_faults(pairs)
    if not picture.exists() or picture.read_text(encoding="utf-8") != draw(pairs):
        faults.append("docs/folders.svg shows other includes than there are: run tools/check_layers.py --draw")
    print("\n".join(faults), end="\n" if faults else "")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
