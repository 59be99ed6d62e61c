## package            builds, installs and moves the package, and builds programs against it; the last line sums up
# Shared and static, by CMake and by pkg-config, with the host's libraries of the package and with others.

package_work=$PWD/build/package
package_tests=$PWD/tests/package
package_libraries=(KxGeBasic BaseObj QuorCommon QuorMsgHandle QuorPureScriptor QuorPrimary QuorScriptor)
package_passed=0
package_failed=0

# package_check NAME COMMAND...: what the command says is shown when it fails. It runs in a shell of its own that ends
# at the first failure, which it would not do as a condition.
package_check() {
    local name=$1 status=0
    shift
    set +e
    (
        set -e
        "$@"
    ) >"$package_work/log" 2>&1
    status=$?
    set -e
    if [[ $status == 0 ]]; then
        package_passed=$((package_passed + 1))
    else
        cat "$package_work/log"
        say "failed: $name"
        package_failed=$((package_failed + 1))
    fi
}

package_prefix() { printf '%s' "$package_work/moved/$1"; }

# A prefix at its first place, then moved away from there.
package_install() {
    cmake --install "build/$1" --prefix "$package_work/installed/$2" >/dev/null
    mkdir -p "$package_work/moved"
    mv "$package_work/installed/$2" "$package_work/moved/$2"
    [[ ! -e $package_work/installed/$2 ]]
}

package_build() {
    cmake --preset "$1"
    cmake --build --preset "$1" --target quor QuorScriptor
}

package_names_no_folder() {
    local prefix
    prefix=$(package_prefix "$1")
    [[ -n $(find "$prefix" -name '*.cmake') && -n $(find "$prefix" -name '*.pc') ]]
    if grep -rlaF -e "$PWD" "$prefix"; then return 1; fi
    if find "$prefix" \( -name '*.cmake' -o -name '*.pc' \) -print0 |
        xargs -0 grep -nE '(^|["; =-]|-[IL])/(usr|opt|home|root|tmp|var)\b'; then return 1; fi
}

# configure_and_build FOLDER SOURCE OPTION...
package_cmake() {
    local folder=$package_work/$1 source=$2
    shift 2
    cmake -S "$source" -B "$folder" -G Ninja "$@"
    cmake --build "$folder"
}

# package_draws MAKER PROGRAM: runs the program of tests/package/consumer, by what is built into it alone.
package_draws() {
    local version
    version=$(env -u LD_LIBRARY_PATH "$2" "$package_tests/consumer/pipe.lua" "$1")
    [[ $version == "$package_version" ]]
}

package_consumer() {
    package_cmake "cmake-$1" "$package_tests/consumer" -DCMAKE_PREFIX_PATH="$(package_prefix "$1")"
    package_draws reference "$package_work/cmake-$1/draw"
    local library
    for library in "${package_libraries[@]}"; do "$package_work/cmake-$1/layer_$library"; done
}

# package_config KIND ARGUMENT...: pkg-config with the package's modules, and those of the system.
package_config() {
    local kind=$1
    shift
    PKG_CONFIG_PATH=$(package_prefix "$kind")/lib/pkgconfig pkg-config "$@"
}

# package_compile KIND MODULE OBJECT SOURCE
package_compile() {
    local flags
    flags=$(package_config "$1" --cflags "$2")
    # shellcheck disable=SC2086 # several flags
    g++ -std=c++20 -Wall -Wextra -Werror $flags -c -o "$3" "$4"
}

# package_link KIND MODULE PROGRAM COMPILER... OBJECT...
package_link() {
    local libraries kind=$1 module=$2 program=$3 static=()
    shift 3
    [[ $kind == shared ]] || static=(--static)
    libraries=$(package_config "$kind" --libs "${static[@]}" "$module")
    # shellcheck disable=SC2086 # several libraries
    "$@" -o "$program" $libraries -Wl,-rpath,"$(package_config "$kind" --variable=libdir "$module")"
}

package_modules() {
    local folder=$package_work/pkg-config-$1 library
    mkdir -p "$folder"
    package_compile "$1" QuorScriptor "$folder/draw.o" "$package_tests/consumer/draw.cpp"
    package_link "$1" QuorScriptor "$folder/draw" g++ "$folder/draw.o"
    package_draws reference "$folder/draw"
    for library in "${package_libraries[@]}"; do
        package_compile "$1" "$library" "$folder/$library.o" "tests/layers/$library.cpp"
        package_link "$1" "$library" "$folder/$library" g++ "$folder/$library.o"
        "$folder/$library"
    done
}

