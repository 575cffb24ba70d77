# Bare Debian roots, made of this machine's own package sources. For sourcing, as root, in the repository's root, with a
# directory in $roots for the copies; the bare root itself is kept.
# shellcheck shell=sh disable=SC2154
kept=/var/cache/r47-bare

case_begins() {
    echo "--- $(date +%H:%M:%S) $*"
}

fail() {
    echo "FAILED: $*"
    grep -a -A 30 -E '\*\*\*(Failed|Timeout|Exception)' "$roots/output" | head -n 200 # of tests, which may be far above
    tail -n 60 "$roots/output" "$roots/errors"
    exit 1
}

# Runs a command that must succeed; what it prints is shown where it does not.
must() {
    "$@" >"$roots/output" 2>"$roots/errors" </dev/null || fail "status $? of: $*"
}

# This machine's package sources, as mmdebstrap takes them.
package_sources() {
    find /etc/apt/sources.list /etc/apt/sources.list.d -name '*.list' -size +0 -o -name '*.sources' 2>/dev/null
}

# This machine's sources, keys and apt settings, proxies among them.
take_package_sources() { # ROOT
    cp -a /etc/apt/. "$1/etc/apt/"
    cp -a /usr/share/keyrings/. "$1/usr/share/keyrings/"
    cp /etc/resolv.conf /etc/hosts "$1/etc/"
}

make_bare_root() {
    release=$(. /etc/os-release && echo "$VERSION_CODENAME")
    # For another release, or after a month, a new one.
    if [ -n "$(find "$kept/$release/done" -mtime -30 2>/dev/null)" ]; then
        return
    fi
    case_begins "a bare root of $release"
    rm -rf "$kept"
    mkdir -m 0700 "$kept"
    mkdir "$kept/$release"
    apt-config dump --format '%F "%v";%n' Acquire >"$roots/apt.conf"
    # shellcheck disable=SC2046
    mmdebstrap --quiet --mode=root --variant=minbase --aptopt="$roots/apt.conf" "$release" "$kept/$release/root" \
        $(package_sources)
    take_package_sources "$kept/$release/root"
    useradd --root "$kept/$release/root" --create-home --shell /bin/sh engineer
    touch "$kept/$release/done"
}

# A copy of the bare root.
copy_root() { # NAME
    cp -a "$kept/$release/root" "$roots/$1"
}

# Runs a command in the clone of a root. Where: "machine", or "container", which has the rights of a usual one: no
# namespaces, no mounts. As whom: "root" or "engineer". Leaves what it prints in $roots/output and $roots/errors.
in_root() { # NAME WHERE WHO COMMAND
    # shellcheck disable=SC2016
    unshare --mount --pid --fork --kill-child sh -euc '
        root=$1 where=$2 who=$3 command=$4
        mount --bind "$root" "$root"
        mount --rbind /dev "$root/dev"
        mount -t proc proc "$root/proc"
        cd "$root"
        if [ "$where" = machine ]; then
            pivot_root . .
            umount -l .
            set -- setpriv
        else
            # In a changed root directory the kernel refuses user namespaces, too.
            set -- chroot . setpriv --no-new-privs --bounding-set -all,+chown,+dac_override,+fowner,+fsetid,+kill,+setgid,+setuid,+setpcap,+net_bind_service,+net_raw,+sys_chroot,+mknod,+audit_write,+setfcap
        fi
        if [ "$who" = engineer ]; then
            set -- "$@" --reuid=engineer --regid=engineer --init-groups
        else
            set -- "$@" --reuid=root
        fi
        exec "$@" env -i HOME="$(getent passwd "$who" | cut -d: -f6)" TERM=dumb LANG=C.UTF-8 PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
            ${http_proxy+"http_proxy=$http_proxy"} ${https_proxy+"https_proxy=$https_proxy"} ${no_proxy+"no_proxy=$no_proxy"} \
            sh -euc "cd /home/engineer/r47; $command"
    ' sh "$roots/$1" "$2" "$3" "$4" >"$roots/output" 2>"$roots/errors" </dev/null
}

# The command succeeds and prints the line.
expect() { # LINE NAME WHERE WHO COMMAND
    line=$1
    shift
    in_root "$@" || fail "status $? of: $4"
    grep -aqx "$line" "$roots/output" || fail "no \"$line\" of: $4"
}
