# What the words fuzz and fuzz-short share.
mapfile -t targets < <(basename -a fuzz/seeds/*)

build_targets() {
    need clang-14 libclang-rt-14-dev
    build fuzz
}

# fuzz_target TARGET OPTION...: runs a target over its seeds and what earlier runs found; cases that fail are written
# to build/fuzz. Leaks are looked for where the cases are run again: at each new one it would take most of the time.
fuzz_target() {
    local target=$1 found=build/fuzz/corpus/$1
    shift
    mkdir -p "$found"
    UBSAN_OPTIONS=print_stacktrace=1 build/fuzz/bin/"fuzz_$target" -dict="fuzz/$target.dict" -max_len=512 -timeout=25 \
        -detect_leaks=0 -print_final_stats=1 -artifact_prefix="build/fuzz/$target-" "$@" "$found" "fuzz/seeds/$target"
}

# told LOG: how many runs a log tells of, and how many a second.
told() {
    printf '%d runs, %d a second\n' "$(sed -n 's/^stat::number_of_executed_units: *//p' "$1")" \
        "$(sed -n 's/^stat::average_exec_per_sec: *//p' "$1")"
}
