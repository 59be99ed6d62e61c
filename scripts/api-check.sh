## api-check          runs all tests on a Lua that checks how its API is used, built from Debian's source package
# That Lua takes the place of the packaged one, whose name it has, when the programs of the dev build start.
source scripts/parts/debian-source.sh

source_prefix=$PWD/build/lua-api-check

# A misuse of the API ends the process by an assertion, and so does a state that its own rules do not allow.
build_checking_lua() {
    local source=$source_prefix/source objects=$source_prefix/objects file
    [[ -d $source ]] || debian_source lua5.1 "$source"
    mkdir -p "$objects" "$source_prefix/lib"
    # The two values that lua_cpcall pushes itself are not counted: every stack has EXTRA_STACK slots for them, and the
    # manual asks for none. Guarded operations rely on that where a caller's frame is full.
    sed -i '/^static void f_Ccall/,/^}/s/api_incr_top(L);/L->top++;/' "$source/src/lapi.c"
    for file in "$source"/src/*.c; do
        case $(basename "$file") in
        lua.c | luac.c | print.c) ;; # the programs, not the library
        *) gcc -O1 -g -fPIC -DLUA_USE_LINUX -DLUA_USE_APICHECK -include assert.h -Dlua_assert=assert \
            -c "$file" -o "$objects/$(basename "$file" .c).o" ;;
        esac
    done
    gcc -shared -Wl,-soname,liblua5.1.so.0 "-Wl,--version-script=$source/debian/version-script" -o "$source_prefix/lib/liblua5.1.so.0" "$objects"/*.o -lm -ldl
}

# Whether the library that programs find there ends one that takes more off the stack than is on it.
does_check() {
    local misuse=$source_prefix/misuse
    # shellcheck disable=SC2046 # words of the compiler's
    gcc -x c -o "$misuse" - $(pkg-config --cflags --libs lua5.1) <<<'#include <lauxlib.h>
        int main(void) { lua_State* L = luaL_newstate(); lua_settop(L, -3); return 0; }'
    "$misuse" || return 1 # the packaged one does not check
    ! LD_LIBRARY_PATH=$source_prefix/lib "$misuse" 2>/dev/null
}

need dpkg-dev "${build_packages[@]}"
[[ -f $source_prefix/lib/liblua5.1.so.0 ]] || { say 'builds a Lua that checks' && build_checking_lua; }
does_check || { say 'the Lua in build/lua-api-check does not check' && exit 1; }
build dev
report=$PWD/build/lua-api-check/tests.xml run=0
rm -f "$report"
ctest --preset api-check --parallel "$(nproc)" --output-junit "$report" || run=$?
[[ -s $report ]] || { say 'the tests did not run' && exit 1; }
failed=$(count failures "$report") idle=$(($(count disabled "$report") + $(count skipped "$report")))
[[ $idle == 0 ]] || printf '%d skipped or disabled\n' "$idle"
printf '%d passed, %d failed\n' $(($(count tests "$report") - failed - idle)) "$failed"
[[ $failed == 0 && $run == 0 ]]
