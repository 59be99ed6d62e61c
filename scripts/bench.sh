## bench [luajit] [OPTION...]   compares the library's times with code written by hand; options are those of Google
##                    Benchmark
##                    --instructions counts instructions instead, exactly repeatable, and holds them to their goals
##                    --roads counts those of whole roads, and what grows: by library, and what each road calls
##                    --scaling measures a record's time by their number, on one thread and on two
preset=bench
if [[ ${1:-} == luajit ]]; then
    preset=bench-luajit
    shift
fi
folder=build/$preset/instructions
program=build/$preset/bin/quor_bench

# count_ways LIST: does each way of a list under callgrind, in an empty environment: its size moves the stack, and by
# that what is stored by address.
count_ways() {
    rm -rf "$folder"
    mkdir -p "$folder"
    "$program" "$1" | cut -d ' ' -f 2- | xargs -d '\n' -P "$(nproc)" -I '{}' \
        env -i LC_ALL=C valgrind --quiet --tool=callgrind --callgrind-out-file="$folder/out.%p" "$program" --count '{}' \
        >"$folder/log" 2>&1 || {
        cat "$folder/log" >&2
        return 1
    }
}

tell_ways() {
    awk '/^desc: Trigger: Client Request: / { sub(/^desc: Trigger: Client Request: /, ""); name = $0 }
         /^totals: / && name { print $2, name; name = "" }' "$folder"/out.* | "$program" --report
}

# The costs that follow a line of calls are those of what is called.
tell_roads() {
    "$program" --roads | awk '
        NR == FNR { laps[substr($0, index($0, " ") + 1)] = $1; next }
        FNR == 1 { delete object; delete called; name = "" }
        /^desc: Trigger: Client Request: / { sub(/^desc: Trigger: Client Request: /, ""); name = $0; delete cost; delete calls; total = 0 }
        name == "" { next }
        /^c?ob=/ { id = $1; sub(/^c?ob=/, "", id); if (NF > 1) object[id] = $2; if (/^ob/) in_object = id; next }
        /^c?fn=/ { id = $1; sub(/^c?fn=/, "", id); if (NF > 1) called[id] = $2; to = id; next }
        /^calls=/ { sub(/^calls=/, ""); calls[called[to]] += $1; passed_on = 1; next }
        /^[0-9+*-]/ { if (!passed_on) { cost[object[in_object]] += $2; total += $2 } passed_on = 0; next }
        /^totals: / {
            printf "%-26s %14.0f instructions, per lap:", name, total / laps[name]
            for (o in cost) {
                share = 100 * cost[o] / total
                short = o; sub(/.*\//, "", short); sub(/\.so.*/, "", short)
                if (share >= 0.5) printf "  %s %.0f %%", short, share
            }
            printf "\n%26s", ""
            split("malloc realloc open64 read lua_pushcclosure lua_pushlstring lua_pushstring lua_pcall", wanted, " ")
            for (w = 1; w in wanted; ++w)
                printf " %s %.1f", wanted[w], calls[wanted[w]] / laps[name]
            printf "\n"
            name = ""
        }' - "$folder"/out.*
}

[[ ! ${1:-} =~ ^--(instructions|roads)$ ]] || need valgrind
build "$preset" quor_bench >&2
case ${1:-} in
--instructions)
    count_ways --list
    tell_ways
    ;;
--roads)
    count_ways --roads
    tell_roads
    ;;
*) "$program" "$@" ;;
esac
