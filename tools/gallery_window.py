# SPDX-License-Identifier: GPL-3.0-or-later
"""The program's window for the gallery: as in window.py, at any scale of the display."""

import hashlib
import subprocess
import time

import window


class GalleryWindow(window.Window):
    def __init__(self, process, scale):
        super().__init__(process, "Varnock")
        self._scale = scale

    def click(self, name, inside=None):
        # Positions are told before scaling.
        control = self.wait_for(name, inside)
        box = window._settled_box(control)
        x, y = ((edge + length // 2) * self._scale for edge, length in ((box.x, box.width), (box.y, box.height)))
        window._xdotool("mousemove", "--sync", str(x), str(y), "click", "1")

    def wait_until_still(self, seconds=3):
        """Until two looks in a row see the same, or some time has passed: progress goes on."""
        deadline, last = time.monotonic() + seconds, None
        while (now := _screen_digest()) != last and time.monotonic() < deadline:
            last = now
            time.sleep(0.25)


def _screen_digest():
    picture = subprocess.run(["scrot", "--silent", "-"], capture_output=True, check=True).stdout
    return hashlib.sha256(picture).digest()
