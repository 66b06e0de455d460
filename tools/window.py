# SPDX-License-Identifier: GPL-3.0-or-later
"""Uses a program as a person does: finds what is on the screen by its accessible name, then really clicks and types.

Import it only once the environment names the display and the session bus.
"""

import subprocess

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

    def wait_for(self, name, inside=None):
        """The control shown under that accessible name, `inside` a window of that title if given."""
        where = f' in "{inside}"' if inside else ""
        return self._wait_until(lambda: self.find(name, inside), f'"{name}"{where}')

    def wait_until_gone(self, name, inside=None):
        self._wait_until(lambda: not self.find(name, inside), f'"{name}" to go')

    def find(self, name, inside=None):
        """Like wait_for, but without waiting: None if it is not there. A name may end in "*"."""
        for top in self._tops():
            if inside is None or _matches(top, inside):
                if found := _search(top, name):
                    return found
        return None

    def wait_for_popup(self, title):
        """Popup windows are not listed among a program's accessible windows; the display knows their titles."""
        self._wait_until(lambda: _shown_windows(title), f'the popup "{title}"')

    def wait_until_popup_gone(self, title):
        self._wait_until(lambda: not _shown_windows(title), f'the popup "{title}" to go')

    def text_length(self, name, inside=None):
        """How many characters the control shows; 0 when it is not there."""
        control = self.find(name, inside)
        return _asked(lambda: Atspi.Text.get_character_count(control), 0) if control else 0

    def wait_for_text(self, name, length, inside=None):
        """Until the control shows at least so many characters."""
        self._wait_until(lambda: self.text_length(name, inside) >= length, f'{length} characters in "{name}"')

    def share(self, name, inside=None):
        """How full a progress bar is, 0 to 1. The first one shown under that name counts; 0 when none is."""
        bar = self.find(name, inside)
        return _asked(lambda: Atspi.Value.get_current_value(bar) / Atspi.Value.get_maximum_value(bar), 0) if bar else 0

    def click(self, name, inside=None):
        """A click with the left button on the control's middle, once it is there, is enabled and has stopped moving."""
        last = None

        def resting_place():
            # A window that has just been shown is still moved by the window manager.
            nonlocal last
            before, last = last, self._middle(name, inside)
            return last if last == before else None

        where = f' in "{inside}"' if inside else ""
        x, y = self._wait_until(resting_place, f'"{name}"{where} to be there for a click', pause=0.15)
        _xdotool("mousemove", "--sync", str(x), str(y), "click", "1")

    def is_above(self, name, other, inside=None):
        """Whether one control ends where the other begins, or higher. Also true if one of them is not there."""
        upper, lower = (_box(self.find(each, inside)) for each in (name, other))
        return not upper or not lower or upper.y + upper.height <= lower.y

    def type(self, text):
        """Types into whatever has the keyboard focus."""
        _xdotool("type", "--delay", TYPING_DELAY, "--", text)

    def press(self, key):
        _xdotool("key", key)

    def close(self, title):
        """Closes the window of that title with the window manager's key."""
        _xdotool("windowactivate", "--sync", _shown_windows(title)[0], "key", "alt+F4")

    def rest_pointer(self, x, y):
        """Moves the pointer away from controls, so that no tool tip hides anything."""
        _xdotool("mousemove", "--sync", str(x), str(y))

    def choose_file(self, path, title):
        """Types a path into the program's file dialog and ends it with Enter."""
        self.wait_for("*", inside=title)
        self._wait_until(lambda: _focused(self._tops()), "the file name to have the focus")
        self.type(str(path))
        self._wait_until(lambda: _content(_focused(self._tops())) == str(path), "the file name to be typed")
        self.press("Return")
        self.wait_until_gone("*", inside=title)

    def _wait_until(self, condition, what, **options):
        return processes.wait_until(condition, what, process=self._process, **options)

    def _middle(self, name, inside):
        control = self.find(name, inside)
        if not control or not _has(control, Atspi.StateType.ENABLED):
            return None
        box = _box(control)
        return (box.x + box.width // 2, box.y + box.height // 2) if box else None

    def _tops(self):
        application = _application(self._application)
        return _children(application) if application else []


def _application(name):
    return next((child for child in _children(Atspi.get_desktop(0)) if _name(child) == name), None)


def _asked(question, otherwise):
    try:
        return question()
    except GLib.GError:
        return otherwise  # the control went away while we looked


def _children(node):
    nodes = _asked(lambda: [node.get_child_at_index(i) for i in range(node.get_child_count())], [])
    return [child for child in nodes if child is not None]


def _name(node):
    return _asked(node.get_name, "") or ""


def _box(node):
    box = _asked(lambda: Atspi.Component.get_extents(node, Atspi.CoordType.SCREEN), None) if node else None
    return box if box and box.width > 0 else None


def _content(node):
    return _asked(lambda: Atspi.Text.get_text(node, 0, -1), "") if node else ""


def _has(node, state):
    return _asked(lambda: node.get_state_set().contains(state), False)


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
        if _asked(node.get_role, None) == Atspi.Role.TEXT and _has(node, Atspi.StateType.FOCUSED):
            return node
        if found := _focused(_children(node)):
            return found
    return None


def _shown_windows(title):
    search = ["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"]
    return subprocess.run(search, capture_output=True, text=True, check=False).stdout.split()


def _xdotool(*arguments):
    subprocess.run(["xdotool", *arguments], check=True, timeout=processes.PATIENCE)
