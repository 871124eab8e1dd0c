# What `cpack` makes of what is installed: Debian packages, one for each component. scripts/packages builds them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kavio)
set(CPACK_PACKAGE_CONTACT "Kavio maintainers <maintainers@kavio.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/debian/finish.cmake)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE kavio)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What the programs and libraries are linked to says which packages they need; which of ours, the table below says.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

get_cmake_property(installed_components COMPONENTS)
# kavio_package(COMPONENT PACKAGE SECTION SUMMARY ABOUT [ON COMPONENT…] [NEEDS LIST] [SUGGESTS LIST] [CONTROL FILE…] [FOR_ALL])
macro(kavio_package component package section summary about)
  if("${component}" IN_LIST installed_components)
    cmake_parse_arguments(its "FOR_ALL" "NEEDS;SUGGESTS" "ON;CONTROL" ${ARGN})
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    string(TOUPPER ${component} key)
    set(CPACK_COMPONENT_${key}_DESCRIPTION "${summary}
Kavio lets a wallet application pay at unattended vending points: log in,
find a machine, order, and follow the order until it ends.

${about}")
    set(CPACK_COMPONENT_${key}_DEPENDS ${its_ON})
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package})
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${its_NEEDS}")
    set(CPACK_DEBIAN_${key}_PACKAGE_SUGGESTS "${its_SUGGESTS}")
    list(TRANSFORM its_CONTROL PREPEND ${PROJECT_SOURCE_DIR}/packaging/debian/ OUTPUT_VARIABLE CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA)
    if(its_FOR_ALL)
      set(CPACK_DEBIAN_${key}_PACKAGE_ARCHITECTURE all)
    endif()
  endif()
endmacro()

set(abi ${PROJECT_VERSION_MAJOR})
kavio_package(kavio libkavio${abi} libs "payments at unattended vending points"
"This is the shared library." CONTROL triggers)
kavio_package(kavio-dev libkavio-dev libdevel "payments at unattended vending points (development)"
"This has the headers, for C++20, the static library, and files for CMake and
pkg-config. Only programs that link the static library need what is suggested."
  ON kavio SUGGESTS "libcurl4-openssl-dev, libicu-dev, libsimdjson-dev, libsqlite3-dev, libssl-dev, nlohmann-json3-dev")
kavio_package(kavio-gtk libkavio-gtk${abi} libs "payments at unattended vending points, on GTK 4"
"This shared library shows the card issuer's page in a web view, for cards with
3-D Secure." ON kavio CONTROL triggers)
kavio_package(kavio-gtk-dev libkavio-gtk-dev libdevel "payments at unattended vending points, on GTK 4 (development)"
"This has what programs that show the card issuer's page need to be built. Only
programs that link the static library need what is suggested."
  ON kavio-gtk kavio-dev NEEDS "libgtk-4-dev" SUGGESTS "libicu-dev, libwebkitgtk-6.0-dev")
kavio_package(kavio-c libkavio-c${abi} libs "payments at unattended vending points, for other languages"
"This shared library has a C interface, on which the packages for other
languages are built." ON kavio CONTROL triggers)
kavio_package(kavio-c-dev libkavio-c-dev libdevel "payments at unattended vending points, for C (development)"
"This has what programs in C need to be built." ON kavio-c kavio-dev)
kavio_package(kavio-testing libkavio-testing${abi} libs "payments at unattended vending points, for tests"
"This shared library has a device in memory, and the service behind it, for the
tests of applications." ON kavio CONTROL triggers)
kavio_package(kavio-testing-dev libkavio-testing-dev libdevel "payments at unattended vending points, for tests (development)"
"This has what the tests of applications need to be built. Only the tests of
ports need what is suggested." ON kavio-testing kavio-dev SUGGESTS "libgmock-dev")
kavio_package(kavio-tools kavio-tools utils "terminal wallet and sandbox service of Kavio"
"This has kavio-wallet, a wallet for the terminal, and kavio-sandbox, a stand-in
for the service on your own machine." ON kavio SUGGESTS "kavio-tools-gtk")
kavio_package(kavio-tools-gtk kavio-tools-gtk utils "windows for the terminal wallet of Kavio"
"This lets kavio-wallet open a window, for cards with 3-D Secure." ON kavio-gtk kavio-tools)
kavio_package(kavio-wallet-gtk kavio-wallet-gtk utils "wallet with a window, on Kavio and GTK 4"
"This has kavio-wallet-gtk, a sample wallet for desktops and phones. It needs
what is suggested to know where it is, and to read QR codes with a camera."
  ON kavio-gtk kavio-tools SUGGESTS "geoclue-2.0, gstreamer1.0-plugins-good")
kavio_package(kavio-python python3-kavio python "payments at unattended vending points, for Python 3"
"This is the package for Python, for asyncio, with type hints."
  ON kavio-c NEEDS "python3:any (>= 3.11~)" CONTROL python/postinst python/prerm FOR_ALL)
kavio_package(kavio-jni libkavio-jni java "payments at unattended vending points, for Java (native part)"
"This lets the package for Java call the native library." ON kavio-c)
kavio_package(kavio-java libkavio-java java "payments at unattended vending points, for Java"
"This is the package for Java 17 and Kotlin." ON kavio-jni NEEDS "libgoogle-gson-java" FOR_ALL)
include(CPack)
