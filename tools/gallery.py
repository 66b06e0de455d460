#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Takes pictures of every view of the program on virtual displays, as different users' desktops would show them.

Usage: gallery.py BUILD_FOLDER OUTPUT_FOLDER [PART_OF_A_NAME]. Exits with 0 if every picture could be taken.
"""

import os
import sys
from contextlib import contextmanager
from pathlib import Path

import controls
import desktop
import processes
from controls import CONTROLS, UNPLUGGED, Simulator
from gallery_desks import DESKS, MACHINES

MENU_KEYS = {"Send": "s", "Receive": "r", "Setup": "u"}
SLOWLY = ["--rate", "1500"]  # bytes a second: there is time to look while a program is being sent
# What a control stumbles over, for the check line.
DOUBTFUL = """%
O1234 (Gr\u00f6\u00dfe 3)
N10 G21 G90 G54
N20 T1 M6
N30 S3000 M3
N40 G0 X0 Y1O
N50 G1 Z-1 F200
N50 X10
N60 G1 Y
"""


class Photographer:
    """Goes through the program's views and takes a picture of each."""

    def __init__(self, window, desk, folder, scratch, start_again):
        self._window = window
        self._desk = desk
        self._folder = folder
        self._scratch = scratch
        self._start_again = start_again  # the program once more, with these file names

    def empty(self, _simulators):
        self._window.wait_for("Add machine")
        self._take("empty")

    def many(self, _simulators):
        self._window.wait_for("Machine 1 *")
        self._take("thirty-machines")
        self._window.press("shift+Tab")  # from the first machine to what stands before it
        self._window.click("Scroll machines down")
        self._take("thirty-machines-scrolled")

    def setup(self, _simulators):
        self._choose(CONTROLS[0], "Setup")
        self._window.wait_for("Save setup")
        self._take("setup")

    def transfer(self, _simulators):
        self._window.wait_for(f"{CONTROLS[0].name} *")
        self._wait_box(CONTROLS[2])
        self._open_program(CONTROLS[0])
        self._take("send-idle")
        self._send()
        processes.wait_until(lambda: self._window.share("Transfer progress", "Varnock") >= 0.2, "some of the program")
        self._take("sending")
        self._window.click("Stop", "Varnock")
        self._window.wait_for("Rewind", "Varnock")
        self._take("stopped")
        self._choose(CONTROLS[0], "Receive")
        self._window.wait_for("End the send")
        self._take("question-stopped")
        self._window.click("End the send")
        self._window.wait_for("Program text")
        self._take("receive")
        self._failed_port()

    def day(self, simulators):
        self._window.wait_for(f"{CONTROLS[0].name} *")
        self._take("machines")
        self._open_menu(CONTROLS[1])
        self._take("menu")
        self._window.press("Escape")
        self._about()
        self._setup_and_receive(CONTROLS[1])
        self._failed_port()
        self._wait_box(CONTROLS[2])
        self._sending(CONTROLS[0])

    def windows(self, simulators):
        """What opens beside a view or over it."""
        self._window.wait_for(f"{CONTROLS[0].name} *")
        self._overlay("ctrl+F1", "Keys and what they do", "keys")
        self._overlay("ctrl+h", "Export*", "history-empty", "History")
        self._find_faults(CONTROLS[0])
        self._restart(CONTROLS[0])
        with self._start_again(CONTROLS[1].sample):
            self._window.wait_for("Machines to choose from")
            self._take("machine-choice")
            self._window.press("Escape")
            self._window.wait_until_gone("Machines to choose from")
        self._delete(UNPLUGGED)
        self._overlay("ctrl+h", "Export*", "history", "History")

    def _find_faults(self, control):
        doubtful = self._scratch / "O1234-doubtful.nc"
        doubtful.write_text(DOUBTFUL, encoding="latin-1")
        self._choose(control, "Send")
        self._window.choose_file(doubtful, "Open program")
        self._window.wait_for("Next finding")
        self._window.press("F8")
        self._take("check-findings")
        self._window.press("ctrl+l")
        self._window.click("Program text")
        self._window.type("M8 ")
        self._window.press("ctrl+o")
        self._window.choose_file(control.sample, "Open program")
        self._window.wait_for("Discard")
        self._take("question-unsaved")
        self._window.click("Discard")
        self._window.wait_until_gone("Discard")

    def _restart(self, control):
        self._send()
        processes.wait_until(lambda: self._window.share("Transfer progress", "Varnock") >= 0.1, "some of the program")
        self._window.click("Stop", "Varnock")
        self._window.wait_for("Rewind", "Varnock")
        self._window.press("ctrl+g")
        self._window.wait_for("*", inside="Go to line")
        self._window.type("60")
        self._window.press("Return")
        self._window.wait_until_gone("*", inside="Go to line")
        self._overlay("ctrl+shift+s", "Send start blocks and program", "restart")

    def _delete(self, control):
        self._window.click(f"Delete {control.name}")
        self._window.wait_for("Delete")
        self._take("question-delete")
        self._window.click("Delete")
        self._window.wait_for(f"Bring {control.name} back")
        self._take("undo-bar")

    def _overlay(self, key, control, picture, window=None):
        self._window.press(key)
        self._window.wait_for(control)
        self._take(picture)
        if window:
            self._window.close(window)
        else:
            self._window.press("Escape")
        self._window.wait_until_gone(control)

    def _about(self):
        self._window.click("About Varnock", "Varnock")
        self._window.wait_for("About Varnock", inside="About Varnock")
        self._take("about")
        self._window.press("Escape")
        self._window.wait_until_gone("*", inside="About Varnock")

    def _setup_and_receive(self, control):
        self._choose(control, "Setup")
        self._window.wait_for("Save setup")
        self._take("setup")
        self._choose(control, "Receive")
        self._window.wait_for("Program text")
        self._take("receive")
        self._close_view()

    def _failed_port(self):
        self._choose(UNPLUGGED, "Send")
        self._window.wait_for("Setup...")
        self._take("failed-port")
        self._window.press("Escape")
        self._window.wait_until_gone("Setup...")

    def _wait_box(self, control):
        self._open_program(control)
        self._send()
        self._window.wait_for("Send now")
        self._take("wait-box")

    def _compare(self, control):
        self._window.press("ctrl+d")
        self._window.choose_file(control.sample, "Compare with file")
        self._window.wait_for("Next difference")
        self._take("compare")
        self._window.press("Escape")
        self._window.wait_until_gone("Next difference")

    def _sending(self, control):
        self._open_program(control)
        self._take("send-idle")
        self._compare(CONTROLS[2])
        self._send()
        processes.wait_until(lambda: self._window.share("Transfer progress", "Varnock") >= 0.2, "some of the program")
        self._take("sending")
        self._window.press("ctrl+u")
        self._window.wait_for("Stop", control.name)
        self._take("sending-undocked")
        self._window.press("ctrl+w")
        self._window.wait_for("Cancel")
        self._take("question")

    def _open_menu(self, control):
        self._window.click(f"{control.name} *", "Varnock")
        self._window.wait_for_popup("DNC menu")

    def _choose(self, control, item):
        self._open_menu(control)
        self._window.press(MENU_KEYS[item])
        self._window.wait_until_popup_gone("DNC menu")

    def _open_program(self, control):
        self._choose(control, "Send")
        self._window.choose_file(control.sample, "Open program")

    def _send(self):
        self._window.click("Send", "Varnock")
        self._window.wait_for("Stop", "Varnock")

    def _close_view(self):
        self._window.click("Close", "Varnock")
        self._window.wait_until_gone("Program text")

    def _take(self, name):
        width, height = (int(pixels) for pixels in self._desk.screen.split("x"))
        self._window.rest_pointer(width - 2, height - 2)
        self._window.wait_until_still()
        desktop.screenshot(self._folder / f"{self._desk.name}-{name}.png")



