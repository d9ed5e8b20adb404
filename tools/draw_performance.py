#!/usr/bin/env python3
"""Draws docs/performance.svg from the table by commit in docs/performance.md.

usage: draw_performance.py

Each figure is drawn as a share of what it was in the table's first row.
"""
import re
from pathlib import Path

DOCS = Path(__file__).resolve().parent.parent / "docs"
SERIES = (("search", "#1f6fb2"), ("perft", "#c4501b"), ("evaluation", "#3d8b37"), ("start", "#7a4fa3"))
WIDTH, HEIGHT = 720, 320
LEFT, RIGHT, TOP, BOTTOM = 50, 120, 20, 60


def rows():
    """The table's rows: a name and the figures of all series."""
    for line in (DOCS / "performance.md").read_text(encoding="utf-8").splitlines():
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if len(cells) == 6 and re.fullmatch(r"[0-9a-f]{7}", cells[0]):
            yield cells[0], [float(cell) for cell in cells[2:]]


def place(index, share, count):
    x = LEFT + (WIDTH - LEFT - RIGHT) * index / (count - 1)
    return x, TOP + (HEIGHT - TOP - BOTTOM) * (1 - share)


def drawing(table):
    first = table[0][1]
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" '
             'font-family="sans-serif" font-size="12">',
             f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>']
    for percent in range(0, 101, 20):
        y = place(0, percent / 100, 2)[1]
        parts.append(f'<line x1="{LEFT}" y1="{y:.0f}" x2="{WIDTH - RIGHT}" y2="{y:.0f}" stroke="#ddd"/>')
        parts.append(f'<text x="{LEFT - 6}" y="{y + 4:.0f}" text-anchor="end">{percent} %</text>')
    for index, (commit, _) in enumerate(table):
        x, y = place(index, 0, len(table))
        parts.append(f'<text transform="translate({x:.0f},{y + 14:.0f}) rotate(30)">{commit}</text>')
    lowest = []
    for number, (name, colour) in enumerate(SERIES):
        points = [place(i, figures[number] / first[number], len(table)) for i, (_, figures) in enumerate(table)]
        line = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        parts.append(f'<polyline points="{line}" fill="none" stroke="{colour}" stroke-width="2"/>')
        lowest.append([points[-1][1], name, colour])
    lowest.sort()
    for upper, lower in zip(lowest, lowest[1:]):
        lower[0] = max(lower[0], upper[0] + 14)  # names do not lie over each other
    for y, name, colour in lowest:
        parts.append(f'<text x="{WIDTH - RIGHT + 8}" y="{y + 4:.0f}" fill="{colour}">{name}</text>')
    return "\n".join([*parts, "</svg>", ""])


def main():
    (DOCS / "performance.svg").write_text(drawing(list(rows())), encoding="utf-8")


if __name__ == "__main__":
    main()
