#!/bin/bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds Varnock and shows it at work with simulated controls. On a display the window is yours to use; without one
# an automated operator sends to or receives from each control, and the exit code tells whether all bytes arrived.
#   ./demo.sh              as above
#   ./demo.sh --operator   the automated operator even where there is a display
set -euo pipefail
cd "$(dirname "$0")"
build=build/release
output=demo-output

tools/install-packages.sh
cmake --preset release
cmake --build --preset release --target varnock cncsim

demo() {
    exec /usr/bin/python3 -B "tools/$1" "$build/src/varnock" "$build/simulator/cncsim" "$output"
}

# A display that is named but cannot be reached does not count.
has_display() {
    [ -n "${WAYLAND_DISPLAY:-}" ] || { [ -n "${DISPLAY:-}" ] && xdotool getdisplaygeometry >/dev/null 2>&1; }
}

if [ "${1:-}" = --operator ] || ! has_display; then
    echo "An automated operator shows the program on a virtual display."
    demo demo_operator.py
fi
demo demo_desk.py
