#!/bin/bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs the packages of a list (cmake/packages.txt) that are missing. When none is missing it needs neither network
# nor root. Usage: tools/install-packages.sh [LIST]
set -euo pipefail
cd "$(dirname "$0")/.."
list=${1:-cmake/packages.txt}

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo "No Debian package tools here: the packages of $list must be installed already." >&2
    exit 0
fi

missing=()
while read -r package; do
    status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done < <(sed 's/#.*//' "$list" | grep -v '^[[:space:]]*$')
[ ${#missing[@]} -gt 0 ] || exit 0

root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
        echo "Please run this as root, then start again: apt-get install ${missing[*]}" >&2
        exit 1
    }
    root=(sudo)
fi

echo "Installing: ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
run() {
    "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q "$@" </dev/null >"$log" 2>&1 || {
        cat "$log" >&2
        echo "Installing packages failed at: apt-get $*" >&2
        exit 1
    }
}
run update
run install --yes --no-install-recommends "${missing[@]}"
