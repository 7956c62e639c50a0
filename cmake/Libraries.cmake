# tomex_library(NAME [USES lib...]): one static library from NAME's own CMakeLists.txt folder.
# Every src/*.cpp is listed by the caller through SOURCES; USES names the only other rooms
# that it may include.
function(tomex_library name)
    cmake_parse_arguments(arg "" "" "SOURCES;USES" ${ARGN})
    add_library(${name} STATIC ${arg_SOURCES})
    target_link_libraries(${name} PUBLIC tomex_settings ${arg_USES})
endfunction()

# tomex_test(NAME SOURCES file... USES lib...): a GoogleTest program, each case a CTest test.
function(tomex_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;USES" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_USES} tomex_settings GTest::gtest_main)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 600)
endfunction()
