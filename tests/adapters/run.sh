#!/bin/bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Sends programs through the real drivers of USB adapters, in a virtual machine. Prints a table; fails if a row is wrong.
# Usage: tests/adapters/run.sh [--short] [KIND]...
set -euo pipefail
cd "$(dirname "$0")/../.."
speeds=1200,2400,4800,9600,19200,38400,57600,115200
if [ "${1:-}" = --short ]; then
    speeds=9600,115200
    shift
fi
kinds=("$@")
[ ${#kinds[@]} -gt 0 ] || kinds=(ch341 cdc_acm pl2303-old pl2303-HX pl2303-GC cp210x ftdi)
drivers=(vhci-hcd cdc-acm ch341 pl2303 cp210x ftdi_sio)
work=build/adapters

tools/install-packages.sh >&2
tools/install-packages.sh tests/adapters/packages.txt >&2
cmake --preset release >/dev/null
cmake --build --preset release --target adapters_{adapter,sender,window} >&2

mkdir -p "$work"
if [ ! -d "$work/kernel" ]; then
    package=$(apt-cache depends linux-image-amd64 | sed -n 's/.*Depends: //p' | head -n 1)
    (cd "$work" && apt-get -q download "${package:?no kernel package: run apt-get update}" >&2)
    rm -rf "$work/unpacked"
    dpkg -x "$work"/linux-image-*.deb "$work/unpacked"
    [ -d "$work/unpacked/lib" ] || ln -s usr/lib "$work/unpacked/lib"
    rm "$work"/linux-image-*.deb
    mv "$work/unpacked" "$work/kernel"
fi
version=$(ls "$work/kernel/lib/modules")
PATH=$PATH:/usr/sbin:/sbin
depmod -b "$work/kernel" "$version"

# Programs of ours and plugins of Qt into the machine's folder $1, with their libraries.
put() {
    local root=$1 file
    shift
    mkdir -p "$root/bin"
    for file in "$@"; do
        case $file in
            /*) cp -L --parents "$file" "$root" ;;
            *) cp "$file" "$root/bin/" ;;
        esac
    done
    ldd "$@" | grep -oE '[[:space:]]/[^ ]+' | sort -u | xargs cp -L --parents -t "$root"
}

# A machine's files: busybox, our programs, and the drivers in the order of loading.
rm -rf "$work"/root "$work"/window
root=$work/root
mkdir -p "$root"/{bin,dev,proc,sys,modules}
cp "$(command -v busybox)" "$root/bin/"
cp tests/adapters/guest.sh "$root/init"
chmod +x "$root/init"
put "$root" build/release/tests/adapters/adapters_{adapter,sender}
for driver in "${drivers[@]}"; do
    modprobe -d "$work/kernel" -S "$version" --show-depends "$driver"
done | awk '$1 == "insmod" && !seen[$2]++ { print $2 }' | while read -r file; do
    name=$(basename "${file%.xz}")
    case $file in
        *.xz) xz -dc "$file" >"$root/modules/$name" ;;
        *) cp "$file" "$root/modules/$name" ;;
    esac
    echo "$name" >>"$root/modules/order"
done
(cd "$root" && find . | cpio -o -H newc --quiet) >"$work/initrd"

# One machine also sends with the whole program: with the adapter that is the worst to stop.
plugins=$(qtpaths6 --query QT_INSTALL_PLUGINS)
put "$work/window" build/release/tests/adapters/adapters_window \
    "$plugins"/{platforms/libqoffscreen,imageformats/libqsvg,sqldrivers/libqsqlite}.so
cp -rL --parents /etc/fonts /usr/share/fonts/truetype/dejavu "$work/window"
(cat "$work/initrd" && cd "$work/window" && find . | cpio -o -H newc --quiet) >"$work/initrd-window"

# The machine's clock counts its instructions: a load on this computer changes nothing, and idle time is skipped.
start() {
    local initrd=$work/initrd
    [ "$1" != ch341 ] || initrd=$work/initrd-window
    timeout 1800 qemu-system-x86_64 -cpu max -icount shift=0,sleep=off -smp 1 -m 768 -nodefaults -display none \
        -no-reboot -kernel "$work/kernel/boot/vmlinuz-$version" -initrd "$initrd" \
        -append "console=ttyS0 quiet panic=-1 mitigations=off KIND=$1 SPEEDS=$speeds" -serial stdio </dev/null |
        sed -u 's/\r//' >"$work/$1.txt" || echo "The machine for $1 did not come to its end." >&2
}
export -f start
export work version speeds
printf '%s\n' "${kinds[@]}" | xargs -P "$(nproc)" -I KIND bash -c 'start KIND'

consoles=()
for kind in "${kinds[@]}"; do
    consoles+=("$work/$kind.txt")
done
tests/adapters/table.py "${consoles[@]}"
