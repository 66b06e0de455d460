#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Sets up a machine and sends a program the way assistive technology does: no positions, no pointer. During the
send the program is suspended for a while.

Usage: atspi_send.py PROGRAM CNCSIM OUTPUT_FOLDER. Every control is found by its accessible name and operated through
its accessible actions and text; keys serve where accessibility offers no action: in the popup menu (Qt lists no popups)
and to choose from a list. Exits with 0 if the control received exactly the program.
"""

import signal
import subprocess
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))

import controls  # noqa: E402
import desktop  # noqa: E402
import processes  # noqa: E402
from controls import Control, Simulator  # noqa: E402

CONTROL = Control("Mill by ear", "Fanuc, XON/XOFF", "O3000-surface.nc", {"MCMODE": "Fanuc", "MCFLOW": 1},
                  ["--type", "fanuc", "--xon-xoff", "--rate", "8000"])
SUSPENSION = 3  # s


def accessible_window(process):
    from window import Atspi, Window, _asked, _children, _content, _has, _name  # needs the desktop's environment

    class AccessibleWindow(Window):
        """Operates controls through their accessible interfaces. A control that lacks one fails here."""

        def do(self, name, inside=None, action="Press"):
            def done():
                control = self.find(name, inside)
                return control and _has(control, Atspi.StateType.ENABLED) and _act(control, action)
            self._wait_until(done, f'"{name}" to offer {action}')

        def write(self, name, text, inside=None):
            def written():
                field = _first([top for top in self._tops() if inside in (None, _name(top))],
                               lambda node: node.get_role() == Atspi.Role.TEXT and _name(node) == name)
                if field and _content(field) != text:
                    _asked(lambda: Atspi.EditableText.set_text_contents(field, text), False)
                return field and _content(field) == text
            self._wait_until(written, f'"{name}" to take "{text}"')

        def choose(self, label, item):
            """Chooses from the list with that label. The list's own name is the current choice."""
            def labelled():
                return _first(self._tops(),
                              lambda node: node.get_role() == Atspi.Role.COMBO_BOX and label in _labels(node))
            box = self._wait_until(labelled, f'a list labelled "{label}"')
            _act(box, "ShowMenu")
            self._wait_until(lambda: _has(box, Atspi.StateType.EXPANDED), f'the list of "{label}" to open')
            items = [_name(entry) for entry in _children(_children(box)[0])]
            for key in ["Home"] + ["Down"] * items.index(item) + ["Return"]:
                self.press(key)
            self._wait_until(lambda: _name(labelled()) == item, f'"{label}" to show "{item}"')

    def _act(node, action):
        offered = [Atspi.Action.get_action_name(node, n)
                   for n in range(_asked(lambda: Atspi.Action.get_n_actions(node), 0))]
        return action in offered and Atspi.Action.do_action(node, offered.index(action))

    def _labels(node):
        return [_name(relation.get_target(n)) for relation in node.get_relation_set()
                if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY
                for n in range(relation.get_n_targets())]

    def _first(nodes, wanted):
        for node in nodes:
            if _has(node, Atspi.StateType.SHOWING):
                if found := node if _asked(lambda node=node: wanted(node), False) else _first(_children(node), wanted):
                    return found
        return None

    return AccessibleWindow(process, "Varnock")


def choose_in_menu(window, machine, key):
    window.do(f"{machine} on *")
    window.wait_for_popup("DNC menu")
    window.press(key)
    window.wait_until_popup_gone("DNC menu")


def set_up(window, device):
    """From an empty shop to a stored machine."""
    window.do("Add machine")
    window.write("Machine name", CONTROL.name)
    window.write("Control type", "Fanuc")
    window.write("Port", device)
    window.write("Speed", "9600")
    window.choose("Flow control", "RTS/CTS (hardware)")  # so that choosing the right one changes something
    window.choose("Flow control", "XON/XOFF (software)")
    window.wait_for("9600 baud, 8 data bits, no parity, 1 stop bit, XON/XOFF")
    window.do("Save setup")
    window.wait_for("Saved")
    window.wait_for(f"{CONTROL.name} on {device.removeprefix('/dev/')}")


def send(window, simulator, program):
    choose_in_menu(window, CONTROL.name, "s")
    window.write("File name:", str(CONTROL.sample), "Open program")
    window.do("SelectFile", "Open program")
    window.wait_for("Ready to send")
    window.do("Send")
    processes.wait_until(lambda: window.share("Transfer progress") > 0.2, "a part of the program to be sent")
    program.send_signal(signal.SIGSTOP)
    time.sleep(SUSPENSION)
    if simulator.verdicts():
        raise RuntimeError("the program was not suspended during the send")
    program.send_signal(signal.SIGCONT)
    simulator.wait_until_complete()
    window.wait_for("Sent: *")  # said where a screen reader finds it


def main():
    program, cncsim, output = controls.demo_arguments()
    with processes.all_ended_afterwards(), open(output / "log", "w") as log:
        simulator = Simulator(cncsim, CONTROL, output)
        with desktop.virtual_desktop(output, log), processes.started([str(program)], stdout=log, stderr=log) as running:
            window = accessible_window(running)
            try:
                set_up(window, simulator.device)
                send(window, simulator, running)
            except (RuntimeError, OSError, subprocess.SubprocessError) as error:
                desktop.screenshot(output / "failure.png")
                print(f"accessibility: {error}", file=sys.stderr)
                return 1
        processes.wait_until(simulator.result.exists, "what arrived to be written")
        got, expected = simulator.result.read_bytes(), controls.expected_bytes(CONTROL)
        print(f"{len(got)} bytes, {'identical' if got == expected else 'NOT identical'}: {simulator.verdicts()[-1]}")
        return 0 if got == expected and "complete and correct" in simulator.verdicts()[-1] else 1


if __name__ == "__main__":
    sys.exit(main())
