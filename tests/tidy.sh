#!/bin/sh
# Runs clang-tidy on all sources, or on those that are named; quiet where it finds nothing.
#   tests/tidy.sh [SOURCE.cpp...]
# The path analysis is for the product alone: in tests it follows the framework's macros, and takes five times as long. Of
# the gate it would follow one function for each operation that there is, for minutes.
set -eu
cd "$(dirname "$0")/.."

# shellcheck disable=SC2046
packaging/install_packages.sh $(cat packaging/build_packages) libcpp-httplib-dev clang libclang-rt-dev clang-tidy libgtest-dev >&2
# Compile commands without precompiled headers, which nobody builds here.
cmake --preset clang-debug -B build-tidy -DR47_BENCH=ON -DR47_PANEL=ON -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON >/dev/null
cmake --preset fuzz -B build-tidy/fuzz >/dev/null

[ $# -gt 0 ] || set -- $(git ls-files '*.cpp')

for source in "$@"; do
    case "$source" in
        tests/fuzz/*) echo "$source -p=build-tidy/fuzz --checks=-clang-analyzer-*" ;;
        tests/* | bench/* | sim/service/gate.cpp) echo "$source -p=build-tidy --checks=-clang-analyzer-*" ;;
        *) echo "$source -p=build-tidy" ;;
    esac
done | xargs -P "$(nproc)" -L 1 sh -c 'found=$(clang-tidy --quiet "$@" 2>&1) || { echo "$found"; exit 1; }' tidy
