#!/bin/bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Fuzzes with libFuzzer and both sanitizers: tools/fuzz.sh [SECONDS for each target]. Inputs that reached
# something new stay in build/fuzz/corpus; one that broke a promise is named and fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}

tools/install-packages.sh
command -v clang++ >/dev/null || apt-get install -q -y clang
cmake --preset fuzz >/dev/null
targets=(settings program_text program_state received xmodem)
cmake --build --preset fuzz --target "${targets[@]/#/fuzz_}"
export QT_QPA_PLATFORM=offscreen LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp:print_suppressions=0"
export ASAN_OPTIONS=detect_leaks=0 # what Qt keeps for the life of the process is not a leak of ours
for target in "${targets[@]}"; do
    found=build/fuzz/corpus/$target
    mkdir -p "$found"
    echo "== $target, $seconds s"
    log=$found.log
    build/fuzz/tests/fuzz/fuzz_"$target" "$found" tests/fuzz/corpus/"$target" -max_total_time="$seconds" \
        -artifact_prefix="$found-broke-" -print_final_stats=1 -verbosity=0 >"$log" 2>&1 || {
        tail -n 40 "$log" >&2
        echo "fuzz.sh: $target broke a promise" >&2
        exit 1
    }
    grep -E 'number_of_executed|new_units' "$log"
done
