#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Measures and writes docs/performance.md. Usage, from anywhere: tools/performance.py (builds the release first).

Keep the machine free of other work meanwhile.
"""

import datetime
import os
import platform
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import controls
import desktop
import processes

SOURCE = Path(__file__).resolve().parent.parent
BUILD = SOURCE / "build" / "release"
STARTS = 7

TEXT = """# Performance

Measured with `tools/performance.py` on {date}: {machine}.

The machine has no real line, so the program's system calls go to a model of one (`benchmarks/PacedLine.cpp`): a driver
buffer that drains at the set speed, and a FIFO of {fifo} bytes that the driver does not count. The driver obeys no XOFF;
the program itself does. Everything else is the real program, with its window shown on an X display.

## Use of the line and what goes out after XOFF

How much of the line's physical limit (speed / 10 bits a character) a text send with XON/XOFF uses, what it costs in
processor time, and how many bytes still reach the control after it has sent XOFF. The program keeps two per cent behind
the line, so that no chip's buffer fills up behind it: 98 % is all there is. Of a fast line four milliseconds may be on
their way, 46 characters at 115200 baud.
`build/release/benchmarks/bench_wire`:
{wire}
## XModem

Share of the limit that waiting for each block's answer leaves: 132 characters and one answer, at the line's speed.
lrzsz is the control, and in the last column both ends. `build/release/benchmarks/bench_xmodem`:
{xmodem}
## Many machines, large programs

All machines send at once from one window; "answers within" is the longest that any of about 700 operator actions had to
wait. Below, what the program costs while all its ports are open and nothing moves.
`build/release/benchmarks/bench_scale`:
{scale}
## Cost of a line, by length of the program

`build/release/benchmarks/bench_transfer`:

```
{transfer}```

## Reading a program

Processor time for what stands in force above a line, and for the check before a send. Both run beside the window; a
change of the text looks at the changed lines and puts up to 1000 findings into words. In the second table, what it
takes to compare a program with another one.
`build/release/benchmarks/bench_program`:
{program}
## History

The history's window with its file in memory, from the click until the rows are there.
`build/release/benchmarks/bench_history`:
{history}
## Start

From the start of the process to the main window on the display, with 50 machines and {starts} starts:
median {median:.2f} s, longest {longest:.2f} s.
"""


def run(name):
    print(f"measuring: {name}", flush=True)
    return subprocess.run([BUILD / "benchmarks" / name], capture_output=True, text=True, check=True).stdout


def start_time(folder):
    """Seconds from starting the program until its window is shown."""
    begin = time.monotonic()
    with processes.started([str(BUILD / "src" / "varnock")], stderr=subprocess.DEVNULL) as program:
        processes.wait_until(_window_is_shown, "the main window", process=program)
        return time.monotonic() - begin


def _window_is_shown():
    search = ["xdotool", "search", "--onlyvisible", "--name", "^Varnock$"]
    return subprocess.run(search, capture_output=True, text=True, check=False).stdout.strip()


def machine():
    models = [line.split(":")[1].strip() for line in open("/proc/cpuinfo") if line.startswith("model name")]
    return f"{len(models)} cores of {models[0]}, {platform.system()} {platform.release()}"


def main():
    subprocess.run([SOURCE / "tools" / "install-packages.sh"], check=True)
    subprocess.run(["cmake", "--preset", "release"], cwd=SOURCE, check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", "--preset", "release"], cwd=SOURCE, check=True, stdout=subprocess.DEVNULL)
    with tempfile.TemporaryDirectory() as folder, processes.all_ended_afterwards():
        profile = Path(folder) / "profile"
        fifty = [controls.Control(f"CNC{n}", "", "", {"MCPORT": f"/dev/ttyS{n}"}) for n in range(1, 51)]
        controls.write_profile(profile, fifty, {})
        os.environ["XDG_CONFIG_HOME"] = str(profile)
        with desktop.virtual_desktop(Path(folder) / "runtime", subprocess.DEVNULL):
            starts = [start_time(folder) for _ in range(STARTS)]
            text = TEXT.format(date=datetime.date.today(), machine=machine(), fifo=16, wire=run("bench_wire"),
                               xmodem=run("bench_xmodem"), scale=run("bench_scale"),
                               transfer=run("bench_transfer"), program=run("bench_program"),
                               history=run("bench_history"), starts=STARTS,
                               median=statistics.median(starts), longest=max(starts))
    (SOURCE / "docs" / "performance.md").write_text(text)
    print(text)


if __name__ == "__main__":
    sys.exit(main())
