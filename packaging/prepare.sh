#!/bin/sh
# Makes this machine ready for ./run and ./test: installs the named Debian packages and what the virtual device needs of
# the machine. Ends with 1 and one line where that cannot be.
#   packaging/prepare.sh PACKAGE...
set -eu
install=$(dirname "$0")/install_packages.sh

# Whether namespaces are allowed: root's, or a user's own. Told without bubblewrap, so that all is installed at once.
can_unshare() {
    unshare --mount true 2>/dev/null || unshare --map-root-user --mount true 2>/dev/null
}

bubblewrap() {
    bwrap --unshare-user --ro-bind / / true 2>/dev/null || bwrap --ro-bind / / true
}

if can_unshare; then
    "$install" "$@" bubblewrap
else
    "$install" "$@" bubblewrap proot
fi
if refusal=$(bubblewrap 2>&1); then
    exit 0
fi
"$install" proot
if untraced=$(proot true 2>&1); then
    exit 0
fi
first_line() {
    printf '%s' "$1" | head -n 1
}
echo "the virtual device needs namespaces ($(first_line "$refusal")) or else tracing ($(first_line "$untraced"));" \
    "start the container with --cap-add SYS_PTRACE or --security-opt seccomp=unconfined, or use a machine that allows one" >&2
exit 1
