## stacks             runs each test program on a stack of 1 MB and of 8 MB, the library's on 256 KB as well
source scripts/programs.sh

# The command is a program with a stack of its own choice, and it is not made for a small one.
of_the_command=' test_quor test_call test_config_command test_language test_samples '

# on_stack KILOBYTES PROGRAM: the limit is the first thread's stack, and what further threads get.
on_stack() {
    (ulimit -S -s "$1" && GTEST_BRIEF=1 exec "build/dev/bin/$2")
}

programs=$(build_programs dev)
for size in 256 1024 8192; do
    for program in $programs; do
        [[ $size != 256 || $of_the_command != *" $program "* ]] || continue
        count_run "$program on a stack of $size KB" build/dev/stacks.log on_stack "$size" "$program"
    done
done
tell_runs
