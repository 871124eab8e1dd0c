# What `cmake --install` installs: a find_package(Kavio) package and pkg-config files. The static libraries, Kavio::gtk,
# Kavio::c and Kavio::testing are separate components of that package, because they need more to be installed. What
# `cmake --install --component` and the packages of KavioPackages.cmake call a component is something else: for each
# shared library, what programs need to run with it, and, with -dev in its name, what they need to be built.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Kavio)

# kavio_install(EXPORT LIBRARY TARGET)
function(kavio_install export library target)
  install(TARGETS ${target} EXPORT Kavio-${export}
    LIBRARY COMPONENT ${library} NAMELINK_COMPONENT ${library}-dev
    ARCHIVE COMPONENT ${library}-dev
    FILE_SET HEADERS COMPONENT ${library}-dev)
  install(EXPORT Kavio-${export} NAMESPACE Kavio:: DESTINATION ${package_folder} FILE Kavio-${export}.cmake COMPONENT ${library}-dev)
endfunction()
kavio_install(shared kavio kavio)
kavio_install(static kavio kavio_static)
if(KAVIO_GTK)
  kavio_install(gtk kavio-gtk kavio_gtk)
  kavio_install(gtk_static kavio-gtk kavio_gtk_static)
endif()

if(KAVIO_C)
  kavio_install(c kavio-c kavio-c)
endif()

# Of the library for tests only the shared one: an archive would need the service and all that it is built on.
if(KAVIO_APPS)
  kavio_install(testing kavio-testing kavio_testing)
endif()

list(TRANSFORM KAVIO_PLATFORM_PACKAGES REPLACE "(.+)" "  find_dependency(\\1)\n" OUTPUT_VARIABLE find_platform_dependencies)
list(JOIN find_platform_dependencies "" find_platform_dependencies)
configure_package_config_file(cmake/KavioConfig.cmake.in ${CMAKE_BINARY_DIR}/KavioConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/KavioConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/KavioConfig.cmake ${CMAKE_BINARY_DIR}/KavioConfigVersion.cmake DESTINATION ${package_folder} COMPONENT kavio-dev)

# kavio_pkg_config(LIBRARY TITLE DESCRIPTION REQUIREMENTS): a file that holds wherever the folder is moved to. What the
# shared library itself is built on is not a requirement: who links to it need not have that.
function(kavio_pkg_config library title description requirements)
  set(prefix ${CMAKE_INSTALL_PREFIX})
  if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE up)
    set(prefix "\${pcfiledir}/${up}")
  endif()
  foreach(folder libdir includedir)
    string(TOUPPER ${folder} kind)
    set(${folder} "\${prefix}")
    cmake_path(APPEND ${folder} ${CMAKE_INSTALL_${kind}})
  endforeach()
  configure_file(cmake/package.pc.in ${CMAKE_BINARY_DIR}/${library}.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${library}-dev)
endfunction()
kavio_pkg_config(kavio "Kavio" "${PROJECT_DESCRIPTION}" "")
if(KAVIO_GTK)
  kavio_pkg_config(kavio-gtk "Kavio for GTK" "The card issuer's page for Kavio, on GTK 4 and WebKitGTK" "kavio = ${PROJECT_VERSION} gtk4")
endif()
if(KAVIO_C)
  kavio_pkg_config(kavio-c "Kavio for C" "Kavio for other languages: operations and reports as lines of JSON" "")
endif()
if(KAVIO_APPS)
  kavio_pkg_config(kavio-testing "Kavio for tests" "A device in a box for the tests of applications, and what ports of Kavio must do"
                   "kavio = ${PROJECT_VERSION}")
endif()
