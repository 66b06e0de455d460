#!/bin/bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds Varnock and takes pictures of every view: light and dark, 100 and 200 %, small and large screens, large text.
# They end up in gallery-output/: look at them before a change to the program's looks is merged.
#   ./tools/gallery.sh             all
#   ./tools/gallery.sh dark        those with "dark" in their name
set -euo pipefail
cd "$(dirname "$0")/.."
preset=release
output=gallery-output

tools/install-packages.sh
cmake --preset "$preset"
cmake --build --preset "$preset" --target varnock cncsim -- -j2

rm -rf "$output"
mkdir -p "$output"
exec /usr/bin/python3 tools/gallery.py "build/$preset" "$output" "${1:-}"
