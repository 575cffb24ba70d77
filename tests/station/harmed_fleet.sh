#!/bin/sh
# In a fleet of five: the first device hangs, the second dies, the third is without power, of the fourth a module is
# unplugged. Then all are tested:
#   harmed_fleet.sh R47_SIM PYTHON EXAMPLE
set -eu
name() { sed -n "$1s/ .*//p" "$R47_FLEET"; }
program() { "$1" --device "$2" programs | sed -n 's/.* pid \([0-9]*\).*/\1/p'; }

kill -STOP "$(program "$1" "$(name 1)")"
kill -KILL "$(program "$1" "$(name 2)")"
"$1" --device "$(name 3)" power off
"$1" --device "$(name 4)" node remove /dev/r47-rtu-driver
exec "$2" "$3"
