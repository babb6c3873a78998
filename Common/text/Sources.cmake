# The ground floor: what the support layer and the systems' floors both do with strings.
set(VELSOCK_TEXT_SOURCES
  text/Ascii.cpp
  text/CodePoints.cpp
  text/Utf8.cpp)
