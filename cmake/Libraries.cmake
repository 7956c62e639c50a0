# tomex_library(NAME [USES lib...]): one static library from NAME's own CMakeLists.txt folder.
# Every src/*.cpp is listed by the caller through SOURCES; USES names the only other rooms
# that it may include.
function(tomex_library name)
    cmake_parse_arguments(arg "" "" "SOURCES;USES" ${ARGN})
    add_library(${name} STATIC ${arg_SOURCES})
    # The settings are this build's own: who links to the installed library has others.
    target_link_libraries(${name} PUBLIC $<BUILD_INTERFACE:tomex_settings> ${arg_USES})
endfunction()

# tomex_test(NAME [OPTIMISED] SOURCES file... USES lib...): a GoogleTest program, each case a CTest
# test.
#
# What is tested is optimised as the build says; what tests it is not, since most of the time of a
# build would go into that. OPTIMISED is for tests of what stands in headers.
function(tomex_test name)
    cmake_parse_arguments(arg "OPTIMISED" "" "SOURCES;USES" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    if(NOT arg_OPTIMISED)
        target_compile_options(${name} PRIVATE -O0 -g0)
    endif()
    target_link_libraries(${name} PRIVATE ${arg_USES} tomex_settings GTest::gtest_main)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 600)
endfunction()
