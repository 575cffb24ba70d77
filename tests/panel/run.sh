#!/bin/sh
# Tests the front panel: its server, and its page in headless Chromium:
#   tests/panel/run.sh [TEST...]
set -eu
cd "$(dirname "$0")/../.."

# shellcheck disable=SC2046
packaging/install_packages.sh $(cat packaging/build_packages) libgtest-dev libcpp-httplib-dev chromium chromium-driver python3-selenium \
    fonts-dejavu-core >&2
cmake --preset release -DR47_PANEL=ON >/dev/null
cmake --build --preset release --target r47-panel r47-sim sim_probe hal sim_tests -- --quiet >&2
ctest --preset release -R '^(PanelAccess|PanelServer|Snapshot)Test' --output-on-failure
exec /usr/bin/python3 tests/panel/panel_test.py build/r47-sim "$@"
