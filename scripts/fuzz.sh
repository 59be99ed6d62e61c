## fuzz [TARGET [S]]  fuzzes a target for S seconds (60), then looks for leaks in what it found; lists the targets
source scripts/fuzzing.sh

if [[ $# == 0 ]]; then
    printf '%s\n' "${targets[@]}"
    exit 0
fi
[[ " ${targets[*]} " == *" $1 "* ]] || { say "no target \"$1\"; there are ${targets[*]}" && exit 2; }
build_targets
fuzz_target "$1" -max_total_time="${2:-60}" 2>&1 | tee "build/fuzz/$1.log"
fuzz_target "$1" -runs=0 -detect_leaks=1 >"build/fuzz/$1-leaks.log" 2>&1 || { cat "build/fuzz/$1-leaks.log" && exit 1; }
printf '%s: ' "$1"
told "build/fuzz/$1.log"
