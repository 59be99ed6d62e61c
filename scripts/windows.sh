## windows            builds for Windows and runs all tests under Wine; fails where they are not those of Linux
source scripts/windows-libraries.sh

programs=$PWD/build/mingw/bin
reports=$PWD/build/mingw/reports

# The system that the programs run on: Chinese, so that the ANSI code page is 936.
export WINEPREFIX=$PWD/build/windows/wine WINEDEBUG=-all LOCPATH=$PWD/build/windows/locales LC_ALL=zh_CN.UTF-8

start_wine() {
    [[ -d $LOCPATH/$LC_ALL ]] || { mkdir -p "$LOCPATH" && localedef -i zh_CN -f UTF-8 "$LOCPATH/$LC_ALL"; }
    mkdir -p "$WINEPREFIX"
    # One server for all programs, instead of one started for each.
    wineserver -p
    trap 'wineserver -k' EXIT
    # The services that the first program starts stay: they must not hold a pipe that somebody reads to its end.
    DISPLAY='' WINEDLLOVERRIDES='mscoree,mshtml=' wineboot </dev/null >"$WINEPREFIX/start.log" 2>&1
}

# names_on_windows: every test that was run, from the reports of the programs and that of CTest.
names_on_windows() {
    sed -n 's/.*<testcase name="\([^"]*\)".* classname="\([^"]*\)".*/\2.\1/p' "$reports"/*.xml
    sed -n 's/.*<testcase name="\([^"]*\)".*/\1/p' build/mingw/tests.xml | grep -v '^program\.'
}

# CTest calls the tests of the first type of a suite NAME.test<0>, the program itself NAME/0.test.
names_on_linux() {
    ctest --preset dev -N | sed -n 's/^ *Test *#[0-9]*: \(.*\)$/\1/p' | sed 's|^\([^.]*\)\.\(.*\)<\([0-9]*\)>$|\1/\3.\2|'
}

passed=0 failed=0 skipped=0
# check WHAT COMMAND...: one thing more that passes or fails.
check() {
    if "${@:2}"; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        say "failed: $1"
    fi
}

no_others() { [[ -z $(LC_ALL=C comm -13 <(names_on_linux | LC_ALL=C sort) <(names_on_windows | LC_ALL=C sort) | tee /dev/stderr) ]]; }

# left_out: the tests that were skipped, and those that are not there.
left_out() {
    sed -n 's/.*<testcase name="\([^"]*\)".* result="skipped".* classname="\([^"]*\)".*/\2.\1/p' "$reports"/*.xml
    LC_ALL=C comm -23 <(names_on_linux | LC_ALL=C sort) <(names_on_windows | LC_ALL=C sort)
}

# Only what Windows cannot do is left out: the kept list says what and why.
only_listed_left_out() {
    diff <(sed -n 's/^\([^ ]*\): .*/\1/p' tests/windows/left_out.txt | LC_ALL=C sort) <(left_out | LC_ALL=C sort) >&2
}

# What is imported is the system's, Lua's, or our own: nothing of the compiler's.
imports_are_ours() {
    local file library imports strangers=0
    for file in "$programs"/Quor*.dll "$programs"/{BaseObj,KxGeBasic,lua51}.dll "$programs/quor.exe"; do
        imports=$(x86_64-w64-mingw32-objdump -p "$file" | sed -n 's/.*DLL Name: //p') || return
        [[ $imports == *KERNEL32.dll* ]] || return # every file there takes something from it
        for library in $imports; do
            case ${library,,} in
            kernel32.dll | msvcrt.dll | user32.dll | advapi32.dll | shell32.dll | lua51.dll) ;;
            quor*.dll | baseobj.dll | kxgebasic.dll) ;;
            *) say "$(basename "$file") needs $library" && strangers=1 ;;
            esac
        done
    done
    [[ $strangers == 0 ]]
}