# The modules name the C++ run time too, for programs that are linked as C.
package_links_as_c() {
    local folder=$package_work/pkg-config-static
    package_link static QuorScriptor "$folder/draw-as-c" gcc "$folder/draw.o"
    package_draws reference "$folder/draw-as-c"
}

# package_versions KIND: header, run time (by package_draws), CMake package, pkg-config and files say the same.
package_versions() {
    local prefix library file
    prefix=$(package_prefix "$1")
    [[ $(cat "$package_work/cmake-$1/package-version") == "$package_version" ]]
    [[ $(env -u LD_LIBRARY_PATH "$prefix/bin/quor" --version) == "quor $package_version" ]]
    for library in "${package_libraries[@]}"; do
        [[ $(package_config "$1" --modversion "$library") == "$package_version" ]]
        [[ $1 == shared ]] || continue
        file=$prefix/lib/lib$library.so
        [[ $(readlink -f "$file") == "$file.$package_version" ]]
        objdump -p "$file" | grep -qx " *SONAME *lib$library\.so\.${package_version%%.*}"
    done
}

# package_command KIND: the moved command draws the moved sample, and finds its translations.
package_command() {
    local share=$package_work/moved/$1/share/QuorScriptor result=$package_work/valve-$1.json
    env -u LD_LIBRARY_PATH "$package_work/moved/$1/bin/quor" draw --quiet --language en \
        --installation "$share/sample/installation" --project "$share/sample/project" -o "$result" \
        "$share/sample/project/components/gate_valve.lua"
    cmp "$result" tests/quor/golden/gate_valve_main.json
}

package_refuses() {
    cmake -S "$package_tests/refusals" -B "$package_work/refusals-$1" -G Ninja \
        -DCASE="$1" -DQuorScriptor_DIR="$(package_prefix shared)/lib/cmake/QuorScriptor"
}

# Headers, as the tree has them and as the prefix has them, by the names that programs use.
package_headers() { (cd "$1" && find . -name '*.h' -printf '%P\n'); }

package_installs_headers() {
    local folder
    for folder in include platform/include platform/*/include; do package_headers "$folder"; done | sort \
        >"$package_work/headers"
    [[ -s $package_work/headers ]]
    package_headers "$(package_prefix shared)/include" | sort | diff "$package_work/headers" -
}

# package_headers_alone COMPILER: each header is a check; those that fail say so.
package_headers_alone() {
    local all bad compiler=$1 flags
    flags=$(package_config shared --cflags QuorScriptor)
    all=$(wc -l <"$package_work/headers")
    # shellcheck disable=SC2016 # the inner shell's own arguments
    bad=$(xargs -a "$package_work/headers" -P "$(nproc)" -I '{}' bash -c '
        printf "#include <%s>\n" "$1" | $2 -std=c++20 -Wall -Wextra -Werror $3 -fsyntax-only -x c++ - ||
            echo "$1" >&3' - '{}' "$compiler" "$flags" 3>&1 >&2 || true)
    local header
    for header in $bad; do say "failed: $header alone, with $compiler"; done
    bad=$(wc -w <<<"$bad")
    package_passed=$((package_passed + all - bad)) package_failed=$((package_failed + bad))
}

package_own_static() {
    package_cmake own-static "$package_tests/consumer" -DCMAKE_PREFIX_PATH="$(package_prefix static)" \
        -DOWN_MESSAGES=ON -DLAYERS=OFF
    package_draws own "$package_work/own-static/draw"
}

# An object of the program's own comes before the libraries, so nothing of the archive is taken.
package_own_object() {
    local folder=$package_work/pkg-config-static
    package_compile static QuorMsgHandle "$folder/own.o" "$package_tests/own/QuorMsgHandle.cpp"
    package_link static QuorScriptor "$folder/draw-own" g++ "$folder/draw.o" "$folder/own.o"
    package_draws own "$folder/draw-own"
}

# A deployed host: all libraries beside the program. With another file under one name, that is used, and nothing is
# built anew.
package_own_file() {
    local folder=$package_work/deployed library libraries=()
    for library in "${package_libraries[@]}"; do libraries+=("-l:lib$library.so.1"); done
    mkdir -p "$folder"
    cp -P "$(package_prefix shared)"/lib/lib*.so.* "$folder"
    g++ -o "$folder/draw" "$package_work/pkg-config-shared/draw.o" -L"$folder" -Wl,-rpath,"\$ORIGIN" \
        "${libraries[@]}"
    package_draws reference "$folder/draw"
    rm "$folder"/libQuorMsgHandle.so.*
    g++ -std=c++20 -fPIC -shared -fvisibility=hidden -DQuorMsgHandle_EXPORTS -I"$(package_prefix shared)/include" \
        -Wl,-soname,libQuorMsgHandle.so.1 -Wl,--no-undefined -o "$folder/libQuorMsgHandle.so.1" \
        "$package_tests/own/QuorMsgHandle.cpp"
    package_draws own "$folder/draw"
}

# A vendor's package of the host's libraries; the library alone is built against it and goes into the same prefix, which
# is then moved; a program finds both packages there.
package_vendor_package() {
    local sdk=$package_work/installed/vendor build=$package_work/vendor-library
    mkdir -p "$sdk/lib/cmake/VendorHost" "$sdk/include"
    cp "$package_tests/vendor/VendorHostConfig.cmake" "$sdk/lib/cmake/VendorHost"
    cp -P "$package_work"/deployed/lib*.so.* "$sdk/lib"
    rm "$sdk"/lib/libQuorScriptor.*
    cp -r "$(package_prefix shared)/include/." "$sdk/include"
    rm -r "$sdk/include/QuorScriptor"

    package_cmake vendor-library . -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-O0 -DNDEBUG" \
        -DQUOR_BUILD_COMMAND=OFF -DQUOR_BUILD_TESTS=OFF \
        -DCMAKE_PREFIX_PATH="$sdk" -DQUOR_PLATFORM_PACKAGES=VendorHost
    [[ $(find "$build" -name 'lib*.so') == */libQuorScriptor.so ]]
    package_install "package/vendor-library" vendor
    grep -q 'lib/libQuorScriptor\.so$' "$build/install_manifest.txt"
    ! grep -E '(include|lib|pkgconfig|cmake/QuorScriptor)/(lib)?(KxGe|BaseObj|QuorCommon|QuorMsg|QuorPure|QuorPrim)' \
        "$build/install_manifest.txt" || return 1
    package_names_no_folder vendor

    package_cmake vendor-consumer "$package_tests/consumer" -DLAYERS=OFF \
        -DCMAKE_PREFIX_PATH="$(package_prefix vendor)"
    package_draws own "$package_work/vendor-consumer/draw"
}

