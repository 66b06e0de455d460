# SPDX-License-Identifier: GPL-3.0-or-later
"""The desktops on which the gallery takes its pictures, and the machines there."""

import os
from dataclasses import dataclass

from controls import CONTROLS, UNPLUGGED, Control

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
    scenes: tuple = ("empty", "day", "many", "windows")

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
    Desk("large-text", text=16, scenes=("empty", "setup", "many", "transfer", "windows")),
    Desk("large-text-1366x768", screen="1366x768", dpi=144, scenes=("setup", "transfer", "many", "windows")),
    Desk("large-text-dark", screen="1366x768", dpi=144, dark=True, scenes=("setup", "transfer")),
    Desk("small-800x600", screen="800x600", scenes=("setup", "transfer", "many", "windows")),
    Desk("tiny-640x480", screen="640x480", scenes=("setup", "transfer", "many", "windows")),
]

LONG_NAMES = [
    Control("Fünfachs-Simultan-Bearbeitungszentrum Halle 3", "", "", {"MCPORT": "/dev/ttyUSB7"}),
    Control("Doppelspindel-Drehmaschine mit Gegenspindel", "", "",
            {"MCPORT": "/dev/serial/by-id/usb-Prolific_Technology_USB-Serial_Controller-if00-port0"}),
]
MANY = [Control(f"Machine {n}", "", "", {"MCPORT": f"/dev/ttyS{n}"}) for n in range(1, 31)]
MACHINES = {"empty": [], "many": MANY, "setup": [*CONTROLS, *LONG_NAMES], "transfer": [CONTROLS[0], CONTROLS[2], UNPLUGGED],
            "windows": [CONTROLS[0], CONTROLS[2], UNPLUGGED],
            "day": [*CONTROLS, UNPLUGGED, *LONG_NAMES]}
