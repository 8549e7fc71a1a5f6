# SPDX-License-Identifier: MIT
# discover_suites(TARGET PREFIX [LABEL name] [CONFIGURATION name])
#
# One ctest entry for each test suite of a GoogleTest program, named PREFIX.Suite. One process per suite keeps
# the summary short and the runs quick, and still names what failed. The program itself is asked for its
# suites after each link, so none can be forgotten.

# Run as a script: writes the entries.
if(CMAKE_SCRIPT_MODE_FILE)
    execute_process(COMMAND ${PROGRAM} --gtest_list_tests
        OUTPUT_VARIABLE listing ERROR_VARIABLE complaint RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${PROGRAM} cannot list its tests:\n${complaint}")
    endif()
    string(REGEX REPLACE "[^\n]*Running main[^\n]*\n" "" listing "${listing}")
    string(REGEX MATCHALL "(^|\n)[^ \n][^\n]*" lines "${listing}")
    set(script "")
    foreach(line IN LISTS lines)
        # "Suite." or "Instance/Suite/0.  # TypeParam = int"
        string(REGEX MATCH "[^\n ]+\\." suite "${line}")
        if(NOT suite)
            continue()
        endif()
        string(REGEX REPLACE "\\.$" "" name "${suite}")
        set(entry "${PREFIX}.${name}")
        set(condition "")
        if(CONFIGURATION)
            set(condition "if(CTEST_CONFIGURATION_TYPE STREQUAL \"${CONFIGURATION}\")\n")
        endif()
        string(APPEND script "${condition}"
            "add_test([==[${entry}]==] [==[${PROGRAM}]==] [==[--gtest_filter=${suite}*]==] --gtest_brief=1)\n"
            "set_tests_properties([==[${entry}]==] PROPERTIES LABELS [==[${LABEL}]==]"
            " WORKING_DIRECTORY [==[${DIRECTORY}]==])\n")
        if(CONFIGURATION)
            string(APPEND script "endif()\n")
        endif()
    endforeach()
    file(WRITE ${OUTPUT} "${script}")
    return()
endif()

set(discover_suites_script ${CMAKE_CURRENT_LIST_FILE})

function(discover_suites target prefix)
    cmake_parse_arguments(arg "" "LABEL;CONFIGURATION" "" ${ARGN})
    set(entries ${CMAKE_CURRENT_BINARY_DIR}/${target}_suites.cmake)
    add_custom_command(TARGET ${target} POST_BUILD
        BYPRODUCTS ${entries}
        COMMAND ${CMAKE_COMMAND}
            -D PROGRAM=$<TARGET_FILE:${target}> -D PREFIX=${prefix} -D LABEL=${arg_LABEL}
            -D CONFIGURATION=${arg_CONFIGURATION} -D DIRECTORY=${CMAKE_CURRENT_BINARY_DIR}
            -D OUTPUT=${entries} -P ${discover_suites_script}
        VERBATIM)
    # Until the program is built, its entry is one that fails by name.
    set(loader ${CMAKE_CURRENT_BINARY_DIR}/${target}_include.cmake)
    file(WRITE ${loader}
        "if(EXISTS \"${entries}\")\n  include(\"${entries}\")\n"
        "else()\n  add_test(${target}_NOT_BUILT ${target}_NOT_BUILT)\nendif()\n")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${loader})
endfunction()
