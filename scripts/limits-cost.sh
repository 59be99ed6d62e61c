## limits-cost [N]    tells what the limits for scripts cost in processor time, the least of N runs each (5)
build release quor

# seconds FUNCTION OPTION...: the processor's time of one run.
seconds() {
    local TIMEFORMAT=%U
    { time build/release/bin/quor call bench/limits.lua "$1" '>d' --quiet "${@:2}" >/dev/null 2>&1; } 2>&1
}

declare -A ways=([none]='--time-limit 0 --memory-limit 0' [time]='--memory-limit 0' [memory]='--time-limit 0' [both]='')
printf '%-12s %10s %10s %10s %10s\n' loop none time memory both
for function in arithmetic tables strings; do
    declare -A least=()
    # Repetitions go round, so that a slow minute of the machine slows all ways.
    for ((repetition = 0; repetition < ${1:-5}; ++repetition)); do
        for way in "${!ways[@]}"; do
            # shellcheck disable=SC2086
            spent=$(seconds "$function" ${ways[$way]})
            least[$way]=$(printf '%s\n' "$spent" "${least[$way]:-$spent}" | sort -g | head -n 1)
        done
    done
    printf '%-12s %8.2f s' "$function" "${least[none]}"
    for way in time memory both; do
        awk -v with="${least[$way]}" -v without="${least[none]}" 'BEGIN { printf " %+9.0f%%", 100 * (with / without - 1) }'
    done
    printf '\n'
done
