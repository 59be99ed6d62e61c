## stack-use          tells how much of a thread's stack scripts take that recurse in the interpreter's own code
build dev stack_use
build/dev/bin/stack_use
