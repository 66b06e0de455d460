# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop of its own on a virtual display: X server, window manager, session bus, accessibility."""

import os
import subprocess
from contextlib import contextmanager

import processes

SCREEN = "1280x860x24"


@contextmanager
def virtual_desktop(runtime_folder, log):
    """Runs the desktop inside the `with` block and points the environment of this process and its children at it."""
    runtime_folder.mkdir(mode=0o700, parents=True)
    os.environ.update(XDG_RUNTIME_DIR=str(runtime_folder), QT_QPA_PLATFORM="xcb", QT_ACCESSIBILITY="1",
                      QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", NO_AT_BRIDGE="0")
    os.environ.pop("WAYLAND_DISPLAY", None)
    os.environ.pop("XAUTHORITY", None)
    with _x_server(log) as number, _session_bus(log) as address:
        os.environ.update(DISPLAY=f":{number}", DBUS_SESSION_BUS_ADDRESS=address)
        with processes.started(["openbox"], stdout=log, stderr=log):
            yield


@contextmanager
def _x_server(log):
    reading, writing = os.pipe()
    command = ["Xvfb", "-displayfd", str(writing), "-screen", "0", SCREEN, "-nolisten", "tcp", "-noreset"]
    with processes.started(command, pass_fds=[writing], stdout=log, stderr=log):
        os.close(writing)
        with os.fdopen(reading) as pipe:
            number = pipe.readline().strip()
        if not number:
            raise RuntimeError("the virtual display did not start")
        yield number


@contextmanager
def _session_bus(log):
    command = ["dbus-daemon", "--session", "--nofork", "--print-address=1"]
    with processes.started(command, stdout=subprocess.PIPE, stderr=log, text=True) as bus:
        address = bus.stdout.readline().strip()
        if not address:
            raise RuntimeError("the session bus did not start")
        yield address


def screenshot(path):
    """The whole screen as a PNG file."""
    subprocess.run(["scrot", "--overwrite", str(path)], check=True)
    print(f"  picture: {path.name}", flush=True)