package_vendor_build() {
    package_cmake vendor-build "$package_tests/vendor" -DCMAKE_BUILD_TYPE=Release
    package_draws own "$package_work/vendor-build/draw"
}

word_package() {
    # shellcheck disable=SC2154 # of dev
    need "${build_packages[@]}" "${check_packages[@]}"
    rm -rf "$package_work"
    mkdir -p "$package_work"
    ! command -v ccache >/dev/null || export CMAKE_CXX_COMPILER_LAUNCHER=ccache
    package_version=$(sed -n 's/^#define QUORSCRIPTOR_VERSION_\(MAJOR\|MINOR\|PATCH\) \([0-9]*\)$/\2/p' \
        include/QuorScriptor/version.h | paste -sd .)

    local kind compiler refusal
    for kind in shared static; do
        local preset=${kind/shared/release}
        package_check "$kind: builds" package_build "$preset"
        package_check "$kind: installs, and moves" package_install "$preset" "$kind"
        package_check "$kind: names no folder of this machine" package_names_no_folder "$kind"
        package_check "$kind: programs by find_package" package_consumer "$kind"
        package_check "$kind: programs by pkg-config" package_modules "$kind"
        package_check "$kind: one version everywhere" package_versions "$kind"
        package_check "$kind: the command draws the sample" package_command "$kind"
    done
    package_check "static: a program that is linked as C" package_links_as_c
    for refusal in older newer component optional interpreter; do
        package_check "find_package: $refusal" package_refuses "$refusal"
    done
    package_check "every header is installed" package_installs_headers
    for compiler in g++ clang++-14; do package_headers_alone "$compiler"; done
    package_check "own QuorMsgHandle: a target, static" package_own_static
    package_check "own QuorMsgHandle: an object, static" package_own_object
    package_check "own QuorMsgHandle: a file, shared" package_own_file
    package_check "vendor: the library alone, against a package" package_vendor_package
    package_check "vendor: the sources within another build" package_vendor_build

    printf '%d passed, %d failed\n' "$package_passed" "$package_failed"
    [[ $package_failed == 0 ]]
}
word_package "$@"
