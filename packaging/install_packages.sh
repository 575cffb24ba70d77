#!/bin/sh
# Installs those of the named Debian packages that are not there yet.
set -eu

missing=""
for package in "$@"; do
    if [ "$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null)" != "install ok installed" ]; then
        missing="$missing $package"
    fi
done
[ -n "$missing" ] || exit 0

as_root=""
if [ "$(id -u)" != 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "These packages are needed, and only root can install them:$missing" >&2
        exit 1
    fi
    as_root="sudo"
fi
echo "Installing:$missing" >&2
export DEBIAN_FRONTEND=noninteractive
install="$as_root apt-get install -y -qq --no-install-recommends"
# shellcheck disable=SC2086
$install $missing >/dev/null 2>&1 || { $as_root apt-get update -qq && $install $missing >/dev/null; }
