#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs the program on the user's display beside simulated controls, with settings of its own, until its window closes.

Usage: demo_desk.py PROGRAM CNCSIM OUTPUT_FOLDER. What a control says about its program appears in the terminal.
"""

import os
import select
import sys

import controls
import processes
from controls import CONTROLS, Simulator

HINT = """
To send:    click a machine, choose Send, pick a program from {samples}
            and press Send. {starting} waits for its control's start signal and gets it after a few seconds.
To receive: click {punching}, choose Receive, then press Enter here: that is the button at the control.
            Before that, tick "Save what comes by itself": the program becomes a file in {punched}.
Meanwhile:  Undock gives a machine a window of its own; after Stop, "From the caret" continues at the caret.

What the controls received is in {output}. Close the window to end the demo.
"""
PAUSE = 0.5  # s, between checks of the controls


def start_simulators(cncsim, output):
    # Nobody stands at the simulated control: it gives its first start signal by itself.
    return [Simulator(cncsim, control, output, *(["--start-after", "4000"] if control.waits_for_start else []))
            for control in CONTROLS]


def greet(simulators, output):
    for simulator in simulators:
        print(f"{simulator.control.name}: {simulator.control.about}, on {simulator.device}")
    starting = next(control.name for control in CONTROLS if control.waits_for_start)
    punching = next(control.name for control in CONTROLS if control.punches)
    print(HINT.format(samples=controls.SAMPLES, output=output, starting=starting, punching=punching,
                      punched=output / controls.PUNCHED), flush=True)


def tell_verdicts(simulators, told):
    """Prints each verdict once; `told` counts those already printed for each simulator."""
    for simulator in simulators:
        verdicts = simulator.verdicts()
        for verdict in verdicts[told.get(simulator, 0):]:
            print(f"{simulator.control.name}: {verdict}", flush=True)
        told[simulator] = len(verdicts)


def has_terminal():
    try:
        return os.tcgetpgrp(0) == os.getpgrp()
    except OSError:
        return False  # started from a desktop, say


def enter_pressed(seconds):
    """Waits that long for a line from the terminal, if we are in its foreground."""
    ready, _, _ = select.select([0] if has_terminal() else [], [], [], seconds)
    return bool(ready) and b"\n" in os.read(0, 1024)


def press_buttons(simulators):
    for simulator in simulators:
        if simulator.control.punches or simulator.control.waits_for_start:
            simulator.press_button()


def main():
    program, cncsim, output = controls.demo_arguments()
    with processes.all_ended_afterwards():
        simulators = start_simulators(cncsim, output)
        profile = output / "profile"
        ports = {simulator.control.name: simulator.device for simulator in simulators}
        controls.write_profile(profile, CONTROLS, ports, output / controls.PUNCHED)
        greet(simulators, output)
        environment = os.environ | {"XDG_CONFIG_HOME": str(profile), "XDG_DATA_HOME": str(profile)}
        told = {}
        with processes.started([str(program)], env=environment) as running:
            while running.poll() is None:
                if enter_pressed(PAUSE):
                    press_buttons(simulators)
                tell_verdicts(simulators, told)
        tell_verdicts(simulators, told)
        return running.returncode


if __name__ == "__main__":
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        sys.exit(130)
