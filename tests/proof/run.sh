#!/bin/sh
# Runs the long proofs: run.sh [BUILD-TO-SWEEP [BUILD-TO-STORM [CONSOLES [COMMANDS]]]]
# A sweep of the build with sanitizers finds their reports too.
set -u
cd "$(dirname "$0")/../.."
swept=${1:-build}
stormed=${2:-build}
consoles=${3:-2000}
commands=${4:-1000000}
failed=0

proof() { # PROGRAM [ARGUMENT...]
    echo
    echo "--- $* ($(date +%H:%M:%S))"
    "$@" || failed=1
}

proof "$swept/fault_sweep"
proof "$stormed/client_storm" "$consoles" 0
proof "$stormed/client_storm" 0 "$commands"
exit "$failed"
