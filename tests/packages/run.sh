#!/bin/sh
# Proves the Debian packages of this machine's processor: tests/packages/run.sh, as root
# They are made of the release build, where what is compiled already is not compiled again, and once more from nothing in
# another place: both must be the same, byte for byte. Meanwhile lintian reads them, what r47-console-dev holds is built
# against, out of the tree, and a bare Debian root installs them, runs the console in the virtual device and tests it.
set -eu
cd "$(dirname "$0")/../.."
architecture=$(dpkg --print-architecture)
packages=build-packages/$architecture
roots=$(mktemp -d /var/tmp/r47-packages-XXXXXX)
again=""
clean_up() {
    # (all of it: its compilers would write on)
    [ -z "$again" ] || { kill -- "-$again" && wait "$again"; } 2>"$roots/errors" || true
    rm -rf "$roots"
}
trap clean_up EXIT
trap 'exit 1' HUP INT TERM
. tests/bare/roots.sh
touch "$roots/output" "$roots/errors"

# The command prints the line.
must_print() { # LINE COMMAND...
    line=$1
    shift
    must "$@"
    grep -aqx "$line" "$roots/output" || fail "no \"$line\" of: $*"
}

# The commands of a block of docs/porting.md that begins so, for another device's directory than /sdk.
example() { # WORDS
    sed -n "/^$1 /,/^\`\`\`/p" docs/porting.md | grep -v '^```' | sed "s|/sdk|$roots/sdk|g"
}

packaging/install_packages.sh bash-completion lintian man-db mmdebstrap pkg-config

case_begins "packages of the release build"
must ./package "$architecture"

case_begins "from nothing, meanwhile: another place, time zone, language and mask"
mkdir "$roots/another place"
git ls-files -z | xargs -0 cp --parents -t "$roots/another place"
touch -d "2001-02-03" "$roots/another place/CHANGELOG.md"
# (a compiler cache would hand out what the first build has made)
(
    umask 077
    cd "$roots/another place"
    exec setsid env CCACHE_DISABLE=1 TZ=Asia/Tokyo LC_ALL=C HOME="$roots" ./package "$architecture"
) >"$roots/again" 2>&1 </dev/null &
again=$!

