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
    # The settings are this build's own: who links to the installed library has others.
    target_link_libraries(${name} PUBLIC $<BUILD_INTERFACE:tomex_settings> ${arg_USES})
endfunction()
