#!/bin/sh
# Tests the front panel's page in headless Chromium:
#   tests/panel/run.sh [BUILD [TEST...]]
# BUILD is a build directory that has the panel already; without one, or with "build", the release build gets it.
set -eu
cd "$(dirname "$0")/../.."
build=${1-build}
[ $# -eq 0 ] || shift

# shellcheck disable=SC2046
packaging/install_packages.sh $(cat packaging/build_packages) libcpp-httplib-dev chromium chromium-driver python3-selenium \
    fonts-dejavu-core >&2
if [ "$build" = build ]; then
    [ -e build/build.ninja ] || cmake --preset release >/dev/null
    cmake -B build -DR47_PANEL=ON >/dev/null
    cmake --build build --target r47-panel r47-sim r47-console -- --quiet >&2
fi
exec /usr/bin/python3 tests/panel/panel_test.py "$build/r47-sim" "$@"
