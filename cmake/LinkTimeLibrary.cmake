# The link-time optimisation library of LLVM, which lists the symbols of bitcode members. It is
# loaded by the program when it meets the first such member, never linked; a build needs neither the
# library nor its headers.
set(TOMEX_LTO_LIBRARY "" CACHE STRING
    "LLVM's libLTO, a path or a name that the host looks for; empty: the newest that the build finds")

# tomex_find_lto_library(RESULT): the setting, or the full path of the newest libLTO.so.VERSION of
# this host, or else the name that the host may find when the program runs.
function(tomex_find_lto_library result)
    if(NOT TOMEX_LTO_LIBRARY STREQUAL "")
        set(${result} "${TOMEX_LTO_LIBRARY}" PARENT_SCOPE)
        return()
    endif()
    set(newest libLTO.so)
    set(newestVersion 0)
    set(places /usr/lib/llvm-*/lib /usr/lib/llvm/*/lib /usr/lib/llvm/*/lib64
               /usr/local/lib /usr/lib64 /usr/lib)
    if(CMAKE_LIBRARY_ARCHITECTURE)
        list(APPEND places /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
    endif()
    list(TRANSFORM places APPEND "/libLTO.so.*")
    file(GLOB candidates ${places})
    foreach(candidate IN LISTS candidates)
        if(candidate MATCHES "/libLTO\\.so\\.([0-9.]+)$" AND
           CMAKE_MATCH_1 VERSION_GREATER newestVersion)
            set(newest "${candidate}")
            set(newestVersion "${CMAKE_MATCH_1}")
        endif()
    endforeach()
    set(${result} "${newest}" PARENT_SCOPE)
endfunction()
