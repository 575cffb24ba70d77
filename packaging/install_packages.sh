#!/bin/sh
# Installs those of the named Debian packages whose tools are not there yet, as root or with sudo. Says so; where that
# cannot be, ends with 1 and one line that says why and what to do.
set -eu

has_header() {
    printf '#if !__has_include(<%s>)\n#error\n#endif\n' "$1" | g++ -E -x c++ - 2>/dev/null
}

# Whether what a package is needed for is there, wherever it comes from.
is_there() {
    case $1 in
        ninja-build) command -v ninja ;;
        bubblewrap) command -v bwrap ;;
        libgtest-dev) has_header gtest/gtest.h ;;
        libcpp-httplib-dev) has_header httplib.h ;;
        libcli11-dev) has_header CLI/CLI.hpp ;;
        nlohmann-json3-dev) has_header nlohmann/json.hpp ;;
        g++ | cmake | proot) command -v "$1" ;;
        *) dpkg-query -W -f '${Status}' "$1" 2>/dev/null | grep '^install ok installed' ;;
    esac >/dev/null
}

# Without a terminal nobody can answer sudo's question for a password.
may_use_sudo() {
    command -v sudo >/dev/null && { sudo -n true 2>/dev/null || { (: </dev/tty) 2>/dev/null && sudo true; }; }
}

missing=""
for package in "$@"; do
    is_there "$package" || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

if ! command -v apt-get >/dev/null; then
    echo "missing, and there is no apt-get to install it:$missing" >&2
    exit 1
fi
install="apt-get install -y --no-install-recommends$missing"
as_root=""
if [ "$(id -u)" != 0 ]; then
    if ! may_use_sudo; then
        echo "packages are missing, and only root can install them: apt-get update && $install" >&2
        exit 1
    fi
    as_root="sudo"
fi

echo "installing$missing ..." >&2
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# The package lists may be missing, or so old that what they name is gone.
for first in true "$as_root apt-get update"; do
    # shellcheck disable=SC2086
    if $first >"$log" 2>&1 && $as_root env DEBIAN_FRONTEND=noninteractive $install >>"$log" 2>&1 </dev/null; then
        exit 0
    fi
done
echo "cannot install$missing: $(grep -m 1 '^[EW]: ' "$log" || tail -n 1 "$log")" >&2
exit 1
