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

# Lists the program's tests with CTest. Programs for another system are each run as a whole there,
# since each start costs seconds.
function(velsock_list_tests name prefix)
  if(CMAKE_CROSSCOMPILING)
    set_property(GLOBAL APPEND PROPERTY VELSOCK_TEST_PROGRAMS ${name})
  else()
    gtest_discover_tests(${name} TEST_PREFIX "${prefix}/" DISCOVERY_TIMEOUT 60)
  endif()
endfunction()
