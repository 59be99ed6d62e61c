## bench [OPTION...]  compares the library's times with code written by hand; options are those of Google Benchmark
##                    --instructions counts instructions instead, exactly repeatable, and holds them to their goals
count_instructions() {
    need "${build_packages[@]}" valgrind
    build bench quor_bench >&2
    local folder=build/bench/instructions
    rm -rf "$folder"
    mkdir -p "$folder"
    # An empty environment: its size moves the stack, and by that what is stored by address.
    build/bench/bin/quor_bench --list | xargs -d '\n' -P "$(nproc)" -I '{}' \
        env -i LC_ALL=C valgrind --quiet --tool=callgrind --callgrind-out-file="$folder/out.%p" \
        build/bench/bin/quor_bench --count '{}' >"$folder/log" 2>&1 || {
        cat "$folder/log" >&2
        return 1
    }
    awk '/^desc: Trigger: Client Request: / { sub(/^desc: Trigger: Client Request: /, ""); name = $0 }
         /^totals: / && name { print $2, name; name = "" }' "$folder"/out.* | build/bench/bin/quor_bench --report
}

if [[ ${1:-} == --instructions ]]; then
    count_instructions
else
    build bench quor_bench
    build/bench/bin/quor_bench "$@"
fi
