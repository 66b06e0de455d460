#!/bin/busybox sh
# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=dash
# The virtual machine's first process: loads the drivers, then sends to one kind of adapter, row by row. The kernel's
# command line names the KIND and the SPEEDS. Its last line is the verdict.
set -eu
/bin/busybox --install -s /bin
export PATH=/bin LANG=C.UTF-8
mount -t proc proc /proc
mount -t sysfs sys /sys
mount -t devtmpfs dev /dev
for module in $(cat /modules/order); do
    insmod "/modules/$module"
done

# The senders run as an ordinary user, as the program does.
mkdir -p /etc /tmp
chmod 1777 /tmp
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

# Arguments: SENDER SPEED 8n|7e xon|cts. Prints them, what the control found, and how often the sender stopped.
run() {
    sender=$1
    shift
    tty=/dev/ttyUSB0
    if [ "$KIND" = cdc_acm ]; then tty=/dev/ttyACM0; fi
    adapters_adapter "$KIND" "$@" >/found &
    adapter=$!
    wait_for $tty yes && chmod 666 $tty && su operator -c "adapters_$sender $tty $*" >/stops || verdict=wrong
    kill $adapter || true
    wait $adapter || verdict=wrong
    echo "row: $KIND $sender $* $(cat /found) $(cat /stops)"
    wait_for $tty no || verdict=wrong
    usleep 300000 # the host controller's port takes a moment longer
}

verdict=right
for speed in $(echo "$SPEEDS" | tr , ' '); do
    run sender "$speed" 8n xon
done
run sender 9600 7e xon
if [ "$KIND" != cdc_acm ]; then # its driver takes CTS for always on
    run sender 9600 8n cts
    run sender 115200 8n cts
fi
if [ -f /bin/adapters_window ]; then
    mkdir -m 700 /tmp/home
    chown operator /tmp/home
    export QT_QPA_PLATFORM=offscreen XDG_CONFIG_HOME=/tmp/home XDG_CACHE_HOME=/tmp/home XDG_RUNTIME_DIR=/tmp/home
    run window 9600 8n xon
fi
echo "verdict: $verdict"
poweroff -f
