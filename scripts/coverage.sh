## coverage           tells which branches of the library the tests take; fails where they are fewer than they must be
need gcovr

# What must be reached, per cent of the branches: the last figures. A change may raise them.
kept='glib/=94 marshal/=93 scriptor/loading.cpp=97 platform/QuorPureScriptor/src/load.cpp=100 library=92'

source scripts/programs.sh

# Each program once: a process for each test would spend its time in writing what it counted.
programs=$(build_programs coverage)
find build/coverage -name '*.gcda' -delete
broken=0
for program in $programs; do
    # Counting exports symbols of its own, which the tests of the project's exports find.
    [[ $program != test_project ]] || continue
    GTEST_BRIEF=1 build/coverage/bin/"$program" >build/coverage/run.log 2>&1 || {
        tail -n 40 build/coverage/run.log
        broken=$((broken + 1))
    }
done
table=build/coverage/coverage.csv
# A branch that only an exception takes leads to destructors and out: the allocation walks of the tests, not these
# figures, tell about those. That a handler does not fit what was thrown is one more of them: nothing is thrown here
# that is no std::exception.
gcovr --root . --object-directory build/coverage --exclude-throw-branches --exclude-unreachable-branches \
    --exclude-branches-by-pattern '.*catch \(const std::exception&\).*' \
    --filter '(config|glib|include|marshal|messages|platform|scriptor)/' --csv "$table" build/coverage/{config,glib,marshal,platform,scriptor} >/dev/null

awk -F, -v kept="$kept" -v failed="$broken" '
    function add(part) { branches[part] += $5; taken[part] += $6 }
    NR == 1 { next }
    {
        printf "%-60s %5d lines %5d missed   %4d branches %4d missed\n", $1, $2, $2 - $3, $5, $5 - $6
        if ($1 !~ /^platform\//) add("library")
        add($1)
        add(substr($1, 1, index($1, "/")))
    }
    END {
        count = split(kept, wanted, " ")
        for (i = 1; i <= count; ++i) {
            split(wanted[i], pair, "=")
            share = branches[pair[1]] ? 100 * taken[pair[1]] / branches[pair[1]] : 0
            printf "%-60s %d of %d branches, %.1f %%, kept %d %%\n", pair[1], taken[pair[1]], branches[pair[1]], share, pair[2]
            share < pair[2] ? ++failed : ++passed
        }
        printf "%d passed, %d failed\n", passed, failed
        exit failed != 0
    }' "$table"
