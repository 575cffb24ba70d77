#!/bin/sh
# Runs the tests on the coverage preset and prints what of app/, net/, menus/ and sim/ they reached: lines and branches by
# folder, then each file with the lines that were not reached.
#   tests/coverage.sh [ARGUMENT of ctest...]
# A process that is killed or ends by _exit takes its counts with it.
set -eu
cd "$(dirname "$0")/.."
here=$(pwd)

packaging/install_packages.sh g++ cmake ninja-build bubblewrap libgtest-dev gcovr >&2
cmake --preset coverage >/dev/null
find build-coverage -name '*.gcda' -delete # of older objects
cmake --build --preset coverage -- --quiet >&2
find build-coverage -name '*.gcda' -delete # of the runs that list the tests

# The sandboxes of the tests let nobody write here; this bwrap, found before the real one, adds that.
real=$(command -v bwrap)
mkdir -p build-coverage/bin
cat >build-coverage/bin/bwrap <<END
#!/bin/sh
count=\$#
bound=false
while [ "\$count" -gt 0 ]; do
    if [ "\$1" = "--" ] && ! \$bound; then
        set -- "\$@" --bind "$here/build-coverage" "$here/build-coverage"
        bound=true
    fi
    set -- "\$@" "\$1"
    shift
    count=\$((count - 1))
done
exec "$real" "\$@"
END
chmod +x build-coverage/bin/bwrap

status=0
PATH="$here/build-coverage/bin:$PATH" ctest --test-dir build-coverage --parallel $(($(nproc) * 2)) --output-on-failure \
    --no-tests=error "$@" >build-coverage/tests.log 2>&1 || status=$?
[ "$status" -eq 0 ] || cat build-coverage/tests.log >&2

report() { # OPTION of gcovr...
    gcovr --root . --add-tracefile build-coverage/coverage.json "$@"
}

gcovr --root . --object-directory build-coverage --exclude-throw-branches --exclude-unreachable-branches \
    --filter '(app|net|menus|sim)/' --json build-coverage/coverage.json build-coverage
for folder in app net menus sim; do
    report --filter "$folder/" --print-summary --output /dev/null |
        awk -v folder="$folder" '
            /^lines:/ { lines = $0 }
            /^branches:/ { branches = $0 }
            END { printf "%-6s %-38s %s\n", folder, lines, branches }'
done
report --txt
exit "$status"
