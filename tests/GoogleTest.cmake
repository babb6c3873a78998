# The test framework: the system's own or, for another system, built from its sources.
set(VELSOCK_GOOGLETEST_SOURCES /usr/src/googletest CACHE PATH
    "Sources of googletest, for builds for another system")

if(CMAKE_CROSSCOMPILING)
  set(INSTALL_GTEST OFF)
  add_subdirectory(${VELSOCK_GOOGLETEST_SOURCES} googletest EXCLUDE_FROM_ALL)
else()
  find_package(GTest REQUIRED)
endif()
include(GoogleTest)

if(VELSOCK_SANITIZE)
  # clang++'s address sanitizer does not notice that a cancelled thread's stack is unwound, and reports its use.
  set(VELSOCK_LEFT_OUT_TESTS *.AThreadThatIsBeingCancelled*)
elseif(VELSOCK_SANITIZE_THREADS)
  # The thread sanitizer defers signals while a thread sleeps, which is what this test is about.
  set(VELSOCK_LEFT_OUT_TESTS SystemSleep.IsNotCutShortBySignals)
endif()

# Lists the program's tests with CTest. Where a start costs more than most tests, all of a program's run in one process:
# under the sanitizers, and on another system, where wine/RunPrograms.sh starts it.
function(velsock_list_tests name prefix)
  if(CMAKE_CROSSCOMPILING)
    set_property(GLOBAL APPEND PROPERTY VELSOCK_TEST_PROGRAMS ${name})
  elseif(VELSOCK_SANITIZE OR VELSOCK_SANITIZE_THREADS)
    add_test(NAME program/${name} COMMAND ${name} --gtest_filter=-${VELSOCK_LEFT_OUT_TESTS}
      --gtest_output=xml:${PROJECT_BINARY_DIR}/test-results/${name}.xml)
    set_tests_properties(program/${name} PROPERTIES TIMEOUT 900 COST 100)
  else()
    gtest_discover_tests(${name} TEST_PREFIX "${prefix}/" DISCOVERY_TIMEOUT 60)
  endif()
endfunction()
