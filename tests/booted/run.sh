#!/bin/sh
# Proves the arm64 packages in a Debian arm64 system that is booted: tests/booted/run.sh, as root
# QEMU emulates the machine, init, kernel and all else are Debian's. The system is kept, what is installed in it is not.
set -eu
cd "$(dirname "$0")/../.."
roots=$(mktemp -d /var/tmp/r47-booted-XXXXXX)
trap 'rm -rf "$roots"' EXIT
trap 'exit 1' HUP INT TERM
. tests/bare/roots.sh
touch "$roots/output" "$roots/errors"
systems=/var/cache/r47-booted
limit=1500 # s, which no working run ever reaches

# (systemd's tools, with which its package is configured on another root)
# shellcheck disable=SC2046
packaging/install_packages.sh $(cat packaging/build_packages) cpio device-tree-compiler e2fsprogs kmod mmdebstrap \
    python3 python3-pexpect qemu-system-arm systemd

# For another way to make it, or after a month, a new one.
system=$systems/$(cat /etc/os-release tests/booted/make_system.sh | cksum | cut -d ' ' -f 1)
if [ -z "$(find "$system" -maxdepth 0 -mtime -30 2>/dev/null)" ]; then
    case_begins "a Debian arm64 system"
    rm -rf "$systems"
    mkdir -m 0700 "$systems"
    must tests/booted/make_system.sh "$systems/new"
    mv "$systems/new" "$system"
fi

case_begins "packages"
[ -e build/build.ninja ] || must cmake --preset release
must cmake --build build --target r47-console hal r47-sim
must ./package arm64
mkdir "$roots/packages"
cp "$system"/packages/*.deb build-packages/arm64/r47-console_*.deb build-packages/arm64/r47-console-dev_*.deb \
    build-packages/arm64/r47-virtual-device_*.deb "$roots/packages"
must mke2fs -t ext4 -O ^has_journal -L packages -d "$roots/packages" "$roots/packages.img" 64M

TMPDIR=$roots PYTHONPATH=station PYTHONDONTWRITEBYTECODE=1 timeout "$limit" tests/support/own_network.sh \
    /usr/bin/python3 tests/booted/session.py "$system" "$roots/packages.img" build/r47-sim build/r47-console
