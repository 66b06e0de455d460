#!/bin/bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs what is missing, builds and runs all tests: ./test.sh [release|debug|asan|tsan]
set -uo pipefail
cd "$(dirname "$0")"
preset=${1:-release}

step() {
    local name=$1
    shift
    echo "== $name"
    "$@" || {
        local code=$?
        echo "test.sh: failed at: $name" >&2
        exit "$code"
    }
}

step "installing packages" tools/install-packages.sh
# Warnings are errors here whatever the preset. The release preset alone lets them pass: users have other compilers.
step "configuring ($preset)" cmake --preset "$preset" -DCMAKE_COMPILE_WARNING_AS_ERROR=ON
step "building ($preset)" cmake --build --preset "$preset"
echo "== testing ($preset)"
exec ctest --preset "$preset" --no-tests=error # its summary comes last
