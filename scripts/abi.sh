## abi [--accept]     compares the libraries' binary interfaces with those kept in abi/, or keeps them as they are now

# abi/LIBRARY.abi is the interface as it was at the version in abi/VERSION. One that differs needs a higher version: a
# minor one when something was only added, a major one when anything else changed.
libraries=(KxGeBasic BaseObj QuorCommon QuorMsgHandle QuorPureScriptor QuorPrimary QuorScriptor)
version_header=include/QuorScriptor/version.h

# version_part NAME: one number of today's version.
version_part() { sed -n "s/^#define QUORSCRIPTOR_VERSION_$1 \([0-9][0-9]*\)\$/\1/p" "$version_header"; }

# Source places, parameters' names and folders say nothing about the binary interface.
write_interface() {
    local headers=() folder
    for folder in include platform/include platform/*/include; do headers+=(--headers-dir "$folder"); done
    abidw --no-show-locs --no-comp-dir-path --no-corpus-path --no-parameter-names --no-elf-needed \
        --exported-interfaces-only --type-id-style hash --suppressions abi/types.abignore \
        "${headers[@]}" --drop-private-types "build/abi/lib/lib$1.so" | sed -E "s/ path='([^']*\/)?/ path='/"
}

# check_interface LIBRARY: prints a line, and the differences when there are any; fails when the version does not allow
# them.
check_interface() {
    local kept=abi/$1.abi now=build/abi/$1.abi status=0 wanted
    abidiff "$kept" "$now" >"$now.diff" 2>&1 || status=$?
    if [[ $status == 0 ]]; then
        printf '%-18s unchanged\n' "$1"
        return 0
    fi
    cat "$now.diff"
    if ((status & 3)); then
        printf '%-18s cannot be compared\n' "$1"
        return 1
    fi
    # Without the symbols that were added, is anything left?
    if abidiff --no-added-syms "$kept" "$now" >/dev/null 2>&1; then
        wanted=minor
        ((major > kept_major || (major == kept_major && minor > kept_minor))) && wanted=
    else
        wanted=major
        ((major > kept_major)) && wanted=
    fi
    if [[ -z $wanted ]]; then
        printf '%-18s changed, as version %s may\n' "$1" "$version"
        return 0
    fi
    printf '%-18s changed since %s: version %s wants a higher %s number in %s\n' \
        "$1" "$(<abi/VERSION)" "$version" "$wanted" "$version_header"
    return 1
}

need abigail-tools
build abi "${libraries[@]}" >&2
major=$(version_part MAJOR) minor=$(version_part MINOR) version=$major.$minor.$(version_part PATCH)

if [[ ${1:-} == --accept ]]; then
    for library in "${libraries[@]}"; do write_interface "$library" >"abi/$library.abi"; done
    printf '%s\n' "$version" >abi/VERSION
    printf 'abi/ holds the interfaces of version %s\n' "$version"
else
    IFS=. read -r kept_major kept_minor _ <abi/VERSION
    passed=0 failed=0
    for library in "${libraries[@]}"; do
        write_interface "$library" >"build/abi/$library.abi"
        if check_interface "$library"; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
    done
    printf '%d passed, %d failed\n' "$passed" "$failed"
    [[ $failed == 0 ]]
fi
