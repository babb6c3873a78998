# Targets that examine the sources.

find_program(RUN_CLANG_TIDY run-clang-tidy)
find_program(GCOVR gcovr)
cmake_host_system_information(RESULT processors QUERY NUMBER_OF_LOGICAL_CORES)

# Examine what this build compiles, and no more than once: a build with tests compiles the library's sources
# again for them.
function(velsock_add_tidy_target name folders)
  add_custom_target(${name}
    COMMAND ${RUN_CLANG_TIDY} -quiet -j ${processors} -p ${PROJECT_BINARY_DIR}
            "^${PROJECT_SOURCE_DIR}/(${folders})/"
    USES_TERMINAL
    VERBATIM)
endfunction()
velsock_add_tidy_target(tidy_product "Common|tools|bench|examples")
velsock_add_tidy_target(tidy_tests "tests")

# What the tests that have run so far have reached. A branch that only an exception of a called function
# takes is left out: there is one behind nearly every call.
add_custom_target(coverage_report
  COMMAND ${GCOVR} --root ${PROJECT_SOURCE_DIR} --filter ${PROJECT_SOURCE_DIR}/Common/
          --exclude-throw-branches --exclude-unreachable-branches --txt --print-summary
          ${PROJECT_BINARY_DIR}
  USES_TERMINAL
  VERBATIM)