case_begins "lintian, man pages, completion, dependencies"
must lintian --allow-root --fail-on error,warning "$packages"/*.deb
for page in packaging/man/*; do
    must env LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings --local-file "$page"
    [ ! -s "$roots/errors" ] || fail "warnings of: man $page"
done
for package in "$packages"/*.deb; do
    dpkg-deb --extract "$package" "$roots/installed"
done
usr=$roots/installed/usr
must tests/packages/completion.sh "$usr/bin/r47-sim"
libraries=$usr/lib/$(gcc -print-multiarch)
# The packages that are told as dependencies are those that Debian's own tool finds. The console's library is in none: it
# is the device's.
mkdir -p "$roots/source/debian"
touch "$roots/source/debian/control"
for package in console:bin/r47-console virtual-device:bin/r47-sim,bin/r47-panel,lib/$(gcc -print-multiarch)/r47/libhal.so.2; do
    # shellcheck disable=SC2046
    found=$(cd "$roots/source" && dpkg-shlibdeps -O --ignore-missing-info -l"$libraries/r47" \
        $(echo "${package#*:}" | tr , '\n' | sed "s|^|-e$usr/|") 2>"$roots/errors") || fail "no dependencies of $package"
    found=$(echo "$found" | sed 's/^shlibs:Depends=//; s/ ([^)]*)//g; s/, /\n/g' | sort)
    told=$(dpkg-deb --field "$packages/r47-${package%%:*}"_*.deb Depends | sed 's/ ([^)]*)//g; s/, /\n/g' |
        grep -vx bubblewrap | sort)
    [ "$found" = "$told" ] || fail "r47-${package%%:*} depends on $found, and tells $told"
done

case_begins "a tool and a library, built against r47-console-dev"
must cmake -S tests/packages/consumer -B "$roots/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$usr" \
    -DSECOND_LIBRARY="$PWD/tests/second_library"
must cmake --build "$roots/consumer"
sim=$usr/bin/r47-sim
must_print "exposure 10000" "$sim" run -- "$roots/consumer/tool"
must_print "exposure 0" env LD_LIBRARY_PATH="$roots/consumer" "$sim" run -- "$roots/consumer/tool"
cp tests/packages/consumer/tool.cpp "$roots"
must env -C "$roots" PKG_CONFIG_PATH="$libraries/pkgconfig" sh -euxc "$(example g++)"
must_print "exposure 10000" "$sim" run -- "$roots/a.out"

case_begins "the console, built with another libhal.so.2 and its headers"
mkdir "$roots/sdk"
ln -s "$roots/consumer" "$roots/sdk/lib"
ln -s "$usr/include/r47" "$roots/sdk/include"
# (not optimized, which would take longer)
must env -C "$roots/another place" CMAKE_BUILD_TYPE=None sh -euxc "$(example "cmake -B build-device")"
must_print "sensor actual exposure: 0" sh -c "printf 'b\nE\nx\nx\n' |
    build/r47-sim run -- '$roots/another place/build-device/r47-console'"

case_begins "installed in a bare root"
make_bare_root
copy_root machine
echo force-unsafe-io >"$roots/machine/etc/dpkg/dpkg.cfg.d/unsafe-io" # (it need not outlive a power cut)
mkdir "$roots/machine/home/engineer/r47"
cp "$packages"/*.deb "$roots/machine/home/engineer/r47"
chroot "$roots/machine" chown -R engineer: /home/engineer/r47
install="DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends"
in_root machine machine root "apt-get update && $install ./r47-console_*.deb ./r47-console-dev_*.deb" ||
    fail "no installation"
! in_root machine machine root r47-console || fail "a library is there before anybody has brought one"
grep -q 'libhal\.so\.2: cannot open shared object file' "$roots/errors" || fail "another error than that of no library"
# What these recommend comes with them, what that recommends does not.
recommended=$(for package in r47-virtual-device python3-r47-station; do
    dpkg-deb --field "$packages/$package"_*.deb Recommends
done | tr ',\n' '  ')
in_root machine machine root "$install ./r47-virtual-device_*.deb ./python3-r47-station_*.deb $recommended" ||
    fail "no installation of virtual device and station"
for where in machine container; do
    for who in root engineer; do
        expect "File Error Code: 0" machine $where $who "printf 'A\nx\n' | r47-sim run -- r47-console"
    done
done
expect "sensor error to get exposure" machine machine engineer "r47-sim device --name bench &
    until r47-sim --device bench fault add rtu_t::get_exposure status -1; do :; done
    printf 'b\nE\nx\nx\n' | r47-sim run --device bench -- r47-console"
expect "panel http://127.0.0.1:[0-9]*/[0-9a-f]*/" machine machine engineer "r47-sim panel --device bench --beside \$\$"

case_begins "the station's examples there"
in_root machine machine root "ls /usr/lib/python3/dist-packages/r47_station/__pycache__/console.*.pyc" || fail "not compiled"
examples=/usr/share/doc/python3-r47-station/examples
pytest="pytest-3 -p no:cacheprovider --r47-clock 'scaled 20' --r47-timeout 60"
# (without the examples' pytest.ini: the package alone tells pytest of its fixtures)
expect "=* 11 passed in .*" machine machine engineer "cp $examples/production_test.py . && $pytest production_test.py"
expect "=* 2 passed, .*" machine machine root "$pytest $examples -k outputs"
expect "fleet[0-9]*-2  [0-9.]* s  passed" machine machine engineer "r47-sim fleet 2 -- python3 $examples/fleet.py"

case_begins "removed from the bare root"
in_root machine machine root "rm -r $examples/__pycache__
    DEBIAN_FRONTEND=noninteractive apt-get purge -y r47-console r47-virtual-device r47-console-dev python3-r47-station" ||
    fail "no removal"
# (the directories of devices that were killed stay)
in_root machine machine root "! find / -xdev '(' -path /home -o -path /tmp ')' -prune -o -name '*r47*' -print | grep ." ||
    fail "removed, and something is left"

case_begins "the same from nothing"
wait "$again" || { cp "$roots/again" "$roots/output" && fail "the second build"; }
again=""
for package in "$packages"/*.deb; do
    must cmp "$package" "$roots/another place/$package"
done
