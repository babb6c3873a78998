# The ground floor: what the support layer and the systems' own sources both do with texts.
set(VELSOCK_TEXT_SOURCES
  text/CodePoints.cpp
  text/Utf8.cpp)
