#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Fails when a source file includes from a layer above its own. Usage: check_includes.py SOURCE_FOLDER"""

import re
import sys
from pathlib import Path

# From the ground up: a layer may include itself and what stands before it.
LAYERS = ["platform", "config", "serial", "transfer", "shell"]
BESIDE = ["resources"]  # for every layer that shows something; includes none of them
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"](\w+)/', re.MULTILINE)


def forbidden(folder):
    if folder in BESIDE:
        return LAYERS
    return LAYERS[LAYERS.index(folder) + 1:]


def wrong_includes(source):
    for folder in LAYERS + BESIDE:
        upward = forbidden(folder)
        for path in sorted((source / folder).rglob("*")):
            if path.suffix not in (".h", ".cpp"):
                continue
            for match in INCLUDE.finditer(path.read_text()):
                if match.group(1) in upward:
                    yield f"{path}: {folder} must not include from {match.group(1)}: {match.group(0).strip()}..."


def main():
    source = Path(sys.argv[1])
    missing = [folder for folder in LAYERS + BESIDE if not (source / folder).is_dir()]
    problems = [f"no folder {folder}" for folder in missing] or list(wrong_includes(source))
    print("\n".join(problems) or "all includes point down")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
