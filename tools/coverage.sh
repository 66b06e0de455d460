#!/bin/bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds with coverage, runs the tests and prints what share of each file's lines they run; details as HTML in
# build/coverage/report/.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install-packages.sh
command -v gcovr >/dev/null || apt-get install -q -y gcovr >/dev/null
cmake --preset coverage >/dev/null
cmake --build --preset coverage >/dev/null
find build/coverage -name '*.gcda' -delete
ctest --preset coverage --no-tests=error >build/coverage/ctest.log || { tail -n 40 build/coverage/ctest.log; exit 1; }
mkdir -p build/coverage/report
gcovr --root . --object-directory build/coverage --filter 'src/' --filter 'simulator/' --exclude '.*_autogen.*' \
    --exclude-unreachable-branches --html-details build/coverage/report/index.html --txt
