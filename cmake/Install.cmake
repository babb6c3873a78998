# What is installed, and where: the libraries for programs that run, what their authors need, and the tools.

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/VelSock)

# The tools find the library from where they stand, so that the installed tree can be moved.
file(RELATIVE_PATH to_libraries /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
if(VELSOCK_TOOLS AND NOT WIN32)
  set_target_properties(velsock-cat velsock-resolve velsock-trace PROPERTIES INSTALL_RPATH "$ORIGIN/${to_libraries}")
endif()

install(TARGETS velsock EXPORT VelSockTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(TARGETS velsock_static EXPORT VelSockTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(TARGETS velsock_companion EXPORT VelSockTargets COMPONENT development)
install(TARGETS velsock_logging EXPORT VelSockTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(EXPORT VelSockTargets NAMESPACE VelSock:: DESTINATION ${package_folder} COMPONENT development)
foreach(folder IN LISTS VELSOCK_PUBLIC_INCLUDES VELSOCK_COMPANION_INCLUDES VELSOCK_LOGGING_INCLUDES)
  install(DIRECTORY ${folder}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
endforeach()
if(VELSOCK_TOOLS)
  install(TARGETS velsock-cat velsock-resolve velsock-trace RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()
# Manual pages, which Debian compresses, and what bash completes.
if(VELSOCK_TOOLS AND NOT WIN32)
  file(GLOB manuals CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.1)
  foreach(manual IN LISTS manuals)
    if(VELSOCK_DEBIAN_PACKAGES)
      get_filename_component(name ${manual} NAME)
      execute_process(COMMAND gzip -9nc ${manual} OUTPUT_FILE ${PROJECT_BINARY_DIR}/${name}.gz
        COMMAND_ERROR_IS_FATAL ANY)
      set(manual ${PROJECT_BINARY_DIR}/${name}.gz)
    endif()
    install(FILES ${manual} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  endforeach()
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/tools/completion/
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
endif()
# As they lie in the sources: they name each other.
foreach(document README.md CHANGELOG.md LICENSE SECURITY.md)
  install(FILES ${PROJECT_SOURCE_DIR}/${document} DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
endforeach()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
  COMPONENT development FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.cpp" PATTERN "*.h" PATTERN man EXCLUDE)
if(WIN32)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/windows/VelSock.natvis DESTINATION ${CMAKE_INSTALL_DATADIR}/velsock
    COMPONENT development)
else()
  # Where gdb looks for what belongs to the library.
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/gdb/libvelsock-gdb.py
    DESTINATION ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR}
    RENAME libvelsock.so.${PROJECT_VERSION}-gdb.py COMPONENT development)
endif()
if(MINGW)
  install(FILES ${VELSOCK_RUNTIME_LIBRARIES} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
endif()

include(CMakePackageConfigHelpers)
configure_package_config_file(${PROJECT_SOURCE_DIR}/packaging/cmake/VelSockConfig.cmake.in
  ${PROJECT_BINARY_DIR}/VelSockConfig.cmake INSTALL_DESTINATION ${package_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VelSockConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VelSockConfig.cmake ${PROJECT_BINARY_DIR}/VelSockConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT development)

# pkg-config takes the folders from where its file lies.
file(RELATIVE_PATH to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" to_prefix "${to_prefix}")
get_target_property(module_name velsock OUTPUT_NAME)
if(NOT module_name)
  set(module_name velsock)
endif()
list(TRANSFORM VELSOCK_PLATFORM_LIBRARIES PREPEND "-l" OUTPUT_VARIABLE system_libraries)
list(JOIN system_libraries " " system_libraries)
foreach(name velsock velsock-static velsock-logging)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/pkgconfig/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()
