#!/bin/sh
# Runs the long proofs: run.sh [BUILD-TO-SWEEP [BUILD-TO-STORM [BUILD-TO-ORDER [CONSOLES [COMMANDS [SEEDS]]]]]]
# A sweep of the build with the address sanitizer, and orders of the one with the thread sanitizer, find their reports too.
set -u
cd "$(dirname "$0")/../.."
swept=${1:-build}
stormed=${2:-build}
ordered=${3:-build}
consoles=${4:-1000}
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
# The thread sanitizer would wait a second for the threads that an end of the process leaves behind.
TSAN_OPTIONS="atexit_sleep_ms=0 ${TSAN_OPTIONS-}"
export TSAN_OPTIONS
proof "$ordered/thread_orders" --seeds "$seeds"
exit "$failed"
