## coverage           tells which branches of the library the tests take; fails where they are fewer than they must be
need gcovr

# What must be reached, per cent of the branches.
kept='glib/=99.5 marshal/=97.5 include/=100 scriptor/loading.cpp=99 platform/QuorPureScriptor/src/load.cpp=100 library=95'

# The programs are those of dev, which find the libraries that count in place of their own: no test is compiled twice.
# Left out is who starts the command, looks at what was built, brings its own copies of the library's sources, or asks
# other libraries of the platform alone. Of the command's tests those of scripts that nobody trusts are the library's.
# The library's objects that a program is linked from count where they are built to count, with the program.
left_out=' test_quor test_call test_config_command test_language test_project test_glib_inside test_scriptor_inside
    test_values test_primary test_common test_msghandle test_platform_memory '
own=' test_reading_bounds test_list_bounds '
need "${build_packages[@]}"
mkdir -p build
flock -o build/dev.lock cmake --preset dev >/dev/null
mapfile -t programs < <(ninja -C build/dev -t targets all | sed -n 's,^bin/\(\(test\|replay\)_[a-z_]*\): .*,\1,p' |
    while read -r program; do
        [[ $left_out == *[[:space:]]"$program"[[:space:]]* ]] || echo "$program"
    done)
build dev "${programs[@]}" >&2
build coverage >&2
find build/coverage -name '*.gcda' -delete

# run_counting PROGRAM: as a whole; a process for each test would spend its time in writing what it counted.
run_counting() {
    local filter='*'
    [[ $1 != test_command_limits ]] || filter='*Untrusted*'
    local folder=build/dev/bin
    [[ $own != *" $1 "* ]] || folder=build/coverage/bin
    LD_LIBRARY_PATH=$PWD/build/coverage/lib GTEST_BRIEF=1 \
        "$folder/$1" --gtest_filter="$filter" >"build/coverage/$1.log" 2>&1 && return
    tail -n 40 "build/coverage/$1.log" >&2
    say "failed: $1"
    echo "$1"
}
export -f run_counting say
export own
broken=$(printf '%s\n' "${programs[@]}" | xargs -P "$(nproc)" -I{} bash -c 'run_counting {}' | wc -l)

# That a handler does not fit what was thrown is no branch of ours: nothing is thrown here that is no std::exception.
gcovr --root . --object-directory build/coverage --exclude-unreachable-branches \
    --exclude-branches-by-pattern '.*catch \(const std::exception&\).*' \
    --filter '(config|glib|include|marshal|messages|scriptor)/' --filter 'platform/QuorPureScriptor/src/load.cpp' \
    --json build/coverage/coverage.json build/coverage/{config,glib,marshal,platform/QuorPureScriptor,scriptor} >/dev/null
# shellcheck disable=SC2086 # one argument for each
python3 scripts/parts/branches.py build/coverage/coverage.json "$broken" $kept
