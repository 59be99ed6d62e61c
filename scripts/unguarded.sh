## unguarded          lists what the library calls of Lua outside guarded code, and fails where the kept list differs
# The check is part of the tests too; the list is tests/layers/guarded_calls/allowed.txt.
build dev guarded_calls guarded_calls_sample
ctest --test-dir build/dev -R '^GuardedCalls\.' --verbose
