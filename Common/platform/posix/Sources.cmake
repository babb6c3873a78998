# The seam over POSIX sockets.
set(VELSOCK_PLATFORM_SOURCES
  platform/posix/AddressLists.cpp
  platform/posix/Addresses.cpp
  platform/posix/Binding.cpp
  platform/posix/Connection.cpp
  platform/posix/Creation.cpp
  platform/posix/Datagrams.cpp
  platform/posix/Descriptors.cpp
  platform/posix/Errors.cpp
  platform/posix/HostEntries.cpp
  platform/posix/HostName.cpp
  platform/posix/Locks.cpp
  platform/posix/LogFile.cpp
  platform/posix/Memberships.cpp
  platform/posix/NameLists.cpp
  platform/posix/NameQueries.cpp
  platform/posix/NameTexts.cpp
  platform/posix/Names.cpp
  platform/posix/NumericNames.cpp
  platform/posix/Options.cpp
  platform/posix/OwnAddresses.cpp
  platform/posix/Patience.cpp
  platform/posix/PortReuse.cpp
  platform/posix/Registry.cpp
  platform/posix/RegistryRoot.cpp
  platform/posix/ResolverFiles.cpp
  platform/posix/ResolverKeys.cpp
  platform/posix/ResolverSettings.cpp
  platform/posix/Selecting.cpp
  platform/posix/SettingsFiles.cpp
  platform/posix/SettingsKey.cpp
  platform/posix/SocketRecords.cpp
  platform/posix/StartUp.cpp
  platform/posix/SystemServices.cpp
  platform/posix/Transfer.cpp
  platform/posix/TreeKeys.cpp
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
  target_link_options(${module} PRIVATE -Wl,-z,now -Wl,--version-script=${exports})
  if(NOT VELSOCK_SANITIZE)
    # clang++ puts what the sanitizers' checks call into the program alone.
    target_link_options(${module} PRIVATE -Wl,-z,defs)
  endif()
  set_property(TARGET ${module} APPEND PROPERTY LINK_DEPENDS ${exports})
endfunction()
