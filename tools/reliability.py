#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Tests the program with faults, random input and long runs, and writes the results into docs/reliability.md.

Usage: tools/reliability.py [faults] [adapters] [monkey] [fuzz] [coverage] [soak]; without a name all of them, which takes more
than an hour. Each part replaces its own table in the page. Exits with 1 if a part broke a promise.
"""

import collections
import datetime
import os
import re
import subprocess
import sys
import time

from performance import SOURCE, machine

PAGE = SOURCE / "docs" / "reliability.md"
FAULTS = {  # test program: which of its tests
    "config_saving": ".*",
    "serial_line": "deviceBelongs.*|unplugged.*",
    "transfer_files": "failedSave.*",
    "transfer_lrzsz": "oneFault|noisyLine",
    "transfer_port_lost": ".*",
    "transfer_stopping": "(?!operatorChooses).*",
    "transfer_uart": ".*",
    "transfer_xmodem_end": "sending|receiving|silent.*",
    "e2e_faults": ".*",
    "e2e_windows": "deleting.*|closing.*",
}
MONKEY_ACTIONS = 10_000
FUZZ_SECONDS = 200  # for each target


def output(command, **variables):
    """What the command prints; ends this script if it fails."""
    print("running:", *command, flush=True)
    run = subprocess.run(command, cwd=SOURCE, env=os.environ | variables, text=True, check=False,
                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if run.returncode != 0:
        sys.exit(f"{run.stdout[-4000:]}\n{' '.join(command)} failed")
    return run.stdout


def build(preset):
    output(["cmake", "--preset", preset])
    output(["cmake", "--build", "--preset", preset])


def words(name):
    """killedAtAnyMoment -> killed at any moment"""
    return re.sub(r"(?<!^)([A-Z])", lambda letter: " " + letter.group(1).lower(), name)


def fault_table():
    build("release")
    rows = collections.defaultdict(list)
    for test, wanted in FAULTS.items():
        log = output(["ctest", "--preset", "release", "-V", "-R", f"^{test}$"])
        for name, row in re.findall(r"PASS\s+: \w+::(\w+)\((.*)\)$", log, re.MULTILINE):
            if re.fullmatch(wanted, name) and name not in ("initTestCase", "cleanupTestCase"):
                rows[test, name].append(row)
    table = "| Test | Passed | With |\n|---|---|---|\n"
    for (test, name), variants in rows.items():
        table += f"| `{test}` | {words(name)} | {'; '.join(filter(None, variants))} |\n"
    return f"`ctest --preset release -R '{'|'.join(FAULTS)}'`", table


def adapter_table():
    log = output(["tests/adapters/run.sh"])
    return "`tests/adapters/run.sh`", log[log.index("| Driver |"):]


def monkey_table():
    table = "| Build | Seed | Actions | Lines that reached the controls | Time |\n|---|---|---|---|---|\n"
    for preset, seed in (("asan", 11), ("tsan", 12)):
        build(preset)
        begin = time.monotonic()
        log = output(["ctest", "--preset", preset, "-V", "-R", "^e2e_monkey$"],
                     VARNOCK_MONKEY_ACTIONS=str(MONKEY_ACTIONS), VARNOCK_MONKEY_SEED=str(seed))
        lines = int(re.search(r"(\d+) lines reached the controls", log).group(1))
        table += f"| {preset} | {seed} | {MONKEY_ACTIONS:,} | {lines:,} | {time.monotonic() - begin:.0f} s |\n"
    return f"`VARNOCK_MONKEY_ACTIONS={MONKEY_ACTIONS} VARNOCK_MONKEY_SEED=11 ctest --preset asan -R e2e_monkey`", table


def fuzz_table():
    log = output(["tools/fuzz.sh", str(FUZZ_SECONDS)])
    table = "| Target | Runs | Inputs that reached something new | Promises broken |\n|---|---|---|---|\n"
    figures = r"== (\w+), \d+ s\n.*?executed_units: (\d+)\n.*?units_added:\s+(\d+)"
    for target, runs, new in re.findall(figures, log, re.DOTALL):
        table += f"| {target} | {int(runs):,} | {int(new):,} | 0 |\n"
    return f"`tools/fuzz.sh {FUZZ_SECONDS}`", table


def coverage_table():
    log = output(["tools/coverage.sh"])
    folders = collections.defaultdict(lambda: [0, 0])
    below = []
    for file, lines, run in re.findall(r"^(?:build/coverage/layers/\w+/)?(\S+\.(?:cpp|h))\s+(\d+)\s+(\d+)\s", log,
                                       re.MULTILINE):
        folder = folders[os.path.dirname(file)]
        folder[0] += int(lines)
        folder[1] += int(run)
        if int(run) < 0.9 * int(lines):
            below.append(f"`{file}` {int(run) / int(lines):.0%}")
    table = "| Folder | Lines of code | Run by tests |\n|---|---|---|\n"
    for folder, (lines, run) in sorted(folders.items()):
        table += f"| `{folder}` | {lines:,} | {run / lines:.1%} |\n"
    return "`tools/coverage.sh`", table + "\nFiles under 90 %: " + (", ".join(below) or "none") + ".\n"


def soak_table():
    build("release")
    log = output(["build/release/tests/transfer/soak_xmodem"], QT_QPA_PLATFORM="offscreen")
    notes = re.findall(r"QINFO\s*: \w+::(.*)", log)
    return "`build/release/tests/transfer/soak_xmodem`", "```\n" + "\n".join(notes) + "\n```\n"


PARTS = {"faults": fault_table, "adapters": adapter_table, "monkey": monkey_table, "fuzz": fuzz_table,
         "coverage": coverage_table, "soak": soak_table}


def write(part, command, table):
    block = f"<!-- {part} -->\n{command}, {datetime.date.today()}, {machine()}:\n\n{table}<!-- end -->"
    page = PAGE.read_text()
    new = re.sub(rf"<!-- {part} -->.*?<!-- end -->", lambda _: block, page, flags=re.DOTALL)
    if block not in new:
        sys.exit(f"{PAGE} has no place for {part}")
    PAGE.write_text(new)
    print(table)


def main():
    parts = sys.argv[1:] or list(PARTS)
    unknown = [part for part in parts if part not in PARTS]
    if unknown:
        sys.exit(f"unknown: {', '.join(unknown)}\n{__doc__}")
    output(["tools/install-packages.sh"])
    for part in parts:
        write(part, *PARTS[part]())


if __name__ == "__main__":
    main()
