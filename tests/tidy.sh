#!/bin/sh
# Runs clang-tidy on all sources, or on those that are named; quiet where it finds nothing.
#   tests/tidy.sh [SOURCE.cpp...]
set -eu
cd "$(dirname "$0")/.."

# shellcheck disable=SC2046
packaging/install_packages.sh $(cat packaging/build_packages) libcpp-httplib-dev clang libclang-rt-dev clang-tidy libgtest-dev >&2
# Compile commands without precompiled headers, which nobody builds here.
cmake --preset clang-debug -B build-tidy -DR47_BENCH=ON -DR47_PANEL=ON -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON >/dev/null
cmake --preset fuzz -B build-tidy/fuzz >/dev/null

[ $# -gt 0 ] || set -- $(git ls-files '*.cpp')
python3 tests/tidy.py "$@"
