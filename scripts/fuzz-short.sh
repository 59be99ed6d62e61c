## fuzz-short [S]     fuzzes each target for S seconds (8); the last line sums them
source scripts/fuzzing.sh
source scripts/programs.sh

build_targets
for target in "${targets[@]}"; do
    log=build/fuzz/$target.log
    count_run "fuzzing of $target; the case lies in build/fuzz" "$log" fuzz_target "$target" -max_total_time="${1:-8}"
    say "$target: $(told "$log")"
done
tell_runs
