#!/usr/bin/env bash
# check.sh FOLDER OBJECT...: lists what the objects call outside guarded code that may raise a Lua error, and fails
# where that is not what FOLDER/allowed.txt says.
#
# Outside guarded code is what can be reached by calls from a function that others may call: one that is visible
# outside its library, one whose address lies in a table, or one whose address is handed to anything but a protected
# call. The functions that scripts call count as outside too. lua_api.txt has the calls of Lua; FOLDER/raising.txt
# those of ours that are defined to raise: they are not entered, and count as calls of Lua do.
set -euo pipefail
export LC_ALL=C

lists=$1
here=$(dirname "${BASH_SOURCE[0]}")
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

entries() { grep -v '^#' "$1" || true; }

for object in "$@"; do
    echo "object $object"
    "${READELF:-readelf}" -s -r -W "$object"
    "${OBJDUMP:-objdump}" -dr --no-show-raw-insn "$object"
done | awk -f "$here/edges.awk" | "${CXXFILT:-c++filt}" |
    sed 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g' >"$work/edges"

awk -F '\t' -f "$here/reach.awk" "$here/lua_api.txt" "$lists/raising.txt" "$work/edges" | sort >"$work/uses"
entries "$lists/allowed.txt" | cut -f 1-3 | sort >"$work/allowed"
cut -f 1-3 "$work/uses" >"$work/found"
comm -13 "$work/allowed" "$work/found" >"$work/new"
comm -23 "$work/allowed" "$work/found" >"$work/gone"
while IFS= read -r line; do
    printf 'outside guarded code: %s\n' "$line"
    awk -F '\t' -v line="$line" '$1 "\t" $2 "\t" $3 == line { print "    by way of " $4 }' "$work/uses"
done <"$work/new"
sed 's/^/no longer so, but in allowed.txt: /' "$work/gone"
printf '%d calls outside guarded code, %d functions\n' "$(awk -F '\t' '{ n += $3 } END { print n + 0 }' "$work/uses")" \
    "$(grep -c '^function' "$work/edges")"
[[ ! -s $work/new && ! -s $work/gone ]]
