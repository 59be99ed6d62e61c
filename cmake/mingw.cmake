# Windows x86-64 with Debian's MinGW-w64, the variant whose C++ threads are POSIX ones. What Debian has not for it lies
# in build/windows, where scripts/windows-libraries.sh puts it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

find_program(QUOR_WINE NAMES wine64 wine PATHS /usr/lib/wine)
set(CMAKE_CROSSCOMPILING_EMULATOR ${QUOR_WINE})

cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH repository)
set(CMAKE_FIND_ROOT_PATH ${repository}/build/windows /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The compiler's run-time libraries go into each DLL and program; system DLLs are all that is needed beside them.
add_link_options(-static)
