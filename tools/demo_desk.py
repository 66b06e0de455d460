#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs the program on the user's display beside simulated controls, with settings of its own, until its window closes.

Usage: demo_desk.py BUILD_FOLDER OUTPUT_FOLDER. What a control says of its program appears in the terminal.
"""

import os
import sys
from pathlib import Path

import controls
import processes
from controls import CONTROLS, Simulator

START_SIGNAL = ["--start-after", "4000"]  # nobody stands at the simulated control: it starts by itself
HINT = """
Click a machine, choose Send, pick a program from {samples} and press Send.
A machine that waits for its control's start signal gets it after a few seconds.
What arrives is in {output}; close the window to end the demo.
"""


def start_simulators(build, output):
    cncsim = build / "simulator" / "cncsim"
    return [Simulator(cncsim, control, output, *(START_SIGNAL if control.waits_for_start else []))
            for control in CONTROLS]


def tell_verdicts(simulators, told):
    """Prints each verdict once."""
    for simulator in simulators:
        verdict = simulator.verdict()
        if verdict and told.get(simulator.control.name) != verdict:
            told[simulator.control.name] = verdict
            print(f"{simulator.control.name}: {verdict}", flush=True)


def main():
    build, output = (Path(argument).resolve() for argument in sys.argv[1:3])
    with processes.all_ended_afterwards():
        simulators = start_simulators(build, output)
        profile = output / "profile"
        controls.write_profile(profile, CONTROLS, {s.control.name: s.device for s in simulators})
        for simulator in simulators:
            print(f"{simulator.control.name}: {simulator.control.about}, on {simulator.device}")
        print(HINT.format(samples=controls.SAMPLES, output=output), flush=True)
        environment = os.environ | {"XDG_CONFIG_HOME": str(profile)}
        with processes.started([str(build / "src" / "varnock")], env=environment) as program:
            told = {}
            while not processes.ended_within(program, seconds=0.5):
                tell_verdicts(simulators, told)
            tell_verdicts(simulators, told)
            return program.returncode


if __name__ == "__main__":
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        sys.exit(130)
