## windows-libraries  builds what quor needs for Windows and Debian has not for MinGW, into build/windows
# Lua as a DLL, FreeType and fmt from Debian's source packages; libraries that are headers alone are copied, since the
# folder of Debian's own headers is none for a cross compiler.

source scripts/parts/debian-source.sh

windows_prefix=$PWD/build/windows
source_prefix=$windows_prefix
windows_packages=(g++-mingw-w64-x86-64-posix wine wine64 libgtest-dev libgmock-dev googletest dpkg-dev
    libcli11-dev nlohmann-json3-dev libfmt-dev gettext cmake ninja-build ccache locales fonts-wqy-microhei)

build_lua() {
    local source=$windows_prefix/source/lua objects=$windows_prefix/objects/lua file
    [[ -d $source ]] || debian_source lua5.1 "$source"
    mkdir -p "$objects" "$windows_prefix"/{bin,lib,include/lua5.1}
    for file in "$source"/src/*.c; do
        case $(basename "$file") in
        lua.c | luac.c | print.c) ;; # the programs, not the library
        # The compiler's own printf, which writes exponents as other systems do: 1e+15, not 1e+015.
        *) x86_64-w64-mingw32-gcc-posix -O2 -DLUA_BUILD_AS_DLL -D__USE_MINGW_ANSI_STDIO=1 -c "$file" -o "$objects/$(basename "$file" .c).o" ;;
        esac
    done
    x86_64-w64-mingw32-gcc-posix -shared -s -static-libgcc -o "$windows_prefix/bin/lua51.dll" "$objects"/*.o \
        "-Wl,--out-implib,$windows_prefix/lib/liblua51.dll.a"
    # For hosts in the tests that bring an interpreter of their own, which tells its version otherwise.
    x86_64-w64-mingw32-ar rcs "$windows_prefix/lib/liblua51_other.a" "$objects"/*.o
    sed -i 's/Lua 5\.1\x00/Lua 5,1\x00/' "$windows_prefix/lib/liblua51_other.a"
    sed 's/Lua 5\.1\x00/Lua 5,1\x00/' "$windows_prefix/bin/lua51.dll" >"$windows_prefix/bin/lua51_other.dll"
    cp "$source"/src/{lua.h,lauxlib.h,lualib.h,luaconf.h} "$source/etc/lua.hpp" "$windows_prefix/include/lua5.1/"
}

# build_with_cmake NAME PACKAGE OPTION...: a library from its Debian source, installed in our prefix.
build_with_cmake() {
    local name=$1 source=$windows_prefix/source/$1 objects=$windows_prefix/objects/$1
    [[ -d $source ]] || debian_source "$2" "$source"
    cmake -S "$source" -B "$objects" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_MESSAGE=NEVER \
        -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw.cmake" -DCMAKE_INSTALL_PREFIX="$windows_prefix" "${@:3}"
    cmake --build "$objects" --target install
}

build_freetype() {
    build_with_cmake freetype freetype -DFT_DISABLE_ZLIB=ON -DFT_DISABLE_BZIP2=ON -DFT_DISABLE_PNG=ON \
        -DFT_DISABLE_HARFBUZZ=ON -DFT_DISABLE_BROTLI=ON
}

build_fmt() { build_with_cmake fmt fmtlib -DFMT_TEST=OFF -DFMT_DOC=OFF; }

copy_headers() {
    mkdir -p "$windows_prefix"/{include,share/cmake}
    cp -r /usr/include/{CLI,nlohmann} "$windows_prefix/include/"
    cp -r /usr/share/cmake/{CLI11,nlohmann_json} "$windows_prefix/share/cmake/"
}

windows_libraries() {
    need "${windows_packages[@]}"
    [[ -f $windows_prefix/bin/lua51_other.dll ]] || { say 'builds Lua for Windows' && build_lua; }
    [[ -f $windows_prefix/lib/libfreetype.a ]] || { say 'builds FreeType for Windows' && build_freetype; }
    [[ -f $windows_prefix/lib/libfmt.a ]] || { say 'builds fmt for Windows' && build_fmt; }
    [[ -d $windows_prefix/share/cmake/nlohmann_json ]] || copy_headers
}

[[ ${BASH_SOURCE[1]:-} != *windows.sh ]] || return 0
windows_libraries
