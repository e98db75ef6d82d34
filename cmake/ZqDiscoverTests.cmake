# zq_discover_tests(MODULE RUNNER [TIMEOUT SECONDS])
#
# Registers one CTest test per test class of the test module target MODULE, each running
# `RUNNER --filter 'Class.*' MODULE` and named after the class. The classes are found like CMake's
# gtest_discover_tests finds tests: when CTest starts, this file runs again in script mode, asks the
# runner for its GoogleTest listing and writes the add_test lines, again only after the runner or
# the module has been rebuilt.
#
# The same file is both the function (included by CMake) and the discovery script (included by CTest
# with ZQ_DISCOVER_RUNNER set).

if(NOT DEFINED ZQ_DISCOVER_RUNNER)
  set(_ZQ_DISCOVER_SCRIPT "${CMAKE_CURRENT_LIST_FILE}")

  function(zq_discover_tests module runner)
    cmake_parse_arguments(ARG "" "TIMEOUT" "" ${ARGN})
    if(NOT ARG_TIMEOUT)
      set(ARG_TIMEOUT 1500)
    endif()
    set(ctest_file "${CMAKE_CURRENT_BINARY_DIR}/${module}_classes.cmake")
    set(include_file "${CMAKE_CURRENT_BINARY_DIR}/${module}_discover.cmake")
    file(GENERATE OUTPUT "${include_file}" CONTENT
"set(ZQ_DISCOVER_RUNNER [==[$<TARGET_FILE:${runner}>]==])
set(ZQ_DISCOVER_MODULE [==[$<TARGET_FILE:${module}>]==])
set(ZQ_DISCOVER_NAME [==[${module}]==])
set(ZQ_DISCOVER_CTEST_FILE [==[${ctest_file}]==])
set(ZQ_DISCOVER_TIMEOUT ${ARG_TIMEOUT})
include([==[${_ZQ_DISCOVER_SCRIPT}]==])
")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${include_file}")
  endfunction()
  return()
endif()

# Script mode, inside CTest.
if(NOT EXISTS "${ZQ_DISCOVER_RUNNER}" OR NOT EXISTS "${ZQ_DISCOVER_MODULE}")
  # Not built yet: one test that says so by failing.
  add_test("${ZQ_DISCOVER_NAME}_NOT_BUILT" "${ZQ_DISCOVER_RUNNER}" "${ZQ_DISCOVER_MODULE}")
  return()
endif()

if(NOT EXISTS "${ZQ_DISCOVER_CTEST_FILE}"
   OR "${ZQ_DISCOVER_RUNNER}" IS_NEWER_THAN "${ZQ_DISCOVER_CTEST_FILE}"
   OR "${ZQ_DISCOVER_MODULE}" IS_NEWER_THAN "${ZQ_DISCOVER_CTEST_FILE}")
  execute_process(
    COMMAND "${ZQ_DISCOVER_RUNNER}" --gtest_list_tests "${ZQ_DISCOVER_MODULE}"
    OUTPUT_VARIABLE listing
    ERROR_VARIABLE errors
    RESULT_VARIABLE result
    TIMEOUT 120)
  get_filename_component(directory "${ZQ_DISCOVER_RUNNER}" DIRECTORY)
  set(script "")
  if(NOT result EQUAL 0)
    # The listing failed: a test that repeats it, so the failure and its message show in the run.
    string(APPEND script "add_test([==[${ZQ_DISCOVER_NAME}_DISCOVERY_FAILED]==] [==[${ZQ_DISCOVER_RUNNER}]==] --list [==[${ZQ_DISCOVER_MODULE}]==])\n")
  else()
    string(REPLACE ";" "\\;" listing "${listing}")
    string(REPLACE "\n" ";" lines "${listing}")
    foreach(line IN LISTS lines)
      if(line MATCHES "^([A-Za-z_][A-Za-z0-9_:]*)\\.$")
        set(class "${CMAKE_MATCH_1}")
        string(APPEND script
          "add_test([==[${class}]==] [==[${ZQ_DISCOVER_RUNNER}]==] --filter [==[${class}.*]==] [==[${ZQ_DISCOVER_MODULE}]==])\n"
          "set_tests_properties([==[${class}]==] PROPERTIES WORKING_DIRECTORY [==[${directory}]==] TIMEOUT ${ZQ_DISCOVER_TIMEOUT} LABELS module)\n")
      endif()
    endforeach()
  endif()
  file(WRITE "${ZQ_DISCOVER_CTEST_FILE}" "${script}")
endif()
include("${ZQ_DISCOVER_CTEST_FILE}")
