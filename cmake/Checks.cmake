# Targets that examine the sources.

find_program(RUN_CLANG_TIDY run-clang-tidy)
find_program(CPPCHECK cppcheck)
cmake_host_system_information(RESULT processors QUERY NUMBER_OF_LOGICAL_CORES)

# velsock_add_tidy NAME CHECKS: clang-tidy with these checks besides what .clang-tidy says. The tests are only checked by
# the compilers' warnings: examining them would take longer than everything else.
function(velsock_add_tidy name checks)
  add_custom_target(${name}
    COMMAND ${RUN_CLANG_TIDY} -quiet -j ${processors} -p ${PROJECT_BINARY_DIR} -checks=${checks}
            "^(${PROJECT_SOURCE_DIR}|${PROJECT_BINARY_DIR})/(Common|logging|tools|bench|examples)/"
    USES_TERMINAL
    VERBATIM)
endfunction()

# Most checks take their time for the headers, and so are made of a dozen sources at a time (tidy-joined), which CMake
# includes. The analyzer passes over what is included.
velsock_add_tidy(tidy -bugprone-suspicious-include,-clang-analyzer-*)
velsock_add_tidy(analyze -bugprone-*,-cppcoreguidelines-*,-misc-*,-modernize-*,-performance-*,-readability-*)

# Sees some things that the compilers and clang-tidy do not.
add_custom_target(cppcheck
  COMMAND ${CPPCHECK} --project=${PROJECT_BINARY_DIR}/compile_commands.json
          -i${PROJECT_SOURCE_DIR}/bench -i${PROJECT_SOURCE_DIR}/examples -i${PROJECT_SOURCE_DIR}/tests
          --enable=warning,performance,portability --suppressions-list=${PROJECT_SOURCE_DIR}/.cppcheck-suppressions
          --quiet --error-exitcode=1 -j ${processors}
  USES_TERMINAL
  VERBATIM)
