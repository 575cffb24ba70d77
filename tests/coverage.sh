#!/bin/sh
# Runs the tests on the coverage preset and prints what of app/, net/, menus/ and sim/ they reached: lines and branches by
# folder and file, then each line that was not reached with its reason out of tests/unreached_lines.txt. Ends with 1 where
# a test failed or a reason is missing.
#   tests/coverage.sh [ARGUMENT of ctest...]
# A process that is killed or ends by _exit takes its counts with it.
set -eu
cd "$(dirname "$0")/.."
here=$(pwd)

# shellcheck disable=SC2046
packaging/install_packages.sh $(cat packaging/build_packages) bubblewrap libgtest-dev python3 gcovr >&2
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

gcovr --root . --object-directory build-coverage --exclude-throw-branches --exclude-unreachable-branches \
    --filter '(app|net|menus|sim)/' --json build-coverage/coverage.json build-coverage
tests/coverage_report.py build-coverage/coverage.json tests/unreached_lines.txt || status=$?
exit "$status"
