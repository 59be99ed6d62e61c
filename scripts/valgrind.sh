## valgrind [all]     runs the library's test programs under memcheck; with `all`, also those that take long
source scripts/programs.sh
need valgrind

# Programs that start the command and others, which are not what is tested here.
left_out=' test_quor test_call test_config_command test_command_limits test_language test_samples test_project '
# Minutes each.
slow=' test_glib test_primary test_threads test_serializer test_serializer_memory test_config_memory '

programs=$(build_programs dev)
# Blocks that nothing points to any more are leaks. A program's own `operator new` stays in its place.
memcheck() {
    GTEST_BRIEF=1 valgrind --quiet --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite \
        --show-leak-kinds=definite --soname-synonyms=somalloc=nouserintercepts "build/dev/bin/$1"
}

for program in $programs; do
    [[ $left_out != *" $program "* ]] || continue
    [[ $slow != *" $program "* || ${1:-} == all ]] || continue
    count_run "$program under memcheck" build/dev/valgrind.log memcheck "$program"
done
tell_runs
