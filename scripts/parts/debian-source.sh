# Debian's source packages, as the entries of the system's package lists offer them. Sourced by words of `dev`, which
# say where the lists and what is downloaded lie: in $source_prefix.

# Lists of packages of our own, in which the entries of the system offer their sources too; the system's stay as
# they are.
source_lists() {
    local lists=$1 file
    mkdir -p "$lists/parts" "$lists/state/partial" "$lists/cache/archives/partial"
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [[ ! -f $file ]] || sed -n 's/^deb\(-src\)\{0,1\}[[:space:]]/deb-src /p' "$file" \
            >"$lists/parts/$(basename "$file" .list).list"
    done
    for file in /etc/apt/sources.list.d/*.sources; do
        [[ ! -f $file ]] || sed 's/^Types:.*/Types: deb-src/' "$file" >"$lists/parts/$(basename "$file")"
    done
}

# debian_source PACKAGE FOLDER: the newest source of a package, unpacked with Debian's patches as FOLDER.
debian_source() (
    local lists=$source_prefix/apt
    local own=(-o "Dir::Etc::sourcelist=/dev/null" -o "Dir::Etc::sourceparts=$lists/parts"
        -o "Dir::State::lists=$lists/state" -o "Dir::Cache=$lists/cache" -o "APT::Sandbox::User=$(id -un)")
    if [[ ! -f $lists/fresh ]]; then
        rm -rf "$lists"
        source_lists "$lists"
        if apt-get "${own[@]}" update -q >&2; then
            touch "$lists/fresh"
        else
            say "the lists of sources are not complete; trying with those that are there"
        fi
    fi
    rm -rf "$source_prefix/download" "$2"
    mkdir -p "$source_prefix/download" "$(dirname "$2")"
    cd "$source_prefix/download"
    apt-get "${own[@]}" source -q --only-source "$1" >&2
    mv -- */ "$2"
)
