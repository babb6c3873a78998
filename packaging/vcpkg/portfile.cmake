# Not tried: written from vcpkg's documentation, for a copy of the project beside this folder's parent.
vcpkg_cmake_configure(
  SOURCE_PATH ${CMAKE_CURRENT_LIST_DIR}/../..
  OPTIONS -D VELSOCK_TOOLS=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME VelSock CONFIG_PATH lib/cmake/VelSock)
vcpkg_fixup_pkgconfig()
file(REMOVE_RECURSE ${CURRENT_PACKAGES_DIR}/debug/include ${CURRENT_PACKAGES_DIR}/debug/share)
vcpkg_install_copyright(FILE_LIST ${CMAKE_CURRENT_LIST_DIR}/../../LICENSE)
