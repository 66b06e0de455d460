#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Takes the pictures for the user guide and README from the real program at work with simulated controls.

Usage: guide_pictures.py BUILD_FOLDER, with varnock and cncsim built there. The pictures go into docs/images/.
"""

import fcntl
import os
import shutil
import subprocess
import sys
import tempfile
from contextlib import contextmanager
from pathlib import Path

import controls
import desktop
import processes
from controls import Control, Simulator

PICTURES = controls.SOURCE / "docs" / "images"
PROGRAMS = Path(tempfile.gettempdir()) / "nc-programs"  # seen in the pictures
LARGEST = 192 * 1024  # bytes of a picture
MENU = "DNC menu"
MENU_KEYS = {"Send": "s", "Receive": "r", "Setup": "u"}
SCREEN = (1024, 700)
FREE_CORNER = (SCREEN[0] - 2, SCREEN[1] - 2)

MILL = Control("Mill 1", "", "O3000-surface.nc", {"MCMODE": "Fanuc", "MCFLOW": 1, "MCBAUD": 19200, "MCDBPAR": 2},
               ["--type", "fanuc", "--even-parity", "--xon-xoff", "--rate", "2500"])
LATHE = Control("Lathe 2", "", "shaft.min", {"MCMODE": "Okuma", "MCFLOW": 1},
                ["--type", "okuma", "--xon-xoff", "--rate", "20"])
WAITING = Control("Mill 3", "", "pocket.nc", {"MCFLOW": 1, "MCWAIT": "true", "MCTXSOT": "%,13,10",
                                              "MCTXEOT": "%,13,10"}, ["--type", "plain"])
XMODEM = Control("Mill 4", "", "O3000-surface.nc", {"MCFLOW": controls.XMODEM, "MCBAUD": 38400}, ["--xmodem-receive"])
DRILL = Control("Drill 5", "", "O1001-bracket.nc", {"MCFLOW": 1, "MCBAUD": 1200, "MCDBPAR": 2},
                ["--even-parity", "--xon-xoff", "--punch-rate", "60"], punches=True)
TABLE = Control("Mill 7", "", "O0042-bolt-circle.nc", {"MCFLOW": 1}, ["--xon-xoff"], punches=True)
SAW = Control("Saw 6", "", "", {"MCPORT": "/dev/ttyUSB9"})
DRILLING = "O1200-drilling.nc"
CHANGED = "O1200-changed.nc"  # at the control
CHANGES = {b"F240": b"F210", b"N230 G80 M9\n": b"N230 G80\nN235 M9\n", b"N330 X80.\n": b""}
FAULTY = "O1300-slots.nc"
FAULTS = {b"O1200 (HOLE PLATE": "O1300 (SCHLITZ FÜR WELLE".encode("latin-1"),
          b"N90 X80.": b"N90 X80. Y X85.", b"N390 M30\n": b""}
DESK = [MILL, LATHE, TABLE]
SHOP = [MILL, LATHE, WAITING, XMODEM, DRILL, SAW]


class Photographer:
    """Uses the program as the guide describes, with a picture at each step."""

    def __init__(self, window, simulators):
        self._window = window
        self._simulators = {simulator.control.name: simulator for simulator in simulators}

    def first_machine(self):
        self._window.wait_for("Add machine")
        self._take("first-start")
        self._window.click("Add machine")
        self._window.wait_for("Save setup")
        self._take("new-machine")

    def setup(self):
        self._choose(MILL.name, "Setup")
        self._window.wait_for("Save setup")
        self._take("setup")
        self._close_view()

    def failures(self):
        self._choose(SAW.name, "Send")
        self._window.wait_for("Setup...")
        self._take("unplugged")
        self._window.press("Escape")
        self._window.wait_until_gone("Setup...")
        with held(self._simulators[DRILL.name].device):
            self._choose(DRILL.name, "Receive")
            self._window.wait_for("Setup...")
            self._take("port-busy")
            self._window.press("Escape")
            self._window.wait_until_gone("Setup...")

    def receiving(self):
        self._choose(DRILL.name, "Receive")
        self._window.wait_for("Program text", "Varnock")
        self._simulators[DRILL.name].press_button()
        self._until(lambda: self._window.text_length("Program text", "Varnock") > 200, "some of the program to come")
        self._take("receiving")

    def sending(self):
        self._open_menu(MILL.name)
        self._take("menu")
        self._window.press(MENU_KEYS["Send"])
        self._window.wait_for("*", inside="Open program")
        self._take("open-program")
        self._window.choose_file(PROGRAMS / MILL.program, "Open program")
        self._window.wait_for("Ready to send")
        self._take("ready")
        self._send(WAITING)
        self._window.wait_for("Send now")
        self._take("waiting")
        self._send(XMODEM)
        self._window.wait_for("Sending")
        self._take("xmodem")
        self._send(LATHE)
        self._window.wait_for("Held by the control")
        self._take("drip-feed")
        self._send(MILL)
        self._until(lambda: self._window.share("Transfer progress", "Varnock") >= 0.2, "some of the program to go")
        self._take("main-window")
        self._window.click("Stop", "Varnock")
        self._window.wait_for("Stopped at line *")
        self._take("stopped")
        self._window.click("Undock", "Varnock")
        self._window.wait_for("Program text", MILL.name)
        self._take("undocked")

    def history(self):
        self._window.click("History", "Varnock")
        self._window.wait_for("*", inside="History")
        self._window.press("Down")
        self._take("history")

    def check(self):
        self._choose(MILL.name, "Send")
        self._window.choose_file(PROGRAMS / FAULTY, "Open program")
        self._window.wait_for("Next finding", "Varnock")
        for finding in range(1, 4):
            self._window.press("F8")
            self._window.wait_for(f"{finding} of *", "Varnock")
        self._take("check")
        self._close_view()

    def restart(self):
        self._choose(MILL.name, "Send")
        self._window.choose_file(PROGRAMS / DRILLING, "Open program")
        self._window.wait_for("Ready to send")
        self._window.press("ctrl+f")
        self._window.type("N190")
        self._window.press("Return")
        self._window.press("Escape")
        self._window.press("ctrl+shift+s")
        self._window.wait_for("Start blocks")
        self._take("restart")
        self._window.press("Escape")
        self._window.wait_until_gone("Start blocks")

    def compare(self):
        self._window.press("ctrl+d")
        self._window.choose_file(PROGRAMS / CHANGED, "Compare with file")
        self._window.wait_for("Next difference")
        self._window.press("F7")
        self._take("compare")

    def saving(self):
        """The same program comes twice: the second time there is nothing to save."""
        (PROGRAMS / TABLE.saved_name).unlink(missing_ok=True)
        self._choose(TABLE.name, "Receive")
        self._window.click("Save what comes by itself", "Varnock")
        for outcome in ("Saved", "Same as before"):
            self._simulators[TABLE.name].press_button()
            self._window.wait_for(outcome, "Varnock")
        self._window.wait_for("Waiting for bytes", "Varnock")
        self._take("saving")
        self._close_view()

    def _open_menu(self, machine):
        self._window.click(f"{machine} on *", "Varnock")
        self._window.wait_for_popup(MENU)

    def _choose(self, machine, item):
        self._open_menu(machine)
        self._window.press(MENU_KEYS[item])
        self._window.wait_until_popup_gone(MENU)

    def _send(self, control):
        self._choose(control.name, "Send")
        self._window.choose_file(PROGRAMS / control.program, "Open program")
        self._window.wait_for("Ready to send")
        self._window.click("Send", "Varnock")
        self._window.wait_for("Stop", "Varnock")

    def _close_view(self):
        self._window.click("Close", "Varnock")
        self._window.wait_until_gone("Close", "Varnock")

    def _until(self, condition, what):
        processes.wait_until(condition, what)

    def _take(self, name):
        self._window.rest_pointer(*FREE_CORNER)
        self._window.wait_until_still()
        path = PICTURES / f"{name}.png"
        # The active window with its frame and what lies over it, compressed as far as possible.
        subprocess.run(["scrot", "--overwrite", "--focused", "--border", "--quality", "1", str(path)], check=True)
        print(f"  {path.name}: {path.stat().st_size} bytes", flush=True)
        if path.stat().st_size > LARGEST:
            raise RuntimeError(f"{path.name} is too large")


@contextmanager
def held(device):
    """Holds the port open as another program would."""
    port = os.open(device, os.O_RDWR | os.O_NOCTTY)
    try:
        fcntl.flock(port, fcntl.LOCK_EX)
        yield
    finally:
        os.close(port)


def write_variant(name, changes):
    """The drilling program with some changes."""
    text = (PROGRAMS / DRILLING).read_bytes()
    for old, new in changes.items():
        text = text.replace(old, new)
    (PROGRAMS / name).write_bytes(text)


def photograph(build, scratch, scene, machines, simulators, steps):
    profile = scratch / scene
    ports = {simulator.control.name: simulator.device for simulator in simulators}
    controls.write_profile(profile, machines, ports)
    from gallery_window import GalleryWindow  # needs the desktop's environment
    environment = os.environ | {"XDG_CONFIG_HOME": str(profile), "XDG_DATA_HOME": str(profile)}
    with processes.started([str(build / "src" / "varnock")], env=environment) as program:
        photographer = Photographer(GalleryWindow(program, 1), simulators)
        try:
            for step in steps:
                getattr(photographer, step)()
        except Exception:
            desktop.screenshot(scratch.parent / "guide-failure.png")
            raise


def main():
    build = Path(sys.argv[1]).resolve()
    shutil.copytree(controls.SAMPLES, PROGRAMS, dirs_exist_ok=True)
    write_variant(CHANGED, CHANGES)
    write_variant(FAULTY, FAULTS)
    controls.DEFAULTS["MCOUTDIR"] = str(PROGRAMS)
    desktop.SCREEN = f"{SCREEN[0]}x{SCREEN[1]}x24"
    with processes.all_ended_afterwards(), tempfile.TemporaryDirectory() as folder:
        scratch = Path(folder)
        cncsim = build / "simulator" / "cncsim"
        simulators = [Simulator(cncsim, control, scratch) for control in [*SHOP, TABLE] if control.options]
        with desktop.virtual_desktop(scratch / "runtime", subprocess.DEVNULL):
            photograph(build, scratch, "empty", [], [], ["first_machine"])
            photograph(build, scratch, "shop", SHOP, simulators,
                       ["setup", "failures", "receiving", "sending", "history"])
            photograph(build, scratch, "desk", DESK, simulators, ["saving", "check", "restart", "compare"])


if __name__ == "__main__":
    sys.exit(main())
