#!/bin/sh
# Builds the fuzzers and runs each for some seconds, two at a time:
#   tests/fuzz/run.sh SECONDS [FUZZER...]
# Prints a line for each and ends with 1 where one found something. What they learn stays in build-fuzz/corpus/,
# what they find in build-fuzz/findings/; run a fuzzer with such a file as its argument to see it again.
set -eu
cd "$(dirname "$0")/../.."

most_input=1536 # bytes, a client's line that is too long among them; more only makes the runs slower

run_one() { # SECONDS FUZZER
    mkdir -p "build-fuzz/corpus/$2" "build-fuzz/findings/$2"
    dictionary=""
    [ ! -f "tests/fuzz/$2.dict" ] || dictionary="-dict=tests/fuzz/$2.dict"
    status=0
    # shellcheck disable=SC2086
    "build-fuzz/$2" -max_total_time="$1" -max_len="$most_input" -len_control=20 -timeout=20 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="build-fuzz/findings/$2/" $dictionary "build-fuzz/corpus/$2" "tests/fuzz/seeds/$2" \
        </dev/null >/dev/null 2>"build-fuzz/$2.log" || status=$?
    awk -v name="$2" -v status="$status" '
        /^stat::number_of_executed_units/ { executions = $2 }
        /^stat::average_exec_per_sec/ { rate = $2 }
        END { printf "%-22s %12d %9d %9d\n", name, executions, rate, status != 0 }' "build-fuzz/$2.log"
    [ "$status" -eq 0 ]
}

if [ "${1-}" = "--one" ]; then
    run_one "$2" "$3"
    exit
fi

case "${1-}" in
    "" | *[!0-9]*)
        echo "usage: tests/fuzz/run.sh SECONDS [FUZZER...]" >&2
        exit 2
        ;;
esac
seconds=$1
shift

# shellcheck disable=SC2046
packaging/install_packages.sh $(cat packaging/build_packages) clang libclang-rt-dev >&2
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target "${@:-fuzzers}" -- --quiet >&2
[ $# -gt 0 ] || set -- $(ls tests/fuzz/seeds)

printf '%-22s %12s %9s %9s\n' fuzzer executions exec/s findings
if ! printf '%s\n' "$@" | xargs -P 2 -I {} tests/fuzz/run.sh --one "$seconds" {}; then
    for fuzzer in "$@"; do
        grep -hE -A 3 'NOT TRUE|DIFFERS|ERROR:|runtime error|Test unit written' "build-fuzz/$fuzzer.log" || true
    done
    exit 1
fi
