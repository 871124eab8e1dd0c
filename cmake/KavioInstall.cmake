# What `cmake --install` installs: a find_package(Kavio) package and pkg-config files. The static libraries, Kavio::gtk
# and Kavio::testing are separate components, because they need more to be installed.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Kavio)

# kavio_install(COMPONENT TARGET…)
function(kavio_install component)
  install(TARGETS ${ARGN} EXPORT Kavio-${component} FILE_SET HEADERS)
  install(EXPORT Kavio-${component} NAMESPACE Kavio:: DESTINATION ${package_folder} FILE Kavio-${component}.cmake)
endfunction()
kavio_install(shared kavio)
kavio_install(static kavio_static)
if(KAVIO_GTK)
  kavio_install(gtk kavio_gtk)
  kavio_install(gtk_static kavio_gtk_static)
endif()

# Of the library for tests only the shared one: an archive would need the service and all that it is built on.
if(KAVIO_APPS)
  kavio_install(testing kavio_testing)
endif()

list(TRANSFORM KAVIO_PLATFORM_PACKAGES REPLACE "(.+)" "  find_dependency(\\1)\n" OUTPUT_VARIABLE find_platform_dependencies)
list(JOIN find_platform_dependencies "" find_platform_dependencies)
configure_package_config_file(cmake/KavioConfig.cmake.in ${CMAKE_BINARY_DIR}/KavioConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/KavioConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/KavioConfig.cmake ${CMAKE_BINARY_DIR}/KavioConfigVersion.cmake DESTINATION ${package_folder})

list(JOIN KAVIO_PLATFORM_PKG_CONFIG " " platform_requirements)
configure_file(cmake/kavio.pc.in ${CMAKE_BINARY_DIR}/kavio.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/kavio.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(KAVIO_GTK)
  configure_file(cmake/kavio-gtk.pc.in ${CMAKE_BINARY_DIR}/kavio-gtk.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/kavio-gtk.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()
if(KAVIO_APPS)
  configure_file(cmake/kavio-testing.pc.in ${CMAKE_BINARY_DIR}/kavio-testing.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/kavio-testing.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()
