#!/bin/busybox sh
# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=dash
# The virtual machine's first process: loads the drivers, then sends to each kind of adapter. Its last line is the verdict.
set -eu
/bin/busybox --install -s /bin
export PATH=/bin LANG=C.UTF-8
mount -t proc proc /proc
mount -t sysfs sys /sys
mount -t devtmpfs dev /dev
for module in $(cat /modules/order); do
    insmod "/modules/$module"
done

# The sender runs as an ordinary user, as the program does.
mkdir /etc
echo "operator:x:1000:1000::/:/bin/sh" >/etc/passwd

# Waits until the device is there (yes) or gone (no).
wait_for() {
    for _ in $(seq 100); do
        if [ -c "$1" ]; then there=yes; else there=no; fi
        if [ $there = "$2" ]; then return 0; fi
        usleep 100000
    done
    echo "$1 there: $there"
    return 1
}

run() {
    tty=/dev/ttyUSB0
    if [ "$1" = cdc_acm ]; then tty=/dev/ttyACM0; fi
    adapters_adapter "$1" "$2" &
    adapter=$!
    wait_for $tty yes && chmod 666 $tty && su operator -c "adapters_sender $tty $2" || verdict=wrong
    kill $adapter || true
    wait $adapter || verdict=wrong
    wait_for $tty no || verdict=wrong
    usleep 300000 # the host controller's port takes a moment longer
}

verdict=right
for kind in $(cat /kinds); do
    run "$kind" 8n
    run "$kind" 7e
done
echo "verdict: $verdict"
poweroff -f
