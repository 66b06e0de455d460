#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Plays the operator on a virtual display: sends a program to every simulated control through the real window.

Usage: demo_operator.py BUILD_FOLDER OUTPUT_FOLDER. Ends with 0 when every control got exactly what it should.
"""

import os
import signal
import sys
from contextlib import ExitStack
from pathlib import Path

import controls
import desktop
import processes
from controls import CONTROLS, UNPLUGGED, Simulator

APPLICATION = "Varnock"
MAIN_WINDOW = "Varnock"
MENU = "DNC menu"
MENU_KEYS = {"Send": "alt+s", "Receive": "alt+r", "Setup": "alt+u"}
FILE_DIALOG = "Open program"
FREE_CORNER = (1270, 850)


class Operator:
    def __init__(self, window, pictures):
        self._window = window
        self._pictures = pictures

    def look_around(self, control):
        """The main window, the DNC menu and the setup form."""
        self._window.wait_for(f"{control.name}*")
        self._picture("main-window")
        self._open_menu(control)
        self._picture("dnc-menu")
        self._choose("Setup")
        self._window.wait_for("Save setup")
        self._picture("setup-form")
        self._window.click("Close", MAIN_WINDOW)
        self._window.wait_until_gone("Save setup")

    def meet_failed_port(self, control):
        self._open_menu(control)
        self._choose("Send")
        self._window.wait_for("Start-up error")
        self._picture("failed-port")
        self._window.click("Cancel", MAIN_WINDOW)
        self._window.wait_until_gone("Start-up error")

    def send(self, simulator):
        """Sends the control's program from the menu to the end and closes the view again."""
        control = simulator.control
        place = MAIN_WINDOW
        self._open_menu(control)
        self._choose("Send")
        self._window.choose_file(control.sample, FILE_DIALOG)
        self._window.click("Send", place)
        self._window.wait_for("Stop", place)
        if control.waits_for_start:
            self._answer_wait_box(simulator)
        if control.undocks:
            place = self._watch_undocked(control)
        simulator.wait_until_complete()
        self._window.wait_for("Send", place)  # the buttons are back: the program knows the end, too
        self._close(place)

    def quit(self):
        self._window.press("alt+F4")

    def _open_menu(self, control):
        self._window.click(f"{control.name}*", MAIN_WINDOW)
        self._window.wait_for_popup(MENU)

    def _choose(self, item):
        self._window.press(MENU_KEYS[item])
        self._window.wait_until_popup_gone(MENU)

    def _answer_wait_box(self, simulator):
        self._window.wait_for("Send now")
        self._picture("wait-box")
        if simulator.output.exists():
            raise RuntimeError(f"{simulator.control.name} got bytes before its start signal")
        simulator.process.send_signal(signal.SIGUSR1)  # the control's start button

    def _watch_undocked(self, control):
        self._wait_for_progress(0.1)
        self._picture("sending-docked")
        self._window.click("Undock", MAIN_WINDOW)
        self._window.wait_for("Stop", control.name)
        self._wait_for_progress(0.4)
        self._picture("sending-undocked")
        return control.name

    def _wait_for_progress(self, share):
        processes.wait_until(lambda: self._window.share("Transfer progress", MAIN_WINDOW) >= share,
                             f"{share:.0%} of the program to be sent")

    def _close(self, place):
        if place == MAIN_WINDOW:
            self._window.click("Close", place)
        else:
            self._window.close(place)
        self._window.wait_until_gone("Program text", place)

    def _picture(self, name):
        self._window.rest_pointer(*FREE_CORNER)
        desktop.screenshot(self._pictures / f"{name}.png")


def difference(got, expected):
    """Where two byte strings part, in words; empty when they are equal."""
    if got == expected:
        return ""
    at = next((i for i, (a, b) in enumerate(zip(got, expected)) if a != b), min(len(got), len(expected)))
    return (f"{len(expected)} bytes expected, they part at byte {at}: got {got[at:at + 24]!r}, "
            f"expected {expected[at:at + 24]!r}")


def report(simulators):
    """Prints what arrived at each control. True when everything is as it should be."""
    all_right = True
    for simulator in simulators:
        control, verdict = simulator.control, simulator.verdict() or "the program has not come to its end"
        got = simulator.output.read_bytes() if simulator.output.exists() else b""
        wrong = difference(got, controls.expected_bytes(control))
        if not wrong and "complete and correct" not in verdict:
            wrong = f"the control says: {verdict}"
        print(f"{control.name} ({control.about})")
        print(f"  program: samples/{control.program}")
        print(f"  arrived: {len(got)} bytes, in {simulator.output}")
        print(f"  verdict: {'WRONG: ' + wrong if wrong else 'byte for byte what it should be, and nothing else'}")
        all_right = all_right and not wrong
    return all_right


def play(build, output, simulators, log):
    """Runs the program and the operator's day at it."""
    ports = {simulator.control.name: simulator.device for simulator in simulators}
    profile = output / "profile"
    controls.write_profile(profile, [*CONTROLS, UNPLUGGED], ports)
    os.environ.update(XDG_CONFIG_HOME=str(profile), XDG_CACHE_HOME=str(profile), XDG_DATA_HOME=str(profile))
    with desktop.virtual_desktop(output / "runtime", log):
        from window import Window  # needs the desktop's environment
        with processes.started([str(build / "src" / "varnock")], stdout=log, stderr=log) as program:
            operator = Operator(Window(program, APPLICATION), output)
            try:
                operator.look_around(CONTROLS[0])
                operator.meet_failed_port(UNPLUGGED)
                for simulator in simulators:
                    print(f"  sending {simulator.control.program} to {simulator.control.name}", flush=True)
                    operator.send(simulator)
                operator.quit()
                code = program.wait(20)
            except Exception:
                desktop.screenshot(output / "failure.png")
                raise
            if code != 0:
                raise RuntimeError(f"the program ended with {code}")


def main():
    build, output = (Path(argument).resolve() for argument in sys.argv[1:3])
    with processes.all_ended_afterwards(), ExitStack() as stack:
        log = stack.enter_context(open(output / "demo.log", "w"))
        simulators = [Simulator(build / "simulator" / "cncsim", control, output) for control in CONTROLS]
        try:
            play(build, output, simulators, log)
        except (RuntimeError, TimeoutError, OSError) as error:
            print(f"demo: {error}", file=sys.stderr)
            report(simulators)
            return 1
        return 0 if report(simulators) else 1


if __name__ == "__main__":
    sys.exit(main())
