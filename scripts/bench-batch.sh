## bench-batch [N]    draws N sizes (default 500) of every sample component by one thread and by two: components per
##                    second, and the processor time of each
# Runs of one thread and of two take turns, and the best of each counts: what disturbs a run only makes it longer. The
# results go to memory, else a folder's lock would be measured as well; QUOR_BENCH_FOLDER names another place.
sizes=${1:-500} rounds=7
if [[ -z ${QUOR_BENCH_COMMAND:-} ]]; then
    build release quor
    QUOR_BENCH_COMMAND=$PWD/build/release/bin/quor
fi
place=${QUOR_BENCH_FOLDER:-/dev/shm}
[[ -d $place ]] || place=/tmp
folder=$(mktemp -d -p "$place")
trap 'rm -rf "$folder"' EXIT

for ((size = 0; size < sizes; ++size)); do
    for component in gate_valve elbow_90 reducer tee support control_valve_iso; do
        scene=
        [[ $component != control_valve_iso ]] || scene=',"scene":"isometric.json"'
        printf '{"script":"%s.lua","parameters":{"P1":%d}%s,"output":"%s/out/%s.%d.json"}\n' \
            "$component" $((60 + size)) "$scene" "$folder" "$component" "$size"
    done
done >"$folder/jobs.jsonl"

# draw THREADS: adds a line "real user system" to the times of that many threads.
draw() {
    local TIMEFORMAT='%3R %3U %3S'
    { time QUOR_INSTALLATION=$PWD/sample/installation QUOR_PROJECT=$PWD/sample/project \
        "$QUOR_BENCH_COMMAND" batch "$folder/jobs.jsonl" --threads "$1" --force --quiet; } 2>>"$folder/times.$1"
}
for ((round = 0; round < rounds; ++round)); do
    draw 1
    draw 2
done
awk -v jobs=$((sizes * 6)) '
    FNR == 1 { ++threads }
    { cpu = $2 + $3 }
    FNR == 1 || $1 < wall[threads] { wall[threads] = $1 }
    FNR == 1 || cpu < best[threads] { best[threads] = cpu }
    END {
        for (n = 1; n <= 2; ++n)
            printf "%d thread%s: %.0f components per second, %.0f us of processor time each\n",
                n, n == 1 ? "" : "s", jobs / wall[n], 1e6 * best[n] / jobs
        printf "two threads against one: %.2f times as many per second, %.3f of the processor time each\n",
            wall[1] / wall[2], best[2] / best[1]
    }' "$folder/times.1" "$folder/times.2"
