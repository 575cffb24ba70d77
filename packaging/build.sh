# The parts that ./run and ./test share. For sourcing, in the repository's root, with $me set.
# shellcheck shell=sh disable=SC2154

say() {
    echo "$me: $*" >&2
}

# Shows a command's output only when it fails.
quietly() {
    log=$(mktemp)
    if ! "$@" >"$log" 2>&1 </dev/null; then
        cat "$log" >&2
        rm -f "$log"
        return 1
    fi
    rm -f "$log"
}

# Ends where the build directory holds what this user cannot write.
check_build_directory() {
    foreign=$([ ! -e build ] || find build ! -writable ! -type l -print -quit)
    if [ -n "$foreign" ]; then
        say "$foreign belongs to $(stat -c %U "$foreign"): sudo rm -r $PWD/build, or go on as that user"
        exit 1
    fi
}

# Builds targets of the release preset and shows how far it is: build_release TIME-OF-A-FIRST-BUILD [TARGET...]
build_release() {
    if [ -e build/.ninja_log ]; then
        say "building"
    else
        say "building, which takes about $1 the first time"
    fi
    shift
    cmake --build --preset release ${1+--target "$@"} </dev/null >&2
}
