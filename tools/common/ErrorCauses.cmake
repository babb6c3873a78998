# Makes the table of causes and remedies from the document that explains them, so that nothing is written twice.

# velsock_add_error_causes(TARGET): adds the source that implements ErrorCauses.h.
function(velsock_add_error_causes target)
  set(document ${PROJECT_SOURCE_DIR}/docs/errors.md)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${document})
  file(READ ${document} text)
  # What CMake would take for the end of a list's element or of a list.
  string(REPLACE ";" "@semicolon@" text "${text}")
  string(REGEX REPLACE "\\[([^]\n]*)\\]\\([^)\n]*\\)" "\\1" text "${text}")
  string(REGEX REPLACE "[`[]|\\]" "" text "${text}")
  string(REPLACE "\\" "\\\\" text "${text}")
  string(REPLACE "\"" "\\\"" text "${text}")
  string(REGEX MATCHALL "\n\\| -?[0-9]+ \\| [^\n]*" rows "${text}")
  list(LENGTH rows count)
  set(table "")
  foreach(row IN LISTS rows)
    if(NOT row MATCHES "^\n\\| (-?[0-9]+) \\| [^|]* \\| [^|]* \\| ([^|]*[^| ]) *\\| *([^|]*[^| ])? *\\|$")
      message(FATAL_ERROR "${document} has a row without a cause: ${row}")
    endif()
    string(APPEND table "    {${CMAKE_MATCH_1}, \"${CMAKE_MATCH_2}\",\n     \"${CMAKE_MATCH_3}\"},\n")
  endforeach()
  string(REPLACE "@semicolon@" ";" table "${table}")
  set(source ${CMAKE_CURRENT_BINARY_DIR}/ErrorCauses.cpp)
  file(CONFIGURE OUTPUT ${source} @ONLY CONTENT [=[
// Made from docs/errors.md.
#include "ErrorCauses.h"

#include <algorithm>
#include <array>

namespace VelSockTools {

namespace {

constexpr std::array<ErrorCause, @count@> Causes{{
@table@}};

}  // namespace

const ErrorCause* FindCause(int code) noexcept {
    const auto* const found = std::find_if(Causes.begin(), Causes.end(),
                                           [code](const ErrorCause& each) { return each.code == code; });
    return found == Causes.end() ? nullptr : found;
}

}  // namespace VelSockTools
]=])
  target_sources(${target} PRIVATE ${source})
endfunction()
