# The C++ library from the tree that this port is part of: vcpkg install kavio --overlay-ports=packaging/vcpkg
vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY)  # the build makes a static library, too, but its package always has the shared one
cmake_path(ABSOLUTE_PATH CURRENT_PORT_DIR NORMALIZE OUTPUT_VARIABLE source)
foreach(level RANGE 2)
  cmake_path(GET source PARENT_PATH source)
endforeach()
vcpkg_cmake_configure(SOURCE_PATH ${source}
  OPTIONS -DKAVIO_APPS=OFF -DKAVIO_TESTS=OFF -DKAVIO_BENCH=OFF -DKAVIO_C=OFF -DKAVIO_GTK=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME Kavio CONFIG_PATH lib/cmake/Kavio)
vcpkg_fixup_pkgconfig()
file(REMOVE_RECURSE ${CURRENT_PACKAGES_DIR}/debug/include)
vcpkg_install_copyright(FILE_LIST ${source}/packaging/debian/copyright)