# version_is_told FILE: its resource names the version that the header has, in words and as numbers: behind the
# signature and the structure's own version the file's, then the product's, the major number in an upper half.
version_is_told() {
    local major minor patch at
    read -r major minor patch < <(
        sed -n 's/^#define QUORSCRIPTOR_VERSION_[MP][A-Z]* \([0-9]*\)$/\1/p' include/QuorScriptor/version.h | xargs)
    [[ -n $patch ]] || return
    strings -el "$1" | grep -A 1 -x ProductVersion | grep -qx "$major.$minor.$patch" || return
    at=$(LC_ALL=C grep -obUaP '\xBD\x04\xEF\xFE\x00\x00\x01\x00' "$1" | LC_ALL=C cut -d: -f1) || return
    [[ $(od -An -v -tu2 -j $((at + 8)) -N 16 -w16 "$1" | xargs) == \
        "$minor $major 0 $patch $minor $major 0 $patch" ]]
}

# same_drawing SCRIPT: the command's JSON is the same on both systems, to the byte.
same_drawing() {
    local installation=$PWD/sample/installation project=$PWD/sample/project scene=$PWD/sample/project/scenes/isometric.json
    local options=(--quiet --format json --scene)
    local here=build/mingw/linux.json there=build/mingw/windows.json
    rm -f "$here" "$there"
    QUOR_INSTALLATION=$installation QUOR_PROJECT=$project \
        build/dev/bin/quor draw "$1" "${options[@]}" "$scene" -o "$here" || return
    QUOR_INSTALLATION=Z:$installation QUOR_PROJECT=Z:$project \
        wine "$programs/quor.exe" draw "$1" "${options[@]}" "Z:$scene" -o "$there" || return
    cmp "$here" "$there"
}

# The package, moved from where it was laid out, serves a program that is built against it, and the command.
package_serves() {
    local first=$PWD/build/mingw/package moved=$PWD/build/mingw/moved consumer=$PWD/build/mingw/consumer
    rm -rf "$first" "$moved" "$consumer"
    cmake --install build/mingw --prefix "$first" >"$reports/install.log" && mv "$first" "$moved" || return
    cmake -S tests/package/consumer -B "$consumer" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw.cmake" \
        -DQuorScriptor_DIR="$moved/lib/cmake/QuorScriptor" >"$reports/consumer.log" 2>&1 &&
        cmake --build "$consumer" >>"$reports/consumer.log" 2>&1 || { cat "$reports/consumer.log" >&2 && return 1; }
    WINEPATH="Z:$moved/bin" wine "$consumer/draw.exe" "Z:$PWD/tests/package/consumer/pipe.lua" reference || return
    wine "$moved/bin/quor.exe" --version | grep -q '^quor [0-9]'
}

build dev
windows_libraries
build mingw
start_wine

rm -rf "$reports" build/mingw/tests.xml
ctest --preset mingw --parallel "$(nproc)" --output-junit "$PWD/build/mingw/tests.xml" || true
if [[ ! -s build/mingw/tests.xml ]] || ! ls "$reports"/*.xml >/dev/null 2>&1; then
    say 'the tests did not run under Wine'
    echo '0 passed, 1 failed'
    exit 1
fi
missing=$(LC_ALL=C comm -23 <(names_on_linux | LC_ALL=C sort) <(names_on_windows | LC_ALL=C sort) | wc -l)
add_programs mingw
check 'no test is there that Linux has not' no_others
check 'only what Windows cannot do is left out' only_listed_left_out
check 'the package serves' package_serves
check 'only DLLs of the system and our own are needed' imports_are_ours
for library in QuorScriptor BaseObj KxGeBasic QuorCommon QuorMsgHandle QuorPrimary QuorPureScriptor; do
    check "$library.dll tells its version" version_is_told "$programs/$library.dll"
done
check 'quor.exe tells its version' version_is_told "$programs/quor.exe"
for script in sample/project/components/*.lua; do
    check "$script is drawn as on Linux" same_drawing "$script"
done
printf '%d skipped, %d not there\n' "$skipped" "$missing"
printf '%d passed, %d failed\n' "$passed" "$failed"
[[ $failed == 0 && $passed != 0 ]]
