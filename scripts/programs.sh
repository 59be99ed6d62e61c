# What the words share that run each test program once, as a whole.

# build_programs PRESET: builds what is tested and the tests, then names the programs of tests.
build_programs() {
    build "$1" >&2 || return
    local program
    for program in "build/$1"/bin/{test,replay}_*; do
        [[ ! -x $program ]] || basename "$program"
    done
}

passed=0 failed=0
# count_run WHAT LOG COMMAND...: one run more that passes or fails; of one that fails the end of its log is shown.
count_run() {
    if "${@:3}" >"$2" 2>&1; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        tail -n 60 "$2"
        say "failed: $1"
    fi
}

tell_runs() {
    printf '%d passed, %d failed\n' "$passed" "$failed"
    [[ $failed == 0 && $passed != 0 ]]
}
