## stacks [KB...]     runs each test program on a stack of 1024 KB and of 8192 KB, the library's on 256 KB as well, or on
##                    those named
source scripts/programs.sh

# The command is a program with a stack of its own choice, and it is not made for a small one.
of_the_command=' test_quor test_call test_config_command test_language test_samples '

# on_stack KILOBYTES PROGRAM: the limit is the first thread's stack, and what further threads get.
on_stack() {
    (ulimit -S -s "$1" && GTEST_BRIEF=1 exec "build/dev/bin/$2")
}

programs=$(build_programs dev)
sizes=("$@")
[[ $# -gt 0 ]] || sizes=(256 1024 8192)
for size in "${sizes[@]}"; do
    for program in $programs; do
        [[ $size -ge 1024 || $of_the_command != *" $program "* ]] || continue
        count_run "$program on a stack of $size KB" build/dev/stacks.log on_stack "$size" "$program"
    done
done
tell_runs
