# The calls of Lua, the operations of ours that are defined to raise, and the graph of edges.awk, to what is used
# outside guarded code: CALLER, CALLEE, how often, and the way to CALLER, with tabs between.

function plain(name) {
    sub(/@[0-9]+$/, "", name)
    return name
}

# As it stands in a list: without what makes names of templates long.
function short(name) {
    name = plain(name)
    gsub(/\(anonymous namespace\)::/, "", name)
    if (length(name) > 110) sub(/<.*/, "<...>", name)
    return name
}

# A function by its whole name, or all of one name.
function isDefinedToRaise(name) {
    name = plain(name)
    if (!(name in raises)) {
        sub(/\(.*/, "", name)
        if (!(name in raises)) return 0
    }
    isKnown[name] = 1
    return 1
}


function reach(name, from) {
    if (name in way || !(name in isDefined) || isDefinedToRaise(name)) return
    way[name] = from == "" ? short(name) : way[from] " -> " short(name)
    queue[++last] = name
}

function use(caller, callee,    entry) {
    entry = short(caller) "\t" short(callee)
    ++uses[entry]
    wayTo[entry] = way[caller]
}

FILENAME == ARGV[1] {
    if ($0 !~ /^#/) errorClass[$1] = $2
    next
}
FILENAME == ARGV[2] {
    if ($0 !~ /^#/) raises[$1] = 1
    next
}
$1 == "function" { isDefined[$2] = 1; next }
$1 == "root" { isRoot[$2] = 1; next }
$1 == "call" {
    isUsed[$3] = 1
    callees[$2] = callees[$2] "\t" $3
    next
}
$1 == "taken" {
    isUsed[$3] = 1
    # Lua's own protected call, those of ours that are made of it, and the guard's template.
    if ($4 == "lua_cpcall" || $4 ~ /^lua_tinker::detail::runReported\(/ ||
        $4 ~ /^(quorlua::guard|lua_tinker::detail)::\(anonymous namespace\)::callTwice\(/ || $4 == "the guard") next
    isRoot[$3] = 1
}

END {
    for (name in isDefined)
        if (name in isRoot || !(name in isUsed)) reach(name, "")
    for (at = 1; at <= last; ++at) {
        count = split(callees[queue[at]], names, "\t")
        for (i = 2; i <= count; ++i) {
            name = names[i]
            if (name ~ /^lua(L|open)?_[A-Za-z0-9_]+$/) {
                if (!(name in errorClass)) print "lua_api.txt has no\t" name "\t0\t"
                else if (errorClass[name] != "-") use(queue[at], name)
            } else if (isDefinedToRaise(name)) {
                use(queue[at], name)
            } else {
                reach(name, queue[at])
            }
        }
    }
    for (name in raises)
        if (!(name in isKnown)) print "raising.txt names no function:\t" name "\t0\t"
    for (entry in uses) print entry "\t" uses[entry] "\t" wayTo[entry]
}
