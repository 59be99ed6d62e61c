# Objects, as readelf and objdump print them, to lines of a graph, with tabs between:
#   function NAME                 one that is defined
#   root NAME WHY                 one that is visible, or whose address lies in a table
#   call CALLER CALLEE
#   taken TAKER NAME CONSUMER     an address is taken and handed to CONSUMER: the next function that is called, or
#                                 "the guard" where it is the function that the template of the guard hands over
# Names stay mangled; those of local functions get their object's number, which tells them apart.

function canonical(name) {
    if ((object, name) in localName) name = localName[object, name]
    return name in alias ? alias[name] : name
}

# The function that a relocation names, by itself or by the section that it has for itself.
function target(text,    name) {
    name = text
    sub(/[-+]0x[0-9a-f]+$/, "", name)
    if ((object, name) in inSection) return inSection[object, name]
    return canonical(name)
}

function dropPending(consumer,    i) {
    for (i = 1; i <= pending; ++i)
        print "taken\t" current "\t" taken[i] "\t" (taken[i] ~ /^_ZZN7quorlua5guard6detail6taskOfI.*_4_FUNE/ ? "the guard" : consumer)
    pending = 0
}

/^object / { ++object; part = ""; next }
/^Symbol table / { part = "symbols"; next }
/^Relocation section / {
    part = "tables"
    isTable = $3 ~ /^'\.rela?\.(data|rodata|init_array|fini_array|tdata)/
    next
}
/^Disassembly of section / {
    part = "code"
    section = $4
    sub(/:$/, "", section)
    next
}

part == "symbols" && $4 == "FUNC" && $7 != "UND" {
    name = $8
    if ($5 == "LOCAL") name = localName[object, $8] = $8 "@" object
    place = object SUBSEP $7 SUBSEP $2
    if (!(place in atPlace)) {
        atPlace[place] = name
        isFunction[name] = 1
        sectionName = ".text." $8
        inSection[object, sectionName] = name
        print "function\t" name
    } else if (!(name in alias) && atPlace[place] != name) {
        alias[name] = atPlace[place]
    }
    if ($5 != "LOCAL" && $6 == "DEFAULT") print "root\t" canonical(name) "\tvisible"
    next
}

part == "tables" && isTable && $3 ~ /^R_/ { data[++entries] = object SUBSEP $5; next }

part == "code" && /^[0-9a-f]+ <.*>:$/ {
    if (current != "") dropPending("nothing")
    name = $2
    gsub(/^<|>:$/, "", name)
    current = canonical(name)
    next
}
part == "code" && /^[ \t]*[0-9a-f]+:[ \t]+R_X86_64_/ {
    name = target($3)
    if (mnemonic ~ /^(call|jmp|notrack)/) {
        dropPending(name)
        print "call\t" current "\t" name
    } else if (name in isFunction || name ~ /^luaL?_|^luaopen_/) {
        taken[++pending] = name
    }
    next
}
part == "code" && /^[ \t]*[0-9a-f]+:/ {
    mnemonic = $2
    if (mnemonic ~ /^call/ && $3 ~ /^\*/ && $0 !~ /rip/) dropPending("a pointer")
}

END {
    if (current != "") dropPending("nothing")
    for (i = 1; i <= entries; ++i) {
        split(data[i], entry, SUBSEP)
        object = entry[1]
        name = target(entry[2])
        if (name in isFunction) print "root\t" name "\ttable"
    }
}
