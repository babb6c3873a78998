# The seam over POSIX sockets.
set(VELSOCK_PLATFORM_SOURCES
  platform/posix/Addresses.cpp
  platform/posix/Binding.cpp
  platform/posix/Connection.cpp
  platform/posix/Creation.cpp
  platform/posix/Descriptors.cpp
  platform/posix/Errors.cpp
  platform/posix/HostEntries.cpp
  platform/posix/HostName.cpp
  platform/posix/LogFile.cpp
  platform/posix/Names.cpp
  platform/posix/Options.cpp
  platform/posix/OwnAddresses.cpp
  platform/posix/Patience.cpp
  platform/posix/PortReuse.cpp
  platform/posix/Registry.cpp
  platform/posix/RegistryRoot.cpp
  platform/posix/SocketRecords.cpp
  platform/posix/StartUp.cpp
  platform/posix/SystemServices.cpp
  platform/posix/Transfer.cpp
  platform/posix/Unreachables.cpp
  platform/posix/Utf8.cpp
  platform/posix/Waiting.cpp)
set(VELSOCK_PLATFORM_DEFINITIONS VELSOCK_REGISTRY_ROOT="${VELSOCK_REGISTRY_ROOT}")

function(velsock_finish_module module)
  if(CMAKE_BUILD_TYPE STREQUAL "Release")
    set_target_properties(${module} PROPERTIES INTERPROCEDURAL_OPTIMIZATION ON)
  endif()
  target_compile_options(${module} PRIVATE -fno-plt -fno-semantic-interposition)
  set(exports ${CMAKE_CURRENT_SOURCE_DIR}/platform/posix/exports.map)
  target_link_options(${module} PRIVATE -Wl,-z,defs -Wl,-z,now -Wl,--version-script=${exports})
  set_property(TARGET ${module} APPEND PROPERTY LINK_DEPENDS ${exports})
endfunction()
