## soak [CYCLES]      loads, calls, fails and reloads 1000000 times in one process, which must not grow
build dev soak
build/dev/bin/soak "$@"
