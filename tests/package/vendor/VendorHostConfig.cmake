# The host's libraries as a vendor delivers them: targets by the names that the library links, of files in a prefix whose
# lib/cmake/VendorHost this file lies in.
cmake_path(SET prefix NORMALIZE ${CMAKE_CURRENT_LIST_DIR}/../../..)
foreach(library KxGeBasic BaseObj QuorCommon QuorMsgHandle QuorPureScriptor QuorPrimary)
    add_library(${library} SHARED IMPORTED)
    set_target_properties(${library} PROPERTIES
        IMPORTED_LOCATION ${prefix}/lib/lib${library}.so.1
        IMPORTED_SONAME lib${library}.so.1
        INTERFACE_INCLUDE_DIRECTORIES ${prefix}/include)
endforeach()
