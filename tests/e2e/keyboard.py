#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A whole day without a pointer: adds and sets up two machines, sends a program to one and saves what the other
punches out, with nothing but keys. Fails where the keyboard gets lost.

Usage: keyboard.py PROGRAM CNCSIM OUTPUT_FOLDER. Exits with 0 if every byte is where it should be.
"""

import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))

import controls  # noqa: E402
import desktop  # noqa: E402
import processes  # noqa: E402
from controls import Control, Simulator  # noqa: E402

MILL = Control("Mill", "Fanuc, XON/XOFF", "O1001-bracket.nc", {"MCMODE": "Fanuc", "MCFLOW": 1},
               ["--type", "fanuc", "--xon-xoff"])
DRILL = Control("Drill", "punches out", "O0042-bolt-circle.nc", {"MCFLOW": 1}, ["--xon-xoff"], punches=True)
LONGEST_WAY = 60  # Tabs


class Keyboard:
    """Knows the names of controls, never their places; looks at what has the focus after each key."""

    def __init__(self, window, focus):
        self._window = window
        self._focus = focus

    def set_up(self, simulator):
        control = simulator.control
        self._tab_to("Add machine")
        self._press("Return")
        self._at("Machine name")  # which is selected, to be typed over
        self._window.type(control.name)
        self._write("Control type", control.machine.get("MCMODE", "Auto"))
        self._write("Port", simulator.device)
        self._tab_to("*", label="Flow control")  # its own name is the present choice
        self._window.type("xon")
        self._at("XON/XOFF (software)")
        self._press("ctrl+s")
        self._window.wait_for("Saved")
        self._close_view(control)

    def send(self, simulator):
        self._menu(simulator.control, "s")
        self._window.choose_file(simulator.control.sample, "Open program")
        self._at("Send")
        self._press("Return")
        simulator.wait_until_complete()
        self._window.wait_for("Sent: *")
        self._tab_to("Send")
        self._close_view(simulator.control)

    def receive(self, simulator):
        self._menu(simulator.control, "r")
        self._at("Save program")
        simulator.press_button()
        simulator.wait_until_complete()
        # What has left the control may still be on its way, and leaving while bytes come would be asked about.
        self._window.wait_for_text("Program text", simulator.control.sample.stat().st_size)
        self._window.wait_until_gone("Receiving")
        self._press("ctrl+s")
        self._window.choose_file(simulator.result, "Save program")
        self._at("Save program")
        self._close_view(simulator.control)

    def _menu(self, control, letter):
        self._press("Home")
        self._press(control.name[0].lower())
        self._at(f"{control.name} on *")
        self._press("Return")
        self._window.wait_for_popup("DNC menu")
        self._press(letter)
        self._window.wait_until_popup_gone("DNC menu")

    def _close_view(self, control):
        self._press("ctrl+w")
        self._at(f"{control.name} on *")

    def _write(self, name, text):
        self._tab_to(name)
        self._press("ctrl+a")
        self._window.type(text)

    def _tab_to(self, name, label=None):
        for _ in range(LONGEST_WAY):
            if self._focus.is_at(name, label):
                return
            self._press("Tab")
        raise RuntimeError(f'Tab does not lead to "{label or name}"')

    def _at(self, name):
        processes.wait_until(lambda: self._focus.is_at(name), f'the focus to be on "{name}", not {self._focus.where()}')

    def _press(self, key):
        self._window.press(key)
        self._focus.settle()


def focus_of(window):
    from window import Atspi, _asked, _children, _has, _matches, _name  # needs the desktop's environment

    class Focus:
        """The control that has the keyboard focus, as a screen reader is told."""

        def where(self):
            node = self._node()
            return f'"{_name(node)}" ({_asked(node.get_role_name, "?")})' if node else "nothing"

        def is_at(self, name, label=None):
            node = self._node()
            return bool(node) and _matches(node, name) and (label is None or label in self._labels(node))

        def settle(self):
            """Until two looks in a row agree: a key is answered later."""
            last = [None]

            def same():
                last.append(self.where())
                return last[-1] == last[-2]
            processes.wait_until(same, "the focus to rest")

        def _node(self):
            return self._search(window._tops())

        def _search(self, nodes):
            for node in nodes:
                if not _has(node, Atspi.StateType.SHOWING):
                    continue
                if found := self._search(_children(node)):
                    return found
                if _has(node, Atspi.StateType.FOCUSED):
                    return node
            return None

        @staticmethod
        def _labels(node):
            return [_name(relation.get_target(n)) for relation in _asked(node.get_relation_set, [])
                    if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY
                    for n in range(relation.get_n_targets())]

    return Focus()


def main():
    program, cncsim, output = controls.demo_arguments()
    with processes.all_ended_afterwards(), open(output / "log", "w") as log:
        mill, drill = (Simulator(cncsim, control, output) for control in (MILL, DRILL))
        with desktop.virtual_desktop(output, log), processes.started([str(program)], stdout=log, stderr=log) as running:
            from window import Window  # needs the desktop's environment
            window = Window(running, "Varnock")
            keyboard = Keyboard(window, focus_of(window))
            try:
                window.wait_for("Add machine")
                keyboard.set_up(mill)
                keyboard.set_up(drill)
                keyboard.send(mill)
                keyboard.receive(drill)
            except (RuntimeError, OSError, subprocess.SubprocessError) as error:
                desktop.screenshot(output / "failure.png")
                print(f"keyboard: {error}", file=sys.stderr)
                return 1
        wrong = [each.control.name for each in (mill, drill)
                 if each.result.read_bytes() != controls.expected_bytes(each.control)]
        print(f"keyboard: {'NOT identical: ' + ', '.join(wrong) if wrong else 'identical'}")
        return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
