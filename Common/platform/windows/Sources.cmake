# The seam on the system that it is modelled on.
set(VELSOCK_PLATFORM_SOURCES
  platform/windows/Locks.cpp
  platform/windows/LogFile.cpp
  platform/windows/Registry.cpp
  platform/windows/Sockets.cpp
  platform/windows/SystemServices.cpp
  platform/windows/WideTexts.cpp)
# Windows 7 and later.
set(VELSOCK_PLATFORM_DEFINITIONS _WIN32_WINNT=0x0601 WIN32_LEAN_AND_MEAN NOMINMAX _WINSOCK_DEPRECATED_NO_WARNINGS)
set(VELSOCK_PLATFORM_LIBRARIES ws2_32 advapi32)

# The version resource shows the file's name and the library's version.
function(velsock_finish_module module)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/windows/Version.rc.in
                 ${CMAKE_CURRENT_BINARY_DIR}/Version.rc @ONLY)
  target_sources(${module} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/Version.rc)
  # The linker's name for it is libVelSock.dll.a, or VelSock.lib with Visual C++.
  set_target_properties(${module} PROPERTIES OUTPUT_NAME VelSock PREFIX "")
  if(MINGW)
    target_link_options(${module} PRIVATE -Wl,--exclude-all-symbols)
  endif()
endfunction()
