## coverage           tells which branches of the library the tests take; fails where they are fewer than they must be
need gcovr

# threshold PERCENT FOLDER-OR-FILE...: what must be reached in each file there.
complete=(glib/ marshal/ scriptor/loading.cpp platform/QuorPureScriptor/src/load.cpp)
whole=95

build coverage
find build/coverage -name '*.gcda' -delete
ctest --preset coverage --parallel "$(nproc)" --output-on-failure | tail -n 5
table=build/coverage/coverage.csv
# A branch that only an exception takes leads to destructors and out: the allocation walks of the tests, not these
# figures, tell about those.
gcovr --root . --object-directory build/coverage --exclude-throw-branches --exclude-unreachable-branches \
    --filter '(config|glib|include|marshal|messages|platform|scriptor)/' --csv "$table" build/coverage >/dev/null

columns() { awk -F, -v OFS=, 'NR > 1 { print $1, $2, $3, $5, $6 }' "$table"; }
columns | awk -F, '{ printf "%-60s %5d lines %5d missed   %4d branches %4d missed\n", $1, $2, $2 - $3, $4, $4 - $5 }'
columns | awk -F, -v list="${complete[*]}" -v whole="$whole" '
    BEGIN { count = split(list, wanted, " ") }
    $1 !~ /^platform\// { lines += $2; seen += $3; branches += $4; taken += $5 }
    {
        for (i = 1; i <= count; ++i)
            if (index($1, wanted[i]) == 1) { if ($5 < $4) { print "not all branches: " $1; ++failed } else ++passed }
    }
    END {
        share = branches ? 100 * taken / branches : 0
        printf "library: %d of %d lines, %d of %d branches, %.1f %%\n", seen, lines, taken, branches, share
        share < whole ? ++failed : ++passed
        printf "%d passed, %d failed\n", passed, failed
        exit failed != 0
    }'
