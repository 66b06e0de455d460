#!/bin/bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds Varnock and shows it at work with simulated controls. On a display the window is yours; without one an
# automated operator sends a program to each control, and the exit code tells whether all bytes arrived.
#   ./demo.sh              as above
#   ./demo.sh --operator   the automated operator, on a machine with a display too
set -euo pipefail
cd "$(dirname "$0")"
build=build/release
output=demo-output

tools/install-packages.sh
cmake --preset release
cmake --build --preset release --target varnock cncsim

rm -rf "$output"
mkdir -p "$output"
if [ "${1:-}" = --operator ] || [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    echo "An automated operator shows the program on a virtual display."
    exec /usr/bin/python3 tools/demo_operator.py "$build" "$output"
fi
exec /usr/bin/python3 tools/demo_desk.py "$build" "$output"
