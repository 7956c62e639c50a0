# Writes the file RESULT, which makes each suite of the GoogleTest program PROGRAM a CTest test
# NAME.SUITE that runs in FOLDER. (A suite that hangs is stopped after twenty minutes: the longest
# takes a few under the sanitizers on a busy machine.)
execute_process(COMMAND ${PROGRAM} --gtest_list_tests
    WORKING_DIRECTORY ${FOLDER} TIMEOUT 120
    OUTPUT_VARIABLE listed RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    file(REMOVE ${RESULT})
    message(FATAL_ERROR "${PROGRAM} does not list its tests (${status}):\n${listed}")
endif()

# A suite's line ends in a full stop, maybe with a note behind it; its cases are indented.
string(REGEX MATCHALL "(^|\n)[^ \n][^ \n]*\\.[^\n]*" lines "${listed}")
set(text "")
foreach(line IN LISTS lines)
    string(REGEX REPLACE "^\n?([^ ]+)\\..*$" "\\1" suite "${line}")
    string(APPEND text
        "add_test([==[${NAME}.${suite}]==] \"${PROGRAM}\" [==[--gtest_filter=${suite}.*]==])\n"
        "set_tests_properties([==[${NAME}.${suite}]==] PROPERTIES"
        " WORKING_DIRECTORY \"${FOLDER}\" TIMEOUT 1200)\n")
endforeach()
if(text STREQUAL "")
    file(REMOVE ${RESULT})
    message(FATAL_ERROR "${PROGRAM} has no tests")
endif()
file(WRITE ${RESULT} "${text}")
