# SPDX-License-Identifier: GPL-3.0-or-later
"""A separate desktop on a virtual display: X server, window manager, session bus, accessibility."""

import os
import subprocess
import tempfile
from contextlib import ExitStack, contextmanager

import processes

SCREEN = "1280x860x24"


# These variables of the surrounding desktop would change the windows, the dialogs or the keyboard.
FOREIGN = ["WAYLAND_DISPLAY", "XAUTHORITY", "XDG_CURRENT_DESKTOP", "XDG_SESSION_DESKTOP", "DESKTOP_SESSION",
           "KDE_FULL_SESSION", "GNOME_DESKTOP_SESSION_ID", "QT_QPA_PLATFORMTHEME", "QT_STYLE_OVERRIDE",
           "QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_FONT_DPI", "QT_IM_MODULE", "LANGUAGE",
           "AT_SPI_BUS_ADDRESS"]


@contextmanager
def virtual_desktop(profile, log):
    """Runs the desktop inside the `with` block and points the environment of this process and its children at it.
    Settings are in the folder `profile`."""
    for name in FOREIGN:
        os.environ.pop(name, None)
    # Sockets need a short path, however long the profile's is.
    with tempfile.TemporaryDirectory(prefix="varnock-demo-", ignore_cleanup_errors=True) as runtime:
        os.environ.update(XDG_CONFIG_HOME=str(profile), XDG_CACHE_HOME=str(profile), XDG_DATA_HOME=str(profile),
                          XDG_RUNTIME_DIR=runtime, LC_ALL="C.UTF-8", QT_QPA_PLATFORM="xcb", QT_ACCESSIBILITY="1",
                          QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", NO_AT_BRIDGE="0")
        with ExitStack() as stack:
            os.environ["DISPLAY"] = stack.enter_context(_x_server(log))
            # After the display: the bus passes its own environment to the services that it starts.
            os.environ["DBUS_SESSION_BUS_ADDRESS"] = stack.enter_context(_session_bus(log))
            manager = stack.enter_context(processes.started(["openbox"], stdout=log, stderr=log))
            processes.wait_until(_manages_windows, "the window manager", process=manager)
            yield


def _manages_windows():
    query = ["xdotool", "get_num_desktops"]
    return subprocess.run(query, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False).returncode == 0


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
        yield f":{number}"


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
    subprocess.run(["scrot", "--overwrite", str(path)], check=True, timeout=processes.PATIENCE)
    print(f"  picture: {path.name}", flush=True)
