# The implementation of the seam for the target system, and how the module is linked there.
if(WIN32)
  include(${CMAKE_CURRENT_LIST_DIR}/windows/Sources.cmake)
else()
  include(${CMAKE_CURRENT_LIST_DIR}/posix/Sources.cmake)
endif()
