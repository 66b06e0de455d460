#!/bin/bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs, starts, upgrades and removes the Debian package in a clean Debian tree of its own. As root:
#   packaging/test-package.sh [PACKAGE.deb]     without a package it builds one first
set -euo pipefail
cd "$(dirname "$0")/.."

step() { echo "== $*"; }
fail() { echo "test-package.sh: $*" >&2; exit 1; }

[ "$(id -u)" -eq 0 ] || fail "needs root, for the clean tree"
apt-get install -q -y --no-install-recommends debootstrap lintian >/dev/null
package=${1:-}
if [ -z "$package" ]; then
    step "building the package"
    tools/install-packages.sh
    cmake --preset release >/dev/null
    cmake --build --preset release --target varnock cncsim package_texts >/dev/null
    cpack --preset release >/dev/null
    package=$(ls -t build/release/varnock_*.deb | head -n 1)
fi
step "lintian $(basename "$package")"
lintian --allow-root --fail-on error "$package"

tree=$(mktemp -d)
chmod 755 "$tree" # apt downloads as an unprivileged user
trap 'umount "$tree/proc" "$tree/dev/pts" 2>/dev/null || true; rm -rf "$tree"' EXIT
step "making a clean Debian tree"
. /etc/os-release
mirror=$(apt-get indextargets --format '$(REPO_URI)' "Codename: $VERSION_CODENAME" | head -n 1)
debootstrap --variant=minbase "$VERSION_CODENAME" "$tree" "$mirror" >"$tree.log" 2>&1 ||
    { tail -n 20 "$tree.log"; fail "debootstrap"; }
rm -f "$tree.log"
rm -f "$tree/etc/apt/sources.list"
cp -a /etc/apt/. "$tree/etc/apt/" # the same package sources as here
mount -t proc proc "$tree/proc"
mkdir -p "$tree/dev/pts"
mount -t devpts -o newinstance,ptmxmode=0666 devpts "$tree/dev/pts" # for the simulated control
ln -sf pts/ptmx "$tree/dev/ptmx"
cp "$package" "$tree/varnock.deb"
in_tree() { chroot "$tree" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive HOME=/root "$@"; }
files() { in_tree find /usr -path '*[vV]arnock*' ! -path '/usr/share/doc*' -o -name 'cncsim*' | sort; }
starts() {
    # Off screen it must keep running; a program that cannot start ends at once.
    local code=0
    in_tree env QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR=/root timeout 3 varnock || code=$?
    [ "$code" -eq 124 ] || fail "varnock ended with $code"
    in_tree cncsim --help >/dev/null
}

step "installing"
in_tree apt-get -q update >/dev/null
in_tree apt-get -q install -y --no-install-recommends /varnock.deb >/dev/null
files
step "starting"
starts
step "upgrading over itself"
in_tree dpkg -i /varnock.deb >/dev/null
starts
step "removing"
in_tree apt-get -q purge -y varnock >/dev/null
left=$(files)
[ -z "$left" ] || fail "left behind: $left"
step "the package installs, starts, upgrades and leaves nothing behind"
