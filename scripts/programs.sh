# What the words share that run each test program once, as a whole.

# build_programs PRESET: builds what is tested and the tests, then names the programs of tests.
build_programs() {
    build "$1" >&2 || return
    local program
    for program in "build/$1"/bin/{test,replay}_*; do
        [[ ! -x $program ]] || basename "$program"
    done
}
