# Test programs: how they are compiled, and how CTest comes to know what is in them.
#
# What is tested is optimised as the build says; what tests it is not, since most of the time of a
# build would go into that. The same goes for reading GoogleTest's header: it takes longer than what
# most tests say themselves, so it is read once for all that are compiled alike. Only that header,
# which each test includes anyway: whatever else a test needs it must include itself.

# The ways to compile tests, and the options of each:
#  - PLAIN: as nearly all are;
#  - OPTIMISED: tests of what stands in headers, as users get that. Under the sanitizers, which are not
#    for users, they are compiled like the others;
#  - UNSANITISED: what they test runs in a process of its own. Sanitizing the code that starts it
#    would double the time that it takes to compile and find nothing.
set(testOptions_PLAIN -O0 -g0)
set(testOptions_OPTIMISED)
set(testOptions_UNSANITISED -O0 -g0)
set(testSettings_PLAIN tomex_settings)
set(testSettings_OPTIMISED tomex_settings)
set(testSettings_UNSANITISED tomex_plain_settings)

# Of each way, the main function of the tests and the header that they share.
foreach(way PLAIN OPTIMISED UNSANITISED)
    add_library(tomex_test_main_${way} OBJECT EXCLUDE_FROM_ALL
        ${CMAKE_SOURCE_DIR}/tests/support/test_main.cpp)
    target_compile_options(tomex_test_main_${way} PRIVATE ${testOptions_${way}})
    target_link_libraries(tomex_test_main_${way} PRIVATE ${testSettings_${way}} GTest::gtest)
    if(TOMEX_PRECOMPILED_HEADERS)
        target_precompile_headers(tomex_test_main_${way} PRIVATE <gtest/gtest.h>)
    endif()
endforeach()

# tomex_test(NAME [OPTIMISED|UNSANITISED] SOURCES file... USES lib...): a GoogleTest program, each of
# its suites a CTest test NAME.SUITE. (Starting a process for each case would take longer than most
# cases do.)
function(tomex_test name)
    cmake_parse_arguments(arg "OPTIMISED;UNSANITISED" "" "SOURCES;USES" ${ARGN})
    set(way PLAIN)
    if(arg_OPTIMISED AND NOT TOMEX_SANITIZE)
        set(way OPTIMISED)
    elseif(arg_UNSANITISED)
        set(way UNSANITISED)
        # On the files, since a target's own options stand before those of the libraries that it
        # uses.
        set_source_files_properties(${arg_SOURCES} PROPERTIES COMPILE_OPTIONS "-fno-sanitize=all")
    endif()
    add_executable(${name} ${arg_SOURCES})
    target_compile_options(${name} PRIVATE ${testOptions_${way}})
    target_link_libraries(${name} PRIVATE
        ${arg_USES} tomex_settings tomex_test_main_${way} GTest::gtest)
    if(TOMEX_PRECOMPILED_HEADERS)
        target_precompile_headers(${name} REUSE_FROM tomex_test_main_${way})
    endif()

    # The suites are known once the program is built: it lists them itself.
    set(suites ${CMAKE_CURRENT_BINARY_DIR}/${name}_suites.cmake)
    add_custom_command(TARGET ${name} POST_BUILD
        COMMAND ${CMAKE_COMMAND} -D PROGRAM=$<TARGET_FILE:${name}> -D NAME=${name}
                -D FOLDER=${CMAKE_CURRENT_BINARY_DIR} -D RESULT=${suites}
                -P ${CMAKE_SOURCE_DIR}/cmake/ListSuites.cmake
        BYPRODUCTS ${suites} VERBATIM)
    # Of a program that is not built nothing is known, which must not look like success.
    set(include ${CMAKE_CURRENT_BINARY_DIR}/${name}_include.cmake)
    file(CONFIGURE OUTPUT ${include} @ONLY CONTENT
"if(EXISTS \"@suites@\")
    include(\"@suites@\")
else()
    add_test(@name@.NOT_BUILT @name@.NOT_BUILT)
endif()
")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${include})
endfunction()
