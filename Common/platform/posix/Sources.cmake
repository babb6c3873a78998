# The seam over POSIX sockets.
set(VELSOCK_PLATFORM_SOURCES
  platform/posix/errors/Errors.cpp
  platform/posix/system/Descriptors.cpp
  platform/posix/system/HostName.cpp
  platform/posix/system/Locks.cpp
  platform/posix/system/LogFile.cpp
  platform/posix/system/SystemServices.cpp
  platform/posix/system/TrustedLinks.cpp
  platform/posix/system/Waiting.cpp
  platform/posix/sockets/AuxiliarySockets.cpp
  platform/posix/sockets/Binding.cpp
  platform/posix/sockets/Broadcasts.cpp
  platform/posix/sockets/Closing.cpp
  platform/posix/sockets/Connection.cpp
  platform/posix/sockets/Creation.cpp
  platform/posix/sockets/DatagramFilter.cpp
  platform/posix/sockets/DatagramLosses.cpp
  platform/posix/sockets/DatagramPeer.cpp
  platform/posix/sockets/DatagramPorts.cpp
  platform/posix/sockets/EndpointAddresses.cpp
  platform/posix/sockets/ErrorQueue.cpp
  platform/posix/sockets/GroupRequest.cpp
  platform/posix/sockets/KernelAddress.cpp
  platform/posix/sockets/Listening.cpp
  platform/posix/sockets/Memberships.cpp
  platform/posix/sockets/MergedQueue.cpp
  platform/posix/sockets/Options.cpp
  platform/posix/sockets/PortReuse.cpp
  platform/posix/sockets/Reception.cpp
  platform/posix/sockets/SocketTable.cpp
  platform/posix/sockets/StartUp.cpp
  platform/posix/sockets/StreamConnect.cpp
  platform/posix/sockets/TcpState.cpp
  platform/posix/transfer/Datagrams.cpp
  platform/posix/transfer/Select.cpp
  platform/posix/transfer/StreamEnd.cpp
  platform/posix/transfer/Transfer.cpp
  platform/posix/transfer/TransferDeadline.cpp
  platform/posix/names/AddressInfo.cpp
  platform/posix/names/AddressInfoList.cpp
  platform/posix/names/HostEntryStorage.cpp
  platform/posix/names/HostLookUp.cpp
  platform/posix/names/LocalAddresses.cpp
  platform/posix/names/NameInfo.cpp
  platform/posix/names/NameServers.cpp
  platform/posix/names/NumericHosts.cpp
  platform/posix/names/ResolverErrors.cpp
  platform/posix/names/ServicePorts.cpp
  platform/posix/names/SystemAddresses.cpp
  platform/posix/names/SystemTable.cpp
  platform/posix/settings/Registry.cpp
  platform/posix/settings/RegistryKey.cpp
  platform/posix/settings/RegistryRoot.cpp
  platform/posix/settings/ResolverFiles.cpp
  platform/posix/settings/ResolverKeys.cpp
  platform/posix/settings/ResolverSettings.cpp
  platform/posix/settings/SettingsFiles.cpp
  platform/posix/settings/TreeKeys.cpp
  platform/posix/settings/TreePlace.cpp)
# The rooms name each other's headers by room.
set(VELSOCK_PLATFORM_INCLUDES ${CMAKE_CURRENT_LIST_DIR})
set(VELSOCK_PLATFORM_DEFINITIONS VELSOCK_REGISTRY_ROOT="${VELSOCK_REGISTRY_ROOT}")

# A transfer is one function from the socket's class down to the system call, without the stack protector: it has
# no buffer of its own. What follows one that has failed or is traced is compiled apart, or it would be inlined there
# as well and claim registers and stack of every transfer.
function(velsock_optimize_transfers)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    return()
  endif()
  set(fast -O3 --param=inline-unit-growth=400 --param=builtin-expect-probability=100)
  set_source_files_properties(
    Socket/Socket/StreamTransfer.cpp platform/posix/transfer/Transfer.cpp
    DIRECTORY ${PROJECT_SOURCE_DIR}/Common
    PROPERTIES
      COMPILE_OPTIONS "$<$<NOT:$<CONFIG:Debug>>:${fast}>;-fno-stack-protector"
      SKIP_PRECOMPILE_HEADERS ON)
  set_source_files_properties(
    Socket/Socket/TransferOutcome.cpp
    DIRECTORY ${PROJECT_SOURCE_DIR}/Common
    PROPERTIES COMPILE_OPTIONS -fno-lto)
endfunction()

