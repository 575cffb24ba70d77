#!/bin/sh
# Makes a Debian arm64 system of this machine's own package sources, to be booted: make_system.sh DIRECTORY, as root
# Leaves kernel, initrd and root.img there, and what only goes into the system later in packages. Runs no arm64 program:
# the packages' scripts run here, told to work on another root. Those that do not listen find nothing that they could
# write or mount.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
. "$here/../bare/roots.sh"
made=$1
work=$made/work
root=$work/root
mkdir -p "$root" "$made/packages"

# Of a kernel for any machine these are needed: drivers of QEMU's devices, and the root's file system.
modules="virtio_mmio virtio_blk virtio_net virtio_console ext4"

release=$(. /etc/os-release && echo "$VERSION_CODENAME")
apt-config dump --format '%F "%v";%n' Acquire >"$work/apt.conf"
rights=""
for right in chown dac_override fowner fsetid kill setgid setuid setfcap; do
    rights="$rights --cap-add cap_$right"
done
# shellcheck disable=SC2016
# (expanded by mmdebstrap's shell)
download='cd "$1/../../packages" && export APT_CONFIG=$MMDEBSTRAP_APT_CONFIG &&
    apt-get download -o APT::Sandbox::User=root bubblewrap libcpp-httplib0.11 libbrotli1 libssl3 zlib1g busybox-static \
        $(apt-cache depends linux-image-arm64 | sed -n "s/^ *Depends: //p")'
# shellcheck disable=SC2086,SC2046
bwrap --ro-bind / / --dev /dev --proc /proc --tmpfs /tmp --tmpfs /run --bind "$made" "$made" \
    --cap-drop ALL $rights --die-with-parent \
    mmdebstrap --mode=chrootless --skip=check/chrootless,output/dev --architectures=arm64 --variant=essential \
    --include=usr-is-merged,apt,iproute2,systemd-sysv --hook-dir=/usr/share/mmdebstrap/hooks/merged-usr \
    --customize-hook="$download" --aptopt="$work/apt.conf" --dpkgopt=force-unsafe-io --format=directory \
    "$release" "$root" $(package_sources) </dev/null

# What the packages leave to the machine that they are configured on.
pwconv --root "$root"
grpconv --root "$root"
passwd --root "$root" --delete root >/dev/null
useradd --root "$root" --create-home --shell /bin/sh engineer
# Nothing but udev tells systemd of a serial line; this login does not ask.
ln -s /lib/systemd/system/console-getty.service "$root/etc/systemd/system/getty.target.wants/"
echo camera >"$root/etc/hostname"

dpkg-deb --extract "$made"/packages/linux-image-*.deb "$work/kernel"
mv "$work"/kernel/boot/vmlinuz-* "$made/kernel"
version=$(ls "$work/kernel/lib/modules")
depmod --basedir "$work/kernel" "$version"

initrd=$work/initrd
mkdir -p "$initrd/bin" "$initrd/dev" "$initrd/root"
dpkg-deb --fsys-tarfile "$made"/packages/busybox-static_*.deb | tar --extract --directory "$initrd" ./bin/busybox
{
    echo '#!/bin/busybox sh'
    echo 'mount() { /bin/busybox mount "$@"; }'
    echo 'mount -t devtmpfs none /dev'
    for module in $modules; do
        modprobe --dirname "$work/kernel" --set-version "$version" --show-depends "$module"
    done | while read -r insmod file; do
        cp "$file" "$initrd"
        echo "/bin/busybox $insmod /${file##*/}"
    done
    echo 'mount -t ext4 LABEL=system /root'
    echo 'mount --move /dev /root/dev'
    echo 'exec /bin/busybox switch_root /root /sbin/init'
} >"$initrd/init"
chmod +x "$initrd/init"
(cd "$initrd" && find . | cpio --quiet --create --format=newc) >"$made/initrd"

mke2fs -q -t ext4 -O ^has_journal -L system -d "$root" "$made/root.img" 1G
rm "$made"/packages/linux-image-*.deb "$made"/packages/busybox-static_*.deb
rm -rf "$work"
