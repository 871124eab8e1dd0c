# Run by CPack on what is about to be packed: adds what Debian wants in each package, and moves what Debian keeps elsewhere.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # that of the last commit: see scripts/packages
set(debian_changelog "kavio (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) bookworm; urgency=medium

  * Version ${CPACK_PACKAGE_VERSION}; see changelog.gz.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")

# compress(FILE…)
function(compress)
  execute_process(COMMAND gzip -9n ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} key)
  set(package ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
  set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX}/share)
  set(doc ${share}/doc/${package})
  configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${doc}/copyright COPYONLY)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/../../CHANGELOG.md ${doc}/changelog COPYONLY)
  file(WRITE ${doc}/changelog.Debian "${debian_changelog}")
  compress(${doc}/changelog ${doc}/changelog.Debian)
endforeach()

file(GLOB manual ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*${CPACK_PACKAGING_INSTALL_PREFIX}/share/man/man1/*.1)
compress(${manual})
foreach(component kavio-tools kavio-wallet-gtk)
  set(zsh ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX}/share/zsh)
  file(RENAME ${zsh}/site-functions ${zsh}/vendor-completions)
endforeach()
set(manual ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/kavio-tools-gtk${CPACK_PACKAGING_INSTALL_PREFIX}/share/man/man1)
file(MAKE_DIRECTORY ${manual})
file(CREATE_LINK kavio-wallet.1.gz ${manual}/kavio-wallet-window.1.gz SYMBOLIC)
