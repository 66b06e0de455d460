# SPDX-License-Identifier: GPL-3.0-or-later
"""Drives a program as a person does: finds what is on the screen by its accessible name, then really clicks and types.

Import it only where the environment names the display and the session bus already.
"""

import subprocess
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

import processes  # noqa: E402

TYPING_DELAY = "4"  # ms between keys


class Window:
    """The windows of one running program."""

    def __init__(self, process, application):
        self._process = process
        self._application = application

    def wait_for(self, name, inside=None, seconds=20):
        """The control shown under that accessible name, `inside` a window of that title if given."""
        where = f' in "{inside}"' if inside else ""
        return processes.wait_until(lambda: self.find(name, inside), f'"{name}"{where}', seconds, self._process)

    def wait_until_gone(self, name, inside=None, seconds=20):
        processes.wait_until(lambda: not self.find(name, inside), f'"{name}" to go', seconds, self._process)

    def find(self, name, inside=None):
        """Like wait_for, but at once: None when it is not there. A name may end in "*"."""
        for top in self._tops():
            if inside is None or _matches(top, inside):
                if found := _search(top, name):
                    return found
        return None

    def wait_for_popup(self, title):
        """Popup windows are not listed among a program's accessible windows; the display knows their titles."""
        processes.wait_until(lambda: _shown_windows(title), f'the popup "{title}"', process=self._process)

    def wait_until_popup_gone(self, title):
        processes.wait_until(lambda: not _shown_windows(title), f'the popup "{title}" to go', process=self._process)

    def text(self, name, inside=None):
        """What the control shows."""
        control = self.wait_for(name, inside)
        return Atspi.Text.get_text(control, 0, -1)

    def share(self, name, inside=None):
        """How full a progress bar is, 0 to 1. The first one shown under that name counts; 0 when none is."""
        bar = self.find(name, inside)
        return Atspi.Value.get_current_value(bar) / Atspi.Value.get_maximum_value(bar) if bar else 0

    def click(self, name, inside=None):
        """A click with the left button on the control's middle, once it stands still and is enabled."""
        control = self.wait_for(name, inside)
        processes.wait_until(lambda: _has(control, Atspi.StateType.ENABLED), f'"{name}" to be enabled')
        box = _settled_box(control)
        _xdotool("mousemove", "--sync", str(box.x + box.width // 2), str(box.y + box.height // 2), "click", "1")

    def type(self, text):
        """Types into whatever has the keyboard focus."""
        _xdotool("type", "--delay", TYPING_DELAY, "--", text)

    def press(self, key):
        _xdotool("key", key)

    def close(self, title):
        """Closes the window of that title with the window manager's key."""
        _xdotool("windowactivate", "--sync", _shown_windows(title)[0], "key", "alt+F4")

    def rest_pointer(self, x, y):
        """Takes the pointer away from controls, so that no tool tip hides anything."""
        _xdotool("mousemove", "--sync", str(x), str(y))

    def choose_file(self, path, title):
        """Types a path into the program's file dialog and ends it with Enter."""
        self.wait_for("*", inside=title)
        processes.wait_until(lambda: _focused(self._tops()), "the file name to have the focus")
        self.type(str(path))
        self.press("Return")
        self.wait_until_gone("*", inside=title)

    def _tops(self):
        application = _application(self._application)
        return _children(application) if application else []


def _application(name):
    return next((child for child in _children(Atspi.get_desktop(0)) if _name(child) == name), None)


def _children(node):
    try:
        nodes = [node.get_child_at_index(i) for i in range(node.get_child_count())]
        return [child for child in nodes if child is not None]
    except GLib.GError:
        return []  # it went away while we looked


def _name(node):
    try:
        return node.get_name() or ""
    except GLib.GError:
        return ""


def _has(node, state):
    try:
        return node.get_state_set().contains(state)
    except GLib.GError:
        return False


def _matches(node, name):
    return _name(node).startswith(name[:-1]) if name.endswith("*") else _name(node) == name


def _search(node, name):
    if not _has(node, Atspi.StateType.SHOWING):
        return None
    if _matches(node, name):
        return node
    return next((found for child in _children(node) if (found := _search(child, name))), None)


def _focused(nodes):
    for node in nodes:
        if node.get_role() == Atspi.Role.TEXT and _has(node, Atspi.StateType.FOCUSED):
            return node
        if found := _focused(_children(node)):
            return found
    return None


def _settled_box(control):
    # A window that has just been shown is still moved by the window manager.
    last = None
    for _ in range(50):
        box = Atspi.Component.get_extents(control, Atspi.CoordType.SCREEN)
        now = (box.x, box.y, box.width, box.height)
        if now == last and box.width > 0:
            return box
        last = now
        time.sleep(0.1)
    raise TimeoutError(f'"{_name(control)}" does not stand still')


def _shown_windows(title):
    search = ["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"]
    return subprocess.run(search, capture_output=True, text=True, check=False).stdout.split()


def _xdotool(*arguments):
    subprocess.run(["xdotool", *arguments], check=True)
