## fuzz-short [S]     fuzzes each target for S seconds (8); the last line sums them
source scripts/fuzzing.sh

build_targets
passed=0 failed=0
for target in "${targets[@]}"; do
    if fuzz_target "$target" -max_total_time="${1:-8}" >"build/fuzz/$target.log" 2>&1; then
        passed=$((passed + 1))
        say "$target: $(told "build/fuzz/$target.log")"
    else
        failed=$((failed + 1))
        tail -n 60 "build/fuzz/$target.log"
        say "$target: a case failed; it lies in build/fuzz"
    fi
done
printf '%d passed, %d failed\n' "$passed" "$failed"
[[ $failed == 0 ]]
