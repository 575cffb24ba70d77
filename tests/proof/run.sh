#!/bin/sh
# Runs the long proofs: run.sh [BUILD-TO-SWEEP [BUILD-TO-STORM [BUILD-TO-ORDER [CONSOLES [COMMANDS [SEEDS]]]]]]
# A sweep of the build with the address sanitizer, and orders of the one with the thread sanitizer, find their reports too.
set -u
cd "$(dirname "$0")/../.."
swept=${1:-build}
stormed=${2:-build}
ordered=${3:-build}
consoles=${4:-2000}
commands=${5:-1000000}
seeds=${6:-250}
failed=0

proof() { # PROGRAM [ARGUMENT...]
    echo
    echo "--- $* ($(date +%H:%M:%S))"
    "$@" || failed=1
}

proof "$swept/fault_sweep"
proof "$stormed/client_storm" "$consoles" 0
proof "$stormed/client_storm" 0 "$commands"
proof "$ordered/thread_orders" --seeds "$seeds"
exit "$failed"
