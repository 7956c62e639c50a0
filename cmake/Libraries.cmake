# Reading these takes longer than compiling most sources, so it is done once for all libraries. A
# source must include what it needs all the same: clang-tidy and g++ read each without them. (In
# headers that were precompiled, g++ sees overflows where there are none.)
function(tomex_precompile name)
    get_property(first GLOBAL PROPERTY TOMEX_PRECOMPILED_FOR)
    if(NOT TOMEX_PRECOMPILED_HEADERS OR NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        return()
    elseif(first)
        target_precompile_headers(${name} REUSE_FROM ${first})
    else()
        target_precompile_headers(${name} PRIVATE
            <algorithm> <cstdint> <cstring> <memory> <optional> <span> <string> <string_view> <vector>)
        set_property(GLOBAL PROPERTY TOMEX_PRECOMPILED_FOR ${name})
    endif()
endfunction()

# tomex_library(NAME [USES lib...]): one static library from NAME's own CMakeLists.txt folder.
# Every src/*.cpp is listed by the caller through SOURCES; USES names the only other rooms
# that it may include.
function(tomex_library name)
    cmake_parse_arguments(arg "" "" "SOURCES;USES" ${ARGN})
    add_library(${name} STATIC ${arg_SOURCES})
    if(TOMEX_FUZZ)
        # Lets a fuzz target see which ways its input takes; other programs link all the same.
        target_compile_options(${name} PRIVATE -fsanitize=fuzzer-no-link)
    endif()
    tomex_precompile(${name})
    # The settings are this build's own: who links to the installed library has others.
    target_link_libraries(${name} PUBLIC $<BUILD_INTERFACE:tomex_settings> ${arg_USES})
endfunction()
