# Vantorel. MIT licence, see LICENSE.
# One CTest test for each function test_* in tests/e2e/cases/test_*.py, found when the build is configured.
#
# A line of its own in a case file can say:  # label: NAME      the file's tests carry that label too
#                                            # timeout: SECONDS  in place of 180
#                                            # serial            never beside another test

# The system's interpreter: python3-xlib and python3-pil are installed for that one.
find_program(VANTOREL_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)
vantorel_glob(case_files tests/e2e/cases/test_*.py)
if(case_files AND NOT EXISTS ${PROJECT_SOURCE_DIR}/tests/e2e/run.py)
    message(FATAL_ERROR "tests/e2e/cases has cases, but tests/e2e/run.py is missing")
endif()

foreach(file IN LISTS case_files)
    # A function that is added to a file is a new test: look at the file again when it changes.
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    cmake_path(GET file STEM stem)
    string(REGEX REPLACE "^test_" "" group ${stem})

    set(labels e2e)
    file(STRINGS ${file} label_lines REGEX "^# label: [a-z0-9_-]+$")
    foreach(line IN LISTS label_lines)
        string(REGEX REPLACE "^# label: " "" label ${line})
        list(APPEND labels ${label})
    endforeach()
    set(timeout 180)
    file(STRINGS ${file} timeout_line REGEX "^# timeout: [0-9]+$")
    if(timeout_line)
        string(REGEX REPLACE "^# timeout: " "" timeout "${timeout_line}")
    endif()
    file(STRINGS ${file} serial REGEX "^# serial$")

    file(STRINGS ${file} functions REGEX "^def test_[A-Za-z0-9_]+\\(")
    if(NOT functions)
        message(FATAL_ERROR "${file} holds no function test_*")
    endif()
    foreach(line IN LISTS functions)
        string(REGEX REPLACE "^def test_([A-Za-z0-9_]+).*" "\\1" case ${line})
        set(name e2e.${group}.${case})
        add_test(NAME ${name}
            COMMAND ${VANTOREL_PYTHON} ${PROJECT_SOURCE_DIR}/tests/e2e/run.py ${file}::test_${case}
                --app ${VANTOREL_BUNDLE}
            WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
        set_tests_properties(${name} PROPERTIES LABELS "${labels}" TIMEOUT ${timeout}
            SKIP_REGULAR_EXPRESSION "(^|\n)SKIPPED: ")
        if(serial)
            set_tests_properties(${name} PROPERTIES RUN_SERIAL ON)
        endif()
    endforeach()
endforeach()