@contextmanager
def program_at(desk, scene, build, scratch, simulators, log):
    """The program as that desktop's user sees it, with the scene's machines, and what starts it once more."""
    profile = scratch / scene
    ports = {simulator.control.name: simulator.device for simulator in simulators}
    controls.write_profile(profile, MACHINES[scene], ports)
    environment = desk.environment(profile)

    def start(*files):
        command = [str(build / "src" / "varnock"), *map(str, files)]
        return processes.started(command, stdout=log, stderr=log, env=environment)

    with start() as program:
        yield program, start


def photograph(desk, build, output):
    """All scenes of one desktop."""
    scratch = output / "scratch" / desk.name
    scratch.mkdir(parents=True)
    desktop.SCREEN = f"{desk.screen}x24"
    with open(scratch / "log", "w") as log, desktop.virtual_desktop(scratch / "runtime", log):
        from gallery_window import GalleryWindow  # needs the desktop's environment
        for scene in desk.scenes:
            folder = scratch / f"{scene}-controls"
            folder.mkdir()
            cncsim = build / "simulator" / "cncsim"
            simulators = [Simulator(cncsim, control, folder, *SLOWLY) for control in CONTROLS]
            with program_at(desk, scene, build, scratch, simulators, log) as (program, start):
                window = GalleryWindow(program, desk.scale * desk.dpi / 96)
                photographer = Photographer(window, desk, output, folder, start)
                try:
                    getattr(photographer, scene)(simulators)
                except Exception:
                    desktop.screenshot(output / f"{desk.name}-failure.png")
                    raise
            for simulator in simulators:
                processes.stop(simulator.process)


def photograph_in_child(desk, build, output):
    """In a process of its own, since accessibility ties a process to one session bus."""
    child = os.fork()
    if child == 0:
        code = 1
        try:
            with processes.all_ended_afterwards():
                photograph(desk, build, output)
            code = 0
        except (RuntimeError, TimeoutError, OSError) as error:
            print(f"gallery: {desk.name}: {error}", file=sys.stderr)
        finally:
            sys.stdout.flush()
            os._exit(code)
    return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])


def main():
    build, output = (Path(argument).resolve() for argument in sys.argv[1:3])
    part = sys.argv[3] if len(sys.argv) > 3 else ""
    failed = []
    for desk in DESKS:
        if part in desk.name:
            print(desk.name, flush=True)
            if photograph_in_child(desk, build, output) != 0:
                failed.append(desk.name)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
