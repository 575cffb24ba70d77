#!/bin/sh
# Proves that ./run and ./test are all that a new machine needs: tests/bare/run.sh, as root
# Makes bare Debian roots from this machine's own package sources and gives the two commands as their first ones: as root, as
# a user with and without sudo, and in containers without rights. The bare root is kept, what is installed in it is not.
set -eu
cd "$(dirname "$0")/../.."
roots=$(mktemp -d /var/tmp/r47-bare-XXXXXX)
trap 'rm -rf "$roots"' EXIT
trap 'exit 1' HUP INT TERM
. tests/bare/roots.sh

# A copy of the bare root with a clone of this repository, the engineer's.
new_root() { # NAME
    copy_root "$1"
    mkdir "$roots/$1/home/engineer/r47"
    git ls-files -z | xargs -0 cp --parents --preserve=timestamps -t "$roots/$1/home/engineer/r47"
    chroot "$roots/$1" chown -R engineer: /home/engineer/r47
}

# The command fails with this as the last of at most $3 lines, and before anything is built.
expect_refusal() { # PATTERN LINES NAME WHERE WHO COMMAND
    pattern=$1 lines=$2
    shift 2
    ! in_root "$@" || fail "no refusal of: $4"
    tail -n 1 "$roots/errors" | grep -q "$pattern" || fail "no \"$pattern\" in the last line of: $4"
    [ "$(wc -l <"$roots/errors")" -le "$lines" ] || fail "more than $lines lines of: $4"
}

first_run="printf 'A\nx\n' | ./run"
works="File Error Code: 0"

make_bare_root

case_begins "first commands that only tell"
new_root first
for command in ./run ./test; do
    expect "usage: $command .*" first machine root "$command --help"
    expect_refusal "only root can install them: apt-get update && apt-get install .* g++ " 1 first machine engineer "$command"
done
# (a machine without a network of its own)
expect_refusal "^cannot install g++ .*: [EW]: " 2 first machine root "unshare --net ./run"

case_begins "./run, as root, first"
expect "$works" first machine root "$first_run"
! grep -a '^\./run' "$roots/output" || fail "phases on standard output"
! in_root first machine root "command -v proot || dpkg -s libgtest-dev" || fail "more is installed than ./run needs"
# What ./run has built, ./test goes on with below.
new_root second
cp -a "$roots/first/home/engineer/r47/build" "$roots/second/home/engineer/r47"
chroot "$roots/second" chown -R engineer: /home/engineer/r47/build

case_begins "./run --panel"
expect "panel http://127.0.0.1:[0-9]*/[0-9a-f]*/" first machine root "$first_run --panel 2>&1"
grep -aqx "$works" "$roots/output" || fail "the console does not start beside its panel"

case_begins "./run, as a user who finds root's build directory, and with it gone"
expect_refusal "belongs to root: sudo rm -r " 1 first machine engineer ./run
in_root first machine root "chown -R engineer: build"
in_root first machine root "mv /usr/bin/apt-get /usr/bin/apt-get.away; mv /usr/bin/dpkg-query /usr/bin/dpkg-query.away"
expect "$works" first machine engineer "$first_run"
in_root first machine root "mv /usr/bin/apt-get.away /usr/bin/apt-get; mv /usr/bin/dpkg-query.away /usr/bin/dpkg-query"

case_begins "./run in a container"
in_root first container root "! bwrap --ro-bind / / true && ! bwrap --unshare-user --ro-bind / / true && ! unshare --map-root-user true" ||
    fail "the container has rights"
in_root first machine root "chown -R root: build"
expect "$works" first container root "$first_run"
in_root first machine root "chown -R engineer: build"
expect "$works" first container engineer "$first_run"
in_root first container root "[ -z \"\$(find /tmp -name 'r47-sim-??????' -o -name 'prooted*')\" ]" || fail "traces in /tmp"
in_root first machine root "cp /bin/false /usr/bin/proot; rm -r build"
expect_refusal "^the virtual device needs namespaces (bwrap: .*) or else tracing" 1 first container engineer ./run
rm -rf "$roots/first"

case_begins "./test, as a user with sudo, first"
in_root second machine root "apt-get update; apt-get install -y --no-install-recommends sudo; rm -r /var/lib/apt/lists
    echo 'engineer ALL=(ALL) NOPASSWD: ALL' >/etc/sudoers.d/engineer"
expect "100% tests passed.*" second machine engineer ./test
grep -h -E 'tests passed|Total Test time|^skipped' "$roots/output"
expect "$works" second machine engineer "$first_run"
! grep -q 'Building CXX' "$roots/errors" || fail "built again"

case_begins "./test in a container"
in_root second machine root "chown -R root: ."
expect "100% tests passed.*" second container root ./test
grep -h -E 'tests passed|Total Test time|^skipped' "$roots/output"
! grep -q 'Building CXX' "$roots/errors" || fail "built again"
