#!/bin/sh
# Unpacks Debian packages of another processor, for a cross build to link with; installs nothing and needs no root:
#   packaging/unpack_packages.sh ARCHITECTURE DIRECTORY PACKAGE...
set -eu
architecture=$1
directory=$2
shift 2
# (these, and all of them)
[ "$(cat "$directory/unpacked" 2>/dev/null)" != "$*" ] || exit 0

echo "unpacking $* for $architecture ..." >&2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM
mkdir -p "$work/lists/partial" "$work/archives/partial"
# This machine's package sources and keys, with lists of that processor's packages.
export APT_CONFIG="$work/apt.conf"
cat >"$APT_CONFIG" <<END
APT::Architecture "$architecture";
APT::Architectures { "$architecture"; };
APT::Sandbox::User "";
Dir::State "$work";
Dir::State::status "/dev/null";
Dir::Cache "$work";
END
if ! { apt-get update && (cd "$work" && apt-get download "$@"); } >"$work/log" 2>&1 </dev/null; then
    echo "cannot get $* for $architecture: $(grep -m 1 '^E: ' "$work/log" || tail -n 1 "$work/log")" >&2
    exit 1
fi
rm -rf "$directory"
mkdir -p "$directory/usr/lib"
ln -s usr/lib "$directory/lib" # (as in a Debian system)
for package in "$work"/*.deb; do
    dpkg-deb --fsys-tarfile "$package" | tar --extract --keep-directory-symlink --directory "$directory"
done
echo "$*" >"$directory/unpacked"
