#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Plays the operator on a virtual display: through the real window it sends a program to each simulated control, or
receives what the control punches out.

Usage: demo_operator.py PROGRAM CNCSIM OUTPUT_FOLDER. Exits with 0 if every control received exactly what it
should and every saved file holds exactly what was punched out.
"""

import os
import subprocess
import sys

import controls
import desktop
import processes
from controls import CONTROLS, UNPLUGGED, Simulator

APPLICATION = "Varnock"
MAIN_WINDOW = "Varnock"
MENU = "DNC menu"
MENU_KEYS = {"Send": "alt+s", "Receive": "alt+r", "Setup": "alt+u"}
OPEN_DIALOG = "Open program"
HISTORY = "History"
UP, DOWN = "Scroll machines up", "Scroll machines down"  # shown if there are many machines
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
        self._window.wait_for("Setup...")
        self._picture("failed-port")
        self._window.click("Cancel", MAIN_WINDOW)
        self._window.wait_until_gone("Setup...")

    def send(self, simulator):
        """Sends the control's program from the menu to the end and closes the view again."""
        control = simulator.control
        place = MAIN_WINDOW
        self._open_menu(control)
        self._choose("Send")
        self._window.choose_file(control.sample, OPEN_DIALOG)
        self._window.click("Send", place)
        if control.waits_for_start:
            self._answer_wait_box(simulator)
        if control.undocks:
            place = self._watch_undocked(simulator)
        if control.picture:
            self._wait_for_progress(simulator, 0.5)
            self._picture(control.picture)
        simulator.wait_until_complete()
        self._window.wait_for("Send", place)  # the buttons are back: the program has seen the end, too
        self._close(place)

    def receive(self, simulator):
        """Receives what the control punches out; it saves itself."""
        control = simulator.control
        self._open_menu(control)
        self._choose("Receive")
        self._window.wait_for("Program text", MAIN_WINDOW)
        self._window.click("Save what comes by itself", MAIN_WINDOW)
        simulator.press_button()
        self._wait_for_text(simulator, 0.5)
        self._picture(control.picture)
        simulator.wait_until_complete()
        self._wait_for_text(simulator, 1)
        processes.wait_until(simulator.result.exists, f"{simulator.result.name} to be saved")
        self._window.wait_until_gone("Receiving", MAIN_WINDOW)  # leaving would be asked about
        self._picture("received")
        self._close(MAIN_WINDOW)

    def look_at_history(self):
        self._window.click("History", MAIN_WINDOW)
        self._window.wait_for("Transfers", HISTORY)
        self._picture("history")
        self._window.close(HISTORY)

    def quit(self):
        self._window.close(MAIN_WINDOW)

    def _open_menu(self, control):
        card = f"{control.name}*"
        self._window.wait_for(card, MAIN_WINDOW)
        self._scroll(UP, lambda: self._window.is_above(UP, card, MAIN_WINDOW))
        self._scroll(DOWN, lambda: self._window.is_above(card, DOWN, MAIN_WINDOW))
        self._window.click(card, MAIN_WINDOW)
        self._window.wait_for_popup(MENU)

    def _scroll(self, button, is_in_view):
        processes.wait_until(lambda: is_in_view() or self._window.click(button, MAIN_WINDOW),
                             f'"{button}" to bring the machine into view')

    def _choose(self, item):
        self._window.press(MENU_KEYS[item])
        self._window.wait_until_popup_gone(MENU)

    def _answer_wait_box(self, simulator):
        self._window.wait_for("Send now")
        self._picture("wait-box")
        if simulator.result.exists():
            raise RuntimeError(f"{simulator.control.name} got bytes before its start signal")
        simulator.press_button()

    def _watch_undocked(self, simulator):
        name = simulator.control.name
        self._wait_for_progress(simulator, 0.1)
        self._picture("sending-docked")
        self._window.click("Undock", MAIN_WINDOW)
        self._window.wait_for("Program text", name)
        self._wait_for_progress(simulator, 0.4)
        self._picture("sending-undocked")
        return name

    def _wait_for_progress(self, simulator, share):
        # On a busy computer everything may have been sent before we look.
        processes.wait_until(
            lambda: self._window.share("Transfer progress", MAIN_WINDOW) >= share or simulator.verdicts(),
            f"{share:.0%} of {simulator.control.program} to be sent", process=simulator.process)

    def _wait_for_text(self, simulator, share):
        self._window.wait_for_text("Program text", share * simulator.control.sample.stat().st_size, MAIN_WINDOW)

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
    """Where two byte strings differ, in words; empty if they are equal."""
    if got == expected:
        return ""
    at = next((i for i, (a, b) in enumerate(zip(got, expected)) if a != b), min(len(got), len(expected)))
    return (f"{len(expected)} bytes expected, first difference at byte {at}: got {got[at:at + 24]!r}, "
            f"expected {expected[at:at + 24]!r}")


