# Targets that examine the sources.

find_program(RUN_CLANG_TIDY run-clang-tidy)
find_program(CPPCHECK cppcheck)
cmake_host_system_information(RESULT processors QUERY NUMBER_OF_LOGICAL_CORES)

# The tests are only checked by the compilers' warnings: examining them would take longer than everything else.
add_custom_target(tidy
  COMMAND ${RUN_CLANG_TIDY} -quiet -j ${processors} -p ${PROJECT_BINARY_DIR}
          "^${PROJECT_SOURCE_DIR}/(Common|logging|tools|bench|examples)/"
  USES_TERMINAL
  VERBATIM)

# Sees some things that the compilers and clang-tidy do not.
add_custom_target(cppcheck
  COMMAND ${CPPCHECK} --project=${PROJECT_BINARY_DIR}/compile_commands.json
          -i${PROJECT_SOURCE_DIR}/bench -i${PROJECT_SOURCE_DIR}/examples -i${PROJECT_SOURCE_DIR}/tests
          --enable=warning,performance,portability --suppressions-list=${PROJECT_SOURCE_DIR}/.cppcheck-suppressions
          --quiet --error-exitcode=1 -j ${processors}
  USES_TERMINAL
  VERBATIM)
