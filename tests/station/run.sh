#!/bin/sh
# Tests the package for test stations with Debian's Python, in a network of its own:
#   tests/station/run.sh R47_SIM R47_CONSOLE [WORD-OF-PYTEST...]
set -eu
here=$(cd "$(dirname "$0")" && pwd)
R47_SIM=$1
R47_CONSOLE=$2
shift 2
export R47_SIM R47_CONSOLE

skip() {
    echo "$0: Skipped"
    echo "$1"
    exit 77
}
/usr/bin/python3 -c "import pytest, pexpect" 2>/dev/null || skip "python3-pytest or python3-pexpect is not installed"
"$R47_SIM" run --private-network -- true 2>/dev/null || skip "the host allows no network namespaces"

export PYTHONPATH="$here/../../station" PYTHONDONTWRITEBYTECODE=1
exec "$here/../support/own_network.sh" /usr/bin/python3 -m pytest -q -p no:cacheprovider -p r47_station.pytest_plugin \
    -rs -c "$here/pytest.ini" --r47-sim "$R47_SIM" --r47-console "$R47_CONSOLE" --r47-timeout 60 "$here" "$@"
