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

    def _middle(self, name, inside):
        middle = super()._middle(name, inside)
        return middle and tuple(position * self._scale for position in middle)  # reported before scaling

    def wait_until_still(self, seconds=3):
        """Until two screenshots in a row are the same, or that time has passed: a progress bar never stops."""
        deadline, last = time.monotonic() + seconds, None
        while (now := _screen_digest()) != last and time.monotonic() < deadline:
            last = now
            time.sleep(0.25)


def _screen_digest():
    picture = subprocess.run(["scrot", "--silent", "-"], capture_output=True, check=True).stdout
    return hashlib.sha256(picture).digest()
