# Without a build type a compiler does not optimize at all, which nobody means who does not name one.
get_property(has_build_types GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
if(PROJECT_IS_TOP_LEVEL AND NOT has_build_types AND NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
endif()

# velsock_optimize_at_link_time TARGET: in all types of build but the one for debuggers.
include(CheckIPOSupported)
check_ipo_supported(RESULT VELSOCK_LINK_TIME_OPTIMIZATION LANGUAGES CXX)
function(velsock_optimize_at_link_time target)
  if(VELSOCK_LINK_TIME_OPTIMIZATION)
    set_target_properties(${target} PROPERTIES
      INTERPROCEDURAL_OPTIMIZATION ON
      INTERPROCEDURAL_OPTIMIZATION_DEBUG OFF)
  endif()
endfunction()
