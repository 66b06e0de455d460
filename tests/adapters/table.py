#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Prints what the virtual machines found as a table. Usage: table.py CONSOLE...; exits with 1 if a row is wrong."""

import collections
import re
import sys
from pathlib import Path

LINES = {"sender 8n xon": "8 bits, XON/XOFF", "sender 7e xon": "7 bits even, XON/XOFF",
         "sender 8n cts": "8 bits, RTS/CTS", "window 8n xon": "8 bits, XON/XOFF, with its window"}
ROW = re.compile(r"row: (?P<kind>\S+) (?P<sender>\S+) (?P<speed>\d+) (?P<line>\S+ \S+) (?P<holds>\d+) (?P<median>\d+) "
                 r"(?P<worst>\d+) (?P<promised>\d+) (?P<lost>\d+) (?P<twice>\d+) (?P<whole>\w+) (?P<stops>\d+)$",
                 re.MULTILINE)


def main():
    rows, is_right = [], True
    for console in map(Path, sys.argv[1:]):
        text = console.read_text()
        rows += ROW.finditer(text)
        if "\nverdict: right\n" not in text:
            is_right = False
            print(f"{console} is wrong:\n{text[-2000:]}", file=sys.stderr)
    speeds = sorted({int(row["speed"]) for row in rows})
    table = collections.defaultdict(dict)
    for row in rows:
        fast = f" of {row['promised']}" if int(row["speed"]) > 9600 else ""
        line = LINES[f"{row['sender']} {row['line']}"]
        table[row["kind"], line][int(row["speed"])] = f"{row['median']}, {row['worst']}{fast}"
    print("| Driver | Line |", " | ".join(map(str, speeds)), "|")
    print("|---|---|" + "---|" * len(speeds))
    for (kind, line), cells in table.items():
        print(f"| {kind} | {line} |", " | ".join(cells.get(speed, "") for speed in speeds), "|")

    def total(figure):
        return sum(int(row[figure]) for row in rows)

    whole = sum(row["whole"] == "right" for row in rows)
    print(f"\n{len(rows)} programs, {whole} of them right byte for byte; {total('holds'):,} holds; {total('stops'):,} "
          f"stops by the operator, each continued; blocks lost {total('lost')}, twice {total('twice')}.")
    return 0 if is_right and rows else 1


if __name__ == "__main__":
    sys.exit(main())