def fault(simulator):
    """What is wrong with what arrived, in words; empty if nothing is."""
    verdicts = simulator.verdicts()
    if not verdicts:
        return "the program has not reached its end"
    if not simulator.result.exists():
        return "nothing was saved" if simulator.control.punches else "nothing arrived"
    wrong = difference(simulator.result.read_bytes(), controls.expected_bytes(simulator.control))
    return wrong or ("" if "complete and correct" in verdicts[-1] else f"the control says: {verdicts[-1]}")


def report(simulators, output):
    """Prints what arrived at each control, or from it. True when everything is as it should be."""
    faulty = []
    for simulator in simulators:
        control, wrong = simulator.control, fault(simulator)
        size = simulator.result.stat().st_size if simulator.result.exists() else 0
        print(f"{control.name} ({control.about})")
        print(f"  program: samples/{control.program}")
        print(f"  {'saved' if control.punches else 'arrived'}: {size} bytes, in {simulator.result}")
        print(f"  verdict: {'WRONG: ' + wrong if wrong else 'byte for byte what it should be, and nothing else'}")
        if wrong:
            faulty.append(control.name)
    print(f"Pictures: {output}/*.png")
    print(f"{len(simulators)} controls: {'NOT identical: ' + ', '.join(faulty) if faulty else 'all identical'}")
    return not faulty


def play(program, output, simulators, log):
    """Runs the program and plays the operator's day."""
    ports = {simulator.control.name: simulator.device for simulator in simulators}
    profile = output / "profile"
    controls.write_profile(profile, [*CONTROLS, UNPLUGGED], ports, output / controls.PUNCHED)
    with desktop.virtual_desktop(profile, log):
        from window import Window  # needs the desktop's environment
        with processes.started([str(program)], stdout=log, stderr=log) as running:
            operator = Operator(Window(running, APPLICATION), output)
            try:
                serve(operator, simulators)
                operator.quit()
                code = running.wait(processes.PATIENCE)
            except Exception:
                desktop.screenshot(output / "failure.png")
                raise
            if code != 0:
                raise RuntimeError(f"the program ended with {code}")


def serve(operator, simulators):
    operator.look_around(CONTROLS[0])
    operator.meet_failed_port(UNPLUGGED)
    for simulator in simulators:
        control = simulator.control
        if control.punches:
            print(f"  receiving {control.program} from {control.name}", flush=True)
            operator.receive(simulator)
        else:
            print(f"  sending {control.program} to {control.name}", flush=True)
            operator.send(simulator)
    operator.look_at_history()


def main():
    program, cncsim, output = controls.demo_arguments()
    with processes.all_ended_afterwards(), open(output / "demo.log", "w") as log:
        simulators = [Simulator(cncsim, control, output) for control in CONTROLS]
        try:
            play(program, output, simulators, log)
        except (RuntimeError, OSError, subprocess.SubprocessError) as error:  # TimeoutError is an OSError
            print(f"demo: {error}", file=sys.stderr)
            report(simulators, output)
            return 1
        return 0 if report(simulators, output) else 1


if __name__ == "__main__":
    sys.exit(main())
