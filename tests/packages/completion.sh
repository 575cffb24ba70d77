#!/bin/bash
# Holds what bash offers behind a command line against what there must be: tests/packages/completion.sh R47-SIM
# (without -eu: completions are written for the shells of persons)
sim=$1
here=$(dirname "$0")/../..
. /usr/share/bash-completion/bash_completion
. "$here/packaging/bash-completion/r47-sim"
. "$here/packaging/bash-completion/r47-console"
failed=0

# The last word is completed.
offers() { # EXPECTED WORD...
    local expected=$1
    shift
    # As readline parts them: ":" is a word of its own.
    mapfile -t COMP_WORDS < <(printf '%s\n' "$@" | sed 's/:\{1,\}/\n&\n/g' | sed '$!b; /^$/d' && [[ ${*: -1} == "" ]] && echo)
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMPREPLY=()
    COMP_LINE=$*
    COMP_POINT=${#COMP_LINE}
    "$function" "${COMP_WORDS[0]}" 2>/dev/null
    if [[ "${COMPREPLY[*]}" != "$expected" ]]; then
        echo "$*: offers \"${COMPREPLY[*]}\", not \"$expected\""
        failed=1
    fi
}

function=_r47_console
offers "socket" r47-console s
offers "socket alarm old_gyro_fw" r47-console ""
offers "" r47-console socket ""

function=_r47_sim
offers "scene set show step" "$sim" s
offers "run" "$sim" ru
offers "--version" "$sim" --v
offers "--private-network" "$sim" run --pri
offers "real scaled stepped" "$sim" run --clock ""
offers "system.state" "$sim" set system.s
offers "" "$sim" set system.al
offers "system.alive" "$sim" show system.al
offers "warning" "$sim" set system.state w
offers "true false" "$sim" set illumination.present ""
offers "== !=" "$sim" wait system.state ""
offers "running" "$sim" expect system.state == ru
offers "add clear list" "$sim" fault ""
offers "count" "$sim" fault add rtu_t::get_exposure skip 1 co
offers "cycle" "$sim" power c
offers "high low open" "$sim" drive 1 ""
offers "add" "$sim" fault a
offers "/dev/imx296 /dev/imx567" "$sim" node remove /dev/imx
offers "get_trigger_prohibited_time" "$sim" fault add rtu_t::get_trigger_p
offers "call callback command" "$sim" journal show --kind c
offers "show" "$sim" journal sh
exit $failed
