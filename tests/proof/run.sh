#!/bin/sh
# Runs the long proofs of one build: run.sh [BUILD-DIRECTORY [CONSOLES [COMMANDS]]]
set -u
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-$here/../../build}
consoles=${2:-2000}
commands=${3:-1000000}
failed=0

proof() {
    echo
    echo "--- $* ($(date +%H:%M:%S))"
    program=$1
    shift
    "$build/$program" "$@" || failed=1
}

proof fault_sweep
proof client_storm "$consoles" 0
proof client_storm 0 "$commands"
exit "$failed"