# What runs for every connection, datagram, selection, record and failure is compiled for speed, all else for size:
# start-up, settings, names that a server is asked for, groups, control of the log.
set(frequent_sources
  Socket/Socket/Exception.cpp
  Socket/Socket/FailureText.cpp
  Socket/Socket/Octets.cpp
  Socket/Socket/OctetsCollectionImpl.cpp
  Socket/Socket/SocketAddress.cpp
  Socket/Socket/SocketImpl.cpp
  Socket/Socket/SocketXtTexts.cpp
  Socket/Socket/SocketXtTransfer.cpp
  Socket/Socket/SystemSocket.cpp
  Socket/Socket/TransferOutcome.cpp
  Socket/Socket/WatchedSockets.cpp
  Socket/Socket/WinsockScope.cpp
  support/VelBase/ReturnString.cpp
  support/VelBase/WideText.cpp
  support/VelLog/LogMessage.cpp
  support/VelResource/MessageFormatter.cpp
  support/VelSynch/ReferenceCountedImpl.cpp
  platform/posix/errors/Errors.cpp
  platform/posix/names/AddressInfo.cpp
  platform/posix/names/AddressInfoList.cpp
  platform/posix/names/NameInfo.cpp
  platform/posix/names/NumericHosts.cpp
  platform/posix/sockets/Binding.cpp
  platform/posix/sockets/Closing.cpp
  platform/posix/sockets/Connection.cpp
  platform/posix/sockets/Creation.cpp
  platform/posix/sockets/DatagramPorts.cpp
  platform/posix/sockets/EndpointAddresses.cpp
  platform/posix/sockets/KernelAddress.cpp
  platform/posix/sockets/Listening.cpp
  platform/posix/sockets/Options.cpp
  platform/posix/sockets/PortReuse.cpp
  platform/posix/sockets/SocketTable.cpp
  platform/posix/sockets/StartUp.cpp
  platform/posix/sockets/StreamConnect.cpp
  platform/posix/system/Descriptors.cpp
  platform/posix/system/Waiting.cpp
  platform/posix/transfer/Datagrams.cpp)
# Loops that the compiler unrolls or turns into vector instructions only at its highest level.
set(loop_sources
  Socket/Socket/SocketCollectionImpl.cpp
  Socket/Socket/TraceRecords.cpp
  platform/posix/transfer/Select.cpp
  text/Ascii.cpp
  text/Utf8.cpp)
function(velsock_balance_size_and_speed module)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Code at multiples of 16, and apart what is not expected to run, would take 8 KB more.
    set(dense -fno-reorder-blocks-and-partition -falign-functions=1 -falign-jumps=1 -falign-loops=1 -falign-labels=1)
    # Shared code of a class's constructors looks unused to the compiler's own warning.
    set(small -fno-declone-ctor-dtor)
  endif()
  target_compile_options(${module} PRIVATE "$<$<CONFIG:Release>:-Os;${small}>")
  set_property(SOURCE ${frequent_sources} DIRECTORY ${PROJECT_SOURCE_DIR}/Common
    APPEND PROPERTY COMPILE_OPTIONS "$<$<CONFIG:Release>:-O2;${dense}>")
  set_property(SOURCE ${loop_sources} DIRECTORY ${PROJECT_SOURCE_DIR}/Common
    APPEND PROPERTY COMPILE_OPTIONS "$<$<CONFIG:Release>:-O3;${dense}>")
endfunction()

# What the loader has to do. The module's own symbols are bound while it is linked: nothing of it is meant to be
# replaced, and what is exported as data (the classes' tables and type information, and constants) may exist twice,
# since types are compared by name. Few bytes are thread-local, so that they fit into what is left of the static
# block when the module is loaded later.
#
# Some linkers write relocations more densely than the C library beside them can read: the GNU one reads them since 2.36.
include(CheckCXXSourceCompiles)
set(CMAKE_REQUIRED_LINK_OPTIONS -Wl,-z,pack-relative-relocs)
check_cxx_source_compiles([[
  #include <cstdlib>
  #ifdef __GLIBC__
  static_assert(__GLIBC__ > 2 || (__GLIBC__ == 2 && __GLIBC_MINOR__ >= 36));
  #endif
  int main() {}
  ]] VELSOCK_HAS_RELATIVE_RELOCATIONS)
unset(CMAKE_REQUIRED_LINK_OPTIONS)
function(velsock_ease_loading module)
  target_compile_options(${module} PRIVATE -ftls-model=initial-exec)
  target_link_options(${module} PRIVATE -Wl,-Bsymbolic
    $<$<BOOL:${VELSOCK_HAS_RELATIVE_RELOCATIONS}>:-Wl,-z,pack-relative-relocs>)
endfunction()

function(velsock_finish_module module)
  target_sources(${module} PRIVATE platform/posix/system/PureVirtual.cpp)
  velsock_optimize_transfers()
  velsock_balance_size_and_speed(${module})
  target_compile_options(${module} PRIVATE -fno-plt -fno-semantic-interposition)
  set(exports ${CMAKE_CURRENT_SOURCE_DIR}/platform/posix/exports.map)
  target_link_options(${module} PRIVATE -Wl,--version-script=${exports})
  if(NOT VELSOCK_SANITIZE)
    # clang++ links the sanitizers' run-time library only into programs.
    target_link_options(${module} PRIVATE -Wl,-z,defs)
    velsock_ease_loading(${module})
  endif()
  set_property(TARGET ${module} APPEND PROPERTY LINK_DEPENDS ${exports})
endfunction()
