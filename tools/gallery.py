#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Takes pictures of every view of the program on virtual displays, as different users' desktops would show them.

Usage: gallery.py BUILD_FOLDER OUTPUT_FOLDER [PART_OF_A_NAME]. Exits with 0 if every picture could be taken.
"""

import os
import sys
from contextlib import contextmanager
from dataclasses import dataclass
from pathlib import Path

import controls
import desktop
import processes
from controls import CONTROLS, UNPLUGGED, Control, Simulator

MENU_KEYS = {"Send": "s", "Receive": "r", "Setup": "u"}
LONG_NAMES = [
    Control("Fünfachs-Simultan-Bearbeitungszentrum Halle 3", "", "", {"MCPORT": "/dev/ttyUSB7"}),
    Control("Doppelspindel-Drehmaschine mit Gegenspindel", "", "",
            {"MCPORT": "/dev/serial/by-id/usb-Prolific_Technology_USB-Serial_Controller-if00-port0"}),
]
SLOWLY = ["--rate", "1500"]  # bytes a second: there is time to look while a program is being sent
MANY = [Control(f"Machine {n}", "", "", {"MCPORT": f"/dev/ttyS{n}"}) for n in range(1, 31)]

# A dark desktop, and one with large text, as the desktop's own settings file tells Qt.
FONT = "DejaVu Sans,{size},-1,5,50,0,0,0,0,0"
SETTINGS = "[General]\nfont={font}\nmenuFont={font}\ntoolBarFont={font}\n\n[KDE]\nwidgetStyle=Fusion\n"
DARK_TEXT = "ForegroundNormal=239,240,241\nForegroundInactive=161,169,177\nForegroundLink=29,153,243\n" \
            "ForegroundVisited=155,89,182\n"
LIGHT_TEXT = "ForegroundNormal=35,38,41\nForegroundInactive=112,125,138\nForegroundLink=41,128,185\n" \
             "ForegroundVisited=155,89,182\n"
GROUNDS = {"Button": ("252,252,252", "49,54,59"), "Selection": ("48,120,200", "61,120,190"),
           "Tooltip": ("247,247,247", "49,54,59"), "View": ("255,255,255", "35,38,41"),
           "Window": ("239,240,241", "42,46,50")}


def colours(dark):
    text = DARK_TEXT if dark else LIGHT_TEXT
    return "".join(f"\n[Colors:{part}]\nBackgroundNormal={pair[dark]}\nBackgroundAlternate={pair[dark]}\n" +
                   (DARK_TEXT if part == "Selection" else text) for part, pair in GROUNDS.items())


@dataclass
class Desk:
    """One user's desktop."""

    name: str
    screen: str = "1280x860"
    scale: float = 1
    dark: bool = False
    text: int = 10  # points
    dpi: int = 96
    scenes: tuple = ("empty", "day", "many")

    def environment(self, profile):
        (profile / "kdeglobals").write_text(SETTINGS.format(font=FONT.format(size=self.text)) +
                                            colours(self.dark))
        return os.environ | {"XDG_CONFIG_HOME": str(profile), "XDG_DATA_HOME": str(profile), "XDG_CURRENT_DESKTOP": "KDE",
                             "KDE_SESSION_VERSION": "5", "QT_SCALE_FACTOR": str(self.scale),
                             "QT_FONT_DPI": str(self.dpi)}


DESKS = [
    Desk("light"),
    Desk("dark", dark=True),
    Desk("light-200", screen="2560x1720", scale=2),
    Desk("dark-200", screen="2560x1720", scale=2, dark=True),
    Desk("dark-150", screen="1920x1290", scale=1.5, dark=True),
    Desk("small-1280x720", screen="1280x720", scenes=("setup", "many")),
    Desk("large-2560x1440", screen="2560x1440", scenes=("empty", "setup", "many")),
    Desk("large-text", text=16, scenes=("empty", "setup", "many", "transfer")),
    Desk("large-text-1366x768", screen="1366x768", dpi=144, scenes=("setup", "transfer", "many")),
    Desk("large-text-dark", screen="1366x768", dpi=144, dark=True, scenes=("setup", "transfer")),
    Desk("small-800x600", screen="800x600", scenes=("setup", "transfer", "many")),
    Desk("tiny-640x480", screen="640x480", scenes=("setup", "transfer", "many")),
]


class Photographer:
    """Goes through the program's views and takes a picture of each."""

    def __init__(self, window, desk, folder):
        self._window = window
        self._desk = desk
        self._folder = folder

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


MACHINES = {"empty": [], "many": MANY, "setup": [*CONTROLS, *LONG_NAMES], "transfer": [CONTROLS[0], CONTROLS[2], UNPLUGGED],
            "day": [*CONTROLS, UNPLUGGED, *LONG_NAMES]}


@contextmanager
def program_at(desk, scene, build, scratch, simulators, log):
    """The program as that desktop's user sees it, with the scene's machines."""
    profile = scratch / scene
    ports = {simulator.control.name: simulator.device for simulator in simulators}
    controls.write_profile(profile, MACHINES[scene], ports)
    environment = desk.environment(profile)
    with processes.started([str(build / "src" / "varnock")], stdout=log, stderr=log, env=environment) as program:
        yield program


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
            with program_at(desk, scene, build, scratch, simulators, log) as program:
                photographer = Photographer(GalleryWindow(program, desk.scale * desk.dpi / 96), desk, output)
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
