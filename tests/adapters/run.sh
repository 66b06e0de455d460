#!/bin/bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Sends programs through the real drivers of USB adapters, in a virtual machine. Prints a table; fails if a row is wrong.
# Usage: tests/adapters/run.sh [KIND]...
set -euo pipefail
cd "$(dirname "$0")/../.."
kinds=("$@")
[ ${#kinds[@]} -gt 0 ] || kinds=(ch341 cdc_acm pl2303-old pl2303-HX pl2303-GC cp210x ftdi)
drivers=(vhci-hcd cdc-acm ch341 pl2303 cp210x ftdi_sio)
work=build/adapters

tools/install-packages.sh >&2
tools/install-packages.sh tests/adapters/packages.txt >&2
cmake --preset release >/dev/null
cmake --build --preset release --target adapters_adapter adapters_sender >&2

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

# The machine's files: busybox, our two programs with their libraries, and the drivers in the order of loading.
root=$work/root
rm -rf "$root"
mkdir -p "$root"/{bin,dev,proc,sys,modules}
cp "$(command -v busybox)" "$root/bin/"
cp tests/adapters/guest.sh "$root/init"
chmod +x "$root/init"
programs=(build/release/tests/adapters/adapters_{adapter,sender})
cp "${programs[@]}" "$root/bin/"
ldd "${programs[@]}" | grep -oE '[[:space:]]/[^ ]+' | sort -u | xargs cp -L --parents -t "$root"
echo "${kinds[@]}" >"$root/kinds"
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

# The machine's clock counts its instructions: a load on this computer changes nothing, and idle time is skipped.
timeout 900 qemu-system-x86_64 -cpu max -icount shift=1,sleep=off -smp 1 -m 768 -nodefaults -display none -no-reboot \
    -kernel "$work/kernel/boot/vmlinuz-$version" -initrd "$work/initrd" \
    -append "console=ttyS0 quiet panic=-1 mitigations=off" -serial stdio </dev/null | tr -d '\r' >"$work/console.txt" ||
    echo "The machine did not come to its end." >&2

echo "| Driver | Format | Stops | Most characters after a stop | Blocks lost | Blocks twice | Whole program right |"
echo "|---|---|---|---|---|---|---|"
grep '^| ' "$work/console.txt" || true
if ! grep -q '^verdict: right$' "$work/console.txt"; then
    grep -v '^| ' "$work/console.txt" | tail -n 20 >&2
    echo "A control did not get what it was promised; see $work/console.txt" >&2
    exit 1
fi
